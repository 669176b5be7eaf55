#include "Descriptor.h"

#include <fcntl.h>

#include <algorithm>
#include <vector>

bool Descriptor::areFree(size_t count) {
    std::vector<Descriptor> some(count);
    return std::ranges::all_of(some, [](Descriptor& descriptor) {
        descriptor = Descriptor(::open("/dev/null", O_RDONLY | O_CLOEXEC));
        return descriptor.isOpen();
    });
}
