// One pass over the text instead of a detour through a UTF-32 string: the frame
// that is common to all block functions.
//
// Same results as the plain form: characters go through the same rules, and
// the one effect of the intermediate string, that an overlong zero in UTF-8
// ends the UTF-16 text while bad bytes behind it still count, is made by
// EndedAtZero.
//
// The text is converted in chunks into a buffer on the stack, which stays in
// the fastest cache, and each chunk is appended to the result: memory of the
// result is written once, and never filled with zeros first. A text of one
// chunk needs one allocation of the exact size; for longer ones, the first chunk
// tells how much memory to ask for.

#ifndef ENCODING_UNICODE_ONEPASS_H
#define ENCODING_UNICODE_ONEPASS_H

#include <algorithm>
#include <cstdint>
#include <cstring>

#include "encoding/unicode_blocks.h"
#include "encoding/unicode_rules.h"

namespace Vaskel {

using Byte = unsigned char;

inline void put16(Byte*& out, std::uint32_t unit, bool big) {
    out[big ? 0 : 1] = static_cast<Byte>(unit >> 8);
    out[big ? 1 : 0] = static_cast<Byte>(unit);
    out += 2;
}

inline void put32(Byte*& out, std::uint32_t unit, bool big) {
    put16(out, big ? unit >> 16 : unit & 0xFFFF, big);
    put16(out, big ? unit & 0xFFFF : unit >> 16, big);
}

inline void putUtf8(Byte*& out, std::uint32_t value) {
    const auto follower = [](std::uint32_t bits) {
        return static_cast<Byte>(0x80 | (bits & 0x3F));
    };
    if (value < 0x80) {
        *out++ = static_cast<Byte>(value);
    } else if (value < 0x800) {
        *out++ = static_cast<Byte>(0xC0 | value >> 6);
        *out++ = follower(value);
    } else if (value < 0x10000) {
        *out++ = static_cast<Byte>(0xE0 | value >> 12);
        *out++ = follower(value >> 6);
        *out++ = follower(value);
    } else {
        *out++ = static_cast<Byte>(0xF0 | value >> 18);
        *out++ = follower(value >> 12);
        *out++ = follower(value >> 6);
        *out++ = follower(value);
    }
}

inline std::uint32_t get16(const Byte* in, bool big) {
    return big ? std::uint32_t{in[0]} << 8 | in[1] : std::uint32_t{in[1]} << 8 | in[0];
}

inline std::uint32_t get32(const Byte* in, bool big) {
    return big ? get16(in, true) << 16 | get16(in + 2, true)
               : get16(in + 2, false) << 16 | get16(in, false);
}

/// One character of UTF-8; false when it is none or ends behind end.
inline bool getUtf8(const Byte*& in, const Byte* end, std::uint32_t& value) {
    const Byte lead = *in++;
    const int followers = utf8Followers(lead);
    if (followers < 0 || end - in < followers) return false;
    value = followers == 0 ? lead : lead & (0x3F >> followers);
    for (int i = 0; i < followers; ++i) value = value << 6 | (*in++ & 0x3F);
    return true;
}

enum class Taken { Yes, Bad, EndedAtZero };

// The rules of each conversion: take() converts the character at in. kUnit is
// the size of the input's units, kOutUnit that of the output's; kGrowth bounds
// the bytes that a byte of input becomes.

struct Utf8ToUtf32Rule {
    static constexpr std::size_t kUnit = 1, kOutUnit = 4, kGrowth = 4;
    bool big;

    Taken take(const Byte*& in, const Byte* end, Byte*& out) const {
        std::uint32_t value;
        if (!getUtf8(in, end, value)) return Taken::Bad;
        put32(out, value, big);
        return Taken::Yes;
    }
};

struct Utf8ToUtf16Rule {
    static constexpr std::size_t kUnit = 1, kOutUnit = 2, kGrowth = 2;
    bool big;

    Taken take(const Byte*& in, const Byte* end, Byte*& out) const {
        std::uint32_t value;
        if (!getUtf8(in, end, value)) return Taken::Bad;
        if (value >= 0x10000) {
            put16(out, highUnit(value), big);
            put16(out, lowUnit(value), big);
            return Taken::Yes;
        }
        if (isSurrogate(value)) return Taken::Bad;
        if (value != 0) {
            put16(out, value, big);
            return Taken::Yes;
        }
        while (in < end)
            if (!getUtf8(in, end, value)) return Taken::Bad;
        return Taken::EndedAtZero;
    }
};

// A unit or a pair of UTF-16; false for a surrogate alone. A high unit at the
// text's end is followed by the zero unit.
inline bool getUtf16(const Byte*& in, bool big, std::uint32_t& value) {
    value = get16(in, big);
    in += 2;
    if (!isSurrogate(value)) return true;
    if (!isHighSurrogate(value)) return false;
    const std::uint32_t low = get16(in, big);
    in += 2;
    if (!isLowSurrogate(low)) return false;
    value = surrogatePairValue(value, low);
    return true;
}

struct Utf16ToUtf32Rule {
    static constexpr std::size_t kUnit = 2, kOutUnit = 4, kGrowth = 2;
    bool inBig, big;

