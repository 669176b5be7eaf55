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
    column->addWidget(makeSection(
        tr("Ripping"),
        {makeSwitch(tr("Eject disc when done"), "ejectWhenDone", &Preferences::ejectWhenDone,
                    &Preferences::setEjectWhenDone, &Preferences::ejectWhenDoneChanged),
         makeSwitch(tr("Thorough verify (re-read entire disc)"), "thoroughVerify",
                    &Preferences::thoroughVerify, &Preferences::setThoroughVerify,
                    &Preferences::thoroughVerifyChanged)},
        tr("Off: trusts hdiutil's own read-error reporting \u2014 fast, no second pass. On: "
           "re-images the whole disc a second time and compares checksums \u2014 slower, but "
           "independently confirms the bytes.")));
    column->addWidget(makeSection(
        tr("Appearance"),
        {makeSwitch(tr("Retro Mode"), "retroMode", &Preferences::retroMode,
                    &Preferences::setRetroMode, &Preferences::retroModeChanged)},
        tr("Reskins the app in early-2000s Mac OS X \u201cAqua\u201d \u2014 pinstripes, glossy gel "
           "buttons, and Lucida Grande.")));
    // Wider only where a very large font makes a switch longer than that.
    setFixedWidth(qMax(formWidth, column->minimumSize().width()));
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

QCheckBox* SettingsView::makeSwitch(const QString& text, const char* name,
                                    bool (Preferences::*get)() const,
                                    void (Preferences::*set)(bool),
                                    void (Preferences::*changed)()) {
    auto* control = new QCheckBox(text, this);
    control->setObjectName(QLatin1String(name) + QLatin1String("Switch"));
    control->setChecked((m_preferences.*get)());
    // A switch that only follows writes nothing: the other process may be writing its next value.
    connect(control, &QCheckBox::toggled, this, [this, get, set](bool on) {
        if ((m_preferences.*get)() != on) {
            (m_preferences.*set)(on);
        }
    });
    connect(&m_preferences, changed, control,
            [this, control, get] { control->setChecked((m_preferences.*get)()); });
    return control;
}
