#include "OpticalCommands.h"

#include <linux/cdrom.h>
#include <sys/ioctl.h>

#include <array>
#include <chrono>
#include <vector>

#include "Mmc.h"
#include "ScsiCommand.h"

namespace {

// The bytes of the answer to a command of ten bytes; fewer than asked for, perhaps none, when the
// drive gave no more.
std::span<const std::byte> answerTo(int drive, std::byte operation, std::byte option,
                                    std::span<std::byte> answer) {
    constexpr auto limit = std::chrono::seconds(10);
    const std::array<std::byte, 10> command = {
        operation,    option,       std::byte{0},
        std::byte{0}, std::byte{0}, std::byte{0},
        std::byte{0}, std::byte{0}, static_cast<std::byte>(answer.size())};
    return answer.first(ScsiCommand::run(drive, command, answer, limit).bytes);
}

std::optional<DiscTrack> track(int drive, int number) {
    cdrom_tocentry entry{};
    entry.cdte_track = static_cast<__u8>(number);
    entry.cdte_format = CDROM_LBA;
    if (ioctl(drive, CDROMREADTOCENTRY, &entry) != 0 || entry.cdte_addr.lba < 0) {
        return std::nullopt;
    }
    return DiscTrack{static_cast<std::uint32_t>(entry.cdte_addr.lba),
                     (entry.cdte_ctrl & CDROM_DATA_TRACK) != 0};
}

}  // namespace

std::optional<std::uint16_t> OpticalCommands::currentProfile(int drive) {
    std::array<std::byte, Mmc::featureHeaderBytes> answer{};
    return profileIn(
        answerTo(drive, Mmc::OperationCode::getConfiguration, Mmc::oneFeature, answer));
}

bool OpticalCommands::discIsBlank(int drive) {
    std::array<std::byte, Mmc::discInformationBytes> answer{};
    return isBlankIn(
        answerTo(drive, Mmc::OperationCode::readDiscInformation, std::byte{0}, answer));
}

DiscLayout OpticalCommands::layout(int drive) {
    cdrom_tochdr header{};
    if (ioctl(drive, CDROMREADTOCHDR, &header) != 0) {
        return {};
    }
    std::vector<DiscTrack> tracks;
    for (int number = header.cdth_trk0; number <= header.cdth_trk1; ++number) {
        const auto entry = track(drive, number);
        if (!entry) {
            return {};
        }
        tracks.push_back(*entry);
    }
    const auto leadOut = track(drive, CDROM_LEADOUT);
    return leadOut ? discLayout(tracks, leadOut->start) : DiscLayout{};
}

std::optional<std::uint16_t> OpticalCommands::profileIn(std::span<const std::byte> answer) {
    if (answer.size() < Mmc::featureHeaderBytes) {
        return std::nullopt;
    }
    return static_cast<std::uint16_t>(
        std::to_integer<unsigned>(answer[Mmc::currentProfileOffset]) << 8 |
        std::to_integer<unsigned>(answer[Mmc::currentProfileOffset + 1]));
}

bool OpticalCommands::isBlankIn(std::span<const std::byte> answer) {
    return answer.size() > Mmc::discStatusOffset &&
           (answer[Mmc::discStatusOffset] & Mmc::discStatusMask) == Mmc::emptyDisc;
}
