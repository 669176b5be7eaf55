#include "SettingsView.h"

#include <QCheckBox>
#include <QFrame>
#include <QVBoxLayout>

#include "TextLabel.h"
#include "TextStyle.h"

SettingsView::SettingsView(QWidget* parent) : QWidget(parent) {
    setObjectName(QStringLiteral("settingsView"));
    auto* column = new QVBoxLayout(this);
    column->setContentsMargins(20, 20, 20, 20);
    column->setSpacing(20);
    const PreferenceSection* section = nullptr;
    for (const PreferenceRow& first : preferenceTable) {
        if (first.section == nullptr || first.section == section) {
            continue;
        }
        section = first.section;
        QList<QCheckBox*> switches;
        for (const PreferenceRow& row : preferenceTable) {
            if (row.section == section) {
                switches.append(makeSwitch(row));
            }
        }
        column->addWidget(makeSection(tr(section->title), switches, tr(section->caption)));
    }
    m_problem = new TextLabel(QString(), TextStyle::font(TextStyle::Style::Caption),
                              Appearance::Role::Red, TextLabel::Wrap::Yes, this);
    m_problem->setObjectName(QStringLiteral("settingsProblem"));
    column->addWidget(m_problem);
    connect(&m_preferences, &Preferences::problemChanged, this, &SettingsView::showProblem);
    showProblem();
    // Wider only where a very large font makes a switch longer than that.
    setFixedWidth(qMax(formWidth, column->minimumSize().width()));
}

void SettingsView::showProblem() {
    const auto problem = m_preferences.problem();
    m_problem->setText(problem.value_or(QString()));
    m_problem->setVisible(problem.has_value());
}

QWidget* SettingsView::makeSection(const QString& title, const QList<QCheckBox*>& switches,
                                   const QString& caption) {
    auto* section = new QWidget(this);
    auto* outer = new QVBoxLayout(section);
    outer->setContentsMargins(0, 0, 0, 0);
    outer->setSpacing(8);
    auto* heading = new TextLabel(title, TextStyle::font(TextStyle::Style::Headline),
                                  Appearance::Role::Primary, TextLabel::Wrap::No, section);
    heading->setObjectName(QStringLiteral("sectionTitle"));
    outer->addWidget(heading);

    auto* box = new QFrame(section);
    box->setFrameShape(QFrame::StyledPanel);
    box->setBackgroundRole(QPalette::AlternateBase);
    box->setAutoFillBackground(true);
    auto* rows = new QVBoxLayout(box);
    rows->setContentsMargins(12, 12, 12, 12);
    rows->setSpacing(10);
    for (QCheckBox* control : switches) {
        rows->addWidget(control);
        control->setAccessibleDescription(caption);
    }
    auto* text = new TextLabel(caption, TextStyle::font(TextStyle::Style::Caption),
                               Appearance::Role::Secondary, TextLabel::Wrap::Yes, box);
    text->setObjectName(QStringLiteral("sectionCaption"));
    rows->addWidget(text);
    outer->addWidget(box);
    return section;
}

QCheckBox* SettingsView::makeSwitch(const PreferenceRow& row) {
    auto* control = new QCheckBox(tr(row.label), this);
    control->setObjectName(QLatin1String(row.key) + QLatin1String("Switch"));
    control->setChecked(m_preferences.value(row.preference));
    // A switch that only follows writes nothing: the other process may be writing its next value.
    connect(control, &QCheckBox::toggled, this, [this, preference = row.preference](bool on) {
        if (m_preferences.value(preference) != on) {
            m_preferences.set(preference, on);
        }
    });
    connect(&m_preferences, &Preferences::changed, control,
            [this, control, preference = row.preference] {
                control->setChecked(m_preferences.value(preference));
            });
    return control;
}

#include "moc_SettingsView.cpp"
