#include "FuzzTarget.h"

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>

std::vector<FuzzTarget>& FuzzTarget::all() {
    static std::vector<FuzzTarget> targets;
    return targets;
}

bool FuzzTarget::add(const FuzzTarget& target) {
    all().push_back(target);
    return true;
}

void ensure(bool isTrue, const char* sentence) {
    if (!isTrue) {
        std::fprintf(stderr, "This does not hold: %s\n", sentence);
        std::abort();
    }
}

// libFuzzer's own entry, in a program of one target.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    FuzzTarget::all().front().run({reinterpret_cast<const char*>(data), size});
    return 0;
}
