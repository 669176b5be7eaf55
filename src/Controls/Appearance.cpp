#include "Appearance.h"

#include <QApplication>
#include <QToolTip>

#include "WindowStyle.h"

namespace Appearance {

namespace {

using SystemAppearance::Scheme;

struct Colors {
    const char* window;
    const char* text;
    const char* base;
    const char* alternateBase;
    const char* button;
    const char* light;
    const char* midlight;
    const char* mid;
    const char* dark;
    const char* shadow;
    const char* toolTip;
    const char* disabledText;
    const char* secondary;
    const char* accent;
    const char* green;
    const char* orange;
    const char* red;
    const char* gray;
    const char* destructive;
};

// The text colours keep a contrast of at least 4.5 to 1 against their scheme's window.
constexpr Colors lightColors = {
    .window = "#f2f2f4",
    .text = "#1d1d1f",
    .base = "#ffffff",
    .alternateBase = "#fafafb",
    .button = "#fbfbfc",
    .light = "#ffffff",
    .midlight = "#e3e3e6",
    .mid = "#b8b8bd",
    .dark = "#9a9aa0",
    .shadow = "#6e6e73",
    .toolTip = "#fffff0",
    .disabledText = "#9a9a9f",
    .secondary = "#66666b",
    .accent = "#0a66d0",
    .green = "#187a38",
    .orange = "#a84e00",
    .red = "#c5221f",
    .gray = "#8e8e93",
    .destructive = "#c5221f",
};

constexpr Colors darkColors = {
    .window = "#28282a",
    .text = "#f2f2f4",
    .base = "#1c1c1e",
    .alternateBase = "#343438",
    .button = "#3a3a3e",
    .light = "#5a5a5f",
    .midlight = "#3f3f43",
    .mid = "#343437",
    .dark = "#161618",
    .shadow = "#000000",
    .toolTip = "#3a3a3c",
    .disabledText = "#8c8c91",
    .secondary = "#a9a9ae",
    .accent = "#4c9bff",
    .green = "#3fd066",
    .orange = "#ffa53d",
    .red = "#ff7a70",
    .gray = "#98989d",
    .destructive = "#ffb4ae",
};

const Colors& colors(Scheme scheme) {
    return scheme == Scheme::Dark ? darkColors : lightColors;
}

QColor named(const char* name) {
    return QColor(QLatin1String(name));
}

}  // namespace

QPalette palette(Scheme scheme) {
    const Colors& c = colors(scheme);
    // White on the dark scheme's accent would be too faint to read.
    const QColor highlight = scheme == Scheme::Dark ? QColor(0x1f, 0x6f, 0xd6) : named(c.accent);
    QPalette result;
    const auto set = [&result](QPalette::ColorRole role, const QColor& color) {
        for (const auto group : {QPalette::Active, QPalette::Inactive, QPalette::Disabled}) {
            result.setColor(group, role, color);
        }
    };
    set(QPalette::Window, named(c.window));
    set(QPalette::WindowText, named(c.text));
    set(QPalette::Base, named(c.base));
    set(QPalette::AlternateBase, named(c.alternateBase));
    set(QPalette::Text, named(c.text));
    set(QPalette::Button, named(c.button));
    set(QPalette::ButtonText, named(c.text));
    set(QPalette::BrightText, named(c.red));
    set(QPalette::Light, named(c.light));
    set(QPalette::Midlight, named(c.midlight));
    set(QPalette::Mid, named(c.mid));
    set(QPalette::Dark, named(c.dark));
    set(QPalette::Shadow, named(c.shadow));
    set(QPalette::Highlight, highlight);
    set(QPalette::HighlightedText, QColor(Qt::white));
    set(QPalette::Link, named(c.accent));
    set(QPalette::LinkVisited, named(c.secondary));
    set(QPalette::ToolTipBase, named(c.toolTip));
    set(QPalette::ToolTipText, named(c.text));
    set(QPalette::PlaceholderText, named(c.secondary));
    for (const auto role : {QPalette::WindowText, QPalette::Text, QPalette::ButtonText,
                            QPalette::PlaceholderText, QPalette::HighlightedText}) {
        result.setColor(QPalette::Disabled, role, named(c.disabledText));
    }
    result.setColor(QPalette::Disabled, QPalette::Highlight, named(c.mid));
#if QT_VERSION >= QT_VERSION_CHECK(6, 6, 0)
    for (const auto group : {QPalette::Active, QPalette::Inactive, QPalette::Disabled}) {
        result.setBrush(group, QPalette::Accent, result.brush(group, QPalette::Highlight));
    }
#endif
    return result;
}

QColor color(Role role, Scheme scheme) {
    const Colors& c = colors(scheme);
    switch (role) {
        case Role::Primary:
            return named(c.text);
        case Role::Secondary:
            return named(c.secondary);
        case Role::Accent:
            return named(c.accent);
        case Role::Green:
            return named(c.green);
        case Role::Orange:
            return named(c.orange);
        case Role::Red:
            return named(c.red);
        case Role::Gray:
            return named(c.gray);
        case Role::Destructive:
            return named(c.destructive);
    }
    return named(c.text);
}

QColor color(Role role, const QPalette& palette) {
    return color(role, schemeOf(palette));
}

Scheme schemeOf(const QPalette& palette) {
    return palette.color(QPalette::Active, QPalette::Window).lightness() < 128 ? Scheme::Dark
                                                                               : Scheme::Light;
}

void follow() {
    if (dynamic_cast<WindowStyle*>(QApplication::style()) == nullptr) {
        QApplication::setStyle(new WindowStyle);
    }
    const QPalette wanted = palette(SystemAppearance::current());
    if (QApplication::palette() != wanted) {
        QApplication::setPalette(wanted);
        QToolTip::setPalette(wanted);
    }
}

}  // namespace Appearance
