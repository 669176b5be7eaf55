#include "Announcement.h"

#include <QAccessible>
#include <QAccessibleWidget>
#include <QLabel>
#include <QVariant>

namespace Announcement {

namespace {

constexpr const char* preparedProperty = "announced";

class NotificationInterface final : public QAccessibleWidget {
public:
    explicit NotificationInterface(QLabel* label)
        : QAccessibleWidget(label, QAccessible::Notification), m_label(label) {}

    QString text(QAccessible::Text kind) const override {
        return kind == QAccessible::Name ? m_label->text() : QAccessibleWidget::text(kind);
    }

private:
    QLabel* m_label;
};

QAccessibleInterface* makeInterface(const QString&, QObject* object) {
    auto* label = qobject_cast<QLabel*>(object);
    const bool prepared = label != nullptr && label->property(preparedProperty).toBool();
    return prepared ? new NotificationInterface(label) : nullptr;
}

}  // namespace

void prepare(QLabel* label) {
    static const bool installed = [] {
        QAccessible::installFactory(makeInterface);
        return true;
    }();
    Q_UNUSED(installed)
    label->setProperty(preparedProperty, true);
}

void announce(QLabel* label) {
    // Readers listen for a notification that appears; some only for an alert.
    for (const auto kind :
         {QAccessible::NameChanged, QAccessible::ObjectShow, QAccessible::Alert}) {
        QAccessibleEvent event(label, kind);
        QAccessible::updateAccessibility(&event);
    }
}

}  // namespace Announcement
