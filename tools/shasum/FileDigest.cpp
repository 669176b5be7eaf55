#include "FileDigest.h"

#include <fcntl.h>
#include <openssl/evp.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <memory>
#include <span>
#include <vector>

#include "DescriptorHolder.h"
#include "ReadAhead.h"

namespace FileDigest {

namespace {

const EVP_MD* method(int algorithm) {
    switch (algorithm) {
        case 1:
            return EVP_sha1();
        case 224:
            return EVP_sha224();
        case 256:
            return EVP_sha256();
        case 384:
            return EVP_sha384();
        case 512:
            return EVP_sha512();
        default:
            return nullptr;
    }
}

class Digest final {
public:
    explicit Digest(int algorithm)
        : m_context(EVP_MD_CTX_new(), &EVP_MD_CTX_free),
          m_good(m_context && EVP_DigestInit_ex(m_context.get(), method(algorithm), nullptr) == 1) {
    }

    void add(std::span<const std::byte> bytes) {
        m_good = m_good && EVP_DigestUpdate(m_context.get(), bytes.data(), bytes.size()) == 1;
    }

    Result<std::string> text() {
        constexpr const char* digits = "0123456789abcdef";
        std::array<unsigned char, EVP_MAX_MD_SIZE> value{};
        unsigned length = 0;
        if (!m_good || EVP_DigestFinal_ex(m_context.get(), value.data(), &length) != 1) {
            return Failure{Failure::Kind::System, "the digest cannot be computed"};
        }
        std::string result;
        for (const unsigned char byte : std::span(value).first(length)) {
            result += digits[byte >> 4];
            result += digits[byte & 15];
        }
        return result;
    }

private:
    std::unique_ptr<EVP_MD_CTX, decltype(&EVP_MD_CTX_free)> m_context;
    bool m_good;
};

// 0, or the number of the error.
int addStream(Digest& digest, int descriptor) {
    std::vector<std::byte> buffer(64UL * 1024);
    while (true) {
        const ssize_t count = read(descriptor, buffer.data(), buffer.size());
        if (count == 0) {
            return 0;
        }
        if (count > 0) {
            digest.add(std::span(buffer).first(static_cast<std::size_t>(count)));
        } else if (errno != EINTR) {
            return errno;
        }
    }
}

int addFile(Digest& digest, DescriptorHolder descriptor) {
    struct stat status {};
    if (!descriptor.isOpen() || fstat(descriptor.get(), &status) != 0) {
        return errno;
    }
    if (!S_ISREG(status.st_mode) && !S_ISBLK(status.st_mode)) {
        return addStream(digest, descriptor.get());
    }
    ReadAhead file(std::make_unique<UncachedFile>(std::move(descriptor)));
    for (auto bytes = file.next(); !bytes.empty(); bytes = file.next()) {
        digest.add(bytes);
    }
    return file.error();
}

}  // namespace

bool isKnown(int algorithm) {
    return method(algorithm) != nullptr;
}

Result<std::string> ofFile(const std::string& path, int algorithm) {
    Digest digest(algorithm);
    int error = 0;
    if (path == "-") {
        error = addStream(digest, STDIN_FILENO);
    } else {
        error = addFile(digest, DescriptorHolder(open(path.c_str(), O_RDONLY | O_CLOEXEC)));
    }
    if (error != 0) {
        return Failure::ofErrno(error);
    }
    return digest.text();
}

}  // namespace FileDigest
