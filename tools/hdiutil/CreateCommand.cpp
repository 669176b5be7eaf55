#include "CreateCommand.h"

#include <string_view>
#include <utility>

namespace {

Failure usageFailure(std::string sentence) {
    return {Failure::Kind::Usage, std::move(sentence)};
}

}  // namespace

Result<CreateCommand> CreateCommand::parse(std::span<const char* const> arguments) {
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
            return usageFailure("unknown option " + std::string(option));
        }
        if (i + 1 == arguments.size() || *arguments[i + 1] == '\0') {
            return usageFailure(std::string(option) + " needs a value");
        }
        if (!value->empty()) {
            return usageFailure(std::string(option) + " is given twice");
        }
        *value = arguments[++i];
    }
    if (command.device.empty() || format.empty() || command.image.empty()) {
        return usageFailure("-srcdevice, -format and -o are all needed");
    }
    if (format != "UDTO") {
        return usageFailure("the only format is UDTO, not " + format);
    }
    // With ".cdr" added it would name a hidden file in that folder.
    if (command.image.ends_with('/')) {
        return usageFailure("-o needs the name of a file, not of the folder " + command.image);
    }
    if (!command.image.ends_with(extension)) {
        command.image += extension;
    }
    return command;
}
