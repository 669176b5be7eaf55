#include "SettingsWindow.h"

#include <QShortcut>
#include <QVBoxLayout>

#include "Accessibility.h"
#include "Appearance.h"
#include "SettingsView.h"

SettingsWindow::SettingsWindow(QWidget* parent) : QWidget(parent, Qt::Window) {
    setObjectName(QStringLiteral("settingsWindow"));
    Accessibility::setRole(this, QAccessible::Window);
    setWindowTitle(tr("Settings"));
    setAttribute(Qt::WA_DeleteOnClose);
    Appearance::follow();
    auto* outer = new QVBoxLayout(this);
    outer->setContentsMargins(0, 0, 0, 0);
    outer->setSizeConstraint(QLayout::SetFixedSize);
    outer->addWidget(new SettingsView(this));
    for (const QKeySequence& keys :
         {QKeySequence(Qt::CTRL | Qt::Key_W), QKeySequence(Qt::Key_Escape)}) {
        connect(new QShortcut(keys, this), &QShortcut::activated, this, &QWidget::close);
    }
}

#include "moc_SettingsWindow.cpp"
