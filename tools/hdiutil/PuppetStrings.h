// The progress that "hdiutil create -puppetstrings" prints: at most ten lines a second, each out at
// once, only when there is news.
//
// Used by one thread, which asks readerIsGone() now and then.
#pragma once

#include <chrono>
#include <cstdint>
#include <optional>
#include <string>

class PuppetStrings final {
public:
    // Between two lines; leaves room in each second for the last one, which does not wait.
    static constexpr std::chrono::milliseconds interval{125};

    // descriptor: where the lines go; absent: nowhere, then nobody is ever gone.
    explicit PuppetStrings(std::optional<int> descriptor) : m_descriptor(descriptor) {}

    void unknown() { print("PERCENT:-1\n"); }
    // Never above 100.
    void done(std::uint64_t bytes, std::uint64_t of);

    // Whether whoever read the lines has closed them.
    bool readerIsGone();

private:
    void print(const std::string& line);

    std::optional<int> m_descriptor;
    std::string m_last;
    bool m_gone = false;
};
