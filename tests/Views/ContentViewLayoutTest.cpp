// Where the parts of the main window stand, and in which type, colour and symbol.
#include <gtest/gtest.h>

#include <QProgressBar>
#include <QPushButton>

#include "Appearance.h"
#include "IconButton.h"
#include "RipProgressView.h"
#include "SheetLayout.h"
#include "Symbol.h"
#include "SymbolIcon.h"
#include "TextStyle.h"
#include "WindowSupport.h"

namespace {

using Appearance::Role;
using TextStyle::Style;

class ContentViewLayoutTest : public testing::Test {
protected:
    ContentViewLayoutTest() {
        DriveStubs::disc(folder, {.type = "CD-ROM", .volumeName = "Audio CD"});
        window.open();
    }

    // In the coordinates of the content.
    QRect place(const char* name) const {
        const auto* widget = named<QWidget>(window.content, name);
        return {widget->mapTo(window.content, QPoint(0, 0)), widget->size()};
    }
    TextLabel* text(const char* name) const {
        auto* widget = named<QWidget>(window.content, name);
        const auto* label = qobject_cast<SymbolLabel*>(widget);
        return label != nullptr ? label->textLabel() : qobject_cast<TextLabel*>(widget);
    }

    TestFolder folder;
    HostWindow window;
};

int gapBeside(const QRect& left, const QRect& right) {
    return right.left() - left.right() - 1;
}

}  // namespace

TEST_F(ContentViewLayoutTest, TheTextsHaveTheirTypeAndColour) {
    const struct {
        const char* name;
        QFont font;
        Role role;
    } texts[] = {
        {"title", TextStyle::font(Style::Title, QFont::Bold), Role::Primary},
        {"subtitle", TextStyle::font(Style::Caption), Role::Secondary},
        {"discName", TextStyle::font(Style::Headline), Role::Primary},
        {"discType", TextStyle::font(Style::Caption), Role::Secondary},
        {"discSize", TextStyle::font(Style::Caption), Role::Secondary},
        {"audioWarning", TextStyle::font(Style::Caption), Role::Orange},
        {"noDrive", QFont(), Role::Secondary},
        {"noDisc", QFont(), Role::Secondary},
        {"destinationPath", QFont(), Role::Secondary},
        {"bytesWritten", TextStyle::font(Style::Caption), Role::Secondary},
        {"ripStatus", TextStyle::font(Style::Caption), Role::Secondary},
    };
    for (const auto& expected : texts) {
        EXPECT_EQ(text(expected.name)->font(), expected.font) << expected.name;
        EXPECT_EQ(text(expected.name)->role(), expected.role) << expected.name;
        EXPECT_EQ(text(expected.name)->palette().color(QPalette::WindowText),
                  Appearance::color(expected.role, SystemAppearance::Scheme::Light))
            << expected.name;
    }
}

TEST_F(ContentViewLayoutTest, TheSymbolsHaveTheirSizeAndColour) {
    const auto side = [](double points) { return Symbol::side(TextStyle::length(points)); };
    const auto* header = named<SymbolIcon>(window.content, "headerIcon");
    EXPECT_EQ(header->symbol(), QStringLiteral("opticaldiscdrive.fill"));
    EXPECT_EQ(header->role(), Role::Accent);
    EXPECT_EQ(header->size(), QSize(side(28), side(28)));
    const auto* folderIcon = named<SymbolIcon>(window.content, "destinationIcon");
    EXPECT_EQ(folderIcon->symbol(), QStringLiteral("folder"));
    EXPECT_EQ(folderIcon->role(), Role::Secondary);
    EXPECT_EQ(named<SymbolLabel>(window.content, "discName")->symbol(),
              QStringLiteral("opticaldisc"));

    const struct {
        const char* name;
        const char* symbol;
        double points;
        Role role;
    } buttons[] = {
        {"diagnosticsButton", "gauge.with.dots.needle.67percent", 18, Role::Primary},
        {"ejectButton", "eject.fill", 16, Role::Accent},
    };
    for (const auto& expected : buttons) {
        const auto* button = named<IconButton>(window.content, expected.name);
        EXPECT_EQ(button->symbol(), QString::fromLatin1(expected.symbol));
        EXPECT_EQ(button->iconSize(), QSize(side(expected.points), side(expected.points)));
        EXPECT_EQ(button->role(), expected.role);
        EXPECT_TRUE(button->autoRaise()) << "borderless";
    }
}

TEST_F(ContentViewLayoutTest, ASymbolOnAButtonFollowsThePaletteOfItsWindow) {
    for (const auto scheme : {SystemAppearance::Scheme::Dark, SystemAppearance::Scheme::Light}) {
        window.setPalette(Appearance::palette(scheme));
        const QImage icon = named<IconButton>(window.content, "ejectButton")
                                ->icon()
                                .pixmap(QSize(40, 40))
                                .toImage();
        EXPECT_EQ(icon.pixelColor(20, 20), Appearance::color(Role::Accent, scheme));
    }
}

TEST_F(ContentViewLayoutTest, TheHeaderRunsFromTheIconToTheDiagnostics) {
    EXPECT_EQ(place("headerIcon").left(), 20);
    EXPECT_EQ(place("title").left(), place("subtitle").left()) << "leading-aligned";
    EXPECT_GT(place("title").left(), place("headerIcon").right());
    EXPECT_EQ(place("diagnosticsButton").right(), 460 - 20 - 1);
}

TEST_F(ContentViewLayoutTest, TheLinesOfTheDiscStandFourApartAndItsPartsEight) {
    EXPECT_EQ(gapBelow(place("discName"), place("discType")), 4);
    EXPECT_EQ(gapBelow(place("discType"), place("discSize")), 4);
    EXPECT_EQ(gapBelow(place("discSize"), place("audioWarning")), 4);
    for (const char* line : {"discName", "discType", "discSize", "audioWarning"}) {
        EXPECT_EQ(place(line).left(), 20) << line;
    }
    EXPECT_EQ(place("ejectButton").right(), 460 - 20 - 1);
    EXPECT_EQ(gapBeside(place("audioWarning"), place("ejectButton")), 8);
}

TEST_F(ContentViewLayoutTest, TheButtonsStandAtTheRightEdge) {
    EXPECT_EQ(place("destinationIcon").left(), 20);
    EXPECT_GT(place("destinationPath").left(), place("destinationIcon").right());
    EXPECT_EQ(place("chooseButton").right(), 460 - 20 - 1);
    EXPECT_EQ(place("startButton").right(), 460 - 20 - 1);
}

TEST(RipPanelLayoutTest, TheRowStandsSixBelowTheBarWithTheStatusAtItsEnd) {
    RipProgressView view;
    view.setFixedWidth(420);
    RipState state;
    state.finished = true;
    view.show(state, false);
    const FixedFrame frame(&view);
    const auto place = [&view](const char* name) {
        const auto* widget = named<QWidget>(&view, name);
        return QRect(widget->mapTo(&view, QPoint(0, 0)), widget->size());
    };
    EXPECT_EQ(place("ripProgressBar").top(), 0);
    EXPECT_EQ(place("ripProgressBar").width(), 420);
    EXPECT_EQ(gapBelow(place("ripProgressBar"), place("bytesWritten")), 6);
    EXPECT_EQ(place("bytesWritten").left(), 0);
    EXPECT_EQ(place("ripStatus").right(), 420 - 1);
    EXPECT_EQ(place("ripStatus").top(), place("bytesWritten").top());
}
