#include "HelpPage.h"

#include <QDialogButtonBox>
#include <QFile>
#include <QTextBlock>
#include <QTextBrowser>
#include <QTextCursor>
#include <QVBoxLayout>

// The page lies in a static library: without this the linker would drop it.
static void initialiseResources() {
    Q_INIT_RESOURCE(help);
}

// Qt's Markdown reader gives headings no room of their own.
static void spaceOut(QTextDocument& document) {
    for (QTextBlock block = document.begin(); block.isValid(); block = block.next()) {
        QTextBlockFormat format = block.blockFormat();
        if (format.headingLevel() > 1) {
            format.setTopMargin(16);
            format.setBottomMargin(6);
            QTextCursor(block).setBlockFormat(format);
        }
    }
}

HelpPage::HelpPage(const QString& title, const QString& page, QWidget* parent) : QDialog(parent) {
    initialiseResources();
    setAttribute(Qt::WA_DeleteOnClose);
    setObjectName(QStringLiteral("helpPage"));
    setWindowTitle(title);
    setWindowModality(Qt::NonModal);

    auto* text = new QTextBrowser(this);
    text->setObjectName(QStringLiteral("helpText"));
    text->setAccessibleName(title);
    text->setOpenExternalLinks(true);
    text->document()->setDocumentMargin(16);
    QFile file(page);
    if (file.open(QIODevice::ReadOnly)) {
        text->setMarkdown(QString::fromUtf8(file.readAll()));
        spaceOut(*text->document());
    }

    auto* buttons = new QDialogButtonBox(QDialogButtonBox::Close, this);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);

    auto* layout = new QVBoxLayout(this);
    layout->addWidget(text);
    layout->addWidget(buttons);
    resize(620, 560);
}

HelpPage* HelpPage::openDiscAccess(QWidget* parent) {
    if (auto* open = parent != nullptr ? parent->findChild<HelpPage*>() : nullptr) {
        open->show();
        open->raise();
        open->activateWindow();
        return open;
    }
    auto* page = new HelpPage(tr("Reading optical discs on Linux"),
                              QStringLiteral(":/help/disc-access.md"), parent);
    page->show();
    return page;
}

#include "moc_HelpPage.cpp"
