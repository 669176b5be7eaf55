#include "CancelConfirmation.h"

#include <QEvent>
#include <QPushButton>

#include "Appearance.h"
#include "ButtonTextColor.h"
#include "Symbol.h"
#include "TextStyle.h"

CancelConfirmation::CancelConfirmation(Subject subject, QWidget* parent) : QMessageBox(parent) {
    setObjectName(QStringLiteral("cancelConfirmation"));
    setAttribute(Qt::WA_DeleteOnClose);
    setWindowModality(Qt::WindowModal);
    setTextFormat(Qt::PlainText);
    tintIcon();
    m_destructive = addButton(QString(), QMessageBox::DestructiveRole);
    m_destructive->setObjectName(QStringLiteral("destructiveButton"));
    new ButtonTextColor(Appearance::Role::Destructive, m_destructive);
    QPushButton* keepGoing = addButton(tr("Keep Going"), QMessageBox::RejectRole);
    keepGoing->setObjectName(QStringLiteral("keepGoingButton"));
    setDefaultButton(keepGoing);
    setEscapeButton(keepGoing);
    connect(m_destructive, &QPushButton::clicked, this, &CancelConfirmation::confirmed);
    setSubject(subject);
}

void CancelConfirmation::setSubject(Subject subject) {
    const bool rip = subject == Subject::Rip;
    const QString text = rip ? tr("Cancel the rip? The partial ISO file will be deleted.")
                             : tr("Cancel verification? The ISO file is already complete and will "
                                  "be kept \u2014 it just won't be confirmed as verified.");
    if (text != this->text()) {
        setText(text);
        m_destructive->setText(rip ? tr("Cancel Rip") : tr("Cancel Verification"));
    }
}

void CancelConfirmation::changeEvent(QEvent* event) {
    QMessageBox::changeEvent(event);
    if (event->type() == QEvent::PaletteChange) {
        tintIcon();
    }
}

void CancelConfirmation::tintIcon() {
    setIconPixmap(Symbol::pixmap(
        QStringLiteral("exclamationmark.triangle.fill"), TextStyle::length(26),
        Appearance::color(Appearance::Role::Orange, palette()), devicePixelRatioF()));
}

#include "moc_CancelConfirmation.cpp"
