#include "DiscEjector.h"

#include <chrono>
#include <thread>

#include "ShellCommand.h"

bool DiscEjector::eject(const QString& bsdName) {
    return eject(bsdName, [](double seconds) {
        std::this_thread::sleep_for(std::chrono::duration<double>(seconds));
    });
}

bool DiscEjector::eject(const QString& bsdName, const Sleep& sleep) {
    constexpr int attempts = 3;
    for (int attempt = 1; attempt <= attempts; ++attempt) {
        if (attempt > 1) {
            sleep(1.0);
        }
        const auto result =
            ShellCommand::run(QStringLiteral("/usr/sbin/diskutil"),
                              {QStringLiteral("eject"), QStringLiteral("/dev/") + bsdName});
        if (result.exitCode == 0) {
            return true;
        }
    }
    const auto result =
        ShellCommand::run(QStringLiteral("/usr/bin/drutil"), {QStringLiteral("eject")},
                          {QStringLiteral("SPINDRIFT_DRIVE=") + bsdName});
    return result.exitCode == 0;
}
