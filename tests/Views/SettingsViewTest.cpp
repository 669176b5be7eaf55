#include "SettingsView.h"

#include <gtest/gtest.h>

#include <QCheckBox>
#include <QFile>

#include "WindowSupport.h"

namespace {

class SettingsViewTest : public testing::Test {
protected:
    TestFolder folder;
};

}  // namespace

TEST_F(SettingsViewTest, AFreshUserSeesTheDefaults) {
    const SettingsView view;
    EXPECT_TRUE(named<QCheckBox>(&view, "ejectWhenDoneSwitch")->isChecked());
    EXPECT_FALSE(named<QCheckBox>(&view, "thoroughVerifySwitch")->isChecked());
    EXPECT_FALSE(named<QCheckBox>(&view, "retroModeSwitch")->isChecked());
    for (const auto* control : view.findChildren<QCheckBox*>()) {
        EXPECT_FALSE(control->accessibleDescription().isEmpty()) << "readers get the caption";
    }
}

TEST_F(SettingsViewTest, EveryPreferenceWithALabelHasASwitchThatFollowsItAndNoOther) {
    const SettingsView view;
    for (const PreferenceRow& row : preferenceTable) {
        const auto* control = view.findChild<QCheckBox*>(QLatin1String(row.key) + "Switch");
        ASSERT_EQ(control != nullptr, row.section != nullptr) << row.key;
        if (control != nullptr) {
            EXPECT_EQ(control->text(), QString::fromUtf8(row.label));
            Preferences().set(row.preference, !row.byDefault);
            EXPECT_EQ(control->isChecked(), !row.byDefault) << row.key;
        }
    }
}

TEST_F(SettingsViewTest, ASwitchIsWrittenAtOnce) {
    const SettingsView view;
    named<QCheckBox>(&view, "ejectWhenDoneSwitch")->click();
    EXPECT_FALSE(Preferences().value(Preference::EjectWhenDone));
    named<QCheckBox>(&view, "thoroughVerifySwitch")->click();
    EXPECT_TRUE(Preferences().value(Preference::ThoroughVerify));
    named<QCheckBox>(&view, "retroModeSwitch")->click();
    EXPECT_TRUE(Preferences().value(Preference::RetroMode));
    const SettingsView another;
    EXPECT_TRUE(named<QCheckBox>(&another, "retroModeSwitch")->isChecked());
}

TEST_F(SettingsViewTest, ASwitchFollowsAChangeMadeElsewhere) {
    const SettingsView view;
    Preferences().set(Preference::EjectWhenDone, false);
    Preferences().set(Preference::ThoroughVerify, true);
    Preferences().set(Preference::RetroMode, true);
    EXPECT_FALSE(named<QCheckBox>(&view, "ejectWhenDoneSwitch")->isChecked());
    EXPECT_TRUE(named<QCheckBox>(&view, "thoroughVerifySwitch")->isChecked());
    EXPECT_TRUE(named<QCheckBox>(&view, "retroModeSwitch")->isChecked());
}

TEST_F(SettingsViewTest, ALineSaysThatASwitchCouldNotBeSavedAndGoesWhenItIs) {
    folder.write(QStringLiteral("config/Spindrift"), "in the way");
    SettingsView view;
    const FixedFrame frame(&view);
    const auto* problem = named<TextLabel>(&view, "settingsProblem");
    EXPECT_FALSE(problem->isVisible());
    named<QCheckBox>(&view, "retroModeSwitch")->click();
    EXPECT_TRUE(problem->isVisible());
    EXPECT_EQ(problem->text(), QStringLiteral("The settings could not be saved: Not a directory."));
    EXPECT_EQ(problem->role(), Appearance::Role::Red);
    const SettingsView another;
    EXPECT_FALSE(named<TextLabel>(&another, "settingsProblem")->isHidden());
    ASSERT_TRUE(QFile::remove(folder.path(QStringLiteral("config/Spindrift"))));
    named<QCheckBox>(&view, "ejectWhenDoneSwitch")->click();
    EXPECT_FALSE(problem->isVisible());
    EXPECT_TRUE(named<TextLabel>(&another, "settingsProblem")->isHidden());
}

TEST_F(SettingsViewTest, ItIs440WideAndItsCaptionsWrapInFull) {
    SettingsView view;
    const FixedFrame frame(&view);
    EXPECT_EQ(view.width(), 440);
    const auto captions = view.findChildren<TextLabel*>(QStringLiteral("sectionCaption"));
    ASSERT_EQ(captions.size(), 2);
    for (const TextLabel* caption : captions) {
        EXPECT_FALSE(caption->isCut());
        EXPECT_GE(caption->height(),
                  caption->lines(caption->width()).size() * TextLabel::lineHeight(caption->font()));
        EXPECT_EQ(caption->role(), Appearance::Role::Secondary);
    }
    EXPECT_GT(captions.at(0)->lines(captions.at(0)->width()).size(), 1);
}

TEST_F(SettingsViewTest, AVeryLargeFontCutsNothing) {
    const QFont before = QApplication::font();
    QFont large = before;
    large.setPointSizeF(18);
    QApplication::setFont(large);
    {
        SettingsView view;
        const FixedFrame frame(&view);
        for (const QCheckBox* control : view.findChildren<QCheckBox*>()) {
            EXPECT_GE(control->width(), control->sizeHint().width()) << qPrintable(control->text());
        }
        for (const TextLabel* caption :
             view.findChildren<TextLabel*>(QStringLiteral("sectionCaption"))) {
            EXPECT_GE(caption->height(), caption->heightForWidth(caption->width()));
        }
    }
    QApplication::setFont(before);
}
