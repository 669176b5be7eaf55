#include <sysexits.h>

#include <cstdlib>

#include "CreateCommand.h"
#include "DigestCommand.h"
#include "DiskTool.h"
#include "DriveTool.h"
#include "FileDigest.h"
#include "FuzzInput.h"
#include "FuzzTarget.h"

namespace {

// A machine without any device: nothing must be asked of one.
class NoDevices final : public DeviceAccess {
public:
    Result<MediumFacts> medium(const std::string&) override { std::abort(); }
    std::string label(const std::string&) override { std::abort(); }
    Result<void> eject(const std::string&) override { std::abort(); }
};

class NoService final : public DiscService {
public:
    Result<void> unmount(const std::string&) override { std::abort(); }
    Result<void> eject(const std::string&) override { std::abort(); }
    Result<void> unmountFolder(const std::string&) override { std::abort(); }
};

void ensureSane(const CommandOutcome& outcome) {
    ensure(outcome.status == EXIT_SUCCESS || outcome.status == EXIT_FAILURE ||
               outcome.status == EX_USAGE,
           "a status has a meaning");
    ensure(outcome.status != EXIT_SUCCESS || outcome.errors.empty(), "a success is not a failure");
    ensure(outcome.status == EXIT_SUCCESS || outcome.output.empty(), "a failure has no output");
    ensure(outcome.status != EX_USAGE || !outcome.errors.empty(), "a mistake is told");
}

}  // namespace

FUZZ_TARGET(ToolArguments) {
    std::vector<std::string> arguments;
    for (FuzzInput input(bytes); !input.isEmpty();) {
        // What the system hands over ends at a null byte.
        arguments.emplace_back(input.text().c_str());
    }
    std::vector<const char*> texts;
    for (const std::string& argument : arguments) {
        texts.push_back(argument.c_str());
    }
    if (const auto create = CreateCommand::parse(texts)) {
        ensure(!create->device.empty(), "an image is of a device");
        ensure(create->image.ends_with(".cdr"), "an image is a .cdr");
    }
    if (const auto digest = DigestCommand::parse(texts)) {
        ensure(!digest->files.empty(), "a digest is of a file");
        ensure(FileDigest::isKnown(digest->algorithm), "the algorithm is known");
    }
    NoDevices devices;
    NoService service;
    const SystemPaths nowhere{"/nonexistent", "/nonexistent", "/nonexistent", "/nonexistent"};
    const DriveQuery drives(nowhere, devices);
    Tray tray(nowhere, std::nullopt, devices, service);
    ensureSane(DriveTool(drives, tray).run(arguments));
    ensureSane(DiskTool(drives, tray).run(arguments));
}
