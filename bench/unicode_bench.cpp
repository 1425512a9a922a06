// Unicode conversions beside ICU, iconv and utfcpp, on five kinds of text from
// 16 bytes of UTF-8 to 16 MiB.
//
// Everyone makes what our functions return: a fresh std::string with mark and
// zero unit (none for UTF-8), in little-endian order, from text whose length is
// not known beforehand where a form has a terminator. "least_copy" is what such a
// result costs at least: a copy of it or, if it is larger than 512 bytes, for UTF-8
// looking for the input's end, appending the input's bytes to a string with room for
// them until it has the result's size, and reading what is left of the input.
//
// Released memory stays with the process. Otherwise the C library would give
// large blocks back to the system or not depending on what ran before, and who
// gets fresh pages pays three times as much as who gets the last one's.

#include <benchmark/benchmark.h>
#include <iconv.h>
#include <malloc.h>

#include <climits>
#include <cstdint>
#include <cstring>
#include <functional>
#include <map>
#include <random>
#include <stdexcept>
#include <string>
#include <vector>

#include "encoding/unicode.h"
#include "encoding/unicode_onepass.h"
#include "vaskel/encoding.h"

#if VASKEL_BENCH_ICU
#include <unicode/ustring.h>
#endif
#if __has_include(<utf8.h>)
#include <utf8.h>
#endif

