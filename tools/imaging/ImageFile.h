// A new image file, written with O_DIRECT so that imaging leaves the page cache to the rest of the
// machine.
//
// Made on one thread, then used by one writer thread. Dropping it closes the file and leaves it.
#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "DescriptorHolder.h"
#include "ImageSink.h"
#include "Result.h"

class ImageFile final : public ImageSink {
public:
    enum class Caching {
        Avoid,    // O_DIRECT where the file system takes it
        Windows,  // cached writes, written back and dropped window by window
    };

    // Creates the file; one that exists is never touched.
    static Result<std::unique_ptr<ImageFile>> create(const std::string& path,
                                                     Caching caching = Caching::Avoid);

    // Takes the space for so many bytes now, so that a full disk fails at once; the file's size
    // still grows with what is written. Succeeds also where the file system cannot do that.
    Result<void> reserve(std::uint64_t bytes);

    int append(std::span<const std::byte> bytes) override;
    int finish() override;

    // Gives back what was reserved and not written; for an image that stays incomplete.
    void keepPartial();
    // Has SIGTERM, SIGINT and SIGHUP do that before they end the process, unless they are ignored.
    // For the only image of the process.
    void keepPartialOnSignals();
    // Removes the file; safe while another thread still writes to it.
    void remove();

private:
    ImageFile(std::string path, DescriptorHolder descriptor, bool direct);
    int stopDirect();
    int writeAtEnd(std::span<const std::byte> bytes);
    int writeBackWindows();

    const std::string m_path;
    const DescriptorHolder m_descriptor;
    bool m_direct;
    std::uint64_t m_size = 0;         // bytes written
    std::uint64_t m_windowStart = 0;  // cached bytes before it are on the disk and dropped
    std::uint64_t m_windowEnd = 0;    // the write-back of those before it was started
};
