// ASCII85 streams: a decoder written from the format's definition gives back
// the bytes, no line is longer than 101 characters, copies continue alike.

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>
#include <vector>

#include "vaskel/encoding.h"

namespace {

struct Sink : Vaskel::ascii85out_base {
    std::string text;
    void putuns8(unsigned char c) override { text.push_back(static_cast<char>(c)); }
};

void require(bool holds) {
    if (!holds) std::abort();
}

void appendBytes(std::vector<std::uint8_t>& bytes, std::uint64_t value, int count) {
    for (int i = 0; i < count; ++i)
        bytes.push_back(static_cast<std::uint8_t>(value >> (24 - 8 * i)));
}

std::vector<std::uint8_t> decoded(const std::string& text) {
    std::vector<std::uint8_t> bytes;
    std::uint64_t value = 0;
    int digits = 0;
    int column = 0;
    std::size_t at = 0;
    for (; text.at(at) != '~'; ++at) {
        const char c = text[at];
        if (c == '\n') {
            require(column == 100);
            column = 0;
            continue;
        }
        require(++column <= 100);
        if (c == 'z') {
            require(digits == 0);
            appendBytes(bytes, 0, 4);
            continue;
        }
        require(c >= '!' && c <= 'u');
        value = value * 85 + static_cast<std::uint64_t>(c - '!');
        if (++digits < 5) continue;
        require(value <= 0xFFFFFFFFu && value != 0);
        appendBytes(bytes, value, 4);
        value = 0;
        digits = 0;
    }
    require(text.substr(at) == (column >= 98 ? "~>\n" : "~>"));
    require(digits != 1);
    for (int i = digits; i < 5; ++i) value = value * 85 + 84;  // rounds up to the padding
    if (digits > 0) appendBytes(bytes, value, digits - 1);
    return bytes;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    Sink sink;
    Sink copy;
    for (std::size_t i = 0; i < size; ++i) {
        if (i == size / 2) copy = sink;
        sink.encode(data[i]);
    }
    sink.finish();
    require(decoded(sink.text) == std::vector<std::uint8_t>(data, data + size));
    for (std::size_t i = size / 2; i < size; ++i) copy.encode(data[i]);
    copy.finish();
    require(copy.text == sink.text);
    return 0;
}
