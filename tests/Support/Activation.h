// Makes a shown window the active one: in others no widget gets the keyboard's focus.
#pragma once

#include <QWidget>

#include "Waiting.h"

inline void activate(QWidget* window) {
    window->activateWindow();
    if (!waitUntil([window] { return window->isActiveWindow(); })) {
        qFatal("%s does not become the active window", qPrintable(window->objectName()));
    }
}
