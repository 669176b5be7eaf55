// A text in one of the program's styles and colours, that follows its window's palette.
//
// Owned by its parent widget; main thread. The text is plain unless setTextFormat() says otherwise:
// what comes from a disc or a tool is never taken for markup. A line that is too narrow for its
// text is cut with an ellipsis, and then the tool tip holds the whole text; screen readers always
// get the whole text. What a label has to add to its text stands in its tool tip, too, and is the
// description that screen readers offer.
#pragma once

#include <QLabel>

#include "Appearance.h"

class TextLabel : public QLabel {
    Q_OBJECT

public:
    // No: one line. Yes: as many lines as the text needs, broken anywhere if a word is too long.
    enum class Wrap { No, Yes };

    TextLabel(const QString& text, const QFont& font,
              Appearance::Role role = Appearance::Role::Primary, Wrap wrap = Wrap::No,
              QWidget* parent = nullptr);
    // In the font of the parent.
    explicit TextLabel(const QString& text, Appearance::Role role = Appearance::Role::Primary,
                       Wrap wrap = Wrap::No, QWidget* parent = nullptr);

    Appearance::Role role() const { return m_role; }
    void setRole(Appearance::Role role);
    // A wrapped text is cut after this many lines; 0: never.
    void setMaximumLines(int lines);
    // Where a single line is cut; at its end unless set.
    void setElideMode(Qt::TextElideMode mode);

    // Empty: nothing to add.
    void setAddition(const QString& addition);

    // The height of one line in this font, in device-independent pixels.
    static int lineHeight(const QFont& font);
    // What is drawn in this width, line by line.
    QStringList lines(int width) const;
    // Whether the widget's present size hides a piece of the text.
    bool isCut() const;

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;
    int heightForWidth(int width) const override;

protected:
    bool event(QEvent* event) override;
    void changeEvent(QEvent* event) override;
    void paintEvent(QPaintEvent* event) override;

private:
    void applyRole();
    // Only the program's own texts, which say so with setTextFormat().
    bool isMarkup() const;
    QStringList brokenLines(int width, int maximum) const;
    QString shownText() const;

    Appearance::Role m_role;
    int m_maximumLines = 0;
    Qt::TextElideMode m_elideMode = Qt::ElideRight;
    bool m_applying = false;
};
