#include "DiagnosticsView.h"

#include <gmock/gmock.h>

#include <QAccessible>
#include <QApplication>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QProgressBar>
#include <QPushButton>
#include <QScrollArea>
#include <QScrollBar>
#include <QShowEvent>
#include <QTest>

#include "Activation.h"
#include "Appearance.h"
#include "DiagnosticsStore.h"
#include "HistoryList.h"
#include "OpticalDriveMonitor.h"
#include "StubTools.h"
#include "TextLabel.h"
#include "Waiting.h"

namespace {

const char status[] =
    "cat <<'X'\n Vendor   Product           Rev \n ACME     Fast Burner 2000  1.02\n\n";

class DiagnosticsViewTest : public testing::Test {
protected:
    void drive(bool withDisc) {
        StubTools::write(m_folder, QStringLiteral("/usr/bin/drutil"),
                         QByteArray(status) + (withDisc ? "  Type: DVD-ROM   Name: /dev/disk4\nX"
                                                        : "  Type: No Media Inserted\nX"));
        StubTools::write(m_folder, QStringLiteral("/usr/sbin/diskutil"), "exit 1");
    }
    void noDrive() { StubTools::write(m_folder, QStringLiteral("/usr/bin/drutil"), "exit 1"); }
    // A monitor that lists a disc but whose drive has never been identified.
    void discWithoutDrive() {
        StubTools::write(m_folder, QStringLiteral("/usr/bin/drutil"),
                         "echo '  Type: DVD-ROM   Name: /dev/disk4'");
        StubTools::write(m_folder, QStringLiteral("/usr/sbin/diskutil"), "exit 1");
    }
    DiagnosticsView& show() {
        m_monitor.poll();
        m_view = std::make_unique<DiagnosticsView>(m_monitor, m_store, nullptr);
        m_view->show();
        return *m_view;
    }
    static QString text(const QWidget& parent, const char* name) {
        return parent.findChild<QLabel*>(QString::fromLatin1(name))->text();
    }
    template <typename T>
    T* find(const char* name) {
        return m_view->findChild<T*>(QString::fromLatin1(name));
    }
    static SpeedTestResult result(const QString& kind, double speed) {
        return SpeedTestResult::now(QStringLiteral("ACME|Fast Burner 2000|1.02"),
                                    QStringLiteral("ACME Fast Burner 2000 1.02"), kind,
                                    4'700'000'000, speed, SpeedTestResult::Source::rip);
    }

    TestFolder m_folder;
    OpticalDriveMonitor m_monitor;
    DiagnosticsStore m_store;
    std::unique_ptr<DiagnosticsView> m_view;
};

TEST_F(DiagnosticsViewTest, TheSheetHasItsFixedSizeAndItsTexts) {
    drive(true);
    DiagnosticsView& view = show();
    EXPECT_EQ(view.size(), QSize(480, 520));
    EXPECT_EQ(text(view, "diagnosticsTitle"), QStringLiteral("Drive Diagnostics"));
    EXPECT_EQ(find<QPushButton>("doneButton")->text(), QStringLiteral("Done"));
    EXPECT_TRUE(find<QPushButton>("doneButton")->isDefault());
    EXPECT_EQ(find<QPushButton>("saveNickname")->text(), QStringLiteral("Save"));
    EXPECT_EQ(find<QLineEdit>("nicknameField")->placeholderText(),
              QStringLiteral("Nickname (optional)"));
    EXPECT_EQ(find<QPushButton>("runSpeedTest")->text(), QStringLiteral("Run Speed Test"));
    EXPECT_EQ(text(view, "historyTitle"), QStringLiteral("History"));
    EXPECT_EQ(text(view, "historyEmpty"), QStringLiteral("No speed tests recorded yet."));
    EXPECT_EQ(text(view, "driveModel"), QStringLiteral("ACME Fast Burner 2000 1.02"));
    EXPECT_EQ(text(view, "discLine"), QStringLiteral("Disc in drive: DVD (DVD-ROM) (DVD)"));
}

TEST_F(DiagnosticsViewTest, WithoutADriveTheSectionSaysSoAndTheTestIsDisabledEvenWithADisc) {
    discWithoutDrive();
    DiagnosticsView& view = show();
    ASSERT_TRUE(m_monitor.disc().has_value());
    EXPECT_TRUE(find<QWidget>("noDrive")->isVisible());
    EXPECT_FALSE(find<QWidget>("nicknameField")->isVisible());
    EXPECT_FALSE(find<QPushButton>("runSpeedTest")->isEnabled());
    EXPECT_EQ(view.findChild<QWidget*>(QStringLiteral("noDrive"))->findChild<QLabel*>()->text(),
              QStringLiteral("No optical drive found."));
}

TEST_F(DiagnosticsViewTest, WithADriveAndNoDiscTheTestIsDisabled) {
    drive(false);
    DiagnosticsView& view = show();
    EXPECT_EQ(text(view, "discLine"), QStringLiteral("No disc inserted."));
    EXPECT_FALSE(find<QPushButton>("runSpeedTest")->isEnabled());
}

TEST_F(DiagnosticsViewTest, SavingANicknameRenamesTheOldRows) {
    drive(true);
    m_store.record(result(QStringLiteral("DVD"), 11'080'000));
    DiagnosticsView& view = show();
    EXPECT_EQ(text(view, "rowDrive"), QStringLiteral("ACME Fast Burner 2000 1.02"));
    auto* field = find<QLineEdit>("nicknameField");
    field->setText(QStringLiteral("  Office burner \t"));
    find<QPushButton>("saveNickname")->click();
    EXPECT_TRUE(
        waitUntil([&] { return text(view, "rowDrive") == QStringLiteral("Office burner"); }));
    EXPECT_EQ(field->text(), QStringLiteral("  Office burner \t"))
        << "the field keeps what was typed";

    field->setText(QStringLiteral("   "));
    find<QPushButton>("saveNickname")->click();
    EXPECT_TRUE(waitUntil(
        [&] { return text(view, "rowDrive") == QStringLiteral("ACME Fast Burner 2000 1.02"); }));
    EXPECT_TRUE(m_store.nicknames().isEmpty());
}

TEST_F(DiagnosticsViewTest, ReturnInTheNicknameFieldSavesAndDoesNotClose) {
    drive(true);
    DiagnosticsView& view = show();
    auto* field = find<QLineEdit>("nicknameField");
    view.activateWindow();
    field->setFocus();
    ASSERT_TRUE(waitUntil([&] { return field->hasFocus(); }));
    field->setText(QStringLiteral("Shelf"));
    QKeyEvent press(QEvent::KeyPress, Qt::Key_Return, Qt::NoModifier);
    QCoreApplication::sendEvent(field, &press);
    EXPECT_EQ(m_store.nickname(*m_monitor.driveIdentity()), QStringLiteral("Shelf"));
    EXPECT_TRUE(view.isVisible());
}

TEST_F(DiagnosticsViewTest, TheNicknameFieldFollowsTheDrive) {
    drive(true);
    m_monitor.poll();
    m_store.setNickname(QStringLiteral("Shelf"), *m_monitor.driveIdentity());
    show();
    auto* field = find<QLineEdit>("nicknameField");
    EXPECT_EQ(field->text(), QStringLiteral("Shelf"));
    field->setText(QStringLiteral("half typed"));
    StubTools::write(
        m_folder, QStringLiteral("/usr/bin/drutil"),
        "cat <<'X'\n Vendor   Product           Rev \n OTHER    Drive             9.99\nX");
    m_monitor.poll();
    EXPECT_EQ(field->text(), QString());
}

TEST_F(DiagnosticsViewTest, WhatIsTypedOutlivesAMinimisedWindow) {
    drive(true);
    DiagnosticsView& view = show();
    auto* field = find<QLineEdit>("nicknameField");
    field->setText(QStringLiteral("half typed"));
    // What the window system sends for a window that comes back.
    QShowEvent event;
    QSpontaneKeyEvent::setSpontaneous(&event);
    // Sending it would make it an event of the program's own.
    static_cast<QObject&>(view).event(&event);
    EXPECT_EQ(field->text(), QStringLiteral("half typed"));
}

TEST_F(DiagnosticsViewTest, ARowShowsDiscDriveDateSpeedMultipleAndSource) {
    drive(true);
    m_store.record(result(QStringLiteral("DVD"), 11'080'000.9));
    DiagnosticsView& view = show();
    EXPECT_EQ(text(view, "rowDisc"), QStringLiteral("DVD \u2022 4.7 GB"));
    EXPECT_EQ(text(view, "rowSpeed"), QStringLiteral("11.1 MB/s"));
    EXPECT_EQ(text(view, "rowMultiple"), QStringLiteral("8.0x"));
    EXPECT_EQ(text(view, "rowSource"), QStringLiteral("Rip"));
    EXPECT_FALSE(find<QWidget>("historyEmpty")->isVisible());
}

TEST_F(DiagnosticsViewTest, TheMultipleDependsOnTheKindOfDisc) {
    drive(true);
    m_store.record(result(QStringLiteral("Disc"), 300'000));
    m_store.record(result(QStringLiteral("BD"), 9'000'000));
    m_store.record(result(QStringLiteral("CD"), 1'200'000));
    DiagnosticsView& view = show();
    QStringList multiples;
    for (int row = 0; row < 3; ++row) {
        multiples << text(*view.findChild<QWidget*>(QStringLiteral("historyRow%1").arg(row)),
                          "rowMultiple");
    }
    EXPECT_EQ(multiples, (QStringList{QStringLiteral("8.0x"), QStringLiteral("2.0x"),
                                      QStringLiteral("2.0x")}));
}

TEST_F(DiagnosticsViewTest, AFinishedTestStandsAtTheTopOfTheHistory) {
    drive(true);
    m_store.record(result(QStringLiteral("DVD"), 11'080'000));
    StubTools::write(m_folder, QStringLiteral("/usr/bin/hdiutil"),
                     "for last; do :; done; printf 12345 > \"$last\"; echo PERCENT:50; exit 0");
    DiagnosticsView& view = show();
    find<QPushButton>("runSpeedTest")->click();
    ASSERT_TRUE(waitUntil([&] { return m_store.results().size() == 2; }));
    ASSERT_TRUE(waitUntil([&] {
        return text(*view.findChild<QWidget*>(QStringLiteral("historyRow0")), "rowSource") ==
               QStringLiteral("Speed Test");
    }));
    EXPECT_EQ(m_store.results().first().discSizeBytes, 5) << "unknown: what was read";
    EXPECT_TRUE(TestFolder::list(m_folder.temporary()).isEmpty());
}

TEST_F(DiagnosticsViewTest, AnUnknownPercentageShowsAnIndeterminateBarAndACancelButton) {
    drive(true);
    StubTools::write(m_folder, QStringLiteral("/usr/bin/hdiutil"),
                     "for last; do :; done; : > \"$last\"; echo PERCENT:-1; exec sleep 600");
    DiagnosticsView& view = show();
    find<QPushButton>("runSpeedTest")->click();
    ASSERT_TRUE(waitUntil([&] { return view.tester().progress() < 0; }));
    ASSERT_TRUE(waitUntil([&] { return find<QProgressBar>("speedTestBar")->maximum() == 0; }));
    EXPECT_TRUE(find<QWidget>("cancelSpeedTest")->isVisible());
    EXPECT_FALSE(find<QWidget>("runSpeedTest")->isVisible());
    EXPECT_EQ(text(view, "bytesRead"), QStringLiteral("Zero KB read"));
    find<QPushButton>("cancelSpeedTest")->click();
    EXPECT_TRUE(waitUntil([&] { return find<QWidget>("runSpeedTest")->isVisible(); }));
    EXPECT_TRUE(m_store.results().isEmpty());
    EXPECT_TRUE(waitUntil([&] { return TestFolder::list(m_folder.temporary()).isEmpty(); }));
}

TEST_F(DiagnosticsViewTest, CancelIsReadableInWhateverSchemeTheSheetChangesTo) {
    drive(true);
    DiagnosticsView& view = show();
    for (const auto scheme : {SystemAppearance::Scheme::Dark, SystemAppearance::Scheme::Light}) {
        view.setPalette(Appearance::palette(scheme));
        EXPECT_EQ(find<QPushButton>("cancelSpeedTest")->palette().color(QPalette::ButtonText),
                  Appearance::color(Appearance::Role::Destructive, scheme));
    }
}

TEST_F(DiagnosticsViewTest, ATestThatAnotherReaderKeepsFromTheDiscSaysSoBesideItsError) {
    drive(true);
    StubTools::write(m_folder, QStringLiteral("/usr/bin/hdiutil"), "exit 75");
    show();
    find<QPushButton>("runSpeedTest")->click();
    ASSERT_TRUE(waitUntil([&] { return find<QWidget>("speedTestError")->isVisible(); }));
    const auto* label = find<QWidget>("speedTestError")->findChild<QLabel*>();
    EXPECT_EQ(label->text(), QStringLiteral("Speed test failed (exit code 75)."));
    const auto reason =
        QStringLiteral("Another program is reading the disc. Try again when it has finished.");
    EXPECT_EQ(label->accessibleDescription(), reason);
}

TEST_F(DiagnosticsViewTest, AFailedTestShowsItsErrorUntilTheNextOne) {
    drive(true);
    StubTools::write(m_folder, QStringLiteral("/usr/bin/hdiutil"), "exit 1");
    DiagnosticsView& view = show();
    EXPECT_FALSE(find<QWidget>("speedTestError")->isVisible());
    find<QPushButton>("runSpeedTest")->click();
    ASSERT_TRUE(waitUntil([&] { return find<QWidget>("speedTestError")->isVisible(); }));
    EXPECT_EQ(find<QWidget>("speedTestError")->findChild<QLabel*>()->text(),
              QStringLiteral("Speed test failed (exit code 1)."));
    EXPECT_EQ(
        QAccessible::queryAccessibleInterface(find<QWidget>("speedTestError")->findChild<QLabel*>())
            ->role(),
        QAccessible::Notification)
        << "screen readers read it out when it appears";
    EXPECT_TRUE(view.isVisible());
}

TEST_F(DiagnosticsViewTest, DoneCancelsARunningTestAndNoTemporaryImageRemains) {
    drive(true);
    StubTools::write(m_folder, QStringLiteral("/usr/bin/hdiutil"),
                     "for last; do :; done; : > \"$last\"; echo PERCENT:5; exec sleep 600");
    DiagnosticsView& view = show();
    find<QPushButton>("runSpeedTest")->click();
    ASSERT_TRUE(waitUntil([&] { return view.tester().progress() > 0; }));
    ASSERT_FALSE(TestFolder::list(m_folder.temporary()).isEmpty());
    find<QPushButton>("doneButton")->click();
    EXPECT_FALSE(view.isVisible());
    m_view.reset();
    EXPECT_TRUE(waitUntil([&] { return TestFolder::list(m_folder.temporary()).isEmpty(); }));
    EXPECT_TRUE(m_store.results().isEmpty());
}

TEST_F(DiagnosticsViewTest, ManyResultsScrollAndKeepTheirOrder) {
    drive(true);
    for (int i = 0; i < 60; ++i) {
        m_store.record(result(QStringLiteral("CD"), 150'000.0 * i));
    }
    DiagnosticsView& view = show();
    EXPECT_EQ(text(*view.findChild<QWidget*>(QStringLiteral("historyRow0")), "rowMultiple"),
              QStringLiteral("59.0x"));
    EXPECT_EQ(view.size(), QSize(480, 520));
    const auto* area = view.findChild<QScrollArea*>(QStringLiteral("historyArea"));
    EXPECT_GT(area->widget()->height(), area->viewport()->height());
    EXPECT_LE(area->widget()->width(), area->viewport()->width());
}

TEST_F(DiagnosticsViewTest, TheHistoryStaysWhereItWasScrolledToWhenADriveIsRenamed) {
    drive(true);
    for (int i = 0; i < 60; ++i) {
        m_store.record(result(QStringLiteral("CD"), 150'000.0 * i));
    }
    show();
    auto* bar = find<QScrollArea>("historyArea")->verticalScrollBar();
    ASSERT_TRUE(waitUntil([&] { return bar->maximum() > 600; }));
    bar->setValue(600);
    m_store.setNickname(QStringLiteral("Shelf"), *m_monitor.driveIdentity());
    ASSERT_TRUE(
        waitUntil([&] { return find<QLabel>("rowDrive")->text() == QStringLiteral("Shelf"); }));
    EXPECT_EQ(bar->value(), 600);
}

TEST_F(DiagnosticsViewTest, TheFocusGoesFromRunToCancelAndBack) {
    drive(true);
    StubTools::write(m_folder, QStringLiteral("/usr/bin/hdiutil"),
                     "for last; do :; done; : > \"$last\"; echo PERCENT:5; exec sleep 600");
    DiagnosticsView& view = show();
    activate(&view);
    find<QWidget>("runSpeedTest")->setFocus();
    QTest::keyClick(find<QWidget>("runSpeedTest"), Qt::Key_Space);
    ASSERT_TRUE(waitUntil([&] { return view.tester().progress() > 0; }));
    EXPECT_TRUE(waitUntil([&] { return find<QWidget>("cancelSpeedTest")->hasFocus(); }));
    QTest::keyClick(find<QWidget>("cancelSpeedTest"), Qt::Key_Space);
    EXPECT_TRUE(waitUntil([&] { return find<QWidget>("runSpeedTest")->hasFocus(); }));
}

TEST_F(DiagnosticsViewTest, TheKeyboardVisitsEverythingInOrderAndIsSeenOnTheHistory) {
    Appearance::follow();
    drive(true);
    m_store.record(result(QStringLiteral("CD"), 150'000));
    DiagnosticsView& view = show();
    activate(&view);
    find<QWidget>("doneButton")->setFocus(Qt::TabFocusReason);
    QStringList visited;
    for (int i = 0; i < 5; ++i) {
        visited << QApplication::focusWidget()->objectName();
        QTest::keyClick(QApplication::focusWidget(), Qt::Key_Tab);
    }
    EXPECT_EQ(visited, (QStringList{"doneButton", "nicknameField", "saveNickname", "runSpeedTest",
                                    "historyArea"}));
    auto* area = find<QScrollArea>("historyArea");
    view.setAttribute(Qt::WA_KeyboardFocusChange);
    find<QWidget>("doneButton")->setFocus(Qt::TabFocusReason);
    const QImage without = view.grab().toImage();
    area->setFocus(Qt::TabFocusReason);
    const QImage with = view.grab().toImage();
    const QRect place(area->mapTo(&view, QPoint(0, 0)), area->size());
    const QPoint above(place.center().x(), place.top() - 4);
    EXPECT_NE(with.pixelColor(above), without.pixelColor(above));
    EXPECT_EQ(with.copy(place), without.copy(place)) << "the ring keeps clear of the rows";
}

}  // namespace
