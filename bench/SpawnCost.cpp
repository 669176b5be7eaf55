// spawn-cost: what running commands costs a process of a given size.
//
// spawn-cost --megabytes M --rounds N COMMAND [ARGUMENT]... [ "+" COMMAND [ARGUMENT]... ]...
// Runs the commands one after the other, N times, in the way the program itself runs its tools;
// prints one line "CPU seconds, wall seconds", medians of the rounds. CPU is the commands' and
// this process's own together, so that what starting them costs is in it.
#include <sys/resource.h>

#include <QString>
#include <QStringList>
#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

#include "ShellCommand.h"

namespace {

double secondsOf(int who) {
    rusage usage{};
    getrusage(who, &usage);
    const auto seconds = [](const timeval& time) {
        return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_usec) / 1e6;
    };
    return seconds(usage.ru_utime) + seconds(usage.ru_stime);
}

double median(std::vector<double> values) {
    std::sort(values.begin(), values.end());
    return values[values.size() / 2];
}

}  // namespace

int main(int argc, char** argv) {
    std::size_t megabytes = 0;
    int rounds = 20;
    int first = 1;
    while (first + 1 < argc && std::strncmp(argv[first], "--", 2) == 0) {
        if (std::strcmp(argv[first], "--megabytes") == 0) {
            megabytes = std::strtoul(argv[first + 1], nullptr, 10);
        } else if (std::strcmp(argv[first], "--rounds") == 0) {
            rounds = std::atoi(argv[first + 1]);
        }
        first += 2;
    }
    std::vector<QStringList> commands(1);
    for (int i = first; i < argc; ++i) {
        if (std::strcmp(argv[i], "+") == 0) {
            commands.emplace_back();
        } else {
            commands.back() << QString::fromLocal8Bit(argv[i]);
        }
    }
    if (rounds < 1 || std::any_of(commands.begin(), commands.end(),
                                  [](const QStringList& command) { return command.isEmpty(); })) {
        std::fputs("Usage: spawn-cost --megabytes M --rounds N COMMAND [ARGUMENT]... [+ ...]\n",
                   stderr);
        return 64;
    }
    qputenv("SPINDRIFT_TOOL_ROOT", "/");  // the commands are given by their whole paths

    std::string ballast(megabytes << 20, 'x');  // every page is touched

    std::vector<double> cpu;
    std::vector<double> wall;
    for (int round = 0; round < rounds; ++round) {
        const double before = secondsOf(RUSAGE_CHILDREN) + secondsOf(RUSAGE_SELF);
        const auto start = std::chrono::steady_clock::now();
        for (const auto& command : commands) {
            const auto result = ShellCommand::run(command.first(), command.sliced(1));
            if (result.exitCode != 0) {
                std::fprintf(stderr, "spawn-cost: %s: status %d: %s\n", qPrintable(command.first()),
                             result.exitCode, qPrintable(result.standardError));
                return 1;
            }
        }
        wall.push_back(
            std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count());
        cpu.push_back(secondsOf(RUSAGE_CHILDREN) + secondsOf(RUSAGE_SELF) - before);
    }
    std::printf("%.6f %.6f\n", median(cpu), median(wall));
    return ballast.empty() ? 0 : ballast.back() - 'x';
}
