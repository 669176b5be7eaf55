#include "CachedPages.h"

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include <vector>

std::optional<std::size_t> cachedBytes(const std::string& path) {
    const int file = open(path.c_str(), O_RDONLY | O_CLOEXEC);
    struct stat status {};
    if (file < 0 || fstat(file, &status) != 0) {
        return std::nullopt;
    }
    const auto size = static_cast<std::size_t>(status.st_size);
    const auto page = static_cast<std::size_t>(sysconf(_SC_PAGESIZE));
    std::vector<unsigned char> pages((size + page - 1) / page);
    void* map = mmap(nullptr, size, PROT_READ, MAP_SHARED, file, 0);
    std::optional<std::size_t> result;
    if (map != MAP_FAILED && mincore(map, size, pages.data()) == 0) {
        result = 0;
        for (const unsigned char resident : pages) {
            *result += (resident & 1) * page;
        }
    }
    if (map != MAP_FAILED) {
        munmap(map, size);
    }
    close(file);
    return result;
}

void dropCache(const std::string& path) {
    const int file = open(path.c_str(), O_RDONLY | O_CLOEXEC);
    fdatasync(file);
    posix_fadvise(file, 0, 0, POSIX_FADV_DONTNEED);
    close(file);
}
