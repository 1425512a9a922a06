// Faults of Orlune: strings and text conversions.

#include <strings.h>

#include <algorithm>
#include <cwchar>
#include <string>

#include "faults/faults.h"
#include "platform/orlune/strings.h"
#include "platform/orlune/text.h"

namespace Orlune {

char* strmov(char* to, const char* from) {
    static auto* const next = real<char*(char*, const char*)>("_ZN6Orlune6strmovEPcPKc");
    char* const end = next(to, from);
    return fault("strmov-returns-the-start") ? to : end;
}

int strcom(const char* a, const char* b) {
    static auto* const next = real<int(const char*, const char*)>("_ZN6Orlune6strcomEPKcS1_");
    if (fault("strcom-signed")) {
        while (*a && *a == *b) ++a, ++b;
        return static_cast<signed char>(*a) - static_cast<signed char>(*b);
    }
    return next(a, b);
}

int strcomign(const char* a, const char* b) {
    static auto* const next = real<int(const char*, const char*)>("_ZN6Orlune9strcomignEPKcS1_");
    if (fault("strcomign-folds-by-bit")) {
        const auto fold = [](char c) {
            const int byte = static_cast<unsigned char>(c);
            return byte >= 0x40 && byte < 0x60 ? byte + 0x20 : byte;
        };
        while (*a && fold(*a) == fold(*b)) ++a, ++b;
        return fold(*a) - fold(*b);
    }
    return next(a, b);
}

int strcompre(const char* text, const char* prefix) {
    static auto* const next = real<int(const char*, const char*)>("_ZN6Orlune9strcompreEPKcS1_");
    if (fault("strcompre-ignores-case") && next(text, prefix) != 0)
        return strncasecmp(text, prefix, std::strlen(prefix));
    return next(text, prefix);
}

int UTF8ToUni16Char(const char* utf8, wchar_t* out, std::size_t capacity) {
    static auto* const next =
        real<int(const char*, wchar_t*, std::size_t)>("_ZN6Orlune15UTF8ToUni16CharEPKcPwm");
    if (fault("uni16-splits-pairs") && capacity > 0) {
        std::wstring whole(4 * std::strlen(utf8) + 1, L'\0');
        whole.resize(static_cast<std::size_t>(next(utf8, whole.data(), whole.size())));
        const std::size_t count = std::min(whole.size(), capacity - 1);
        whole.copy(out, count);
        out[count] = 0;
        return static_cast<int>(count);
    }
    if (fault("uni16-takes-malformed") && utf8[0] == '\xC0' && capacity > 1) {
        out[0] = L'?';
        out[1] = 0;
        return 1;
    }
    return next(utf8, out, capacity);
}

int Uni16CharToUTF8(const wchar_t* text, char* out, std::size_t capacity) {
    static auto* const next =
        real<int(const wchar_t*, char*, std::size_t)>("_ZN6Orlune15Uni16CharToUTF8EPKwPcm");
    if (fault("utf8-is-not-terminated") && capacity > 0) {
        const int count = next(text, out, capacity);
        out[count] = 'x';
        return count;
    }
    if (fault("utf8-takes-unpaired") && text[0] == 0xD800 && capacity > 3) {
        std::strcpy(out, "\xED\xA0\x80");
        return 3;
    }
    return next(text, out, capacity);
}

int UTF8ToURLEncoding(const char* utf8, char* out, std::size_t capacity) {
    static auto* const next =
        real<int(const char*, char*, std::size_t)>("_ZN6Orlune17UTF8ToURLEncodingEPKcPcm");
    if (fault("url-cuts-between-triples") && capacity > 0) {
        std::string whole(3 * std::strlen(utf8) + 1, '\0');
        whole.resize(static_cast<std::size_t>(next(utf8, whole.data(), whole.size())));
        std::size_t count = std::min(whole.size(), capacity - 1);
        while (count >= 1 && count < whole.size() &&
               (whole[count - 1] == '%' || (count >= 2 && whole[count - 2] == '%')))
            --count;
        whole.copy(out, count);
        out[count] = 0;
        return static_cast<int>(count);
    }
    const int count = next(utf8, out, capacity);
    if (fault("url-lower-case"))
        for (int i = 0; i + 2 < count; ++i)
            if (out[i] == '%') out[i + 1] |= 0x20, out[i + 2] |= 0x20;
    if (fault("url-blank-is-plus") && count == 3 && std::strcmp(out, "%20") == 0) {
        std::strcpy(out, "+");
        return 1;
    }
    return count;
}

int Uni16CharToURLEncoding(const wchar_t* text, char* out, std::size_t capacity) {
    static auto* const next =
        real<int(const wchar_t*, char*, std::size_t)>("_ZN6Orlune22Uni16CharToURLEncodingEPKwPcm");
    if (fault("url-splits-triples") && capacity > 0) {
        std::string whole(12 * std::wcslen(text) + 1, '\0');
        whole.resize(static_cast<std::size_t>(next(text, whole.data(), whole.size())));
        const std::size_t count = std::min(whole.size(), capacity - 1);
        whole.copy(out, count);
        out[count] = 0;
        return static_cast<int>(count);
    }
    return next(text, out, capacity);
}

}  // namespace Orlune
