#include "DigestCommand.h"

#include <charconv>
#include <string_view>
#include <utility>

#include "FileDigest.h"

namespace {

Failure usageFailure(std::string sentence) {
    return {Failure::Kind::Usage, std::move(sentence)};
}

}  // namespace

Result<DigestCommand> DigestCommand::parse(std::span<const char* const> arguments) {
    DigestCommand command;
    bool options = true;
    for (std::size_t i = 0; i < arguments.size(); ++i) {
        const std::string_view argument = arguments[i];
        if (!options || argument == "-" || !argument.starts_with('-')) {
            command.files.emplace_back(argument);
        } else if (argument == "--") {
            options = false;
        } else if (argument == "--help") {
            command.help = true;
        } else if (argument == "-a" || argument == "--algorithm") {
            if (i + 1 == arguments.size()) {
                return usageFailure(std::string(argument) + " needs a value");
            }
            const std::string_view value = arguments[++i];
            const auto [end, error] =
                std::from_chars(value.data(), value.data() + value.size(), command.algorithm);
            if (error != std::errc() || end != value.data() + value.size() ||
                !FileDigest::isKnown(command.algorithm)) {
                return usageFailure("unknown algorithm " + std::string(value));
            }
        } else {
            return usageFailure("unknown option " + std::string(argument));
        }
    }
    if (command.files.empty()) {
        command.files.emplace_back("-");
    }
    return command;
}
