// A fresh folder for one test, removed with all its content at the end; no Qt.
#pragma once

#include <optional>
#include <string>
#include <vector>

class ScratchFolder final {
public:
    // Under $TMPDIR if set, else /var/tmp: on a disk, where uncached reading can be tested.
    ScratchFolder();
    ~ScratchFolder();
    ScratchFolder(const ScratchFolder&) = delete;
    ScratchFolder& operator=(const ScratchFolder&) = delete;

    std::string path(const std::string& relative = {}) const;
    // Writes a file, with the folders above it, and gives its path.
    std::string write(const std::string& relative, const std::string& content) const;
    // The bytes of a file; absent when it cannot be read.
    static std::optional<std::string> read(const std::string& path);
    // The names in this folder, sorted.
    std::vector<std::string> list() const;

private:
    std::string m_path;
};

// Bytes that differ from sector to sector and within each, the same for the same seed.
std::string patternBytes(std::size_t count, unsigned seed = 1);
