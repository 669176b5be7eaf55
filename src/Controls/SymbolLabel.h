// A symbol with a text beside it, in one colour: "(!) No optical drive found."
//
// Owned by its parent widget; main thread. Screen readers read the text; the symbol is decoration.
#pragma once

#include <QWidget>

#include "Appearance.h"
#include "TextLabel.h"
#include "TextStyle.h"

class QVBoxLayout;
class SymbolIcon;

class SymbolLabel final : public QWidget {
    Q_OBJECT

public:
    SymbolLabel(const QString& symbol, const QString& text, const QFont& font,
                Appearance::Role role = Appearance::Role::Primary,
                TextLabel::Wrap wrap = TextLabel::Wrap::No, QWidget* parent = nullptr);
    // In the font of the parent.
    SymbolLabel(const QString& symbol, const QString& text,
                Appearance::Role role = Appearance::Role::Primary,
                TextLabel::Wrap wrap = TextLabel::Wrap::No, QWidget* parent = nullptr);

    QString text() const { return m_text->text(); }
    const QString& symbol() const;
    Appearance::Role role() const { return m_text->role(); }

    void setText(const QString& text);
    void setSymbol(const QString& symbol);
    void setRole(Appearance::Role role);

    // The text's own label, for object names and tests.
    TextLabel* textLabel() const { return m_text; }

protected:
    void changeEvent(QEvent* event) override;

private:
    void alignIcon();

    SymbolIcon* m_icon;
    TextLabel* m_text;
    QVBoxLayout* m_iconColumn;
};
