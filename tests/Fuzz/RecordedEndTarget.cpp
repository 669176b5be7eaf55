#include "RecordedEnd.h"

#include <cstring>
#include <map>
#include <string>

#include "FuzzInput.h"
#include "FuzzTarget.h"
#include "Mmc.h"

namespace {

using Sectors = std::map<std::uint64_t, std::string>;

// Pieces of sectors: a number of four bytes, a place of two, a length of one, the piece itself.
Sectors sectorsIn(FuzzInput& input) {
    Sectors sectors;
    while (!input.isEmpty()) {
        std::string& sector = sectors[input.binary(4)];
        sector.resize(Mmc::dataSectorBytes, '\0');
        const auto place = static_cast<std::size_t>(input.binary(2) % Mmc::dataSectorBytes);
        const std::string_view piece = input.bytes(static_cast<std::size_t>(input.binary(1)));
        const std::size_t length = std::min(piece.size(), sector.size() - place);
        sector.replace(place, length, piece.substr(0, length));
    }
    return sectors;
}

// The checksum of a UDF tag, which hardly any random bytes have.
void seal(std::string& sector) {
    unsigned sum = 0;
    for (std::size_t i = 0; i < 16; ++i) {
        sum += i == 4 ? 0U : static_cast<unsigned char>(sector[i]);
    }
    sector[4] = static_cast<char>(sum & 0xff);
}

}  // namespace

// The capacity in four bytes, one that tells whether tags get their checksum, then the disc.
FUZZ_TARGET(RecordedEnd) {
    FuzzInput input(bytes);
    const std::uint64_t capacity = input.binary(4);
    const bool isSealed = input.binary(1) != 0;
    Sectors sectors = sectorsIn(input);
    for (auto& [number, sector] : sectors) {
        if (isSealed && number != 0 && sector.substr(1, 5) != "CD001") {
            seal(sector);
        }
    }
    std::uint64_t reads = 0;
    const auto end = recordedEnd(
        [&](std::uint64_t at, std::span<std::byte> buffer) {
            ++reads;
            ensure(buffer.size() == Mmc::dataSectorBytes, "a read is one sector");
            const auto found = sectors.find(at);
            if (at >= capacity) {
                return false;
            }
            std::memset(buffer.data(), 0, buffer.size());
            if (found != sectors.end()) {
                std::memcpy(buffer.data(), found->second.data(), buffer.size());
            }
            return true;
        },
        capacity);
    ensure(reads < 500, "a disc is asked for few sectors, whatever they hold");
    ensure(!end || *end > 0, "a file system has an end");
    ensure(!end || *end < std::uint64_t{1} << 63, "an end does not overflow");
}
