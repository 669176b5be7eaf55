// paced-drive: mounts a folder whose one file, "disc", is read at the pace of a drive.
//
// paced-drive BACKING MOUNTPOINT [--rate BYTES_PER_SECOND] [--read-ahead BYTES] [--bad SECTOR]...
//     [--failure-seconds S] [--log FILE]
// Stays in the foreground; ends when the folder is unmounted. A loop device over the file makes a
// paced block device. The log has one line a command: "offset size ok|failed".
#define FUSE_USE_VERSION 35
#include <fcntl.h>
#include <fuse.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <string>
#include <thread>

#include "PacedDrive.h"

namespace {

struct Drive {
    int backing = -1;
    std::uint64_t size = 0;
    std::unique_ptr<PacedDrive> model;
    FILE* log = nullptr;
};
Drive drive;

const char discPath[] = "/disc";

double secondsNow() {
    return std::chrono::duration<double>(std::chrono::steady_clock::now().time_since_epoch())
        .count();
}

int getAttributes(const char* path, struct stat* attributes, fuse_file_info* /*file*/) {
    std::memset(attributes, 0, sizeof *attributes);
    if (std::strcmp(path, "/") == 0) {
        attributes->st_mode = S_IFDIR | 0755;
        attributes->st_nlink = 2;
        return 0;
    }
    if (std::strcmp(path, discPath) != 0) {
        return -ENOENT;
    }
    attributes->st_mode = S_IFREG | 0444;
    attributes->st_nlink = 1;
    attributes->st_size = static_cast<off_t>(drive.size);
    return 0;
}

int openFile(const char* path, fuse_file_info* file) {
    if (std::strcmp(path, discPath) != 0) {
        return -ENOENT;
    }
    file->direct_io = 1;
    return 0;
}

int readFile(const char* /*path*/, char* buffer, size_t size, off_t offset,
             fuse_file_info* /*file*/) {
    const auto start = static_cast<std::uint64_t>(offset);
    if (start >= drive.size || size == 0) {
        return 0;
    }
    const std::uint64_t wanted = std::min<std::uint64_t>(size, drive.size - start);
    const PacedDrive::Answer answer = drive.model->read(start, wanted, secondsNow());
    const double wait = answer.readyAt - secondsNow();
    if (wait > 0) {
        std::this_thread::sleep_for(std::chrono::duration<double>(wait));
    }
    if (drive.log != nullptr) {
        std::fprintf(drive.log, "%llu %llu %s\n", static_cast<unsigned long long>(start),
                     static_cast<unsigned long long>(wanted), answer.failed ? "failed" : "ok");
        std::fflush(drive.log);
    }
    if (answer.failed) {
        return -EIO;
    }
    const ssize_t got = pread(drive.backing, buffer, wanted, offset);
    return got < 0 ? -errno : static_cast<int>(got);
}

[[noreturn]] void usage() {
    std::fputs(
        "Usage: paced-drive BACKING MOUNTPOINT [--rate BYTES_PER_SECOND] [--read-ahead BYTES]\n"
        "                   [--bad SECTOR]... [--failure-seconds S] [--log FILE]\n",
        stderr);
    std::exit(64);
}

}  // namespace

int main(int argc, char** argv) {
    if (argc < 3) {
        usage();
    }
    PacedDriveOptions options;
    for (int i = 3; i < argc; i += 2) {
        const std::string option = argv[i];
        if (i + 1 >= argc) {
            usage();
        }
        const char* value = argv[i + 1];
        if (option == "--rate") {
            options.bytesPerSecond = std::strtod(value, nullptr);
        } else if (option == "--read-ahead") {
            options.readAheadBytes = std::strtoull(value, nullptr, 10);
        } else if (option == "--bad") {
            options.badSectors.push_back(std::strtoull(value, nullptr, 10));
        } else if (option == "--failure-seconds") {
            options.secondsPerFailure = std::strtod(value, nullptr);
        } else if (option == "--log") {
            drive.log = std::fopen(value, "we");
        } else {
            usage();
        }
    }
    drive.backing = open(argv[1], O_RDONLY | O_CLOEXEC);
    struct stat attributes {};
    if (drive.backing < 0 || fstat(drive.backing, &attributes) != 0) {
        std::fprintf(stderr, "paced-drive: %s: %s\n", argv[1], std::strerror(errno));
        return 1;
    }
    drive.size = static_cast<std::uint64_t>(attributes.st_size);
    drive.model = std::make_unique<PacedDrive>(options);

    fuse_operations operations{};
    operations.getattr = getAttributes;
    operations.open = openFile;
    operations.read = readFile;
    // One command at a time, as a drive takes them.
    char foreground[] = "-f";
    char single[] = "-s";
    char* arguments[] = {argv[0], foreground, single, argv[2], nullptr};
    return fuse_main(4, arguments, &operations, nullptr);
}
