#include "ScsiCommand.h"

#include <scsi/sg.h>
#include <sys/ioctl.h>

#include <algorithm>
#include <array>
#include <cerrno>

namespace ScsiCommand {

int run(int descriptor, std::span<const std::byte> command, std::span<std::byte> answer,
        Answer length) {
    constexpr unsigned timeout = 60'000;  // milliseconds
    constexpr unsigned char notReady = 2;
    constexpr unsigned char mediumNotPresent = 0x3a;
    std::array<unsigned char, 16> cdb{};
    std::transform(command.begin(), command.end(), cdb.begin(),
                   [](std::byte byte) { return std::to_integer<unsigned char>(byte); });
    std::array<unsigned char, 32> sense{};
    sg_io_hdr header{};
    header.interface_id = 'S';
    header.dxfer_direction = SG_DXFER_FROM_DEV;
    header.cmd_len = static_cast<unsigned char>(command.size());
    header.cmdp = cdb.data();
    header.dxfer_len = static_cast<unsigned>(answer.size());
    header.dxferp = answer.data();
    header.mx_sb_len = static_cast<unsigned char>(sense.size());
    header.sbp = sense.data();
    header.timeout = timeout;
    if (ioctl(descriptor, SG_IO, &header) != 0) {
        return errno;
    }
    if ((header.info & SG_INFO_OK_MASK) != SG_INFO_OK) {
        // Fixed-format sense data: the key, and the additional code.
        const bool noDisc =
            header.sb_len_wr > 12 && (sense[2] & 0x0f) == notReady && sense[12] == mediumNotPresent;
        return noDisc ? ENOMEDIUM : EIO;
    }
    return length == Answer::Exact && header.resid != 0 ? EIO : 0;
}

}  // namespace ScsiCommand
