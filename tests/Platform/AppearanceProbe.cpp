// A program that follows the desktop's appearance: prints "light moving", "dark still" and so on,
// at first and after each change. The line "state" on standard input prints it again; the end of
// the input ends the program.
#include <poll.h>
#include <unistd.h>

#include <cstdio>
#include <string>

#include "SystemAppearance.h"

namespace {

std::string state() {
    const bool dark = SystemAppearance::current() == SystemAppearance::Scheme::Dark;
    return std::string(dark ? "dark" : "light") +
           (SystemAppearance::reducedMotion() ? " still" : " moving");
}

}  // namespace

int main() {
    SystemAppearance::prepare();
    // More calls change nothing.
    SystemAppearance::prepare();
    std::string last;
    while (true) {
        pollfd input = {STDIN_FILENO, POLLIN, 0};
        bool asked = false;
        if (poll(&input, 1, 5) > 0) {
            char text[64];
            if (read(STDIN_FILENO, text, sizeof(text)) <= 0) {
                return 0;
            }
            asked = true;
        }
        if (const std::string now = state(); now != last || asked) {
            std::puts(now.c_str());
            std::fflush(stdout);
            last = now;
        }
    }
}
