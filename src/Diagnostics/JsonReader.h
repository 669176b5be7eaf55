// Reads a JSON document as it comes from a device, without ever holding the whole of it.
//
// Made for one read(). A child class takes what its document holds, value by value; what returns
// false ends the reading, so that a large file of something else costs next to nothing.
#pragma once

#include <nlohmann/json.hpp>

class QIODevice;

class JsonReader : public nlohmann::json_sax<nlohmann::json> {
public:
    // Whether the device, open for reading, holds such a document and nothing after it.
    bool read(QIODevice& device);

protected:
    // Whatever is neither an array nor an object.
    virtual bool scalar(nlohmann::json value) = 0;

private:
    bool null() final { return scalar(nullptr); }
    bool boolean(bool value) final { return scalar(value); }
    bool number_integer(number_integer_t value) final { return scalar(value); }
    bool number_unsigned(number_unsigned_t value) final { return scalar(value); }
    bool number_float(number_float_t value, const string_t&) final { return scalar(value); }
    bool string(string_t& value) final { return scalar(std::move(value)); }
    bool binary(binary_t&) final { return false; }
    bool parse_error(std::size_t, const std::string&, const nlohmann::detail::exception&) final {
        return false;
    }
};
