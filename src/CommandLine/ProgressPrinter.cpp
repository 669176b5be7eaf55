#include "ProgressPrinter.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace {

constexpr int terminalInterval = 200;  // milliseconds
constexpr int plainInterval = 5000;
constexpr qint64 longestSilence = 10000;  // milliseconds

int tenthOf(const ProgressState& state) {
    if (!std::isfinite(state.fraction) || state.fraction < 0) {
        return 0;
    }
    return static_cast<int>(std::floor(std::min(state.fraction, 1.0) * 10));
}

}  // namespace

ProgressPrinter::ProgressPrinter(TextOutput& output, std::function<ProgressState()> state,
                                 QObject* parent)
    : QObject(parent), m_output(output), m_state(std::move(state)) {
    m_timer.setInterval(output.isTerminal() ? terminalInterval : plainInterval);
    connect(&m_timer, &QTimer::timeout, this, &ProgressPrinter::update);
}

void ProgressPrinter::start() {
    m_printedTenth = 0;
    m_sincePrinted.start();
    m_timer.start();
    if (m_output.isTerminal()) {
        update();
    }
}

void ProgressPrinter::stop() {
    m_timer.stop();
    erase();
}

void ProgressPrinter::say(const QString& line) {
    erase();
    m_output.write(line + QLatin1Char('\n'));
}

void ProgressPrinter::update() {
    if (!m_timer.isActive()) {
        return;
    }
    const ProgressState state = m_state();
    if (m_output.isTerminal()) {
        draw(state);
        return;
    }
    const int tenth = tenthOf(state);
    if (tenth > m_printedTenth || m_sincePrinted.hasExpired(longestSilence)) {
        m_printedTenth = tenth;
        m_sincePrinted.restart();
        m_output.write(ProgressText::plain(state) + QLatin1Char('\n'));
    }
}

void ProgressPrinter::draw(const ProgressState& state) {
    // A line that fills the last column would wrap on some terminals.
    const QString line = ProgressText::forTerminal(state, m_output.columns() - 1);
    if (line != m_drawn) {
        m_output.write('\r' + line.toUtf8() + "\x1b[K");
        m_drawn = line;
    }
}

void ProgressPrinter::erase() {
    if (!m_drawn.isEmpty()) {
        m_output.write(QByteArray("\r\x1b[K"));
        m_drawn.clear();
    }
}

#include "moc_ProgressPrinter.cpp"
