// A disc tool as a built program: started, watched, answered for; no Qt.
//
// Used by one thread. A tool that is still running at the end is killed and waited for.
#pragma once

#include <sys/types.h>

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <utility>
#include <vector>

class ToolRun final {
public:
    using Environment = std::vector<std::pair<std::string, std::string>>;

    struct Result {
        int status = 0;  // the exit status; the negative number of the signal that killed it
        std::string out;
        std::string err;
        std::uint64_t diskBytes = 0;  // what it read from block devices
    };

    // Starts the program. prepare runs in the child before the program does.
    ToolRun(const std::string& program, const std::vector<std::string>& arguments,
            const Environment& environment = {}, const std::function<void()>& prepare = {});
    ~ToolRun();
    ToolRun(const ToolRun&) = delete;
    ToolRun& operator=(const ToolRun&) = delete;

    // Starts it and waits for its end.
    static Result run(const std::string& program, const std::vector<std::string>& arguments,
                      const Environment& environment = {},
                      const std::function<void()>& prepare = {});

    // The next line of its standard output, without the newline; absent at the end.
    std::optional<std::string> readLine();
    // Stops reading its standard output.
    void closeOutput();
    void signal(int number) const;
    // Waits for its end; the output is what readLine() has not given yet.
    Result wait();

    // The built hdiutil or shasum.
    static std::string tool(const std::string& name);

private:
    pid_t m_child = -1;
    int m_out = -1;
    int m_err = -1;
    std::string m_buffer;
};
