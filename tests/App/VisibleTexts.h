// What a user can read in a window.
#pragma once

#include <QAbstractButton>
#include <QAction>
#include <QLabel>
#include <QLineEdit>
#include <QMenu>
#include <QMenuBar>
#include <QSet>

// What a user can read in a window now: texts of visible widgets, tool tips, placeholders.
inline QSet<QString> visibleTexts(const QWidget* window) {
    QSet<QString> texts{window->windowTitle()};
    for (const QWidget* widget : window->findChildren<QWidget*>()) {
        if (!widget->isVisibleTo(window)) {
            continue;
        }
        texts << widget->toolTip();
        if (const auto* label = qobject_cast<const QLabel*>(widget)) {
            texts << label->text();
        } else if (const auto* button = qobject_cast<const QAbstractButton*>(widget)) {
            texts << button->text();
        } else if (const auto* field = qobject_cast<const QLineEdit*>(widget)) {
            texts << field->placeholderText() << field->text();
        }
    }
    return texts;
}

inline QSet<QString> menuTexts(const QWidget* window) {
    QSet<QString> texts;
    for (const QAction* action : window->findChildren<QAction*>()) {
        texts << action->text().remove(QLatin1Char('&'));
    }
    const auto* bar = window->findChild<QMenuBar*>();
    for (const QAction* menu : bar->actions()) {
        for (const QAction* action : menu->menu()->actions()) {
            texts << action->text().remove(QLatin1Char('&'));
        }
    }
    return texts;
}
