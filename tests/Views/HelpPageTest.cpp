#include "HelpPage.h"

#include <gmock/gmock.h>

#include <QCoreApplication>
#include <QEvent>
#include <QPointer>
#include <QTextBlock>
#include <QTextBrowser>

namespace {

TEST(HelpPageTest, ThePageOnDiscAccessExplainsTheGroupAndTheAccessList) {
    QPointer<HelpPage> page = HelpPage::openDiscAccess(nullptr);
    const QString text = page->findChild<QTextBrowser*>()->toPlainText();
    EXPECT_TRUE(text.contains(QStringLiteral("usermod -aG cdrom")));
    EXPECT_TRUE(text.contains(QStringLiteral("setfacl -m u:")));
    page->close();
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    EXPECT_TRUE(page.isNull());
}

TEST(HelpPageTest, AHeadingStandsApartFromWhatIsAboveIt) {
    const HelpPage page(QString(), QStringLiteral(":/help/disc-access.md"), nullptr);
    int headings = 0;
    const QTextDocument* text = page.findChild<QTextBrowser*>()->document();
    for (QTextBlock block = text->begin(); block.isValid(); block = block.next()) {
        if (block.blockFormat().headingLevel() == 2) {
            ++headings;
            EXPECT_GE(block.blockFormat().topMargin(), 12) << qPrintable(block.text());
        }
    }
    EXPECT_EQ(headings, 3);
}

}  // namespace
