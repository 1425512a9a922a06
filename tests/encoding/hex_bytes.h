// Bytes written as hex digits, for the tables of tests.

#ifndef TESTS_ENCODING_HEX_BYTES_H
#define TESTS_ENCODING_HEX_BYTES_H

#include <string>
#include <string_view>

/// "FE FF 00 41" as four bytes; blanks between bytes do not count.
inline std::string fromHex(std::string_view hex) {
    std::string bytes;
    int digits = 0, value = 0;
    for (const char c : hex) {
        if (c == ' ') continue;
        value = value * 16 + (c <= '9' ? c - '0' : c - 'A' + 10);
        if (++digits % 2 == 0) {
            bytes += static_cast<char>(value);
            value = 0;
        }
    }
    return bytes;
}

inline std::string toHex(std::string_view bytes) {
    constexpr char kDigits[] = "0123456789ABCDEF";
    std::string hex;
    for (const char c : bytes) {
        if (!hex.empty()) hex += ' ';
        hex += kDigits[static_cast<unsigned char>(c) >> 4];
        hex += kDigits[static_cast<unsigned char>(c) & 15];
    }
    return hex;
}

#endif
