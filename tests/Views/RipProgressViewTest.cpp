#include "RipProgressView.h"

#include <gtest/gtest.h>

#include <QAccessible>
#include <QProgressBar>

#include "AquaProgressBar.h"
#include "SymbolLabel.h"
#include "TextLabel.h"
#include "WindowSupport.h"

namespace {

using Appearance::Role;

RipState running(double progress) {
    RipState state;
    state.isRunning = true;
    state.progress = progress;
    return state;
}

RipState finished(std::optional<VerifyStatus> verdict = std::nullopt) {
    RipState state;
    state.progress = 1;
    state.finished = true;
    state.bytesWritten = 4700000000;
    state.verifyStatus = verdict;
    return state;
}

}  // namespace

TEST(RipStateTest, TheBarIsDeterminateFromZeroOn) {
    EXPECT_EQ(running(0).determinateValue(), 0.0);
    EXPECT_EQ(running(0.42).determinateValue(), 0.42);
    EXPECT_EQ(running(1).determinateValue(), 1.0);
}

TEST(RipStateTest, ANegativeProgressMakesTheBarIndeterminate) {
    EXPECT_FALSE(running(-1).determinateValue());
}

TEST(RipStateTest, AVerificationMakesTheBarIndeterminateWhateverTheProgress) {
    RipState state = finished();
    state.isVerifying = true;
    EXPECT_FALSE(state.determinateValue());
}

TEST(RipStateTest, TheSpeedFollowsTheAmountWhileARipRuns) {
    RipState state = running(0.3);
    state.bytesWritten = 1200000000;
    state.speedBytesPerSecond = 8400000.9;
    EXPECT_EQ(state.bytesWrittenText(), QStringLiteral("1.2 GB written \u00b7 8.4 MB/s"));
}

TEST(RipStateTest, WhileTheImageIsCopiedThereIsNoSpeed) {
    RipState state = running(1);
    state.bytesWritten = 1200000000;
    state.speedBytesPerSecond = 8400000;
    state.isCopying = true;
    EXPECT_EQ(state.bytesWrittenText(), QStringLiteral("1.2 GB written"));
}

TEST(RipProgressRemarkTest, ARemarkIsACaptionLineAndNothingWithoutOne) {
    RipProgressView view;
    RipState state = finished();
    view.show(state, false);
    const auto* line = view.findChild<TextLabel*>(QStringLiteral("ripRemarks"));
    ASSERT_NE(line, nullptr);
    EXPECT_TRUE(line->isHidden());
    state.remarks = QStringLiteral("the file system claims more");
    view.show(state, false);
    EXPECT_FALSE(line->isHidden());
    EXPECT_EQ(line->text(), state.remarks);
    EXPECT_EQ(line->accessibleDescription(), state.remarks);
}

TEST(RipStateTest, ASpeedOfZeroIsNotShown) {
    RipState state = running(0.3);
    state.bytesWritten = 999;
    EXPECT_EQ(state.bytesWrittenText(), QStringLiteral("999 bytes written"));
}

TEST(RipStateTest, TheSpeedDisappearsOnceTheToolHasEnded) {
    RipState state = finished();
    state.speedBytesPerSecond = 8400000;
    EXPECT_EQ(state.bytesWrittenText(), QStringLiteral("4.7 GB written"));
}

TEST(RipStateTest, ThereIsNothingToShowBeforeTheFirstRip) {
    EXPECT_FALSE(RipState().isWorthShowing());
    EXPECT_TRUE(running(0).isWorthShowing());
    EXPECT_TRUE(finished().isWorthShowing());
    RipState verifying;
    verifying.isVerifying = true;
    EXPECT_TRUE(verifying.isWorthShowing());
    RipState failed;
    failed.error = QStringLiteral("no");
    EXPECT_TRUE(failed.isWorthShowing());
}

TEST(RipStatusTest, AnErrorIsRedOnTwoLines) {
    RipState state;
    state.error = QStringLiteral("hdiutil exited with an error: exit code 1");
    EXPECT_EQ(RipStatus::of(state),
              (RipStatus{QStringLiteral("xmark.octagon.fill"), *state.error, Role::Red, 2}));
}

