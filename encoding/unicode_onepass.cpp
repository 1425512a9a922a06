// The frame of the one-pass forms, and the one for any CPU: it has no blocks,
// and the rules do it all.

#include "encoding/unicode_onepass.h"

#include <algorithm>

#include "util/stream.h"

namespace Vaskel {
namespace {

// The mark in front of a text in UTF-16 or UTF-32, by its byte order and form.
constexpr Byte kMarks[2][2][4] = {{{0xFF, 0xFE}, {0xFF, 0xFE, 0, 0}},
                                  {{0xFE, 0xFF}, {0, 0, 0xFE, 0xFF}}};

// Four bytes are written, whatever counts of them.
Byte* putMark(const UnicodeWay& way, ByteOrders orders, Byte* out) {
    std::memcpy(out, kMarks[orders.big][way.outUnit == 4], 4);
    return out + way.markSize;
}
Byte* putEnd(const UnicodeWay& way, Byte* out) {
    std::memset(out, 0, 4);
    return out + way.markSize;
}

std::string asString(const Byte* begin, const Byte* end) {
    return {reinterpret_cast<const char*>(begin), static_cast<std::size_t>(end - begin)};
}

// Gives result the bytes that write(memory, room) writes into its memory, of
// which it returns the number; those that were there stay.
template <class Write>
void writeInto(std::string& result, const Write& write) {
#ifdef __cpp_lib_string_resize_and_overwrite
    result.resize_and_overwrite(result.capacity(), write);
#else
    result.resize(result.capacity());
    const std::size_t written = write(result.data(), result.size());
    result.resize(written);
#endif
}

// A text of some length: its first chunk is converted into a buffer on the stack
// and tells how much memory to ask for, where that is not known before. The others
// are converted right into the result, as long as there is room for what they could
// become, and the last ones in the buffer again. Nothing is filled with zeros
// first, and a text of one chunk needs one allocation of the exact size.
//
// Results that no cache holds go through the buffer and past the caches, in two
// thirds to half of the time. Smaller ones do not, since whoever reads them next
// would wait for longer than was won.
class OnePass {
 public:
    OnePass(const UnicodeWay& way, BlockFunction blocks, std::size_t ahead, ByteOrders orders)
        : mWay(way), mBlocks(blocks), mAhead(static_cast<std::ptrdiff_t>(ahead)), mOrders(orders) {}

    std::string convert(const Byte* text, std::size_t size) {
        const std::size_t chunk = kChunkBecomes / mWay.growth;
        const Byte *in = text, *const end = text + size;
        const auto left = [&] { return static_cast<std::size_t>(end - in); };
        mOut = putMark(mWay, mOrders, mOut);
        std::string result;
        Taken taken = Taken::Yes;
        if (size > chunk) taken = takeChunks(result, in, size);
        while (taken == Taken::Yes && left() > chunk) {
            taken = takeWholeBlocks(in, in + chunk, end);
            flush(result);
        }
        if (taken == Taken::Yes) taken = takeWholeBlocks(in, end, end);
        if (taken == Taken::Yes && left() > 0) taken = takeRest(in, end);
        if (taken == Taken::Bad) return {};
        mOut = putEnd(mWay, mOut);
        if (result.empty()) return asString(mBuffer, mOut);
        flush(result);
        return result;
    }

 private:
    // What a chunk becomes stays in the first-level cache.
    static constexpr std::size_t kChunkBecomes = 8192;
    // How much of a text tells better how much memory to ask for, and from which
    // size on that is good enough for less of it to be kept in reserve.
    static constexpr std::size_t kSample = 256 << 10, kLong = 2 << 20;
    // How far the rules go where a block function stops before it tries again.
    static constexpr std::ptrdiff_t kByRules = 32;
    static constexpr std::size_t kZeros = kBlock + kBlockAhead;
    // What the rules and the rest's blocks, or one of twice their size, go beyond a
    // chunk, the mark and the zero unit.
    static constexpr std::size_t kBeyond = 2 * kZeros + kByRules + 8;

    Taken takeByRules(const Byte*& in, const Byte* end) {
        return mWay.take(in, end - in > kByRules ? in + kByRules : end, end, mOut, mOrders);
    }

    // The blocks that lie in [in, chunkEnd) with the bytes ahead of them.
    [[gnu::noinline]] Taken takeWholeBlocks(const Byte*& in, const Byte* chunkEnd,
                                            const Byte* end) {
        if (chunkEnd - in < mAhead) return Taken::Yes;
        const Byte* const last = chunkEnd - mAhead;
        for (;;) {
            const BlockStop stop = mBlocks(in, last, end, mOut, mOrders);
            if (!stop.out) return Taken::Bad;
            in = stop.in;
            mOut = stop.out;
            if (in > last) return Taken::Yes;
            const Taken taken = takeByRules(in, end);
            if (taken != Taken::Yes || in > last) return taken;
        }
    }

