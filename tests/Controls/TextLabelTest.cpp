#include "TextLabel.h"

#include <gtest/gtest.h>

#include <QAccessible>
#include <QApplication>
#include <QHelpEvent>
#include <QTextDocument>
#include <QToolTip>

#include "TextStyle.h"

namespace {

const QString ellipsis(QChar(0x2026));

}  // namespace

TEST(TextLabelTest, ATextIsNeverTakenForMarkup) {
    const TextLabel text(QStringLiteral("<b>BOLD</b> & co"));
    EXPECT_EQ(text.lines(10000), QStringList{QStringLiteral("<b>BOLD</b> & co")});
}

TEST(TextLabelTest, TheToolTipOfACutTextSaysWhatItSays) {
    TextLabel text(QStringLiteral("<b>BOLD</b> & co ").repeated(5));
    text.resize(60, 20);
    ASSERT_TRUE(text.isCut());
    text.show();
    QHelpEvent event(QEvent::ToolTip, QPoint(1, 1), QPoint(1, 1));
    QCoreApplication::sendEvent(&text, &event);
    QTextDocument shown;
    shown.setHtml(QToolTip::text());
    EXPECT_EQ(shown.toPlainText(), text.text().trimmed());
    QToolTip::hideText();
}

TEST(TextLabelTest, AnAdditionStandsInTheToolTipAndIsTheDescription) {
    TextLabel text(QStringLiteral("Failed"));
    text.setAddition(QStringLiteral("See <log>."));
    text.resize(text.sizeHint());
    text.show();
    const auto toolTip = [&] {
        QHelpEvent event(QEvent::ToolTip, QPoint(1, 1), QPoint(1, 1));
        QCoreApplication::sendEvent(&text, &event);
        QTextDocument shown;
        shown.setHtml(QToolTip::text());
        return shown.toPlainText();
    };
    EXPECT_EQ(toolTip(), QStringLiteral("See <log>."));
    text.resize(20, 20);
    EXPECT_EQ(toolTip(), QStringLiteral("Failed\nSee <log>."));
    const auto* interface = QAccessible::queryAccessibleInterface(&text);
    EXPECT_EQ(interface->text(QAccessible::Name), QStringLiteral("Failed"));
    EXPECT_EQ(interface->text(QAccessible::Description), QStringLiteral("See <log>."));
    QToolTip::hideText();
}

TEST(TextLabelTest, ScreenReadersGetATextThatLooksLikeMarkupAsItIs) {
    TextLabel text(QStringLiteral("<b>BOLD</b> & co"));
    EXPECT_EQ(QAccessible::queryAccessibleInterface(&text)->text(QAccessible::Name), text.text());
}

TEST(TextLabelTest, AnAmpersandIsNoKeyboardShortcut) {
    const TextLabel text(QStringLiteral("R&B"));
    EXPECT_EQ(text.lines(10000), QStringList{QStringLiteral("R&B")});
}

TEST(TextLabelTest, ASingleLineIsAsWideAsItsTextAndThenNotCut) {
    TextLabel text(QStringLiteral("Verification mismatch"));
    text.resize(text.sizeHint());
    EXPECT_FALSE(text.isCut());
    EXPECT_EQ(text.height(), TextLabel::lineHeight(text.font()));
    text.resize(text.width() - 10, text.height());
    EXPECT_TRUE(text.isCut());
    EXPECT_TRUE(text.lines(text.width()).at(0).endsWith(ellipsis));
}

TEST(TextLabelTest, LineEndsInASingleLineBecomeBlanks) {
    const TextLabel text(QStringLiteral("a\nb\tc\n"));
    EXPECT_EQ(text.lines(10000), QStringList{QStringLiteral("a b c")});
}

TEST(TextLabelTest, AWrappedTextKeepsItsLines) {
    const TextLabel text(QStringLiteral("a\nb\r\nc\n"), Appearance::Role::Primary,
                         TextLabel::Wrap::Yes);
    EXPECT_EQ(text.lines(10000),
              (QStringList{QStringLiteral("a"), QStringLiteral("b"), QStringLiteral("c")}));
}

TEST(TextLabelTest, AWordThatIsTooLongIsBroken) {
    const TextLabel text(QString(200, QLatin1Char('W')), Appearance::Role::Primary,
                         TextLabel::Wrap::Yes);
    const QStringList lines = text.lines(200);
    EXPECT_GT(lines.size(), 1);
    EXPECT_EQ(lines.join(QString()), QString(200, QLatin1Char('W')));
    for (const QString& line : lines) {
        EXPECT_LE(QFontMetrics(text.font()).horizontalAdvance(line), 200);
    }
}

