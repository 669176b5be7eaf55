// A practice drive and the built hdiutil working on it; no Qt.
#pragma once

#include <gmock/gmock.h>
#include <sys/resource.h>

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "ScratchFolder.h"
#include "ToolRun.h"

class ImagingFixture : public testing::Test {
protected:
    ImagingFixture();

    // Puts a disc into the drive; gives back its bytes.
    std::string insert(const std::string& content) const;
    // What the drive is and how it misbehaves.
    void drive(const std::string& json) const;

    // "hdiutil create" of the disc into this file of the test's folder.
    ToolRun::Result create(const std::string& image, const std::vector<std::string>& options = {},
                           const ToolRun::Environment& environment = {},
                           const std::function<void()>& prepare = {}) const;
    std::unique_ptr<ToolRun> start(const std::string& image,
                                   const std::vector<std::string>& options,
                                   const ToolRun::Environment& environment = {},
                                   const std::function<void()>& prepare = {}) const;
    // Reads progress lines until the first that tells of bytes copied; false when there is none.
    static bool readUntilItCopies(ToolRun& run);

    // The environment in which each read of the disc is logged, and what was logged.
    ToolRun::Environment readLog() const;
    std::vector<std::string> reads() const;

    // The bytes of "image.cdr"; absent when it is not there.
    std::optional<std::string> image() const {
        return ScratchFolder::read(folder.path("image.cdr"));
    }
    // The names of all images in the test's folder.
    std::vector<std::string> images() const;
    static std::vector<std::string> linesOf(const std::string& text);

    ScratchFolder folder;
};