    // All whole chunks that there is room for in result, into it.
    [[gnu::noinline]] Taken takeChunks(std::string& result, const Byte*& in, std::size_t size) {
        const Byte *const text = in, *const end = in + size;
        if (mWay.growsEvenly) {
            reserve(result, mWay.growth * size + 2 * mWay.markSize);
            flush(result);
            return takeInto(result, in, end, end);
        }
        Taken taken = takeWholeBlocks(in, in + kChunkBecomes / mWay.growth, end);
        if (taken != Taken::Yes) return taken;
        const auto made = static_cast<std::size_t>(mOut - mBuffer);
        const std::size_t sample = std::min(size / 8, kSample);
        const bool sampled = sample >= kChunkBecomes;
        reserve(result, expectedSize(made, in - text, sampled ? sample : size, 16));
        flush(result);
        if (sampled) {
            taken = takeInto(result, in, text + sample, end);
            if (taken != Taken::Yes) return taken;
            reserve(result, expectedSize(result.size(), in - text, size, size < kLong ? 16 : 64));
        }
        return takeInto(result, in, end, end);
    }

    // As many whole chunks of [in, until) as there is certainly room for in result.
    [[gnu::noinline]] Taken takeInto(std::string& result, const Byte*& in, const Byte* until,
                                     const Byte* end) {
        const std::size_t chunk = kChunkBecomes / mWay.growth;
        const std::size_t spare = kBeyond * mWay.growth + kBlockSpill;
        const bool streams = result.capacity() >= gUnicodeStreams.from;
        Taken taken = Taken::Yes;
        writeInto(result, [&, used = result.size()](char* memory, std::size_t room) {
            Byte* const begin = reinterpret_cast<Byte*>(memory);
            Byte* to = begin + used;
            if (!streams) mOut = to;
            while (taken == Taken::Yes && in < until) {
                const std::size_t free = room - static_cast<std::size_t>(to - begin);
                if (free < spare) break;
                const std::size_t fits =
                    std::min((free - spare) / mWay.growth, static_cast<std::size_t>(until - in));
                if (fits < chunk) break;
                taken = takeWholeBlocks(in, in + (streams ? chunk : fits), end);
                to = streams ? stream(to) : mOut;
            }
            if (streams) to = endStream(to);
            mOut = mBuffer;
            return static_cast<std::size_t>(to - begin);
        });
        return taken;
    }

    // Moves what is in the buffer to where it goes, but for what fills no line there.
    Byte* stream(Byte* to) {
        const auto size = static_cast<std::size_t>(mOut - mBuffer);
        const std::size_t done = streamLines(to, mBuffer, size);
        std::memmove(mBuffer, mBuffer + done, size - done);
        mOut -= done;
        return to + done;
    }

    Byte* endStream(Byte* to) {
        const auto left = static_cast<std::size_t>(mOut - mBuffer);
        std::memcpy(to, mBuffer, left);
        finishStreams();
        ++gUnicodeStreams.count;
        return to + left;
    }

    // The last bytes, fewer than kZeros, in blocks filled up with zero units;
    // what those become is taken off again. None are left where blocks end with
    // the text.
    [[gnu::noinline]] Taken takeRest(const Byte* in, const Byte* end) {
        const auto left = static_cast<std::size_t>(end - in);
        alignas(64) Byte filled[64 + 2 * kZeros];
        Byte* const begin = filled + 64;
        std::memset(begin - kBlockBehind, 0, kBlockBehind);
        std::memcpy(begin, in, left);
        std::memset(begin + left, 0, filled + sizeof filled - (begin + left));
        for (const Byte* at = begin;;) {
            const BlockStop stop =
                mBlocks(at, begin + left - 1, filled + sizeof filled, mOut, mOrders);
            if (!stop.out) return Taken::Bad;
            mOut = stop.out;
            const auto done = static_cast<std::size_t>(stop.in - begin);
            if (done >= left) {
                mOut -= (done - left) / mWay.unit * mWay.outUnit;
                return Taken::Yes;
            }
            const Byte* from = in + done;
            const Taken taken = takeByRules(from, end);
            if (taken != Taken::Yes || from >= end) return taken;
            at = begin + (from - in);
        }
    }

    // The size of the result if the text goes on as it began, and a fraction of
    // it more: so much memory is asked for, and more only if that turns out wrong.
    static std::size_t expectedSize(std::size_t made, std::ptrdiff_t taken, std::size_t size,
                                    std::size_t fraction) {
        const double growth = static_cast<double>(made) / static_cast<double>(taken);
        return static_cast<std::size_t>(growth * static_cast<double>(size + size / fraction));
    }