TEST(RipStatusTest, AnErrorHidesEverythingElse) {
    RipState state = finished(VerifyStatus::matched());
    state.isVerifying = true;
    state.error = QStringLiteral("broken");
    EXPECT_EQ(RipStatus::of(state)->text, QStringLiteral("broken"));
}

TEST(RipStatusTest, AVerificationIsSecondaryAndReplacesDone) {
    RipState state = finished();
    state.isVerifying = true;
    EXPECT_EQ(RipStatus::of(state),
              (RipStatus{QStringLiteral("checkmark.shield"), QStringLiteral("Verifying\u2026"),
                         Role::Secondary, 1}));
}

TEST(RipStatusTest, AFailedVerificationShowsItsReasonInOrangeOnTwoLines) {
    const QString reason = QStringLiteral("Could not compute checksum.");
    EXPECT_EQ(
        RipStatus::of(finished(VerifyStatus::failed(reason))),
        (RipStatus{QStringLiteral("exclamationmark.triangle.fill"), reason, Role::Orange, 2}));
}

TEST(RipStatusTest, AMismatchIsRed) {
    EXPECT_EQ(RipStatus::of(finished(VerifyStatus::mismatched())),
              (RipStatus{QStringLiteral("exclamationmark.triangle.fill"),
                         QStringLiteral("Verification mismatch"), Role::Red, 1}));
}

TEST(RipStatusTest, AMatchIsGreenAndReplacesDone) {
    EXPECT_EQ(RipStatus::of(finished(VerifyStatus::matched())),
              (RipStatus{QStringLiteral("checkmark.seal.fill"), QStringLiteral("Verified"),
                         Role::Green, 1}));
}

TEST(RipStatusTest, AFinishedRipWithoutAVerdictIsDone) {
    EXPECT_EQ(RipStatus::of(finished()), (RipStatus{QStringLiteral("checkmark.circle.fill"),
                                                    QStringLiteral("Done"), Role::Green, 1}));
}

TEST(RipStatusTest, ARunningRipSaysNothing) {
    EXPECT_FALSE(RipStatus::of(running(0.5)));
    EXPECT_FALSE(RipStatus::of(RipState()));
}

TEST(RipProgressViewTest, TheStandardBarShowsTheFraction) {
    RipProgressView view;
    view.QWidget::show();
    view.show(running(0.42), false);
    const auto* bar = named<QProgressBar>(&view, "ripProgressBar");
    EXPECT_TRUE(bar->isVisible());
    EXPECT_EQ(bar->minimum(), 0);
    EXPECT_NEAR(double(bar->value()) / bar->maximum(), 0.42, 0.001);
}

TEST(RipProgressViewTest, TheStandardBarIsBusyWhileTheFractionIsUnknown) {
    RipProgressView view;
    view.show(running(-1), false);
    const auto* bar = named<QProgressBar>(&view, "ripProgressBar");
    EXPECT_EQ(bar->minimum(), 0);
    EXPECT_EQ(bar->maximum(), 0);
    view.show(running(0.5), false);
    EXPECT_GT(bar->maximum(), 0);
}

TEST(RipProgressViewTest, RetroModeShowsTheGelBarInstead) {
    RipProgressView view;
    view.QWidget::show();
    view.show(running(0.25), true);
    const auto* aqua = named<AquaProgressBar>(&view, "aquaProgressBar");
    EXPECT_TRUE(aqua->isVisible());
    EXPECT_EQ(aqua->fraction(), 0.25);
    EXPECT_FALSE(shows(&view, "ripProgressBar"));
    view.show(running(-1), true);
    EXPECT_FALSE(aqua->fraction());
    view.show(running(0.5), false);
    EXPECT_FALSE(aqua->isVisible());
    EXPECT_TRUE(shows(&view, "ripProgressBar"));
}

TEST(RipProgressViewTest, TheLabelsFollowTheState) {
    RipProgressView view;
    view.QWidget::show();
    view.show(finished(VerifyStatus::mismatched()), false);
    EXPECT_EQ(textOf(&view, "bytesWritten"), QStringLiteral("4.7 GB written"));
    const auto* status = named<SymbolLabel>(&view, "ripStatus");
    EXPECT_TRUE(status->isVisible());
    EXPECT_EQ(status->text(), QStringLiteral("Verification mismatch"));
    EXPECT_EQ(status->symbol(), QStringLiteral("exclamationmark.triangle.fill"));
    EXPECT_EQ(status->role(), Role::Red);
    view.show(running(0), false);
    EXPECT_FALSE(status->isVisible());
}

