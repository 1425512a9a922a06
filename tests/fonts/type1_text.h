// Reading Type 1 programs back, independently of the code that writes them.

#ifndef TESTS_FONTS_TYPE1_TEXT_H
#define TESTS_FONTS_TYPE1_TEXT_H

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

using Bytes = std::vector<unsigned char>;

/// Undoes charstring (key 4330) or eexec (key 55665) encryption, the four lead
/// bytes included: plain = cipher xor (r >> 8), r = (cipher + r) * 52845 + 22719.
inline std::string decrypted(std::string_view cipher, unsigned key) {
    std::string plain;
    for (const char c : cipher) {
        const unsigned byte = static_cast<unsigned char>(c);
        plain.push_back(static_cast<char>(byte ^ (key >> 8)));
        key = ((byte + key) * 52845u + 22719u) & 0xFFFFu;
    }
    return plain;
}

inline std::string asText(const Bytes& bytes) { return {bytes.begin(), bytes.end()}; }

inline std::string bytesOf(std::initializer_list<int> values) {
    std::string text;
    for (const int v : values) text.push_back(static_cast<char>(v));
    return text;
}

/// What stands in a CharStrings entry: "/NAME LENGTH RD ", cipher, " ND\n".
struct Entry {
    std::string name;
    std::string plain;  // the charstring behind its lead bytes
    std::string lead;
    bool complete = false;
};

inline Entry readEntry(std::string_view text) {
    Entry entry;
    const std::size_t blank = text.find(' ');
    const std::size_t rd = text.find(" RD ");
    if (text.empty() || text[0] != '/' || blank == text.npos || rd == text.npos) return entry;
    entry.name = text.substr(1, blank - 1);
    const std::size_t length = std::stoul(std::string(text.substr(blank + 1, rd - blank - 1)));
    if (rd + 4 + length > text.size()) return entry;
    const std::string plain = decrypted(text.substr(rd + 4, length), 4330);
    entry.lead = plain.substr(0, 4);
    entry.plain = plain.substr(4);
    entry.complete = text.substr(rd + 4 + length) == " ND\n";
    return entry;
}

#endif
