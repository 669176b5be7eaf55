// The texts of "diskutil info -plist", "list -plist" and "list". Pure; any thread.
//
// Each is about a drive with a disc in it. A disc is always one whole device here: the kernel makes
// no nodes for the partitions of a hybrid disc, so there are never slices to list.
#pragma once

#include <string>

#include "DriveFacts.h"

namespace DiskReports {

// Without the sizes when they are not known.
std::string info(const std::string& node, const DiscFacts& disc);
std::string list(const std::string& node, const DiscFacts& disc);
// A table with one row; the identifier is the last word on it.
std::string table(const std::string& node, const DiscFacts& disc);

// "700.0 MB", "4.7 GB", "2.0 kB", "12 bytes": decimal units, for people.
std::string sizeText(std::uint64_t bytes);

}  // namespace DiskReports
