// A text in one of the program's styles and colours, that follows its window's palette.
//
// Owned by its parent widget; main thread. The text is always plain: what comes from a disc or a
// tool is never taken for markup.
#pragma once

#include <QLabel>

#include "Appearance.h"

class TextLabel : public QLabel {
    Q_OBJECT

public:
    enum class Wrap { No, Yes };

    explicit TextLabel(const QString& text, const QFont& font,
                       Appearance::Role role = Appearance::Role::Primary, Wrap wrap = Wrap::No,
                       QWidget* parent = nullptr);

    Appearance::Role role() const { return m_role; }
    void setRole(Appearance::Role role);
    void setWrap(Wrap wrap);

protected:
    void changeEvent(QEvent* event) override;

private:
    void applyRole();

    Appearance::Role m_role;
    bool m_applying = false;
};
