#include "ImagingFixture.h"

#include <cstdlib>
#include <filesystem>
#include <sstream>

ImagingFixture::ImagingFixture() {
    unsetenv("SPINDRIFT_PRACTICE_DRIVE");
    unsetenv("SPINDRIFT_PRACTICE_READ_LOG");
    std::filesystem::create_directory(folder.path("drive"));
}

std::string ImagingFixture::insert(const std::string& content) const {
    folder.write("drive/disc.iso", content);
    return content;
}

void ImagingFixture::drive(const std::string& json) const {
    folder.write("drive/drive.json", json);
}

std::unique_ptr<ToolRun> ImagingFixture::start(const std::string& image,
                                               const std::vector<std::string>& options,
                                               const ToolRun::Environment& environment,
                                               const std::function<void()>& prepare) const {
    std::vector<std::string> arguments = {"create", "-srcdevice", "/dev/practice0", "-format",
                                          "UDTO"};
    arguments.insert(arguments.end(), options.begin(), options.end());
    arguments.insert(arguments.end(), {"-o", folder.path(image)});
    ToolRun::Environment all = environment;
    all.emplace_back("SPINDRIFT_PRACTICE_DRIVE", folder.path("drive"));
    return std::make_unique<ToolRun>(ToolRun::tool("hdiutil"), arguments, all, prepare);
}

ToolRun::Result ImagingFixture::create(const std::string& image,
                                       const std::vector<std::string>& options,
                                       const ToolRun::Environment& environment,
                                       const std::function<void()>& prepare) const {
    return start(image, options, environment, prepare)->wait();
}

bool ImagingFixture::readUntilItCopies(ToolRun& run) {
    for (auto line = run.readLine(); line; line = run.readLine()) {
        if (line->starts_with("PERCENT:") && std::stod(line->substr(8)) > 0) {
            return true;
        }
    }
    return false;
}

ToolRun::Environment ImagingFixture::readLog() const {
    return {{"SPINDRIFT_PRACTICE_READ_LOG", folder.path("reads")}};
}

std::vector<std::string> ImagingFixture::reads() const {
    return linesOf(ScratchFolder::read(folder.path("reads")).value_or(""));
}

std::vector<std::string> ImagingFixture::images() const {
    std::vector<std::string> names;
    for (const auto& name : folder.list()) {
        if (name.ends_with(".cdr")) {
            names.push_back(name);
        }
    }
    return names;
}

std::vector<std::string> ImagingFixture::linesOf(const std::string& text) {
    std::vector<std::string> lines;
    std::istringstream stream(text);
    for (std::string line; std::getline(stream, line);) {
        lines.push_back(line);
    }
    return lines;
}
