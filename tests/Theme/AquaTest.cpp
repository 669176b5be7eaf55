#include "Aqua.h"

#include <gtest/gtest.h>

#include <QFontDatabase>
#include <QFontInfo>

namespace {

TEST(AquaTest, TheSixColoursHaveTheirValues) {
    EXPECT_EQ(Aqua::blueTop(), QColor(168, 204, 255));
    EXPECT_EQ(Aqua::blueMid(), QColor(77, 143, 240));
    EXPECT_EQ(Aqua::blueBottom(), QColor(41, 102, 209));
    EXPECT_EQ(Aqua::grayTop(), QColor(255, 255, 255));
    EXPECT_EQ(Aqua::grayMid(), QColor(242, 242, 242));
    EXPECT_EQ(Aqua::grayBottom(), QColor(219, 219, 219));
}

TEST(AquaTest, TheColoursAreWithinHalfAStepOfTheirFractions) {
    const auto near = [](const QColor& colour, double red, double green, double blue) {
        EXPECT_NEAR(colour.redF(), red, 0.5 / 255 + 1e-4);
        EXPECT_NEAR(colour.greenF(), green, 0.5 / 255 + 1e-4);
        EXPECT_NEAR(colour.blueF(), blue, 0.5 / 255 + 1e-4);
        EXPECT_EQ(colour.alphaF(), 1.0F);
    };
    near(Aqua::blueTop(), 0.66, 0.80, 1.00);
    near(Aqua::blueMid(), 0.30, 0.56, 0.94);
    near(Aqua::blueBottom(), 0.16, 0.40, 0.82);
    near(Aqua::grayTop(), 1.00, 1.00, 1.00);
    near(Aqua::grayMid(), 0.95, 0.95, 0.95);
    near(Aqua::grayBottom(), 0.86, 0.86, 0.86);
}

TEST(AquaTest, TheColoursAreMadeOnce) {
    EXPECT_EQ(&Aqua::blueTop(), &Aqua::blueTop());
    EXPECT_EQ(&Aqua::grayBottom(), &Aqua::grayBottom());
}

TEST(AquaTest, TheFontAsksForLucidaGrandeFirstAndForSansSerifLast) {
    const QFont font = Aqua::font(13);
    EXPECT_EQ(font.families().first(), "LucidaGrande");
    EXPECT_EQ(font.families().last(), "sans-serif");
    EXPECT_EQ(font.styleHint(), QFont::SansSerif);
}

TEST(AquaTest, TheFirstInstalledFamilyIsTheOneThatIsShown) {
    const QFont font = Aqua::font(13);
    const QStringList installed = QFontDatabase::families();
    for (const QString& family : font.families()) {
        if (installed.contains(family)) {
            EXPECT_EQ(QFontInfo(font).family(), family);
            return;
        }
    }
    GTEST_SKIP() << "only the desktop's sans serif is installed here";
}

TEST(AquaTest, TheSiblingsOfLucidaGrandeComeBeforeFacesThatOnlyResembleIt) {
    const QStringList families = Aqua::font(13).families();
    EXPECT_EQ(families.mid(0, 3), QStringList({"LucidaGrande", "Lucida Grande", "Lucida Sans"}));
    EXPECT_LT(families.indexOf("Bitstream Vera Sans"), families.indexOf("DejaVu Sans"));
    EXPECT_LT(families.indexOf("DejaVu Sans"), families.indexOf("Noto Sans"));
}

TEST(AquaTest, APointOfTheFontIsAPointOfTheLayout) {
    EXPECT_EQ(Aqua::font(13).pixelSize(), 13);
    EXPECT_EQ(Aqua::font(20, QFont::Bold).pixelSize(), 20);
    EXPECT_EQ(Aqua::font(20, QFont::Bold).weight(), QFont::Bold);
    EXPECT_EQ(Aqua::font(11).weight(), QFont::Normal);
    EXPECT_EQ(QFontInfo(Aqua::font(11)).pixelSize(), 11);
}

}  // namespace
