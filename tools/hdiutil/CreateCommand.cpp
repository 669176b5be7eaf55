#include "CreateCommand.h"

#include <string_view>

std::optional<CreateCommand> CreateCommand::parse(std::span<const char* const> arguments,
                                                  std::string* problem) {
    constexpr std::string_view extension = ".cdr";
    CreateCommand command;
    std::string format;
    for (std::size_t i = 0; i < arguments.size(); ++i) {
        const std::string_view option = arguments[i];
        if (option == "-puppetstrings") {
            command.progress = true;
            continue;
        }
        std::string* value = option == "-srcdevice" ? &command.device
                             : option == "-format"  ? &format
                             : option == "-o"       ? &command.image
                                                    : nullptr;
        if (value == nullptr) {
            *problem = "unknown option " + std::string(option);
            return std::nullopt;
        }
        if (i + 1 == arguments.size() || *arguments[i + 1] == '\0') {
            *problem = std::string(option) + " needs a value";
            return std::nullopt;
        }
        if (!value->empty()) {
            *problem = std::string(option) + " is given twice";
            return std::nullopt;
        }
        *value = arguments[++i];
    }
    if (command.device.empty() || format.empty() || command.image.empty()) {
        *problem = "-srcdevice, -format and -o are all needed";
        return std::nullopt;
    }
    if (format != "UDTO") {
        *problem = "the only format is UDTO, not " + format;
        return std::nullopt;
    }
    // With ".cdr" added it would name a hidden file in that folder.
    if (command.image.ends_with('/')) {
        *problem = "-o needs the name of a file, not of the folder " + command.image;
        return std::nullopt;
    }
    if (!command.image.ends_with(extension)) {
        command.image += extension;
    }
    return command;
}
