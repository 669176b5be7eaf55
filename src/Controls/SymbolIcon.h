// A symbol on its own: drawn from the symbol set, tinted in a text colour, sharp at any scale.
//
// Owned by its parent widget; main thread. Decoration only: screen readers skip it.
#pragma once

#include <QWidget>

#include "Appearance.h"

class SymbolIcon final : public QWidget {
    Q_OBJECT

public:
    // The symbol's name ("opticaldisc") and its size in points (body text: 13).
    SymbolIcon(const QString& symbol, double points, Appearance::Role role,
               QWidget* parent = nullptr);

    const QString& symbol() const { return m_symbol; }
    Appearance::Role role() const { return m_role; }
    void setSymbol(const QString& symbol);
    void setRole(Appearance::Role role);

    QSize sizeHint() const override { return m_size; }

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    QString m_symbol;
    qreal m_points;
    Appearance::Role m_role;
    QSize m_size;
};
