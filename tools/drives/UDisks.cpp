#include "UDisks.h"

#include <sys/mount.h>
#include <systemd/sd-bus.h>

#include <array>
#include <cerrno>
#include <cstring>

#include "LateLibrary.h"
#include "Utf8.h"

namespace {

constexpr const char* service = "org.freedesktop.UDisks2";

struct BusLibrary {
    decltype(&sd_bus_open_system) open = nullptr;
    decltype(&sd_bus_flush_close_unref) close = nullptr;
    decltype(&sd_bus_call_method) call = nullptr;
    decltype(&sd_bus_get_property) property = nullptr;
    decltype(&sd_bus_message_read) read = nullptr;
    decltype(&sd_bus_message_unref) dropMessage = nullptr;
    decltype(&sd_bus_error_free) dropError = nullptr;

    bool load() {
        const LateLibrary library("libsystemd.so.0");
        return library.find("sd_bus_open_system", open) &&
               library.find("sd_bus_flush_close_unref", close) &&
               library.find("sd_bus_call_method", call) &&
               library.find("sd_bus_get_property", property) &&
               library.find("sd_bus_message_read", read) &&
               library.find("sd_bus_message_unref", dropMessage) &&
               library.find("sd_bus_error_free", dropError);
    }
};

// One connection to the system bus. An object, because the bus has several things to free.
class Connection {
public:
    Connection() {
        if (m_library.load() && m_library.open(&m_bus) < 0) {
            m_bus = nullptr;
        }
    }
    ~Connection() {
        if (m_bus != nullptr) {
            m_library.close(m_bus);
        }
    }
    Connection(const Connection&) = delete;
    Connection& operator=(const Connection&) = delete;

    // Calls a method that takes only the (here empty) dictionary of options.
    DiscService::Result call(const std::string& object, const char* interface, const char* method,
                             std::string* problem) {
        if (m_bus == nullptr) {
            return DiscService::Result::Unavailable;
        }
        sd_bus_error error{};
        const int result = m_library.call(m_bus, service, object.c_str(), interface, method, &error,
                                          nullptr, "a{sv}", 0);
        return finish(result, error, problem);
    }

    // Reads a property that is an object's path.
    DiscService::Result pathProperty(const std::string& object, const char* interface,
                                     const char* name, std::string* value, std::string* problem) {
        if (m_bus == nullptr) {
            return DiscService::Result::Unavailable;
        }
        sd_bus_error error{};
        sd_bus_message* reply = nullptr;
        int result = m_library.property(m_bus, service, object.c_str(), interface, name, &error,
                                        &reply, "o");
        const char* text = nullptr;
        if (result >= 0) {
            result = m_library.read(reply, "o", &text);
        }
        if (result >= 0 && text != nullptr) {
            *value = text;
        }
        m_library.dropMessage(reply);
        return finish(result, error, problem);
    }

private:
    DiscService::Result finish(int result, sd_bus_error& error, std::string* problem) {
        if (result >= 0) {
            return DiscService::Result::Done;
        }
        const std::string name = error.name == nullptr ? "" : error.name;
        *problem = error.message == nullptr ? std::strerror(-result) : Utf8::oneLine(error.message);
        m_library.dropError(&error);
        return UDisks::resultOf(name);
    }

    BusLibrary m_library;
    sd_bus* m_bus = nullptr;
};

}  // namespace

DiscService::Result UDisks::unmount(const std::string& device, std::string* problem) {
    return Connection().call(objectPath(device), "org.freedesktop.UDisks2.Filesystem", "Unmount",
                             problem);
}

DiscService::Result UDisks::eject(const std::string& device, std::string* problem) {
    Connection connection;
    std::string drive;
    const Result found = connection.pathProperty(
        objectPath(device), "org.freedesktop.UDisks2.Block", "Drive", &drive, problem);
    if (found != Result::Done) {
        return found;
    }
    return connection.call(drive, "org.freedesktop.UDisks2.Drive", "Eject", problem);
}

DiscService::Result UDisks::unmountFolder(const std::string& folder, std::string* problem) {
    if (umount2(folder.c_str(), UMOUNT_NOFOLLOW) == 0) {
        return Result::Done;
    }
    const int error = errno;
    *problem = std::strerror(error);
    return error == EBUSY ? Result::Busy : Result::Failed;
}

std::string UDisks::objectPath(std::string_view device) {
    constexpr std::array<char, 17> digits = {"0123456789abcdef"};
    std::string path = "/org/freedesktop/UDisks2/block_devices/";
    for (const char character : device) {
        if ((character >= '0' && character <= '9') || (character >= 'a' && character <= 'z') ||
            (character >= 'A' && character <= 'Z')) {
            path += character;
        } else {
            const auto byte = static_cast<unsigned char>(character);
            path += '_';
            path += digits[byte >> 4U];
            path += digits[byte & 0x0FU];
        }
    }
    return path;
}

DiscService::Result UDisks::resultOf(std::string_view errorName) {
    constexpr std::string_view busPrefix = "org.freedesktop.DBus.Error.";
    if (errorName == "org.freedesktop.UDisks2.Error.DeviceBusy") {
        return Result::Busy;
    }
    // Nothing to unmount is what the caller wanted; it looks at the mounts again anyway.
    if (errorName == "org.freedesktop.UDisks2.Error.NotMounted") {
        return Result::Done;
    }
    if (errorName.substr(0, busPrefix.size()) != busPrefix) {
        return Result::Failed;
    }
    const std::string_view kind = errorName.substr(busPrefix.size());
    const bool isAnswer = kind == "AccessDenied" || kind == "NoReply" || kind == "Timeout";
    return isAnswer ? Result::Failed : Result::Unavailable;
}
