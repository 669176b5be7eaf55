#include "TextLabel.h"

#include <QEvent>
#include <QHelpEvent>
#include <QPainter>
#include <QStyle>
#include <QTextLayout>
#include <QToolTip>
#include <cmath>

namespace {

// Ends of lines and tabulators would not show in a single line.
QString onOneLine(QString text) {
    for (QChar& character : text) {
        if (character.isSpace()) {
            character = QLatin1Char(' ');
        }
    }
    return text;
}

// Whole pixels for all of a line: QFontMetrics rounds, which can cut an underscore off.
int ascentOf(const QFont& font) {
    return static_cast<int>(std::ceil(QFontMetricsF(font).ascent()));
}

int widthOf(const QFontMetricsF& metrics, const QString& text) {
    return static_cast<int>(std::ceil(metrics.horizontalAdvance(text)));
}

// The least width at which this line is not broken: a last letter that reaches beyond its advance,
// as an r or a slash may, would be put on a line of its own.
int widthToWrapAt(const QFontMetricsF& metrics, const QString& line) {
    const qreal beyond = line.isEmpty() ? 0 : -metrics.rightBearing(line.back());
    return widthOf(metrics, line) + static_cast<int>(std::ceil(qMax(0.0, beyond)));
}

}  // namespace

TextLabel::TextLabel(const QString& text, const QFont& font, Appearance::Role role, Wrap wrap,
                     QWidget* parent)
    : TextLabel(text, role, wrap, parent) {
    setFont(font);
}

TextLabel::TextLabel(const QString& text, Appearance::Role role, Wrap wrap, QWidget* parent)
    : QLabel(parent), m_role(role) {
    setTextFormat(Qt::PlainText);
    setWordWrap(wrap == Wrap::Yes);
    setText(text);
    applyRole();
}

void TextLabel::setRole(Appearance::Role role) {
    if (m_role != role) {
        m_role = role;
        applyRole();
    }
}

void TextLabel::setMaximumLines(int lines) {
    m_maximumLines = lines;
    updateGeometry();
    update();
}

void TextLabel::setElideMode(Qt::TextElideMode mode) {
    m_elideMode = mode;
    update();
}

void TextLabel::setAddition(const QString& addition) {
    setAccessibleDescription(addition);
}

bool TextLabel::isMarkup() const {
    return textFormat() != Qt::PlainText;
}

QString TextLabel::shownText() const {
    // Tools end their texts with a newline, which must not cost a line here.
    qsizetype end = text().size();
    while (end > 0 && text().at(end - 1).isSpace()) {
        --end;
    }
    return text().left(end);
}

int TextLabel::lineHeight(const QFont& font) {
    // Hinting may push the lowest strokes one pixel below the descent.
    return ascentOf(font) + static_cast<int>(std::ceil(QFontMetricsF(font).descent())) + 1;
}

QStringList TextLabel::lines(int width) const {
    if (!wordWrap()) {
        return {QFontMetrics(font()).elidedText(onOneLine(shownText()), m_elideMode, width)};
    }
    return brokenLines(width, m_maximumLines);
}

QStringList TextLabel::brokenLines(int width, int maximum) const {
    QString text = shownText();
    text.replace(QLatin1String("\r\n"), QLatin1String("\n"));
    text.replace(QLatin1Char('\n'), QChar::LineSeparator);
    QTextLayout layout(text, font());
    QTextOption option;
    option.setWrapMode(QTextOption::WrapAtWordBoundaryOrAnywhere);
    layout.setTextOption(option);
    layout.beginLayout();
    QStringList result;
    for (QTextLine line = layout.createLine(); line.isValid(); line = layout.createLine()) {
        line.setLineWidth(qMax(1, width));
        const bool last = maximum > 0 && result.size() == maximum - 1;
        if (last && line.textStart() + line.textLength() < text.size()) {
            result << QFontMetrics(font()).elidedText(onOneLine(text.mid(line.textStart())),
                                                      Qt::ElideRight, width);
            break;
        }
        QString piece = text.mid(line.textStart(), line.textLength());
        if (piece.endsWith(QChar::LineSeparator)) {
            piece.chop(1);
        }
        result << onOneLine(piece);
    }
    layout.endLayout();
    return result;
}

