// What the window tests share: a window around the content, and looking things up by name.
#pragma once

#include <QAbstractButton>
#include <QApplication>
#include <QVBoxLayout>
#include <QWidget>

#include "ContentView.h"
#include "DriveStubs.h"
#include "Preferences.h"
#include "SymbolLabel.h"
#include "TestFolder.h"
#include "TextLabel.h"
#include "Waiting.h"

// The widget of this class and object name; the test ends here if there is none.
template <typename T>
T* named(const QWidget* parent, const char* name) {
    T* found = parent->findChild<T*>(QLatin1String(name));
    if (found == nullptr) {
        qFatal("no widget named %s", name);
    }
    return found;
}

inline QString textOf(const QWidget* parent, const char* name) {
    QWidget* widget = named<QWidget>(parent, name);
    if (const auto* label = qobject_cast<SymbolLabel*>(widget)) {
        return label->text();
    }
    if (const auto* button = qobject_cast<QAbstractButton*>(widget)) {
        return button->text();
    }
    return qobject_cast<QLabel*>(widget)->text();
}

inline bool shows(const QWidget* parent, const char* name) {
    return named<QWidget>(parent, name)->isVisible();
}

// Every event that is under way now, and what it leads to.
inline void settle() {
    for (int i = 0; i < 5; ++i) {
        QCoreApplication::sendPostedEvents();
        QCoreApplication::processEvents();
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    }
}

// A window that is always as large as the one view in it, which it does not own.
class FixedFrame final : public QWidget {
public:
    explicit FixedFrame(QWidget* view) : m_view(view) {
        auto* outer = new QVBoxLayout(this);
        outer->setContentsMargins(0, 0, 0, 0);
        outer->setSizeConstraint(QLayout::SetFixedSize);
        outer->addWidget(view);
        show();
        settle();
    }
    ~FixedFrame() override { m_view->setParent(nullptr); }

private:
    QWidget* m_view;
};

// A main window as the program lays it out, without its menus. The guide does not open by itself.
class HostWindow final : public QWidget {
public:
    HostWindow() {
        Preferences().set(Preference::HasCompletedOnboarding, true);
        auto* outer = new QVBoxLayout(this);
        outer->setContentsMargins(0, 0, 0, 0);
        outer->setSizeConstraint(QLayout::SetFixedSize);
        content = new ContentView(this);
        outer->addWidget(content);
    }

    void open() {
        show();
        settle();
    }

    // Chooses the destination as if the save dialog had been confirmed.
    QString choose(const TestFolder& folder, const QString& name) {
        const QString path = folder.path(name);
        content->session().setDestination(path);
        settle();
        return path;
    }

    void click(const char* name) {
        named<QAbstractButton>(content, name)->click();
        settle();
    }

    // The status text of the panel; empty while there is none.
    QString status() const {
        return shows(content, "ripStatus") ? textOf(content, "ripStatus") : QString();
    }

    ContentView* content;
};
