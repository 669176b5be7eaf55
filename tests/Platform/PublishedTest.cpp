#include "Published.h"

#include <gmock/gmock.h>

#include <QObject>
#include <QStringList>
#include <optional>

namespace {

using testing::ElementsAre;

class Model final : public QObject {
    Q_OBJECT

public:
    std::optional<int> value;

signals:
    void objectWillChange();
    void valueChanged();
};

class PublishedTest : public testing::Test {
protected:
    PublishedTest() {
        QObject::connect(&m_model, &Model::objectWillChange, [this] { note("will change"); });
        QObject::connect(&m_model, &Model::valueChanged, [this] { note("changed"); });
    }

    void note(const char* what) {
        const QString value = m_model.value ? QString::number(*m_model.value) : QStringLiteral("-");
        m_log.append(QLatin1String(what) + QLatin1Char(' ') + value);
    }

    Model m_model;
    QStringList m_log;
};

TEST_F(PublishedTest, ObserversHearBeforeTheWriteAndAfterIt) {
    publish(&m_model, m_model.value, 1, &Model::valueChanged);
    publish(&m_model, m_model.value, 2, &Model::valueChanged);
    publish(&m_model, m_model.value, std::nullopt, &Model::valueChanged);
    EXPECT_THAT(m_log, ElementsAre(u"will change -", u"changed 1", u"will change 1", u"changed 2",
                                   u"will change 2", u"changed -"));
}

TEST_F(PublishedTest, AWriteOfTheSameValueIsAnnouncedButIsNoChange) {
    publish(&m_model, m_model.value, std::nullopt, &Model::valueChanged);
    EXPECT_THAT(m_log, ElementsAre(u"will change -"));
}

}  // namespace

#include "PublishedTest.moc"
