// A block device that is imaged: the data of a disc in an optical drive, or a loop device.
#pragma once

#include <memory>
#include <string>

#include "Medium.h"
#include "Mmc.h"
#include "OpticalDrive.h"
#include "UncachedFile.h"

class DeviceMedium final : public Medium {
public:
    // drive: the optical drive that the device is, absent for other block devices.
    static Result<std::unique_ptr<Medium>> open(const std::string& device,
                                                std::unique_ptr<OpticalDrive> drive,
                                                const DiscLayout& layout);

    std::uint32_t sectorBytes() const override { return m_sectorBytes; }
    std::uint64_t capacity() const override { return m_capacity; }
    std::uint64_t firstSector() const override { return m_firstSector; }
    std::uint32_t runOutSectors() const override { return m_runOutSectors; }
    std::string remark() const override { return m_remark; }
    int read(std::uint64_t offset, std::span<std::byte> buffer) override;
    State state() override;
    State confirmedState() override;

private:
    DeviceMedium(std::unique_ptr<OpticalDrive> drive, std::unique_ptr<UncachedFile> file);

    std::unique_ptr<OpticalDrive> m_drive;
    std::unique_ptr<UncachedFile> m_file;
    std::optional<std::uint64_t> m_disc;  // the kernel's number of what is in the device
    std::uint32_t m_sectorBytes = Mmc::dataSectorBytes;
    std::uint64_t m_capacity = 0;
    std::uint64_t m_deviceBytes = 0;
    std::uint64_t m_firstSector = 0;
    std::uint32_t m_runOutSectors = Mmc::runOutSectors;
    std::string m_remark;
};