    Taken take(const Byte*& in, const Byte*, Byte*& out) const {
        std::uint32_t value;
        if (!getUtf16(in, inBig, value)) return Taken::Bad;
        put32(out, value, big);
        return Taken::Yes;
    }
};

struct Utf16ToUtf8Rule {
    static constexpr std::size_t kUnit = 2, kOutUnit = 1, kGrowth = 2;
    bool inBig;

    Taken take(const Byte*& in, const Byte*, Byte*& out) const {
        std::uint32_t value;
        if (!getUtf16(in, inBig, value)) return Taken::Bad;
        putUtf8(out, value);
        return Taken::Yes;
    }
};

struct Utf32ToUtf16Rule {
    static constexpr std::size_t kUnit = 4, kOutUnit = 2, kGrowth = 1;
    bool inBig, big;

    Taken take(const Byte*& in, const Byte*, Byte*& out) const {
        const std::uint32_t value = get32(in, inBig);
        in += 4;
        if (isSurrogate(value) || value >= kUnicodeEnd) return Taken::Bad;
        if (value < 0x10000) {
            put16(out, value, big);
        } else {
            put16(out, highUnit(value), big);
            put16(out, lowUnit(value), big);
        }
        return Taken::Yes;
    }
};

struct Utf32ToUtf8Rule {
    static constexpr std::size_t kUnit = 4, kOutUnit = 1, kGrowth = 1;
    bool inBig;

    Taken take(const Byte*& in, const Byte*, Byte*& out) const {
        const std::uint32_t value = get32(in, inBig);
        in += 4;
        if (value >= kUnicodeEnd) return Taken::Bad;
        putUtf8(out, value);
        return Taken::Yes;
    }
};

/// A conversion of text[0, size), which a zero unit follows, by a rule and a
/// block function.
template <class Rule>
class OnePass {
 public:
    OnePass(const Rule& rule, BlockFunction blocks) : mRule(rule), mBlocks(blocks) {}

    std::string convert(const Byte* text, std::size_t size) {
        putUnit(0xFEFF);
        const Byte *in = text, *const end = text + size;
        std::string result;
        while (static_cast<std::size_t>(end - in) > kChunk) {
            const Taken taken = takeWholeBlocks(in, in + kChunk, end);
            if (taken == Taken::Bad) return {};
            if (taken == Taken::EndedAtZero) return finish(result);
            if (result.empty()) result.reserve(expectedSize(in - text, end - in));
            flush(result);
        }
        Taken taken = takeWholeBlocks(in, end, end);
        if (taken == Taken::Yes) taken = takeRest(in, end);
        if (taken == Taken::Bad) return {};
        return finish(result);
    }

 private:
    // Input bytes of a chunk; what they become stays in the first-level cache.
    static constexpr std::size_t kChunk = 8192 / Rule::kGrowth;
    // How far the rules go where a block function stops before it tries again.
    static constexpr std::ptrdiff_t kByRules = 32;
    static constexpr std::size_t kZeros = kBlock + kBlockAhead;

    Taken takeByRules(const Byte*& in, const Byte* end) {
        const Byte* const until = end - in > kByRules ? in + kByRules : end;
        while (in < until) {
            const Taken taken = mRule.take(in, end, mOut);
            if (taken != Taken::Yes) return taken;
        }
        return Taken::Yes;
    }

    // The blocks that lie in [in, chunkEnd) with the bytes ahead of them.
    Taken takeWholeBlocks(const Byte*& in, const Byte* chunkEnd, const Byte* end) {
        if (chunkEnd - in < static_cast<std::ptrdiff_t>(kZeros)) return Taken::Yes;
        const Byte* const last = chunkEnd - kZeros;
        for (;;) {
            const BlockStop stop = mBlocks(in, last, mOut);
            if (stop.bad) return Taken::Bad;
            in = stop.in;
            mOut = stop.out;
            if (in > last) return Taken::Yes;
            const Taken taken = takeByRules(in, end);
            if (taken != Taken::Yes || in > last) return taken;
        }
    }

    // The last bytes, fewer than kZeros, in blocks filled up with zero units;
    // what those become is taken off again.
    Taken takeRest(const Byte* in, const Byte* end) {
        const auto left = static_cast<std::size_t>(end - in);
        if (left == 0) return Taken::Yes;
        alignas(64) Byte filled[64 + 2 * kZeros];
        Byte* const begin = filled + 64;
        std::memset(begin - kBlockBehind, 0, kBlockBehind);
        std::memcpy(begin, in, left);
        std::memset(begin + left, 0, filled + sizeof filled - (begin + left));
        for (const Byte* at = begin;;) {
            const BlockStop stop = mBlocks(at, begin + left - 1, mOut);
            if (stop.bad) return Taken::Bad;
            mOut = stop.out;
            const auto done = static_cast<std::size_t>(stop.in - begin);
            if (done >= left) {
                mOut -= (done - left) / Rule::kUnit * Rule::kOutUnit;
                return Taken::Yes;
            }
            const Byte* from = in + done;
            const Taken taken = takeByRules(from, end);
            if (taken != Taken::Yes || from >= end) return taken;
            at = begin + (from - in);
        }
    }

