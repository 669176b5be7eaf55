// Where the parts of a sheet stand, and in which type and colour its texts are.
#pragma once

#include <gmock/gmock.h>

#include <QCoreApplication>
#include <QFont>
#include <QWidget>
#include <vector>

#include "Appearance.h"
#include "SymbolLabel.h"
#include "TextLabel.h"

struct Type {
    const char* name;
    QFont font;
    Appearance::Role role;
};

inline void expectTypes(const QWidget& sheet, const std::vector<Type>& types) {
    for (const Type& expected : types) {
        auto* widget = sheet.findChild<QWidget*>(QLatin1String(expected.name));
        ASSERT_NE(widget, nullptr) << expected.name;
        const auto* label = qobject_cast<SymbolLabel*>(widget);
        const auto* text = label != nullptr ? label->textLabel() : qobject_cast<TextLabel*>(widget);
        ASSERT_NE(text, nullptr) << expected.name;
        EXPECT_EQ(text->font(), expected.font) << expected.name;
        EXPECT_EQ(text->role(), expected.role) << expected.name;
    }
}

// In the coordinates of the sheet.
inline QRect place(const QWidget& sheet, const QWidget* widget) {
    return {widget->mapTo(&sheet, QPoint(0, 0)), widget->size()};
}

inline QRect place(const QWidget& sheet, const char* name) {
    const auto* widget = sheet.findChild<QWidget*>(QLatin1String(name));
    if (widget == nullptr) {
        qFatal("no widget named %s", name);
    }
    return place(sheet, widget);
}

inline int gapBelow(const QRect& upper, const QRect& lower) {
    return lower.top() - upper.bottom() - 1;
}

inline void layOut(QWidget& sheet) {
    sheet.show();
    for (int i = 0; i < 3; ++i) {
        QCoreApplication::sendPostedEvents();
        QCoreApplication::processEvents();
    }
}
