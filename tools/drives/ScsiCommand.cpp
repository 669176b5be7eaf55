#include "ScsiCommand.h"

#include <scsi/sg.h>
#include <sys/ioctl.h>

#include <algorithm>
#include <array>
#include <cerrno>

#include "Mmc.h"

ScsiCommand::Answer ScsiCommand::run(int drive, std::span<const std::byte> command,
                                     std::span<std::byte> answer, std::chrono::milliseconds limit) {
    std::array<unsigned char, 16> block{};
    std::transform(command.begin(), command.end(), block.begin(),
                   [](std::byte byte) { return std::to_integer<unsigned char>(byte); });
    std::array<unsigned char, 32> sense{};
    sg_io_hdr header{};
    header.interface_id = 'S';
    header.dxfer_direction = SG_DXFER_FROM_DEV;
    header.cmd_len = static_cast<unsigned char>(command.size());
    header.cmdp = block.data();
    header.dxfer_len = static_cast<unsigned>(answer.size());
    header.dxferp = answer.data();
    header.mx_sb_len = static_cast<unsigned char>(sense.size());
    header.sbp = sense.data();
    header.timeout = static_cast<unsigned>(limit.count());
    if (ioctl(drive, SG_IO, &header) != 0) {
        return {errno, 0};
    }
    if ((header.info & SG_INFO_OK_MASK) != SG_INFO_OK) {
        const bool noDisc =
            header.sb_len_wr > Mmc::additionalSenseCodeOffset &&
            (sense[Mmc::senseKeyOffset] & Mmc::senseKeyMask) == Mmc::SenseKey::notReady &&
            sense[Mmc::additionalSenseCodeOffset] == Mmc::AdditionalSenseCode::mediumNotPresent;
        return {noDisc ? ENOMEDIUM : EIO, 0};
    }
    const auto missing = static_cast<std::size_t>(std::max(header.resid, 0));
    return {0, answer.size() - std::min(missing, answer.size())};
}
