// Where an image is written to. Used by one writer thread, in the order of the bytes.
#pragma once

#include <cstddef>
#include <span>

class ImageSink {
public:
    ImageSink() = default;
    virtual ~ImageSink() = default;
    ImageSink(const ImageSink&) = delete;
    ImageSink& operator=(const ImageSink&) = delete;

    // Appends all the bytes: 0, or the number of the error. The buffer is aligned to
    // BufferRing::alignment; only the last one may have a length that is not a multiple of it.
    virtual int append(std::span<const std::byte> bytes) = 0;
    // Returns when all that was appended is on the disk: 0, or the number of the error.
    virtual int finish() = 0;
};
