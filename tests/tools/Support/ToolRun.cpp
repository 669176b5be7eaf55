#include "ToolRun.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <stdexcept>

namespace {

bool appendAvailable(int descriptor, std::string& text) {
    std::array<char, 4096> piece{};
    ssize_t count = 0;
    do {
        count = read(descriptor, piece.data(), piece.size());
    } while (count < 0 && errno == EINTR);
    if (count <= 0) {
        return false;
    }
    text.append(piece.data(), static_cast<std::size_t>(count));
    return true;
}

}  // namespace

ToolRun::ToolRun(const std::string& program, const std::vector<std::string>& arguments,
                 const Environment& environment, const std::function<void()>& prepare) {
    std::array<int, 2> out{};
    std::array<int, 2> err{};
    if (pipe2(out.data(), O_CLOEXEC) != 0 || pipe2(err.data(), O_CLOEXEC) != 0) {
        throw std::runtime_error("cannot make pipes");
    }
    m_child = fork();
    if (m_child < 0) {
        throw std::runtime_error("cannot start a process");
    }
    if (m_child == 0) {
        dup2(out[1], STDOUT_FILENO);
        dup2(err[1], STDERR_FILENO);
        for (const auto& [name, value] : environment) {
            setenv(name.c_str(), value.c_str(), 1);
        }
        // Found before prepare() may become a user who cannot enter the folders above it.
        const int file = open(program.c_str(), O_PATH | O_CLOEXEC);
        if (prepare) {
            prepare();
        }
        std::vector<char*> words = {const_cast<char*>(program.c_str())};
        for (const auto& argument : arguments) {
            words.push_back(const_cast<char*>(argument.c_str()));
        }
        words.push_back(nullptr);
        execveat(file, "", words.data(), environ, AT_EMPTY_PATH);
        _exit(127);
    }
    close(out[1]);
    close(err[1]);
    m_out = out[0];
    m_err = err[0];
}

ToolRun::~ToolRun() {
    if (m_child > 0) {
        kill(m_child, SIGKILL);
        waitpid(m_child, nullptr, 0);
    }
    closeOutput();
    close(m_err);
}

ToolRun::Result ToolRun::run(const std::string& program, const std::vector<std::string>& arguments,
                             const Environment& environment, const std::function<void()>& prepare) {
    return ToolRun(program, arguments, environment, prepare).wait();
}

std::optional<std::string> ToolRun::readLine() {
    while (true) {
        const auto end = m_buffer.find('\n');
        if (end != std::string::npos) {
            std::string line = m_buffer.substr(0, end);
            m_buffer.erase(0, end + 1);
            return line;
        }
        if (m_out < 0 || !appendAvailable(m_out, m_buffer)) {
            return std::nullopt;
        }
    }
}

void ToolRun::closeOutput() {
    if (m_out >= 0) {
        close(m_out);
        m_out = -1;
    }
}

void ToolRun::signal(int number) const {
    kill(m_child, number);
}

ToolRun::Result ToolRun::wait() {
    Result result;
    bool outOpen = m_out >= 0;
    bool errOpen = true;
    while (outOpen || errOpen) {
        std::array<pollfd, 2> waiting = {pollfd{outOpen ? m_out : -1, POLLIN, 0},
                                         pollfd{errOpen ? m_err : -1, POLLIN, 0}};
        poll(waiting.data(), waiting.size(), -1);
        if (waiting[0].revents != 0) {
            outOpen = appendAvailable(m_out, m_buffer);
        }
        if (waiting[1].revents != 0) {
            errOpen = appendAvailable(m_err, result.err);
        }
    }
    result.out = std::move(m_buffer);
    int status = 0;
    rusage usage{};
    wait4(m_child, &status, 0, &usage);
    m_child = -1;
    result.diskBytes = static_cast<std::uint64_t>(usage.ru_inblock) * 512;
    result.status = WIFEXITED(status) ? WEXITSTATUS(status) : -WTERMSIG(status);
    return result;
}

std::string ToolRun::tool(const std::string& name) {
    return TOOL_FOLDER "/" + name;
}
