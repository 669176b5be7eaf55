// What is known about the disc in the drive, with the button that ejects it.
//
// Owned by the main window; main thread. Shows what show() was given last.
#pragma once

#include <QWidget>

#include "OpticalDisc.h"

class IconButton;
class SymbolLabel;
class TextLabel;

class DiscSummaryView final : public QWidget {
    Q_OBJECT

public:
    explicit DiscSummaryView(QWidget* parent = nullptr);

    void show(const OpticalDisc& disc);
    void setEjectEnabled(bool enabled);
    using QWidget::show;

signals:
    void ejectRequested();

private:
    SymbolLabel* m_name;
    TextLabel* m_type;
    TextLabel* m_size;
    SymbolLabel* m_audioWarning;
    IconButton* m_eject;
};
