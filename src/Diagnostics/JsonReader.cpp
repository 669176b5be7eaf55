#include "JsonReader.h"

#include <QIODevice>
#include <array>
#include <istream>
#include <streambuf>

namespace {

class DeviceBuffer final : public std::streambuf {
public:
    explicit DeviceBuffer(QIODevice& device) : m_device(device) {}

    bool failed() const { return m_failed; }

protected:
    int_type underflow() override {
        const qint64 count = m_device.read(m_bytes.data(), qint64(m_bytes.size()));
        m_failed = m_failed || count < 0;
        if (count <= 0) {
            return traits_type::eof();
        }
        setg(m_bytes.data(), m_bytes.data(), m_bytes.data() + count);
        return traits_type::to_int_type(m_bytes.front());
    }

private:
    QIODevice& m_device;
    std::array<char, size_t(16) * 1024> m_bytes;
    bool m_failed = false;
};

}  // namespace

bool JsonReader::read(QIODevice& device) {
    DeviceBuffer buffer(device);
    std::istream stream(&buffer);
    // The parser takes a null byte for the end.
    nlohmann::json_sax<nlohmann::json>* const handler = this;
    return nlohmann::json::sax_parse(stream, handler) && stream.eof() && !buffer.failed();
}