TEST(TextLabelTest, AWrappedTextIsCutAfterItsMaximumOfLines) {
    TextLabel text(QStringLiteral("word ").repeated(100), Appearance::Role::Primary,
                   TextLabel::Wrap::Yes);
    text.setMaximumLines(2);
    const QStringList lines = text.lines(200);
    ASSERT_EQ(lines.size(), 2);
    EXPECT_TRUE(lines.at(1).endsWith(ellipsis));
    EXPECT_EQ(text.heightForWidth(200), 2 * TextLabel::lineHeight(text.font()));
}

TEST(TextLabelTest, AnEllipsisOfTheTextItselfIsNoCut) {
    TextLabel text(QStringLiteral("Verifying\u2026"));
    text.resize(text.sizeHint());
    EXPECT_FALSE(text.isCut());
}

TEST(TextLabelTest, AnEmptyTextHasTheHeightOfALine) {
    const TextLabel text{QString()};
    EXPECT_EQ(text.sizeHint().height(), TextLabel::lineHeight(text.font()));
}

TEST(TextLabelTest, ItsColourFollowsThePaletteOfItsWindow) {
    QWidget window;
    const auto* text = new TextLabel(QStringLiteral("a"), Appearance::Role::Secondary,
                                     TextLabel::Wrap::No, &window);
    for (const auto scheme : {SystemAppearance::Scheme::Dark, SystemAppearance::Scheme::Light}) {
        window.setPalette(Appearance::palette(scheme));
        EXPECT_EQ(text->palette().color(QPalette::WindowText),
                  Appearance::color(Appearance::Role::Secondary, scheme));
    }
}

TEST(TextLabelTest, ATextWithoutAFontOfItsOwnTakesItsParents) {
    QWidget window;
    const auto* plain =
        new TextLabel(QStringLiteral("a"), Appearance::Role::Primary, TextLabel::Wrap::No, &window);
    const auto* caption =
        new TextLabel(QStringLiteral("a"), TextStyle::font(TextStyle::Style::Caption),
                      Appearance::Role::Primary, TextLabel::Wrap::No, &window);
    QFont large;
    large.setPixelSize(40);
    window.setFont(large);
    EXPECT_EQ(plain->font().pixelSize(), 40);
    EXPECT_EQ(caption->font(), TextStyle::font(TextStyle::Style::Caption));
}

TEST(TextLabelTest, NothingOfALineIsCutOffAtItsBottom) {
    for (const double size : {6.9, 7.7, 8.5, 9.0, 10.0, 11.3}) {
        QFont font;
        font.setPointSizeF(size);
        TextLabel text(QStringLiteral("_gjpqy"), font);
        text.resize(text.sizeHint());
        const int height = text.height();
        const auto ink = [&text] {
            const QImage image = text.grab().toImage();
            int count = 0;
            for (int y = 0; y < image.height(); ++y) {
                for (int x = 0; x < image.width(); ++x) {
                    count += image.pixel(x, y) != image.pixel(image.width() - 1, 0) ? 1 : 0;
                }
            }
            return count;
        };
        text.setAlignment(Qt::AlignLeft | Qt::AlignTop);
        const int shown = ink();
        text.resize(text.width(), height + 10);
        EXPECT_EQ(ink(), shown) << size << " points: more room shows no more of the letters";
        EXPECT_GT(shown, 0);
    }
}

TEST(TextLabelTest, APathReadsTheSameInALayoutFromRightToLeft) {
    for (const auto wrap : {TextLabel::Wrap::No, TextLabel::Wrap::Yes}) {
        TextLabel text(QStringLiteral("/1.97 GB (8.4 MB/s)"), Appearance::Role::Primary, wrap);
        text.resize(text.sizeHint());
        const QImage usual = text.grab().toImage();
        QApplication::setLayoutDirection(Qt::RightToLeft);
        EXPECT_EQ(text.layoutDirection(), Qt::RightToLeft);
        EXPECT_EQ(text.grab().toImage(), usual);
        QApplication::setLayoutDirection(Qt::LeftToRight);
    }
}

TEST(TextLabelTest, AWrappingTextOfItsOwnWidthIsOnOneLineWhateverItsLastLetterIs) {
    for (int size = 8; size < 30; ++size) {
        for (char last = '!'; last <= '~'; ++last) {
            TextLabel text(QStringLiteral("The drive failed ") + QLatin1Char(last),
                           Appearance::Role::Primary, TextLabel::Wrap::Yes);
            QFont font = text.font();
            font.setPixelSize(size);
            text.setFont(font);
            EXPECT_EQ(text.lines(text.sizeHint().width()).size(), 1) << size << " " << last;
        }
    }
}
