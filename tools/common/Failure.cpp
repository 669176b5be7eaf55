#include "Failure.h"

#include <cerrno>
#include <cstring>

Failure Failure::ofErrno(int error) {
    const bool denied = error == EACCES || error == EPERM;
    return {denied           ? Kind::NoAccess
            : error == EBUSY ? Kind::Busy
                             : Kind::System,
            std::strerror(error)};
}

Failure Failure::ofErrno(int error, const std::string& subject) {
    Failure failure = ofErrno(error);
    failure.sentence = subject + ": " + failure.sentence;
    return failure;
}
