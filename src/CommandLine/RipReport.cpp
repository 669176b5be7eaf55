#include "RipReport.h"

#include <nlohmann/json.hpp>

#include "ISORipper.h"
#include "JsonText.h"
#include "OpticalDriveMonitor.h"
#include "ProgressPrinter.h"

namespace {

class JsonRipReport final : public RipReport {
public:
    JsonRipReport(const ISORipper& ripper, TextOutput& output)
        : m_ripper(ripper), m_output(output) {
        tell("isRunning", &ISORipper::isRunningChanged, &ISORipper::isRunning);
        tell("bytesWritten", &ISORipper::bytesWrittenChanged, &ISORipper::bytesWritten);
        tell("progress", &ISORipper::progressChanged, &ISORipper::progress);
        tell("speedBytesPerSecond", &ISORipper::speedBytesPerSecondChanged,
             &ISORipper::speedBytesPerSecond);
        tell("finished", &ISORipper::finishedChanged, &ISORipper::finished);
        connect(&ripper, &ISORipper::errorChanged, this, [this] {
            m_output.write(JsonText::line(JsonText::errorChange(m_ripper.error())));
        });
        tell("isVerifying", &ISORipper::isVerifyingChanged, &ISORipper::isVerifying);
        connect(&ripper, &ISORipper::verifyStatusChanged, this,
                [this] { print("verifyStatus", JsonText::verifyStatus(m_ripper.verifyStatus())); });
        connect(&ripper, &ISORipper::lastRipAverageBytesPerSecondChanged, this, [this] {
            const auto& average = m_ripper.lastRipAverageBytesPerSecond();
            print("lastRipAverageBytesPerSecond",
                  average ? nlohmann::ordered_json(*average) : nlohmann::ordered_json(nullptr));
        });
    }

    void say(const QString&) override {}
    void end() override {}

private:
    template <typename Signal, typename T>
    void tell(const char* property, Signal changed, T (ISORipper::*value)() const) {
        connect(&m_ripper, changed, this,
                [this, property, value] { print(property, (m_ripper.*value)()); });
    }

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
        const auto& disc = m_monitor.disc();
        return {m_ripper.progress(), m_ripper.bytesWritten(),
                disc ? disc->totalBytes : std::nullopt, m_ripper.speedBytesPerSecond()};
    }

    const ISORipper& m_ripper;
    const OpticalDriveMonitor& m_monitor;
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