TEST(RipProgressViewTest, ALongErrorIsCutAfterItsSecondLine) {
    RipState state;
    state.error = QStringLiteral("hdiutil exited with an error: ") +
                  QStringLiteral("the drive gave up reading ").repeated(20);
    RipProgressView view;
    view.setFixedWidth(420);
    view.show(state, false);
    const FixedFrame frame(&view);
    const TextLabel* label = named<SymbolLabel>(&view, "ripStatus")->textLabel();
    const QStringList lines = label->lines(label->width());
    ASSERT_EQ(lines.size(), 2);
    EXPECT_TRUE(lines.at(1).endsWith(QChar(0x2026)));
    EXPECT_TRUE(label->isCut());
    EXPECT_EQ(label->height(), 2 * TextLabel::lineHeight(label->font()));
    EXPECT_EQ(label->text(), *state.error) << "screen readers get the whole text";
}

TEST(RipProgressViewTest, AShortErrorTakesOneLine) {
    RipState state;
    state.error = QStringLiteral("Could not start rip: no\n");
    RipProgressView view;
    view.setFixedWidth(420);
    view.show(state, false);
    const FixedFrame frame(&view);
    const TextLabel* label = named<SymbolLabel>(&view, "ripStatus")->textLabel();
    EXPECT_EQ(label->lines(label->width()).size(), 1);
    EXPECT_FALSE(label->isCut());
}

TEST(RipProgressViewTest, AnErrorTellsWhereTheRestOfTheImageIs) {
    RipState state;
    state.error = QStringLiteral("no");
    state.leftImage = QStringLiteral("/images/spindrift-1.cdr");
    RipProgressView view;
    view.show(state, false);
    const TextLabel* label = named<SymbolLabel>(&view, "ripStatus")->textLabel();
    EXPECT_EQ(label->accessibleDescription(),
              QStringLiteral("What was read is left in \u201c/images/spindrift-1.cdr\u201d; see "
                             "\u201cspindrift-cli leftovers '/images'\u201d."));
    view.show(running(0), false);
    EXPECT_EQ(label->accessibleDescription(), QString());
}

TEST(RipProgressViewTest, TheBarHasANameAndAValueForScreenReaders) {
    RipProgressView view;
    view.QWidget::show();
    view.show(running(0.42), false);
    QAccessibleInterface* bar =
        QAccessible::queryAccessibleInterface(named<QProgressBar>(&view, "ripProgressBar"));
    ASSERT_NE(bar, nullptr);
    EXPECT_EQ(bar->text(QAccessible::Name), QStringLiteral("Progress"));
    ASSERT_NE(bar->valueInterface(), nullptr);
    EXPECT_EQ(bar->valueInterface()->currentValue().toInt(), 420);
    EXPECT_EQ(bar->valueInterface()->maximumValue().toInt(), 1000);
}

TEST(RipProgressViewTest, AStatusIsAnnouncedOnceWhenItChanges) {
    RipProgressView view;
    QStringList announced;
    QObject::connect(&view, &RipProgressView::statusChanged,
                     [&](const QString& text) { announced << text; });
    view.show(finished(), false);
    view.show(finished(), false);
    view.show(finished(VerifyStatus::matched()), false);
    view.show(running(0), false);
    view.show(finished(VerifyStatus::matched()), false);
    EXPECT_EQ(announced, (QStringList{QStringLiteral("Done"), QStringLiteral("Verified"),
                                      QStringLiteral("Verified")}));
}

TEST(RipProgressViewTest, ScreenReadersTakeTheStatusForANotification) {
    RipProgressView view;
    view.show(finished(), false);
    QAccessibleInterface* status =
        QAccessible::queryAccessibleInterface(named<SymbolLabel>(&view, "ripStatus")->textLabel());
    ASSERT_NE(status, nullptr);
    EXPECT_EQ(status->role(), QAccessible::Notification);
    EXPECT_EQ(status->text(QAccessible::Name), QStringLiteral("Done"));
}
