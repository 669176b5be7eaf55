#include "FileSystemLabel.h"

#include <blkid.h>
#include <fcntl.h>

#include <array>
#include <string>

#include "DescriptorHolder.h"
#include "DynamicLibrary.h"
#include "Utf8.h"

namespace {

struct BlkId {
    decltype(&blkid_new_probe) newProbe = nullptr;
    decltype(&blkid_free_probe) freeProbe = nullptr;
    decltype(&blkid_probe_set_device) setDevice = nullptr;
    decltype(&blkid_probe_set_superblocks_flags) setFlags = nullptr;
    decltype(&blkid_probe_filter_superblocks_type) filterTypes = nullptr;
    decltype(&blkid_do_probe) probe = nullptr;
    decltype(&blkid_probe_lookup_value) lookUp = nullptr;

    bool load() {
        const DynamicLibrary library("libblkid.so.1");
        return library.find("blkid_new_probe", newProbe) &&
               library.find("blkid_free_probe", freeProbe) &&
               library.find("blkid_probe_set_device", setDevice) &&
               library.find("blkid_probe_set_superblocks_flags", setFlags) &&
               library.find("blkid_probe_filter_superblocks_type", filterTypes) &&
               library.find("blkid_do_probe", probe) &&
               library.find("blkid_probe_lookup_value", lookUp);
    }
};

// The first label among the file systems of this kind. A disc often holds two (ISO 9660 and UDF),
// and either can be the one without a label.
std::string firstLabel(const BlkId& blkid, int descriptor, bool discFileSystems) {
    const blkid_probe probe = blkid.newProbe();
    if (probe == nullptr) {
        return {};
    }
    std::array<std::string, 2> names = {"udf", "iso9660"};
    std::array<char*, 3> types = {names[0].data(), names[1].data(), nullptr};
    std::string label;
    if (blkid.setDevice(probe, descriptor, 0, 0) == 0 &&
        blkid.setFlags(probe, BLKID_SUBLKS_LABEL) == 0 &&
        blkid.filterTypes(probe, discFileSystems ? BLKID_FLTR_ONLYIN : BLKID_FLTR_NOTIN,
                          types.data()) == 0) {
        while (label.empty() && blkid.probe(probe) == 0) {
            const char* data = nullptr;
            std::size_t size = 0;
            if (blkid.lookUp(probe, "LABEL", &data, &size) == 0 && data != nullptr) {
                label = Utf8::valid(Utf8::trimmed(data));
            }
        }
    }
    blkid.freeProbe(probe);
    return label;
}

}  // namespace

std::string FileSystemLabel::read(int descriptor) {
    BlkId blkid;
    if (!blkid.load()) {
        return {};
    }
    const std::string label = firstLabel(blkid, descriptor, true);
    return label.empty() ? firstLabel(blkid, descriptor, false) : label;
}

std::string FileSystemLabel::readFile(const std::string& path) {
    const DescriptorHolder file(open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK));
    return file.isOpen() ? read(file.get()) : std::string();
}
