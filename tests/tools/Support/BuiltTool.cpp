#include "BuiltTool.h"

#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>
#include <stdexcept>

#include "ScratchFolder.h"

extern char** environ;

namespace {

std::vector<char*> pointers(std::vector<std::string>& texts) {
    std::vector<char*> result;
    for (std::string& text : texts) {
        result.push_back(text.data());
    }
    result.push_back(nullptr);
    return result;
}

}  // namespace

std::string BuiltTool::drutil() {
    return DRUTIL;
}

std::string BuiltTool::diskutil() {
    return DISKUTIL;
}

std::string BuiltTool::grantDiscAccess() {
    return GRANT_DISC_ACCESS;
}

ToolResult BuiltTool::run(const std::string& program, const std::vector<std::string>& arguments,
                          const Environment& environment) {
    std::map<std::string, std::string> variables;
    for (char** variable = environ; *variable != nullptr; ++variable) {
        const std::string text = *variable;
        const std::size_t equals = text.find('=');
        variables[text.substr(0, equals)] = text.substr(equals + 1);
    }
    variables.erase("SPINDRIFT_DRIVE");
    variables.erase("SPINDRIFT_PRACTICE_DRIVE");
    for (const auto& [name, value] : environment) {
        variables[name] = value;
    }
    std::vector<std::string> texts;
    for (const auto& [name, value] : variables) {
        texts.push_back(name + "=" + value);
    }
    std::vector<std::string> words = {program};
    words.insert(words.end(), arguments.begin(), arguments.end());

    // Files take any amount of output; a pipe would have to be read meanwhile.
    const ScratchFolder folder;
    const std::string output = folder.path("output");
    const std::string errors = folder.path("errors");
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_addopen(&actions, 0, "/dev/null", O_RDONLY, 0);
    posix_spawn_file_actions_addopen(&actions, 1, output.c_str(), O_WRONLY | O_CREAT, 0600);
    posix_spawn_file_actions_addopen(&actions, 2, errors.c_str(), O_WRONLY | O_CREAT, 0600);
    pid_t child = -1;
    const int failure = posix_spawnp(&child, program.c_str(), &actions, nullptr,
                                     pointers(words).data(), pointers(texts).data());
    posix_spawn_file_actions_destroy(&actions);
    if (failure != 0) {
        throw std::runtime_error("cannot start " + program);
    }
    int status = 0;
    waitpid(child, &status, 0);
    ToolResult result;
    result.status = WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
    result.output = ScratchFolder::read(output).value_or("");
    result.errors = ScratchFolder::read(errors).value_or("");
    return result;
}
