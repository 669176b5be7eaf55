#include "ScratchFolder.h"

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <stdexcept>

namespace fs = std::filesystem;

ScratchFolder::ScratchFolder() {
    const char* base = std::getenv("TMPDIR");
    std::string name = std::string(base != nullptr && *base != '\0' ? base : "/var/tmp") +
                       "/spindrift-test-XXXXXX";
    if (mkdtemp(name.data()) == nullptr) {
        throw std::runtime_error("cannot make " + name);
    }
    m_path = name;
}

ScratchFolder::~ScratchFolder() {
    std::error_code ignored;
    fs::remove_all(m_path, ignored);
}

std::string ScratchFolder::path(const std::string& relative) const {
    return relative.empty() ? m_path : m_path + "/" + relative;
}

std::string ScratchFolder::write(const std::string& relative, const std::string& content) const {
    const std::string target = path(relative);
    fs::create_directories(fs::path(target).parent_path());
    std::ofstream file(target, std::ios::binary);
    file.write(content.data(), static_cast<std::streamsize>(content.size()));
    file.close();
    if (!file) {
        throw std::runtime_error("cannot write " + target);
    }
    return target;
}

std::optional<std::string> ScratchFolder::read(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    if (!file) {
        return std::nullopt;
    }
    return std::string(std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>());
}

std::vector<std::string> ScratchFolder::list() const {
    std::vector<std::string> names;
    for (const auto& entry : fs::directory_iterator(m_path)) {
        names.push_back(entry.path().filename().string());
    }
    std::sort(names.begin(), names.end());
    return names;
}

std::string patternBytes(std::size_t count, unsigned seed) {
    std::string bytes(count, '\0');
    std::uint64_t state = 0x9e3779b97f4a7c15ULL * (seed + 1ULL);
    for (std::size_t at = 0; at < count; at += sizeof state) {
        state ^= state << 13;
        state ^= state >> 7;
        state ^= state << 17;
        std::memcpy(bytes.data() + at, &state, std::min(sizeof state, count - at));
    }
    return bytes;
}