namespace {

constexpr unsigned kSeed = 20240601;

// ---- Texts ------------------------------------------------------------------

std::uint32_t letterOf(const std::string& kind, std::mt19937& random) {
    const auto from = [&](std::uint32_t first, std::uint32_t count) {
        return first + static_cast<std::uint32_t>(random() % count);
    };
    if (kind == "latin" && random() % 10 == 0) return from(0xC0, 0x40);
    if (kind == "greek") return from(0x391, 0x39);
    if (kind == "cyrillic") return from(0x410, 64);
    if (kind == "cjk") return from(0x4E00, 20000);
    if (kind == "emoji") return from(0x1F600, 60);
    return from('a', 26);
}

// Words of 1 to 9 letters with blanks and line ends, as UTF-8 of about size
// bytes; CJK has sentences instead of words. The first letter is ASCII.
std::string makeText(const std::string& kind, std::size_t size) {
    constexpr const char* kMixed[] = {"ascii", "latin", "greek", "cyrillic", "cjk", "emoji"};
    std::mt19937 random(kSeed);
    std::string text = "x";
    while (text.size() < size) {
        const std::string word = kind == "mixed" ? kMixed[random() % 6] : kind;
        const std::size_t letters = (1 + random() % 9) * (word == "cjk" ? 4 : 1);
        unsigned char bytes[4];
        for (std::size_t i = 0; i < letters; ++i) {
            unsigned char* end = bytes;
            Vaskel::putUtf8(end, letterOf(word, random));
            text.append(reinterpret_cast<const char*>(bytes),
                        static_cast<std::size_t>(end - bytes));
        }
        text += word == "cjk" && random() % 4 != 0 ? "\xE3\x80\x82"
                : random() % 12 == 0               ? "\n"
                                                   : " ";
    }
    text.resize(size);
    while ((static_cast<unsigned char>(text.back()) & 0xC0) == 0x80) text.pop_back();
    if (static_cast<unsigned char>(text.back()) >= 0xC0) text.pop_back();
    return text;
}

struct Texts {
    std::string utf8, utf16, utf32;  // the latter two with mark and zero unit
};

const Texts& textsOf(const std::string& kind, std::size_t size) {
    static std::map<std::pair<std::string, std::size_t>, Texts> all;
    Texts& texts = all[{kind, size}];
    if (!texts.utf8.empty()) return texts;
    texts.utf8 = makeText(kind, size);
    // UTF-16 as everyone else writes it, so that all take the same input.
    const auto put = [](std::string& out, std::uint32_t unit, int bytes) {
        for (int i = 0; i < bytes; ++i) out += static_cast<char>(unit >> 8 * i);
    };
    put(texts.utf16, 0xFEFF, 2);
    put(texts.utf32, 0xFEFF, 4);
    const auto* in = reinterpret_cast<const unsigned char*>(texts.utf8.data());
    const auto* const end = in + texts.utf8.size();
    while (in < end) {
        std::uint32_t value = 0;
        if (!Vaskel::getUtf8(in, end, value)) throw std::logic_error("the text is bad");
        put(texts.utf32, value, 4);
        if (value >= 0x10000) put(texts.utf16, 0xD800 + ((value - 0x10000) >> 10), 2);
        put(texts.utf16, value < 0x10000 ? value : 0xDC00 | (value & 0x3FF), 2);
    }
    put(texts.utf16, 0, 2);
    put(texts.utf32, 0, 4);
    return texts;
}

// ---- The peers --------------------------------------------------------------

std::size_t units16(const std::string& text) {
    return std::char_traits<char16_t>::length(reinterpret_cast<const char16_t*>(text.data() + 2));
}
std::size_t units32(const std::string& text) {
    return std::char_traits<char32_t>::length(reinterpret_cast<const char32_t*>(text.data() + 4));
}

constexpr char kMark16[] = {'\xFF', '\xFE'};
constexpr char kMark32[] = {'\xFF', '\xFE', 0, 0};

std::string byIconv(const char* to, const char* from, const char* in, std::size_t size,
                    std::size_t room, const char* mark, std::size_t unit) {
    static std::map<std::pair<std::string, std::string>, iconv_t> converters;
    iconv_t& converter = converters[{to, from}];
    if (!converter) converter = iconv_open(to, from);
    std::string out;
    out.resize(room + 2 * unit);
    std::memcpy(out.data(), mark, unit);
    char *source = const_cast<char*>(in), *target = out.data() + unit;
    std::size_t left = size, space = room;
    iconv(converter, &source, &left, &target, &space);
    out.resize(static_cast<std::size_t>(target - out.data()) + unit);
    return out;
}

#if defined(U_ICU_VERSION)
UChar* wide(std::string& text) { return reinterpret_cast<UChar*>(text.data() + 2); }

std::string icu8to16(const Texts& t) {
    std::string out;
    const std::size_t size = std::strlen(t.utf8.c_str());
    out.resize(2 * size + 4);
    std::memcpy(out.data(), kMark16, 2);
    UErrorCode error = U_ZERO_ERROR;
    int32_t length = 0;
    u_strFromUTF8(wide(out), static_cast<int32_t>(size + 1), &length, t.utf8.c_str(),
                  static_cast<int32_t>(size), &error);
    out.resize(2 * static_cast<std::size_t>(length) + 4);
    return out;
}

std::string icu16to8(const Texts& t) {
    std::string out;
    const std::size_t units = units16(t.utf16);
    out.resize(3 * units);
    UErrorCode error = U_ZERO_ERROR;
    int32_t length = 0;
    u_strToUTF8(out.data(), static_cast<int32_t>(out.size()), &length,
                reinterpret_cast<const UChar*>(t.utf16.data() + 2), static_cast<int32_t>(units),
                &error);
    out.resize(static_cast<std::size_t>(length));
    return out;
}

std::string icu16to32(const Texts& t) {
    std::string out;
    const std::size_t units = units16(t.utf16);
    out.resize(4 * units + 8);
    std::memcpy(out.data(), kMark32, 4);
    UErrorCode error = U_ZERO_ERROR;
    int32_t length = 0;
    u_strToUTF32(reinterpret_cast<UChar32*>(out.data() + 4), static_cast<int32_t>(units + 1),
                 &length, reinterpret_cast<const UChar*>(t.utf16.data() + 2),
                 static_cast<int32_t>(units), &error);
    out.resize(4 * static_cast<std::size_t>(length) + 8);
    return out;
}

std::string icu32to16(const Texts& t) {
    std::string out;
    const std::size_t units = units32(t.utf32);
    out.resize(4 * units + 4);
    std::memcpy(out.data(), kMark16, 2);
    UErrorCode error = U_ZERO_ERROR;
    int32_t length = 0;
    u_strFromUTF32(wide(out), static_cast<int32_t>(2 * units + 1), &length,
                   reinterpret_cast<const UChar32*>(t.utf32.data() + 4),
                   static_cast<int32_t>(units), &error);
    out.resize(2 * static_cast<std::size_t>(length) + 4);
    return out;
}
#endif

#if __has_include(<utf8.h>)
template <class Unit>
std::string asBytes(const std::basic_string<Unit>& text) {
    return {reinterpret_cast<const char*>(text.data()), sizeof(Unit) * text.size()};
}
#endif

struct Work {
    const char* name;
    const std::string Texts::*input;
    std::map<std::string, std::function<std::size_t(const Texts&)>> peers;
};

// A peer that returns a string, as a function that the compiler cannot drop.
template <class Function>
std::function<std::size_t(const Texts&)> counted(Function function) {
    return [function](const Texts& texts) {
        const auto result = function(texts);
        benchmark::DoNotOptimize(result.data());
        return result.size();
    };
}

std::vector<Work> works() {
    std::vector<Work> all = {{"8to16", &Texts::utf8, {}},  {"8to32", &Texts::utf8, {}},
                             {"16to8", &Texts::utf16, {}}, {"16to32", &Texts::utf16, {}},
                             {"32to8", &Texts::utf32, {}}, {"32to16", &Texts::utf32, {}}};
    const auto run = [](int work, const Vaskel::UnicodeForm& f, const Texts& t) {
        switch (work) {
            case 0:
                return f.utf8ToUtf16(t.utf8.c_str(), false);
            case 1:
                return f.utf8ToUtf32(t.utf8.c_str(), false);
            case 2:
                return f.utf16ToUtf8(t.utf16.c_str());
            case 3:
                return f.utf16ToUtf32(t.utf16.c_str(), false);
            case 4:
                return f.utf32ToUtf8(t.utf32.c_str());
            default:
                return f.utf32ToUtf16(t.utf32.c_str(), false);
        }
    };
    const auto exported = [](int work, const Texts& t) {
        switch (work) {
            case 0:
                return Vaskel::ConvertUTF8ToUTF16String(t.utf8.c_str(), false);
            case 1:
                return Vaskel::ConvertUTF8ToUTF32String(t.utf8.c_str(), false);
            case 2:
                return Vaskel::ConvertUTF16ToUTF8String(t.utf16.c_str());
            case 3:
                return Vaskel::ConvertUTF16ToUTF32String(t.utf16.c_str(), false);
            case 4:
                return Vaskel::ConvertUTF32ToUTF8String(t.utf32.c_str());
            default:
                return Vaskel::ConvertUTF32ToUTF16String(t.utf32.c_str(), false);
        }
    };
    for (int work = 0; work < 6; ++work) {
        auto& peers = all[static_cast<std::size_t>(work)].peers;
        for (const Vaskel::UnicodeForm* form : Vaskel::unicodeForms())
            peers[std::string("vaskel ") + form->name] =
                counted([=](const Texts& t) { return run(work, *form, t); });
        peers["vaskel"] = counted([=](const Texts& t) { return exported(work, t); });
    }
    const auto copy = [](std::size_t size, const Texts& t, const std::string& from) {
        std::string out;
        out.reserve(size);
        while (out.size() < size) out.append(from, 0, std::min({from.size(), size - out.size()}));
        if (from.size() > size) {
            const char *const rest = from.data() + size, *same = rest;
            benchmark::DoNotOptimize(same);
            benchmark::DoNotOptimize(std::memcmp(rest, same, from.size() - size));
        }
        benchmark::DoNotOptimize(t);
        return out;
    };
    const std::string Texts::*const outputs[] = {&Texts::utf16, &Texts::utf32, &Texts::utf8,
                                                 &Texts::utf32, &Texts::utf8,  &Texts::utf16};
    for (int work = 0; work < 6; ++work) {
        Work& each = all[static_cast<std::size_t>(work)];
        const auto input = each.input, output = outputs[work];
        each.peers["least_copy"] = counted([=](const Texts& t) {
            const std::string& result = t.*output;
            if (result.size() <= 512) return result;
            if (work < 2) benchmark::DoNotOptimize(std::strlen(t.utf8.c_str()));
            return copy(result.size(), t, t.*input);
        });
    }

    all[0].peers["iconv"] = counted([](const Texts& t) {
        const std::size_t size = std::strlen(t.utf8.c_str());
        return byIconv("UTF-16LE", "UTF-8", t.utf8.c_str(), size, 2 * size, kMark16, 2);
    });
    all[1].peers["iconv"] = counted([](const Texts& t) {
        const std::size_t size = std::strlen(t.utf8.c_str());
        return byIconv("UTF-32LE", "UTF-8", t.utf8.c_str(), size, 4 * size, kMark32, 4);
    });
    all[2].peers["iconv"] = counted([](const Texts& t) {
        const std::size_t units = units16(t.utf16);
        return byIconv("UTF-8", "UTF-16LE", t.utf16.data() + 2, 2 * units, 3 * units, "", 0);
    });
    all[3].peers["iconv"] = counted([](const Texts& t) {
        const std::size_t units = units16(t.utf16);
        return byIconv("UTF-32LE", "UTF-16LE", t.utf16.data() + 2, 2 * units, 4 * units, kMark32,
                       4);
    });
    all[4].peers["iconv"] = counted([](const Texts& t) {
        const std::size_t units = units32(t.utf32);
        return byIconv("UTF-8", "UTF-32LE", t.utf32.data() + 4, 4 * units, 4 * units, "", 0);
    });
    all[5].peers["iconv"] = counted([](const Texts& t) {
        const std::size_t units = units32(t.utf32);
        return byIconv("UTF-16LE", "UTF-32LE", t.utf32.data() + 4, 4 * units, 4 * units, kMark16,
                       2);
    });
#if defined(U_ICU_VERSION)
    all[0].peers["icu"] = counted(icu8to16);
    all[2].peers["icu"] = counted(icu16to8);
    all[3].peers["icu"] = counted(icu16to32);
    all[5].peers["icu"] = counted(icu32to16);
#endif
#if __has_include(<utf8.h>)
    // The nearest that utfcpp has is strings of units; their bytes are counted
    // as they are.
    all[0].peers["utfcpp"] = counted([](const Texts& t) {
        std::u16string out;
        out.reserve(t.utf8.size() + 2);
        out += char16_t{0xFEFF};
        utf8::utf8to16(t.utf8.begin(), t.utf8.end(), std::back_inserter(out));
        out += char16_t{};
        return out;
    });
    all[1].peers["utfcpp"] = counted([](const Texts& t) {
        std::u32string out;
        out.reserve(t.utf8.size() + 2);
        out += char32_t{0xFEFF};
        utf8::utf8to32(t.utf8.begin(), t.utf8.end(), std::back_inserter(out));
        out += char32_t{};
        return out;
    });
    all[2].peers["utfcpp"] = counted([](const Texts& t) {
        std::string out;
        const auto* const in = reinterpret_cast<const char16_t*>(t.utf16.data() + 2);
        const std::size_t units = units16(t.utf16);
        out.reserve(3 * units);
        utf8::utf16to8(in, in + units, std::back_inserter(out));
        return out;
    });
    all[4].peers["utfcpp"] = counted([](const Texts& t) {
        std::string out;
        const auto* const in = reinterpret_cast<const char32_t*>(t.utf32.data() + 4);
        const std::size_t units = units32(t.utf32);
        out.reserve(4 * units);
        utf8::utf32to8(in, in + units, std::back_inserter(out));
        return out;
    });
#endif
    return all;
}

}  // namespace

