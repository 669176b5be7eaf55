// One "hdiutil create": images the medium into a new file and tells how it went.
//
// run() is called once. The copy has a thread of its own, so that progress and the end of its
// reader are noticed even while a drive does not answer.
#pragma once

#include <string>

#include "CreateCommand.h"
#include "WatchedParent.h"

class ImagingJob final {
public:
    explicit ImagingJob(CreateCommand command) : m_command(std::move(command)) {}

    // The exit status. When the reader of the progress lines or the watched parent goes away,
    // removes the image and ends the process.
    int run();

private:
    int imageDisc();
    int fail(const std::string& reason) const;

    const CreateCommand m_command;
    const WatchedParent m_parent;
};
