// A capsule with a symbol and a short text, on a faint fill of its colour.
//
// Owned by its parent widget; main thread. Screen readers read its text and are told when it
// changes.
#pragma once

#include <QWidget>

#include "Appearance.h"

class SymbolIcon;
class TextLabel;

class StatusPill final : public QWidget {
    Q_OBJECT

public:
    explicit StatusPill(QWidget* parent = nullptr);

    // The colour of symbol and text, and the colour that fills the capsule at 12 % opacity.
    void show(const QString& symbol, const QString& text, Appearance::Role colour,
              Appearance::Role fill);

    QString text() const;

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    SymbolIcon* m_icon;
    TextLabel* m_text;
    Appearance::Role m_fill = Appearance::Role::Gray;
};
