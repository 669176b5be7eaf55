#include "SettingsView.h"

#include <gtest/gtest.h>

#include <QCheckBox>

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

TEST_F(SettingsViewTest, ASwitchIsWrittenAtOnce) {
    const SettingsView view;
    named<QCheckBox>(&view, "ejectWhenDoneSwitch")->click();
    EXPECT_FALSE(Preferences().ejectWhenDone());
    named<QCheckBox>(&view, "thoroughVerifySwitch")->click();
    EXPECT_TRUE(Preferences().thoroughVerify());
    named<QCheckBox>(&view, "retroModeSwitch")->click();
    EXPECT_TRUE(Preferences().retroMode());
    const SettingsView another;
    EXPECT_TRUE(named<QCheckBox>(&another, "retroModeSwitch")->isChecked());
}

TEST_F(SettingsViewTest, ASwitchFollowsAChangeMadeElsewhere) {
    const SettingsView view;
    Preferences().setEjectWhenDone(false);
    Preferences().setThoroughVerify(true);
    Preferences().setRetroMode(true);
    EXPECT_FALSE(named<QCheckBox>(&view, "ejectWhenDoneSwitch")->isChecked());
    EXPECT_TRUE(named<QCheckBox>(&view, "thoroughVerifySwitch")->isChecked());
    EXPECT_TRUE(named<QCheckBox>(&view, "retroModeSwitch")->isChecked());
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
