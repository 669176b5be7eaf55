// Numbers of the MMC and SPC standards that the disc tools use, by the standards' own names.
#pragma once

#include <cstddef>
#include <cstdint>

namespace Mmc {

// Bytes of a sector as it is read: the user data of Mode 1, and a frame of CD-DA.
inline constexpr std::uint32_t dataSectorBytes = 2048;
inline constexpr std::uint32_t audioSectorBytes = 2352;

// Sectors before an audio track that follows data: a pre-gap of two seconds.
inline constexpr std::uint32_t pregapSectors = 150;
// Sectors that close a track written at once; the capacity counts them and no drive reads them.
inline constexpr std::uint32_t runOutSectors = 2;

namespace Profile {
inline constexpr std::uint16_t none = 0x00;
inline constexpr std::uint16_t moErasable = 0x03;
inline constexpr std::uint16_t moWriteOnce = 0x04;
inline constexpr std::uint16_t asMo = 0x05;
inline constexpr std::uint16_t cdRom = 0x08;
inline constexpr std::uint16_t cdR = 0x09;
inline constexpr std::uint16_t cdRw = 0x0A;
inline constexpr std::uint16_t dvdRom = 0x10;
inline constexpr std::uint16_t dvdR = 0x11;
inline constexpr std::uint16_t dvdRam = 0x12;
inline constexpr std::uint16_t dvdRwRestrictedOverwrite = 0x13;
inline constexpr std::uint16_t dvdRwSequential = 0x14;
inline constexpr std::uint16_t dvdRDlSequential = 0x15;
inline constexpr std::uint16_t dvdRDlLayerJump = 0x16;
inline constexpr std::uint16_t dvdRwDl = 0x17;
inline constexpr std::uint16_t dvdDownload = 0x18;
inline constexpr std::uint16_t dvdPlusRw = 0x1A;
inline constexpr std::uint16_t dvdPlusR = 0x1B;
inline constexpr std::uint16_t dvdPlusRwDl = 0x2A;
inline constexpr std::uint16_t dvdPlusRDl = 0x2B;
inline constexpr std::uint16_t bdRom = 0x40;
inline constexpr std::uint16_t bdRSequential = 0x41;
inline constexpr std::uint16_t bdRRandom = 0x42;
inline constexpr std::uint16_t bdRe = 0x43;
inline constexpr std::uint16_t hdDvdRom = 0x50;
inline constexpr std::uint16_t hdDvdR = 0x51;
inline constexpr std::uint16_t hdDvdRam = 0x52;
inline constexpr std::uint16_t hdDvdRw = 0x53;
inline constexpr std::uint16_t hdDvdRDl = 0x58;
inline constexpr std::uint16_t hdDvdRwDl = 0x5A;
}  // namespace Profile

namespace OperationCode {
inline constexpr std::byte getConfiguration{0x46};
inline constexpr std::byte readDiscInformation{0x51};
inline constexpr std::byte readCd{0xBE};
}  // namespace OperationCode

// GET CONFIGURATION: the requested type "one feature", and where its answer holds the profile.
inline constexpr std::byte oneFeature{0x02};
inline constexpr std::size_t currentProfileOffset = 6;
inline constexpr std::size_t featureHeaderBytes = 8;

// READ DISC INFORMATION: the byte with the disc's status, and the status "empty disc" in it.
inline constexpr std::size_t discInformationBytes = 34;
inline constexpr std::size_t discStatusOffset = 2;
inline constexpr std::byte discStatusMask{0x03};
inline constexpr std::byte emptyDisc{0x00};

// READ CD: the expected sector type CD-DA, and the main channel's user data alone.
inline constexpr std::byte expectCdDa{0x04};
inline constexpr std::byte userData{0x10};

// Fixed-format sense data: the sense key and the additional sense code.
inline constexpr std::size_t senseKeyOffset = 2;
inline constexpr unsigned senseKeyMask = 0x0F;
inline constexpr std::size_t additionalSenseCodeOffset = 12;

namespace SenseKey {
inline constexpr unsigned notReady = 0x02;
}

namespace AdditionalSenseCode {
inline constexpr unsigned mediumNotPresent = 0x3A;
}

}  // namespace Mmc
