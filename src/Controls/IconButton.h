// A button without a bezel that shows only a symbol; its tool tip is also its accessible name.
//
// Owned by its parent widget; main thread. Follows its window's palette.
#pragma once

#include <QToolButton>

#include "Appearance.h"

class IconButton final : public QToolButton {
    Q_OBJECT

public:
    // The symbol's name and its size in points (body text: 13).
    IconButton(const QString& symbol, double points, Appearance::Role role, const QString& toolTip,
               QWidget* parent = nullptr);

    const QString& symbol() const { return m_symbol; }
    Appearance::Role role() const { return m_role; }

protected:
    void changeEvent(QEvent* event) override;

private:
    void tint();

    QString m_symbol;
    Appearance::Role m_role;
};
