#include "UDisks.h"

#include <sys/mount.h>
#include <systemd/sd-bus.h>

#include <array>
#include <cerrno>
#include <cstring>

#include "DynamicLibrary.h"
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
        const DynamicLibrary library("libsystemd.so.0");
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
    Result<void> call(const std::string& object, const char* interface, const char* method) {
        if (m_bus == nullptr) {
            return unavailable();
        }
        sd_bus_error error{};
        const int result = m_library.call(m_bus, service, object.c_str(), interface, method, &error,
                                          nullptr, "a{sv}", 0);
        return result >= 0 ? Result<void>() : finish(result, error);
    }

    // Reads a property that is an object's path.
    Result<std::string> pathProperty(const std::string& object, const char* interface,
                                     const char* name) {
        if (m_bus == nullptr) {
            return unavailable();
        }
        sd_bus_error error{};
        sd_bus_message* reply = nullptr;
        int result = m_library.property(m_bus, service, object.c_str(), interface, name, &error,
                                        &reply, "o");
        const char* text = nullptr;
        if (result >= 0) {
            result = m_library.read(reply, "o", &text);
        }
        const std::string path = result >= 0 && text != nullptr ? text : "";
        m_library.dropMessage(reply);
        if (result < 0) {
            if (const auto read = finish(result, error); !read) {
                return read.failure();
            }
        }
        return path;
    }

private:
    static Failure unavailable() {
        return {Failure::Kind::Unavailable, "the disc service cannot be reached"};
    }

    Result<void> finish(int result, sd_bus_error& error) {
        const auto kind = UDisks::kindOf(error.name == nullptr ? "" : error.name);
        std::string text =
            error.message == nullptr ? std::strerror(-result) : Utf8::oneLine(error.message);
        m_library.dropError(&error);
        return kind ? Result<void>(Failure{*kind, std::move(text)}) : Result<void>();
    }

    BusLibrary m_library;
    sd_bus* m_bus = nullptr;
};

}  // namespace

Result<void> UDisks::unmount(const std::string& device) {
    return Connection().call(objectPath(device), "org.freedesktop.UDisks2.Filesystem", "Unmount");
}

Result<void> UDisks::eject(const std::string& device) {
    Connection connection;
    const auto drive =
        connection.pathProperty(objectPath(device), "org.freedesktop.UDisks2.Block", "Drive");
    if (!drive) {
        return drive.failure();
    }
    return connection.call(*drive, "org.freedesktop.UDisks2.Drive", "Eject");
}

Result<void> UDisks::unmountFolder(const std::string& folder) {
    if (umount2(folder.c_str(), UMOUNT_NOFOLLOW) == 0) {
        return {};
    }
    return Failure::ofErrno(errno);
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

std::optional<Failure::Kind> UDisks::kindOf(std::string_view errorName) {
    using Kind = Failure::Kind;
    constexpr std::string_view busPrefix = "org.freedesktop.DBus.Error.";
    if (errorName == "org.freedesktop.UDisks2.Error.DeviceBusy") {
        return Kind::Busy;
    }
    // Nothing to unmount is what the caller wanted; it looks at the mounts again anyway.
    if (errorName == "org.freedesktop.UDisks2.Error.NotMounted") {
        return std::nullopt;
    }
    if (!errorName.starts_with(busPrefix)) {
        return Kind::System;
    }
    const std::string_view name = errorName.substr(busPrefix.size());
    const bool isAnswer = name == "AccessDenied" || name == "NoReply" || name == "Timeout";
    return isAnswer ? Kind::System : Kind::Unavailable;
}