    [[gnu::noinline]] static void reserve(std::string& result, std::size_t size) {
        result.reserve(size);
    }

    [[gnu::noinline]] void flush(std::string& result) {
        result.append(reinterpret_cast<const char*>(mBuffer),
                      static_cast<std::size_t>(mOut - mBuffer));
        mOut = mBuffer;
    }

    const UnicodeWay& mWay;
    BlockFunction mBlocks;
    std::ptrdiff_t mAhead;
    ByteOrders mOrders;
    alignas(64) Byte mBuffer[kChunkBecomes + kBeyond * 4 + kBlockSpill + 2 * kStreamLine];
    Byte* mOut = mBuffer;
};

std::size_t size8(const Byte* text) { return std::strlen(reinterpret_cast<const char*>(text)); }

std::size_t size16(const Byte* text) {
    std::size_t size = 0;
    while (text[size] != 0 || text[size + 1] != 0) size += 2;
    return size;
}

std::size_t size32(const Byte* text) {
    std::size_t size = 0;
    while (get32(text + size, false) != 0) size += 4;
    return size;
}

// A text of at most kShort bytes, with blocks that end where it does: a block function
// does nearly all of it, and the rules do the rest.
constexpr std::size_t kShort = 256;

[[gnu::noinline]] std::string convertShort(const UnicodeWay& way, BlockFunction blocks,
                                           ByteOrders orders, const Byte* text, std::size_t size) {
    // What the characters become begins where a cache line does.
    constexpr std::size_t kLine = 64;
    alignas(kLine) Byte buffer[kLine + kShort * 4 + 4 + kBlockSpill];
    Byte* const begin = buffer + kLine - way.markSize;
    Byte* out = putMark(way, orders, begin);
    if (size != 0) {
        const Byte* const end = text + size;
        const BlockStop stop = blocks(text, end - 1, end, out, orders);
        if (!stop.out) return {};
        out = stop.out;
        if (stop.in < end) {
            const Byte* in = stop.in;
            Byte* to = out;
            if (way.take(in, end, end, to, orders) == Taken::Bad) return {};
            out = to;
        }
    }
    return asString(begin, putEnd(way, out));
}

[[gnu::noinline]] std::string convertLong(const UnicodeWay& way, BlockFunction blocks,
                                          std::size_t ahead, ByteOrders orders, const Byte* text,
                                          std::size_t size) {
    return OnePass(way, blocks, ahead, orders).convert(text, size);
}

// Leaves all to the rules.
BlockStop noUnicodeBlocks(const Byte* in, const Byte*, const Byte*, Byte* out, ByteOrders) {
    return {in, out};
}

constexpr UnicodeBlocks kBlocks = {
    .utf8ToUtf16 = noUnicodeBlocks,
    .utf8ToUtf32 = noUnicodeBlocks,
    .utf16ToUtf8 = noUnicodeBlocks,
    .utf16ToUtf32 = noUnicodeBlocks,
    .utf32ToUtf8 = noUnicodeBlocks,
    .utf32ToUtf16 = noUnicodeBlocks,
    .size8 = size8,
    .size16 = size16,
    .size32 = size32,
    .ahead = 1,
};

}  // namespace

constinit Streams gUnicodeStreams;

[[gnu::noinline]] std::string convertUnicode(const UnicodeWay& way, const UnicodeBlocks& blocks,
                                             BlockFunction function, const char* text, bool big) {
    ByteOrders orders = {false, big};
    if (way.unit == 1) {
        if (!startsAsUtf8(text)) return {};
    } else {
        const ByteOrder order = way.unit == 2 ? utf16Mark(text) : utf32Mark(text);
        if (order == ByteOrder::Unmarked) return {};
        orders.inBig = order == ByteOrder::Big;
        text += way.unit;
    }
    const auto* const bytes = reinterpret_cast<const Byte*>(text);
    const std::size_t size = (way.unit == 1   ? blocks.size8
                              : way.unit == 2 ? blocks.size16
                                              : blocks.size32)(bytes);
    const bool endWithText = blocks.ahead == 1;
    // Below, blocks that have to be filled up take longer than the rules.
    if (size <= (endWithText ? kShort : 12 * way.unit + 4))
        return convertShort(way, endWithText ? function : noUnicodeBlocks, orders, bytes, size);
    return convertLong(way, function, blocks.ahead, orders, bytes, size);
}

const UnicodeForm kUnicodeOnePass = OnePassForm<kBlocks>::named("one pass");

}  // namespace Vaskel