int main(int argc, char** argv) {
    mallopt(M_MMAP_MAX, 0);
    mallopt(M_TRIM_THRESHOLD, INT_MAX);
#if !defined(U_ICU_VERSION)
    std::puts("ICU (libicu-dev) is not installed: left out");
#endif
#if !__has_include(<utf8.h>)
    std::puts("utfcpp (libutfcpp-dev) is not installed: left out");
#endif
    static const std::vector<Work> all = works();
    for (const Work& work : all) {
        for (const char* kind : {"ascii", "latin", "greek", "cyrillic", "cjk", "mixed"}) {
            for (const auto& [who, function] : work.peers) {
                auto* const registered = benchmark::RegisterBenchmark(
                    (std::string(work.name) + " " + kind + "/" + who).c_str(),
                    [&, kind, function = function](benchmark::State& state) {
                        const Texts& texts =
                            textsOf(kind, static_cast<std::size_t>(state.range(0)));
                        for (auto _ : state) benchmark::DoNotOptimize(function(texts));
                        state.SetBytesProcessed(static_cast<std::int64_t>(
                            state.iterations() * (texts.*work.input).size()));
                    });
                for (const int size : {16, 64, 1024, 16384, 262144, 16777216})
                    registered->Arg(size);
            }
        }
    }
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
}
