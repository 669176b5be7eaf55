// What the device manager (udev) has recorded about one block device.
//
// A plain value read from the manager's own run-time file, one "E:NAME=value" a line: the format
// has been the same since 2012 and is what libudev reads too. Reading the file instead of loading
// libudev keeps a query that runs every two seconds cheap, and asks the drive for nothing.
#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <string_view>

class UdevRecord final {
public:
    // Reads the record of the device with this number ("11:0") under the folder; absent when the
    // manager has none.
    static std::optional<UdevRecord> read(const std::string& folder,
                                          const std::string& deviceNumber);
    static UdevRecord parse(std::string_view text);

    // The value of a property; absent when the record has none of this name.
    std::optional<std::string_view> value(std::string_view name) const;
    // A property that counts things; 0 when it is missing or no number.
    std::uint64_t count(std::string_view name) const;

    // Whether the manager's optical-drive helper has looked at this drive. Only then does the
    // absence of a disc in the record mean that there is none.
    bool knowsOpticalDrive() const;
    bool hasDisc() const { return value("ID_CDROM_MEDIA") == "1"; }
    // "DVD+R DL" and so on; "Unknown" for a disc of a type that the record does not name.
    std::string_view discType() const;
    bool isBlank() const { return value("ID_CDROM_MEDIA_STATE") == "blank"; }
    // Audio tracks and no data track.
    bool isAudioOnly() const;
    // Both audio tracks and data tracks.
    bool isMixed() const;
    // The bytes of the data tracks that an image holds of a disc with sound and data, whose whole
    // is this large; absent when the record does not tell where the data begins and ends.
    std::optional<std::uint64_t> mixedDataBytes(std::uint64_t discBytes) const;

    // Whether a file system was looked for and found.
    bool hasFileSystem() const { return value("ID_FS_TYPE").has_value(); }
    // The file system's label, decoded, as valid UTF-8; empty without one.
    std::string label() const;

    // "\x20" and its like, as the record encodes bytes that are unsafe in it, turned back.
    static std::string decoded(std::string_view encoded);

private:
    std::map<std::string, std::string, std::less<>> m_properties;
};
