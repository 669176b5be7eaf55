// The preferences, one a row: the store, the terminal program's settings command with its help, and
// the settings window are made from it.
#pragma once

#include <QtGlobal>
#include <array>

enum class Preference { EjectWhenDone, ThoroughVerify, RetroMode, HasCompletedOnboarding };

// A box of the settings window.
struct PreferenceSection {
    const char* title;
    const char* caption;
};

namespace PreferenceSections {
inline constexpr PreferenceSection ripping{
    QT_TRANSLATE_NOOP("SettingsView", "Ripping"),
    QT_TRANSLATE_NOOP(
        "SettingsView",
        "Off: trusts hdiutil's own read-error reporting \u2014 fast, no second pass. On: "
        "re-images the whole disc a second time and compares checksums \u2014 slower, but "
        "independently confirms the bytes.")};
inline constexpr PreferenceSection appearance{
    QT_TRANSLATE_NOOP("SettingsView", "Appearance"),
    QT_TRANSLATE_NOOP(
        "SettingsView",
        "Reskins the app in early-2000s Mac OS X \u201cAqua\u201d \u2014 pinstripes, glossy gel "
        "buttons, and Lucida Grande.")};
}  // namespace PreferenceSections

struct PreferenceRow {
    Preference preference;
    const char* key;
    bool byDefault;
    const char* help;                  // in the terminal
    const PreferenceSection* section;  // null: the window has no switch for it
    const char* label;                 // of the switch
};

// The rows of a section stand together.
inline constexpr std::array preferenceTable{
    PreferenceRow{Preference::EjectWhenDone, "ejectWhenDone", true,
                  "the window ejects the disc after a verified rip", &PreferenceSections::ripping,
                  QT_TRANSLATE_NOOP("SettingsView", "Eject disc when done")},
    PreferenceRow{Preference::ThoroughVerify, "thoroughVerify", false,
                  "the window's rips read the disc twice", &PreferenceSections::ripping,
                  QT_TRANSLATE_NOOP("SettingsView", "Thorough verify (re-read entire disc)")},
    PreferenceRow{Preference::RetroMode, "retroMode", false, "the window has the retro look",
                  &PreferenceSections::appearance, QT_TRANSLATE_NOOP("SettingsView", "Retro Mode")},
    PreferenceRow{Preference::HasCompletedOnboarding, "hasCompletedOnboarding", false,
                  "the guide of the first start has been seen", nullptr, nullptr},
};

constexpr const PreferenceRow& rowOf(Preference preference) {
    return preferenceTable.at(static_cast<std::size_t>(preference));
}

static_assert(
    [] {
        for (const PreferenceRow& row : preferenceTable) {
            if (&rowOf(row.preference) != &row) {
                return false;
            }
        }
        return true;
    }(),
    "the rows are in the order of the enumeration");
