#include "platform/orlune/strings.h"

#include <cstring>

namespace Orlune {
namespace {

unsigned char folded(char c) {
    const auto byte = static_cast<unsigned char>(c);
    return byte >= 'A' && byte <= 'Z' ? static_cast<unsigned char>(byte + ('a' - 'A')) : byte;
}

}  // namespace

char* strmov(char* to, const char* from) {
    const std::size_t length = std::strlen(from);
    std::memcpy(to, from, length + 1);
    return to + length;
}

int strcom(const char* a, const char* b) { return std::strcmp(a, b); }

int strcomign(const char* a, const char* b) {
    for (; folded(*a) == folded(*b); ++a, ++b)
        if (*a == '\0') return 0;
    return folded(*a) - folded(*b);
}

int strcompre(const char* text, const char* prefix) {
    for (; *prefix != '\0'; ++text, ++prefix)
        if (*text != *prefix)
            return static_cast<unsigned char>(*text) - static_cast<unsigned char>(*prefix);
    return 0;
}

}  // namespace Orlune
