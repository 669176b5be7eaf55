#include "RipReport.h"

#include <nlohmann/json.hpp>
#include <utility>

#include "ISORipper.h"
#include "JsonText.h"
#include "OpticalDriveMonitor.h"
#include "ProgressPrinter.h"

namespace {

class JsonRipReport final : public RipReport {
public:
    JsonRipReport(const ISORipper& ripper, TextOutput& output)
        : m_ripper(ripper), m_output(output) {
        const auto on = [this, &ripper](auto changed, auto print) {
            connect(&ripper, changed, this, print);
        };
        on(&ISORipper::isRunningChanged, [this] { print("isRunning", m_ripper.isRunning()); });
        on(&ISORipper::bytesWrittenChanged,
           [this] { print("bytesWritten", m_ripper.bytesWritten()); });
        on(&ISORipper::progressChanged, [this] { print("progress", m_ripper.progress()); });
        on(&ISORipper::speedBytesPerSecondChanged,
           [this] { print("speedBytesPerSecond", m_ripper.speedBytesPerSecond()); });
        on(&ISORipper::finishedChanged, [this] { print("finished", m_ripper.finished()); });
        on(&ISORipper::errorChanged,
           [this] { m_output.write(JsonText::line(JsonText::errorChange(m_ripper.error()))); });
        on(&ISORipper::isVerifyingChanged,
           [this] { print("isVerifying", m_ripper.isVerifying()); });
        on(&ISORipper::verifyStatusChanged,
           [this] { print("verifyStatus", JsonText::verifyStatus(m_ripper.verifyStatus())); });
        on(&ISORipper::lastRipAverageBytesPerSecondChanged, [this] {
            const auto& average = m_ripper.lastRipAverageBytesPerSecond();
            print("lastRipAverageBytesPerSecond",
                  average ? nlohmann::ordered_json(*average) : nlohmann::ordered_json(nullptr));
        });
    }

    void say(const QString&) override {}
    void end() override {}

private:
    void print(const char* property, nlohmann::ordered_json value) {
        m_output.write(JsonText::line(JsonText::change(property, std::move(value))));
    }

    const ISORipper& m_ripper;
    TextOutput& m_output;
};

class RipReportForPeople final : public RipReport {
public:
    RipReportForPeople(const ISORipper& ripper, const OpticalDriveMonitor& monitor,
                       TextOutput& output)
        : m_ripper(ripper), m_monitor(monitor), m_printer(output, [this] { return state(); }) {
        connect(&ripper, &ISORipper::isRunningChanged, this, [this] {
            if (m_ripper.isRunning()) {
                m_printer.start();
            } else {
                m_printer.stop();
            }
        });
        connect(&ripper, &ISORipper::bytesWrittenChanged, &m_printer, &ProgressPrinter::update);
        connect(&ripper, &ISORipper::objectWillChange, this, [this] {
            if (m_ripper.isCopying() && !std::exchange(m_saidCopying, true)) {
                m_printer.say(QStringLiteral("Copying the image to its place"));
                m_printer.start();
            }
        });
        connect(&ripper, &ISORipper::isVerifyingChanged, this, [this] {
            if (m_ripper.isVerifying()) {
                m_printer.say(QStringLiteral("Verifying: reading the disc again"));
            }
        });
    }

    void say(const QString& sentence) override { m_printer.say(sentence); }
    void end() override { m_printer.stop(); }

private:
    ProgressState state() const {
        if (m_ripper.isCopying()) {
            const auto copied =
                static_cast<double>(m_ripper.bytesWritten()) * m_ripper.copiedFraction();
            return {m_ripper.copiedFraction(), static_cast<qint64>(copied), m_ripper.bytesWritten(),
                    0};
        }
        const auto& disc = m_monitor.disc();
        return {m_ripper.progress(), m_ripper.bytesWritten(),
                disc ? disc->totalBytes : std::nullopt, m_ripper.speedBytesPerSecond()};
    }

    const ISORipper& m_ripper;
    const OpticalDriveMonitor& m_monitor;
    bool m_saidCopying = false;
    ProgressPrinter m_printer;
};

}  // namespace

std::unique_ptr<RipReport> RipReport::json(const ISORipper& ripper, TextOutput& output) {
    return std::make_unique<JsonRipReport>(ripper, output);
}

std::unique_ptr<RipReport> RipReport::forPeople(const ISORipper& ripper,
                                                const OpticalDriveMonitor& monitor,
                                                TextOutput& output) {
    return std::make_unique<RipReportForPeople>(ripper, monitor, output);
}

#include "moc_RipReport.cpp"
