// The history of measured speeds, newest first, in a scrolling column.
//
// Owned by the diagnostics window, main thread. Borrows the store, which must outlive it.
#pragma once

#include <QString>
#include <QWidget>

class DiagnosticsStore;
class QScrollArea;
class QVBoxLayout;
struct SpeedTestResult;
class TextLabel;

class HistoryList final : public QWidget {
    Q_OBJECT

public:
    explicit HistoryList(const DiagnosticsStore& store, QWidget* parent = nullptr);

    // What scrolls; the keyboard's focus can be on it.
    QWidget* area() const;

    // Shows the store as it is now.
    void refresh();

    // A speed in bytes per second, truncated to whole bytes: "5.2 MB/s".
    static QString speedString(double bytesPerSecond);

private:
    QWidget* makeRow(const SpeedTestResult& result, int index);

    const DiagnosticsStore& m_store;
    TextLabel* m_empty;
    QScrollArea* m_area;
    QWidget* m_rows = nullptr;
};
