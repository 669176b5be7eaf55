// The form of the settings window: a section of switches with a caption for each of the table's.
//
// Owned by its parent widget; main thread. Every switch writes its preference at once and follows
// it when it is changed elsewhere. What goes wrong with that stands in a line below.
#pragma once

#include <QWidget>

#include "Preferences.h"

class QCheckBox;
class TextLabel;

class SettingsView final : public QWidget {
    Q_OBJECT

public:
    static constexpr int formWidth = 440;

    explicit SettingsView(QWidget* parent = nullptr);

private:
    QWidget* makeSection(const QString& title, const QList<QCheckBox*>& switches,
                         const QString& caption);
    QCheckBox* makeSwitch(const PreferenceRow& row);

    void showProblem();

    Preferences m_preferences;
    TextLabel* m_problem;  // hidden while all is well
};
