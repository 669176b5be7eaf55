// Why something could not be done: a kind for the program, a sentence for people. A plain value.
#pragma once

#include <string>

struct Failure {
    enum class Kind {
        Usage,        // the command line makes no sense
        NoDrive,      // there is no optical drive, or the device is none
        Medium,       // no disc, or one that cannot be read
        NoAccess,     // this user may not
        Busy,         // a program or a mount uses it
        Refused,      // the drive itself said no
        Unavailable,  // the service does not run or does not know the device
        System,       // an error of the operating system, or a setting that makes no sense
    };
    Kind kind = Kind::System;
    std::string sentence;

    // What this errno value says, with whom it is about before it: "/dev/sr0: Permission denied".
    static Failure ofErrno(int error);
    static Failure ofErrno(int error, const std::string& subject);

    bool operator==(const Failure&) const = default;
};
