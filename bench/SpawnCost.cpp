// spawn-cost: what running commands costs, from a process of a given size.
//
// spawn-cost --megabytes M --rounds N COMMAND [ARGUMENT]... [ "+" COMMAND [ARGUMENT]... ]...
// Runs the commands one after the other, N times, with output to the null device; prints one line
// "user+system seconds of the children, wall seconds" per round as the medians.
#include <fcntl.h>
#include <spawn.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

namespace {

double childrenSeconds() {
    rusage usage{};
    getrusage(RUSAGE_CHILDREN, &usage);
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
    std::vector<std::vector<char*>> commands(1);
    for (int i = first; i < argc; ++i) {
        if (std::strcmp(argv[i], "+") == 0) {
            commands.back().push_back(nullptr);
            commands.emplace_back();
        } else {
            commands.back().push_back(argv[i]);
        }
    }
    commands.back().push_back(nullptr);
    if (commands.front().front() == nullptr || rounds < 1) {
        std::fputs("Usage: spawn-cost --megabytes M --rounds N COMMAND [ARGUMENT]... [+ ...]\n",
                   stderr);
        return 64;
    }

    std::string ballast(megabytes << 20, 'x');  // every page is touched
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_addopen(&actions, 1, "/dev/null", O_WRONLY, 0);
    posix_spawn_file_actions_addopen(&actions, 2, "/dev/null", O_WRONLY, 0);

    std::vector<double> cpu;
    std::vector<double> wall;
    for (int round = 0; round < rounds; ++round) {
        const double before = childrenSeconds();
        const auto start = std::chrono::steady_clock::now();
        for (auto& command : commands) {
            pid_t child = 0;
            if (posix_spawn(&child, command.front(), &actions, nullptr, command.data(), environ) !=
                0) {
                std::fprintf(stderr, "spawn-cost: cannot start %s\n", command.front());
                return 1;
            }
            int status = 0;
            waitpid(child, &status, 0);
        }
        wall.push_back(
            std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count());
        cpu.push_back(childrenSeconds() - before);
    }
    std::printf("%.6f %.6f\n", median(cpu), median(wall));
    return ballast.empty() ? 0 : ballast.back() - 'x';
}
