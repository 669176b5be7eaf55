// The form of the settings window: two sections of switches with captions.
//
// Owned by its parent widget; main thread. Every switch writes its preference at once and follows
// it when it is changed elsewhere.
#pragma once

#include <QWidget>

#include "Preferences.h"

class QCheckBox;

class SettingsView final : public QWidget {
    Q_OBJECT

public:
    static constexpr int formWidth = 440;

    explicit SettingsView(QWidget* parent = nullptr);

private:
    QWidget* makeSection(const QString& title, const QList<QCheckBox*>& switches,
                         const QString& caption);
    QCheckBox* makeSwitch(const QString& text, const char* name, bool (Preferences::*get)() const,
                          void (Preferences::*set)(bool), void (Preferences::*changed)());

    Preferences m_preferences;
};
