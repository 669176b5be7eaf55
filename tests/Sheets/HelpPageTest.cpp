#include "HelpPage.h"

#include <gmock/gmock.h>

#include <QCoreApplication>
#include <QEvent>
#include <QPointer>
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

}  // namespace
