// The panel that shows a rip under way and its outcome.
//
// Owned by the main window, which decides when it is on screen; main thread. It has no state but
// what show() was given last.
#pragma once

#include <QWidget>
#include <optional>

#include "Appearance.h"
#include "VerifyStatus.h"

class AquaProgressBar;
class ISORipper;
class QProgressBar;
class QVBoxLayout;
class SymbolLabel;
class TextLabel;

// The rip engine's published state, as a plain value.
struct RipState {
    bool isRunning = false;
    qint64 bytesWritten = 0;
    double progress = 0;  // 0 to 1, negative: not known
    double speedBytesPerSecond = 0;
    bool finished = false;
    std::optional<QString> error;  // the sentence that the user reads
    // What a failed rip read until then: all that there is, perhaps, of a disc that is dying.
    std::optional<QString> leftImage;
    bool isCopying = false;  // to the destination's file system; the disc has been read
    bool isVerifying = false;
    std::optional<VerifyStatus> verifyStatus;
    QString remarks;  // what the tool had to say about the disc; empty: nothing

    static RipState of(const ISORipper& ripper);

    // Whether there is anything for the panel to show.
    bool isWorthShowing() const { return isRunning || isVerifying || finished || error; }
    // The bar's fraction; absent: the bar is indeterminate.
    std::optional<double> determinateValue() const;
    // "1.2 GB written · 8.4 MB/s"
    QString bytesWrittenText() const;
};

// What the status label shows.
struct RipStatus {
    QString symbol;
    QString text;
    Appearance::Role role;
    int maximumLines;

    // Absent while there is nothing to say.
    static std::optional<RipStatus> of(const RipState& state);

    bool operator==(const RipStatus&) const = default;
};

class RipProgressView final : public QWidget {
    Q_OBJECT

public:
    explicit RipProgressView(QWidget* parent = nullptr);

    void show(const RipState& state, bool retro);
    using QWidget::show;

signals:
    // The status has another text now, which is not empty.
    void statusChanged(const QString& text);

private:
    void showBar(std::optional<double> value, bool retro);
    void showStatus(const std::optional<RipStatus>& status);

    QVBoxLayout* m_column;
    QProgressBar* m_bar;
    AquaProgressBar* m_aquaBar = nullptr;  // made when Retro Mode first needs it
    TextLabel* m_bytesWritten;
    SymbolLabel* m_status;
    TextLabel* m_remarks;
};
