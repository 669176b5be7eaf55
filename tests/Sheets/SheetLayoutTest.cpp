// Where the parts of the two sheets stand, and in which type and colour.
#include <gmock/gmock.h>

#include <QApplication>
#include <QEvent>
#include <QLabel>
#include <QLayout>
#include <QPushButton>

#include "DiagnosticsStore.h"
#include "DiagnosticsView.h"
#include "Divider.h"
#include "OnboardingView.h"
#include "OpticalDriveMonitor.h"
#include "StatusPill.h"
#include "StubTools.h"
#include "SymbolIcon.h"
#include "SymbolLabel.h"
#include "TestFolder.h"
#include "TextLabel.h"
#include "TextStyle.h"

namespace {

using Appearance::Role;
using TextStyle::Style;

struct Type {
    const char* name;
    QFont font;
    Role role;
};

void expectTypes(const QWidget& sheet, const std::vector<Type>& types) {
    for (const Type& expected : types) {
        auto* widget = sheet.findChild<QWidget*>(QLatin1String(expected.name));
        ASSERT_NE(widget, nullptr) << expected.name;
        const auto* label = qobject_cast<SymbolLabel*>(widget);
        const auto* text = label != nullptr ? label->textLabel() : qobject_cast<TextLabel*>(widget);
        ASSERT_NE(text, nullptr) << expected.name;
        EXPECT_EQ(text->font(), expected.font) << expected.name;
        EXPECT_EQ(text->role(), expected.role) << expected.name;
    }
}

// In the coordinates of the sheet.
QRect place(const QWidget& sheet, const QWidget* widget) {
    return {widget->mapTo(&sheet, QPoint(0, 0)), widget->size()};
}

QRect place(const QWidget& sheet, const char* name) {
    const auto* widget = sheet.findChild<QWidget*>(QLatin1String(name));
    if (widget == nullptr) {
        qFatal("no widget named %s", name);
    }
    return place(sheet, widget);
}

int gapBelow(const QRect& upper, const QRect& lower) {
    return lower.top() - upper.bottom() - 1;
}

void layOut(QWidget& sheet) {
    sheet.show();
    for (int i = 0; i < 3; ++i) {
        QCoreApplication::sendPostedEvents();
        QCoreApplication::processEvents();
    }
}

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

class GuideLayoutTest : public testing::Test {
protected:
    GuideLayoutTest()
        : view(OnboardingActions{[] {}, [] { return false; }, [](QWidget*) {}}, nullptr) {
        layOut(view);
    }

    QRect at(const char* name) const { return place(view, name); }

