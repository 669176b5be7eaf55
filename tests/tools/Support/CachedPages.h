// How much of a file the machine's memory holds; no Qt.
#pragma once

#include <cstddef>
#include <optional>
#include <string>

// In bytes; absent when the file cannot be looked at.
std::optional<std::size_t> cachedBytes(const std::string& path);

// Makes the machine's memory hold none of it.
void dropCache(const std::string& path);