    // The size of the result if the text goes on as it began, and a sixteenth
    // more: so much memory is asked for, and more only if that turns out wrong.
    // A chunk is less than 2^16 bytes and an address space at most 2^47.
    std::size_t expectedSize(std::ptrdiff_t taken, std::ptrdiff_t left) const {
        const std::int64_t made = mOut - mBuffer;
        return static_cast<std::size_t>(made + left * std::int64_t{made + made / 16} / taken);
    }

    void putUnit(std::uint32_t unit) {
        if constexpr (Rule::kOutUnit == 2) put16(mOut, unit, mRule.big);
        if constexpr (Rule::kOutUnit == 4) put32(mOut, unit, mRule.big);
    }

    void flush(std::string& result) {
        result.append(reinterpret_cast<const char*>(mBuffer),
                      static_cast<std::size_t>(mOut - mBuffer));
        mOut = mBuffer;
    }

    std::string finish(std::string& result) {
        putUnit(0);
        if (result.empty())
            return std::string(reinterpret_cast<const char*>(mBuffer),
                               static_cast<std::size_t>(mOut - mBuffer));
        flush(result);
        return std::move(result);
    }

    Rule mRule;
    BlockFunction mBlocks;
    // Room for the mark, a chunk with what the rules go beyond its end, the
    // rest's blocks, the zero unit and the spill.
    alignas(64) Byte mBuffer[(kChunk + 2 * kZeros + kByRules + 8) * Rule::kGrowth + kBlockSpill];
    Byte* mOut = mBuffer;
};

/// The six conversions with the block functions of one kind of CPU.
template <const UnicodeBlocks& kBlocks>
struct OnePassForm {
    static const Byte* bytes(const char* text) { return reinterpret_cast<const Byte*>(text); }

    static std::string utf8ToUtf32(const char* text, bool big) {
        if (!startsAsUtf8(text)) return {};
        OnePass<Utf8ToUtf32Rule> pass({big}, kBlocks.utf8ToUtf32[big]);
        return pass.convert(bytes(text), std::strlen(text));
    }

    static std::string utf8ToUtf16(const char* text, bool big) {
        if (!startsAsUtf8(text)) return {};
        OnePass<Utf8ToUtf16Rule> pass({big}, kBlocks.utf8ToUtf16[big]);
        return pass.convert(bytes(text), std::strlen(text));
    }

    static std::string utf16ToUtf32(const char* text, bool big) {
        const ByteOrder order = utf16Mark(text);
        if (order == ByteOrder::Unmarked) return {};
        const bool inBig = order == ByteOrder::Big;
        OnePass<Utf16ToUtf32Rule> pass({inBig, big}, kBlocks.utf16ToUtf32[inBig][big]);
        return pass.convert(bytes(text) + 2, kBlocks.size16(bytes(text) + 2));
    }

    static std::string utf16ToUtf8(const char* text) {
        const ByteOrder order = utf16Mark(text);
        if (order == ByteOrder::Unmarked) return {};
        const bool inBig = order == ByteOrder::Big;
        OnePass<Utf16ToUtf8Rule> pass({inBig}, kBlocks.utf16ToUtf8[inBig]);
        return pass.convert(bytes(text) + 2, kBlocks.size16(bytes(text) + 2));
    }

    static std::string utf32ToUtf16(const char* text, bool big) {
        const ByteOrder order = utf32Mark(text);
        if (order == ByteOrder::Unmarked) return {};
        const bool inBig = order == ByteOrder::Big;
        OnePass<Utf32ToUtf16Rule> pass({inBig, big}, kBlocks.utf32ToUtf16[inBig][big]);
        return pass.convert(bytes(text) + 4, kBlocks.size32(bytes(text) + 4));
    }

    static std::string utf32ToUtf8(const char* text) {
        const ByteOrder order = utf32Mark(text);
        if (order == ByteOrder::Unmarked) return {};
        const bool inBig = order == ByteOrder::Big;
        OnePass<Utf32ToUtf8Rule> pass({inBig}, kBlocks.utf32ToUtf8[inBig]);
        return pass.convert(bytes(text) + 4, kBlocks.size32(bytes(text) + 4));
    }

    static constexpr UnicodeForm named(const char* name) {
        return {name,        utf8ToUtf32,  utf8ToUtf16, utf16ToUtf32,
                utf16ToUtf8, utf32ToUtf16, utf32ToUtf8};
    }
};

}  // namespace Vaskel

#endif