    OnboardingView view;
};

TEST_F(GuideLayoutTest, TheHeaderIsCentredWithTwelveBetweenAndTwentyFourAround) {
    EXPECT_EQ(view.width(), 460);
    EXPECT_EQ(at("applicationIcon").size(), QSize(72, 72));
    EXPECT_EQ(at("applicationIcon").top(), 24);
    EXPECT_EQ(at("applicationIcon").left(), (460 - 72) / 2);
    EXPECT_EQ(gapBelow(at("applicationIcon"), at("onboardingTitle")), 12);
    EXPECT_EQ(gapBelow(at("onboardingTitle"), at("onboardingReason")), 12);
    EXPECT_EQ(at("onboardingReason").left(), 24);
    EXPECT_EQ(at("onboardingReason").right(), 460 - 24 - 1);
    for (const char* name : {"onboardingTitle", "onboardingReason"}) {
        EXPECT_TRUE(
            view.findChild<QLabel*>(QLatin1String(name))->alignment().testFlag(Qt::AlignHCenter));
    }
    const auto dividers = view.findChildren<Divider*>();
    ASSERT_EQ(dividers.size(), 2);
    EXPECT_EQ(gapBelow(at("onboardingReason"), place(view, dividers.at(0))), 24);
    EXPECT_EQ(gapBelow(place(view, dividers.at(0)), at("stepNumber1")), 24);
    EXPECT_EQ(gapBelow(at("accessPill"), place(view, dividers.at(1))), 24);
    EXPECT_EQ(place(view, dividers.at(1)).width(), 460);
}

TEST_F(GuideLayoutTest, TheStepsStandFourteenApartBesideTheirNumbers) {
    for (int step = 1; step <= 3; ++step) {
        const auto part = [&](const char* name) {
            return at(QByteArray(name).append(QByteArray::number(step)).constData());
        };
        EXPECT_EQ(part("stepNumber").size(), QSize(24, 24));
        EXPECT_EQ(part("stepNumber").left(), 24);
        EXPECT_EQ(part("stepNumber").top(), part("stepTitle").top()) << "top-aligned";
        EXPECT_EQ(part("stepTitle").left(), 24 + 24 + 12);
        EXPECT_EQ(part("stepDetail").left(), 24 + 24 + 12);
        EXPECT_EQ(gapBelow(part("stepTitle"), part("stepDetail")), 2);
    }
    EXPECT_EQ(gapBelow(at("stepDetail1"), at("stepNumber2")), 14);
    EXPECT_EQ(gapBelow(at("stepDetail2"), at("stepNumber3")), 14);
    EXPECT_EQ(gapBelow(at("stepDetail3"), at("accessPill")), 14 + 4);
}

TEST_F(GuideLayoutTest, TheNumbersAreWhiteOnTheColourThatIsMadeForWhiteTexts) {
    for (const auto scheme : {SystemAppearance::Scheme::Light, SystemAppearance::Scheme::Dark}) {
        auto* number = view.findChild<QWidget*>(QStringLiteral("stepNumber1"));
        number->setPalette(Appearance::palette(scheme));
        const QImage image = number->grab().toImage();
        const QColor disc = image.pixelColor(3, image.height() / 2);
        EXPECT_EQ(disc, Appearance::palette(scheme).color(QPalette::Highlight));
    }
}

TEST_F(GuideLayoutTest, ThePillIsCentredAroundItsSymbolAndText) {
    const QRect pill = at("accessPill");
    EXPECT_NEAR(pill.center().x(), 230, 1);
    const auto* widget = view.findChild<StatusPill*>();
    const QRect icon = place(*widget, widget->findChild<SymbolIcon*>());
    const QRect text = place(*widget, widget->findChild<TextLabel*>());
    EXPECT_EQ(icon.left(), 12);
    EXPECT_EQ(text.left() - icon.right() - 1, 7);
    EXPECT_EQ(widget->width() - text.right() - 1, 12);
    EXPECT_EQ(qMin(icon.top(), text.top()), 6);
    EXPECT_EQ(widget->height() - qMax(icon.bottom(), text.bottom()) - 1, 6);
}

TEST_F(GuideLayoutTest, TheFooterHasTwentyAround) {
    const QRect skip = at("skipButton");
    const QRect primary = at("primaryButton");
    const QRect row = skip.united(primary);
    EXPECT_EQ(row.left(), 20);
    EXPECT_EQ(row.right(), 460 - 20 - 1);
    EXPECT_EQ(gapBelow(place(view, view.findChildren<Divider*>().at(1)), row), 20);
    EXPECT_EQ(view.height() - row.bottom() - 1, 20);
    EXPECT_NEAR(skip.center().y(), primary.center().y(), 1) << "vertically centred";
    EXPECT_TRUE(view.findChild<QPushButton*>(QStringLiteral("skipButton"))->isFlat());
}

TEST_F(GuideLayoutTest, TheTextsHaveTheirTypeAndColour) {
    std::vector<Type> types = {
        {"onboardingTitle", TextStyle::font(Style::Title, QFont::Bold), Role::Primary},
        {"onboardingReason", TextStyle::font(Style::Callout), Role::Secondary},
        {"pillText", TextStyle::font(Style::Caption, QFont::Medium), Role::Secondary},
    };
    for (const char* title : {"stepTitle1", "stepTitle2", "stepTitle3"}) {
        types.push_back({title, TextStyle::font(Style::Callout, QFont::DemiBold), Role::Primary});
    }
    for (const char* detail : {"stepDetail1", "stepDetail2", "stepDetail3"}) {
        types.push_back({detail, TextStyle::font(Style::Caption), Role::Secondary});
    }
    expectTypes(view, types);
}

TEST(LargeFontTest, NoButtonOfTheGuideIsCut) {
    const QFont before = QApplication::font();
    for (const double points : {18.0, 24.0}) {
        QFont large = before;
        large.setPointSizeF(points);
        QApplication::setFont(large);
        for (const bool granted : {false, true}) {
            OnboardingView guide({[] {}, [granted] { return granted; }, [](QWidget*) {}}, nullptr);
            layOut(guide);
            EXPECT_GE(guide.width(), 460);
            for (const QPushButton* button : guide.findChildren<QPushButton*>()) {
                EXPECT_GE(button->width(), button->sizeHint().width())
                    << qPrintable(button->text());
            }
        }
    }
    QApplication::setFont(before);
}

// The colour of the pixel, on white.
QColor fillOf(const StatusPill& pill, QPoint point) {
    QImage image(pill.size(), QImage::Format_RGB32);
    image.fill(Qt::white);
    const_cast<StatusPill&>(pill).render(&image, QPoint(), QRegion(), QWidget::DrawChildren);
    return image.pixelColor(point);
}

TEST_F(GuideLayoutTest, ThePillIsFilledWithTwelvePercentOfGrayOrGreen) {
    for (const bool granted : {false, true}) {
        const OnboardingView guide({[] {}, [granted] { return granted; }, [](QWidget*) {}},
                                   nullptr);
        const auto* pill = guide.findChild<StatusPill*>();
        const QColor colour =
            Appearance::color(granted ? Role::Green : Role::Gray, SystemAppearance::Scheme::Light);
        const QColor fill = fillOf(*pill, {pill->width() / 2, 2});
        EXPECT_NEAR(fill.red(), 255 - 0.12 * (255 - colour.red()), 1.5);
        EXPECT_NEAR(fill.green(), 255 - 0.12 * (255 - colour.green()), 1.5);
        EXPECT_NEAR(fill.blue(), 255 - 0.12 * (255 - colour.blue()), 1.5);
        EXPECT_EQ(fillOf(*pill, {0, 0}), QColor(Qt::white)) << "its ends are round";
        EXPECT_EQ(pill->findChild<SymbolIcon*>()->symbol(),
                  granted ? QStringLiteral("checkmark.seal.fill") : QStringLiteral("lock.fill"));
    }
}

}  // namespace
