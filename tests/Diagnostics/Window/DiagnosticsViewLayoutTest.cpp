// Where the parts of the diagnostics sheet stand, and in which type and colour.
#include <gmock/gmock.h>

#include <QLayout>
#include <QPushButton>

#include "DiagnosticsStore.h"
#include "DiagnosticsView.h"
#include "Divider.h"
#include "OpticalDriveMonitor.h"
#include "SheetLayout.h"
#include "StubTools.h"
#include "TestFolder.h"
#include "TextStyle.h"

namespace {

using Appearance::Role;
using TextStyle::Style;

class DiagnosticsLayoutTest : public testing::Test {
protected:
    DiagnosticsLayoutTest() {
        StubTools::write(m_folder, QStringLiteral("/usr/bin/drutil"),
                         "cat <<'X'\n Vendor   Product           Rev \n ACME     Fast Burner "
                         "2000  1.02\n\n  Type: DVD-ROM   Name: /dev/disk4\nX");
        StubTools::write(m_folder, QStringLiteral("/usr/sbin/diskutil"), "exit 1");
        m_monitor.poll();
    }
    DiagnosticsView& show() {
        m_view = std::make_unique<DiagnosticsView>(m_monitor, m_store, nullptr);
        layOut(*m_view);
        return *m_view;
    }

    TestFolder m_folder;
    OpticalDriveMonitor m_monitor;
    DiagnosticsStore m_store;
    std::unique_ptr<DiagnosticsView> m_view;
};

TEST_F(DiagnosticsLayoutTest, ItsMarginsAreTwentyAndItsPartsSixteenApart) {
    const DiagnosticsView& view = show();
    int bottom = -1;
    for (int i = 0; i < view.layout()->count(); ++i) {
        const QLayoutItem* part = view.layout()->itemAt(i);
        if (part->isEmpty()) {
            continue;
        }
        const QRect area = part->geometry();
        EXPECT_EQ(area.left(), 20) << i;
        EXPECT_EQ(area.right(), 480 - 20 - 1) << i;
        EXPECT_EQ(area.top(), bottom < 0 ? 20 : bottom + 1 + 16) << i;
        bottom = area.bottom();
    }
    EXPECT_EQ(bottom, 520 - 20 - 1);
    EXPECT_EQ(view.findChildren<Divider*>(QString(), Qt::FindDirectChildrenOnly).size(), 2);
}

TEST_F(DiagnosticsLayoutTest, TheHeaderAndTheDriveHaveTheirPlaces) {
    const DiagnosticsView& view = show();
    EXPECT_EQ(place(view, "diagnosticsTitle").left(), 20);
    EXPECT_EQ(place(view, "doneButton").right(), 480 - 20 - 1);
    EXPECT_EQ(place(view, "driveModel").left(), 20);
    const QRect row = place(view, "nicknameField").united(place(view, "saveNickname"));
    EXPECT_EQ(gapBelow(place(view, "driveModel"), row), 6);
    EXPECT_EQ(place(view, "saveNickname").right(), 480 - 20 - 1);
    EXPECT_EQ(place(view, "runSpeedTest").left(), 20);
}

TEST_F(DiagnosticsLayoutTest, TheTextsHaveTheirTypeAndColour) {
    m_store.record(SpeedTestResult::now(QStringLiteral("k"), QStringLiteral("m"),
                                        QStringLiteral("DVD"), 1, 1, SpeedTestResult::Source::rip));
    expectTypes(
        show(),
        {
            {"diagnosticsTitle", TextStyle::font(Style::Title2, QFont::Bold), Role::Primary},
            {"driveModel", TextStyle::font(Style::Headline), Role::Primary},
            {"noDrive", TextStyle::font(Style::Body), Role::Secondary},
            {"discLine", TextStyle::font(Style::Caption), Role::Secondary},
            {"bytesRead", TextStyle::font(Style::Caption), Role::Secondary},
            {"speedTestError", TextStyle::font(Style::Caption), Role::Red},
            {"historyTitle", TextStyle::font(Style::Headline), Role::Primary},
            {"historyEmpty", TextStyle::font(Style::Caption), Role::Secondary},
            {"rowDisc", TextStyle::font(Style::Caption, QFont::Bold), Role::Primary},
            {"rowDrive", TextStyle::font(Style::Caption2), Role::Secondary},
            {"rowDate", TextStyle::font(Style::Caption2), Role::Secondary},
            {"rowSpeed", TextStyle::font(Style::Caption, QFont::Bold), Role::Primary},
            {"rowMultiple", TextStyle::font(Style::Caption2), Role::Secondary},
            {"rowSource", TextStyle::font(Style::Caption2), Role::Secondary},
        });
    const DiagnosticsView& view = *m_view;
    const auto symbol = [&view](const char* name) {
        return view.findChild<SymbolLabel*>(QLatin1String(name))->symbol();
    };
    EXPECT_EQ(symbol("noDrive"), QStringLiteral("exclamationmark.triangle"));
    EXPECT_EQ(symbol("speedTestError"), QStringLiteral("xmark.octagon.fill"));
}

TEST_F(DiagnosticsLayoutTest, TheRowsStandTenApartAndTheirLinesTwo) {
    for (int i = 0; i < 2; ++i) {
        m_store.record(SpeedTestResult::now(QStringLiteral("k"), QStringLiteral("Drive"),
                                            QStringLiteral("DVD"), 4'700'000'000, 11'080'000,
                                            SpeedTestResult::Source::rip));
    }
    const DiagnosticsView& view = show();
    const auto* rows = view.findChild<QWidget*>(QStringLiteral("historyRows"));
    const auto dividers = rows->findChildren<Divider*>(QString(), Qt::FindDirectChildrenOnly);
    ASSERT_EQ(dividers.size(), 2) << "one below every row";
    const QRect first = place(view, "historyRow0");
    const QRect second = place(view, "historyRow1");
    EXPECT_EQ(gapBelow(first, place(view, dividers.at(0))), 10);
    EXPECT_EQ(gapBelow(place(view, dividers.at(0)), second), 10);
    EXPECT_EQ(gapBelow(second, place(view, dividers.at(1))), 10);
    for (const auto& [upper, lower] : {std::pair("rowDisc", "rowDrive"),
                                       {"rowDrive", "rowDate"},
                                       {"rowSpeed", "rowMultiple"},
                                       {"rowMultiple", "rowSource"}}) {
        EXPECT_EQ(gapBelow(place(view, upper), place(view, lower)), 2) << upper;
    }
    EXPECT_EQ(place(view, "rowDisc").top(), first.top()) << "aligned to the top edge";
    EXPECT_EQ(place(view, "rowSpeed").top(), first.top());
    EXPECT_EQ(place(view, "rowDisc").left(), 20);
    const int edge = place(view, "rowSpeed").right();
    EXPECT_EQ(place(view, "rowMultiple").right(), edge) << "aligned to the trailing edge";
    EXPECT_EQ(place(view, "rowSource").right(), edge);
    EXPECT_EQ(edge, first.right());
}

}  // namespace
