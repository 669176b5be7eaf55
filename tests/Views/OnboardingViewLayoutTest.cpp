// Where the parts of the guide stand, and in which type and colour.
#include <gmock/gmock.h>

#include <QApplication>
#include <QEvent>
#include <QLabel>
#include <QLayout>
#include <QPushButton>

#include "Divider.h"
#include "OnboardingView.h"
#include "SheetLayout.h"
#include "StatusPill.h"
#include "SymbolIcon.h"
#include "SymbolLabel.h"
#include "TextLabel.h"
#include "TextStyle.h"

namespace {

using Appearance::Role;
using TextStyle::Style;

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
