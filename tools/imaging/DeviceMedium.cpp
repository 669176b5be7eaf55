#include "DeviceMedium.h"

#include <fcntl.h>
#include <linux/fs.h>
#include <sys/ioctl.h>

#include <algorithm>
#include <cerrno>

#include "Mmc.h"

Result<std::unique_ptr<Medium>> DeviceMedium::open(const std::string& device,
                                                   std::unique_ptr<OpticalDrive> drive,
                                                   const DiscLayout& layout) {
    // Without O_NONBLOCK: the kernel then takes a fresh look at the size, and locks the door.
    DescriptorHolder descriptor(::open(device.c_str(), O_RDONLY | O_CLOEXEC));
    if (!descriptor.isOpen()) {
        return Failure::ofErrno(errno, device);
    }
    int logicalBytes = 0;
    std::uint64_t bytes = 0;
    if (ioctl(descriptor.get(), BLKSSZGET, &logicalBytes) != 0 ||
        ioctl(descriptor.get(), BLKGETSIZE64, &bytes) != 0) {
        return Failure::ofErrno(errno, device);
    }
    const auto alignment = static_cast<std::uint32_t>(std::max(logicalBytes, 512));
    std::unique_ptr<DeviceMedium> medium(new DeviceMedium(
        std::move(drive), std::make_unique<UncachedFile>(std::move(descriptor), alignment)));
    medium->m_sectorBytes = std::max(Mmc::dataSectorBytes, alignment);
    medium->m_capacity = bytes;
    if (layout.kind == DiscLayout::Kind::Mixed) {
        medium->m_firstSector = layout.firstSector;
        medium->m_capacity = std::uint64_t{layout.sectors} * medium->m_sectorBytes;
        medium->m_runOutSectors += layout.gapSectors;
        medium->m_remark = "the disc in " + device +
                           " has sound as well; only its data is imaged, " +
                           std::to_string(layout.sectors) + " sectors from sector " +
                           std::to_string(layout.firstSector);
    }
    medium->m_disc = diskSequence(medium->m_file->descriptor());
    medium->m_deviceBytes = bytes;
    return medium;
}

DeviceMedium::DeviceMedium(std::unique_ptr<OpticalDrive> drive, std::unique_ptr<UncachedFile> file)
    : m_drive(std::move(drive)), m_file(std::move(file)) {}

int DeviceMedium::read(std::uint64_t offset, std::span<std::byte> buffer) {
    std::size_t got = 0;
    const int error = m_file->read(m_firstSector * m_sectorBytes + offset, buffer, &got);
    if (error == 0 && got < buffer.size()) {
        return EIO;
    }
    if (error == 0 && m_drive && offset == 0 &&
        buffer.size() >= std::min<std::uint64_t>(DiscMarks::beginningBytes, m_capacity)) {
        const auto beginning = buffer.first(std::min(buffer.size(), DiscMarks::beginningBytes));
        m_drive->rememberDisc(DiscMarks::in(beginning, m_deviceBytes), m_firstSector);
    }
    return error;
}

Medium::State DeviceMedium::state() {
    if (m_drive) {
        return m_drive->state();
    }
    return diskSequence(m_file->descriptor()) == m_disc ? State::Same : State::Changed;
}

Medium::State DeviceMedium::confirmedState() {
    return m_drive ? m_drive->confirmedState() : state();
}