bool TextLabel::isCut() const {
    const int width = contentsRect().width();
    return wordWrap() ? lines(width) != brokenLines(width, 0)
                      : lines(width).constFirst() != onOneLine(shownText());
}

QSize TextLabel::sizeHint() const {
    if (isMarkup()) {
        return QLabel::sizeHint();
    }
    const QFontMetricsF metrics(font());
    int width = 0;
    if (wordWrap()) {
        for (const QString& line : shownText().split(QLatin1Char('\n'))) {
            width = qMax(width, widthToWrapAt(metrics, line));
        }
    } else {
        width = widthOf(metrics, onOneLine(shownText()));
    }
    const QMargins margins = contentsMargins();
    width += margins.left() + margins.right();
    return {width, heightForWidth(width)};
}

QSize TextLabel::minimumSizeHint() const {
    if (isMarkup()) {
        return QLabel::minimumSizeHint();
    }
    const int width = QFontMetrics(font()).averageCharWidth() * 4;
    return {qMin(width, sizeHint().width()), lineHeight(font())};
}

int TextLabel::heightForWidth(int width) const {
    if (isMarkup()) {
        return QLabel::heightForWidth(width);
    }
    const QMargins margins = contentsMargins();
    const int height = lineHeight(font());
    const int inner = width - margins.left() - margins.right();
    const auto count = wordWrap() ? lines(inner).size() : 1;
    return static_cast<int>(qMax<qsizetype>(1, count)) * height + margins.top() + margins.bottom();
}

bool TextLabel::event(QEvent* event) {
    if (event->type() == QEvent::ToolTip && toolTip().isEmpty() && !isMarkup()) {
        QStringList paragraphs;
        if (isCut()) {
            paragraphs << shownText();
        }
        if (!accessibleDescription().isEmpty()) {
            paragraphs << accessibleDescription();
        }
        // As markup, so that a long text wraps; escaped, so that it says what it says.
        QString tip;
        for (const QString& paragraph : paragraphs) {
            tip += QStringLiteral("<p style='white-space:pre-wrap'>") + paragraph.toHtmlEscaped() +
                   QStringLiteral("</p>");
        }
        QToolTip::showText(static_cast<QHelpEvent*>(event)->globalPos(), tip, this);
        return true;
    }
    return QLabel::event(event);
}

void TextLabel::changeEvent(QEvent* event) {
    QLabel::changeEvent(event);
    if (event->type() == QEvent::PaletteChange || event->type() == QEvent::ParentChange) {
        applyRole();
    }
}

void TextLabel::paintEvent(QPaintEvent* event) {
    if (isMarkup()) {
        QLabel::paintEvent(event);
        return;
    }
    QPainter painter(this);
    painter.setFont(font());
    painter.setPen(palette().color(QPalette::Active, QPalette::WindowText));
    const QRect area = contentsRect();
    const QStringList shown = lines(area.width());
    const int height = lineHeight(font());
    const int total = static_cast<int>(shown.size()) * height;
    const bool top = alignment().testFlag(Qt::AlignTop) || total > area.height();
    int y = top ? area.top() : area.top() + (area.height() - total) / 2;
    // In the text's own direction, or a path's first slash would move to its end where the layout
    // runs from right to left.
    painter.setLayoutDirection(shownText().isRightToLeft() ? Qt::RightToLeft : Qt::LeftToRight);
    const Qt::Alignment visual = QStyle::visualAlignment(layoutDirection(), alignment());
    for (const QString& line : shown) {
        const int left = area.width() - widthOf(QFontMetricsF(font()), line);
        int x = area.left();
        if (visual.testFlag(Qt::AlignRight)) {
            x += left;
        } else if (visual.testFlag(Qt::AlignHCenter)) {
            x += left / 2;
        }
        painter.drawText(x, y + ascentOf(font()), line);
        y += height;
    }
}

void TextLabel::applyRole() {
    if (m_applying) {
        return;
    }
    m_applying = true;
    // Only the one role is set, so that all others still come from the parent.
    QPalette own;
    own.setColor(QPalette::WindowText, Appearance::color(m_role, palette()));
    setPalette(own);
    m_applying = false;
}

#include "moc_TextLabel.cpp"
