// PBM, PGM and PPM, plain (P1 to P3) and raw (P4 to P6), the first picture of
// a file. Netpbm manual, pages pbm(5), pgm(5), ppm(5).
//
// Rows are delivered as one bit a pixel (PBM) or scaled to 8 bits a sample.

#include <algorithm>
#include <vector>

#include "samples/proof/failure.h"
#include "samples/proof/scan_reader.h"

namespace Proof {
namespace {

bool isSpace(int c) { return c == ' ' || (c >= 9 && c <= 13); }

class PnmReader : public ScanReader {
 public:
    explicit PnmReader(ByteSource& source) : mSource(source), mBytes(source) {
        mBytes.next();
        const int kind = mBytes.next() - '0';
        mPlain = kind <= 3;
        const int family = mPlain ? kind : kind - 3;  // 1 PBM, 2 PGM, 3 PPM
        const std::uint64_t width = headerNumber();
        const std::uint64_t height = headerNumber();
        checkScanSize(source.name(), width, height);
        if (family > 1) {
            mMaximum = static_cast<unsigned>(headerNumber());
            if (mMaximum == 0 || mMaximum > 65535)
                throw fileFailure(source.name(), "has a bad header: the largest sample is " +
                                                     std::to_string(mMaximum));
        }
        mInfo.width = static_cast<int>(width);
        mInfo.height = static_cast<int>(height);
        mInfo.layout.bits = family == 1 ? 1 : 8;
        mInfo.layout.channels = family == 3 ? 3 : 1;
        mInfo.layout.whiteIsZero = family == 1;
        mInfo.format = std::string(mPlain ? "plain " : "") + (family == 1   ? "PBM"
                                                              : family == 2 ? "PGM"
                                                                            : "PPM");
        mPixels = mBytes.position();
        checkLength();
    }

    void rewind() override {
        mBytes.seek(mPixels);
        mRow = 0;
    }

    void readRow(unsigned char* samples) override {
        const std::size_t bytes = mInfo.layout.rowBytes(mInfo.width);
        const std::size_t count = static_cast<std::size_t>(mInfo.width * mInfo.layout.channels);
        if (mInfo.layout.bits == 1)
            mPlain ? readPlainBits(samples, bytes) : readRaw(samples, bytes);
        else if (mPlain)
            for (std::size_t i = 0; i < count; ++i) samples[i] = scaled(plainNumber());
        else
            readRawSamples(samples, count);
        ++mRow;
    }

 private:
    // A header number with the white space and comments before it, and the
    // one byte of white space behind it.
    std::uint64_t headerNumber() {
        int c = mBytes.next();
        while (isSpace(c) || c == '#') {
            if (c == '#')
                while (c != '\n' && c != '\r' && c != -1) c = mBytes.next();
            c = mBytes.next();
        }
        std::uint64_t value = 0;
        bool digits = false;
        for (; c >= '0' && c <= '9'; c = mBytes.next()) {
            value = std::min<std::uint64_t>(value * 10 + static_cast<unsigned>(c - '0'), 1u << 31);
            digits = true;
        }
        while (c == '#') {  // a comment may follow a number at once
            while (c != '\n' && c != '\r' && c != -1) c = mBytes.next();
            if (c == -1) break;
        }
        if (!digits || !isSpace(c)) throw fileFailure(mSource.name(), "has a bad header");
        return value;
    }

    // Whether the file can hold all its pixels, before time goes into them.
    void checkLength() {
        const std::uint64_t samples = static_cast<std::uint64_t>(mInfo.width) *
                                      static_cast<std::uint64_t>(mInfo.height) *
                                      static_cast<std::uint64_t>(mInfo.layout.channels);
        std::uint64_t least = samples;  // plain bits may stand without space between
        if (mPlain && mInfo.layout.bits == 8) least = 2 * samples - 1;
        if (!mPlain)
            least = mInfo.layout.rowBytes(mInfo.width) * static_cast<std::uint64_t>(mInfo.height) *
                    (mMaximum > 255 ? 2 : 1);
        if (mSource.size() - mPixels < least) truncated();
    }

    [[noreturn]] void truncated() const {
        throw fileFailure(mSource.name(), "is truncated: " + std::to_string(mInfo.width) + " x " +
                                              std::to_string(mInfo.height) +
                                              " pixels do not fit into " +
                                              std::to_string(mSource.size()) + " bytes");
    }

    void readRaw(unsigned char* to, std::size_t bytes) {
        if (mBytes.read(to, bytes) != bytes) truncated();
    }

    void readRawSamples(unsigned char* samples, std::size_t count) {
        if (mMaximum <= 255) {
            readRaw(samples, count);
            if (mMaximum < 255)
                for (std::size_t i = 0; i < count; ++i) samples[i] = scaled(samples[i]);
            return;
        }
        mWide.resize(2 * count);
        readRaw(mWide.data(), mWide.size());
        for (std::size_t i = 0; i < count; ++i)
            samples[i] = scaled(mWide[2 * i] * 256u + mWide[2 * i + 1]);
    }

    unsigned char scaled(std::uint64_t sample) const {
        const std::uint64_t kept = std::min<std::uint64_t>(sample, mMaximum);
        return static_cast<unsigned char>((kept * 255 + mMaximum / 2) / mMaximum);
    }

    int plainByte() {
        const int c = mBytes.next();
        if (c == -1) truncated();
        return c;
    }

    [[noreturn]] void badDigit() const {
        throw fileFailure(mSource.name(), "is damaged: row " + std::to_string(mRow + 1) +
                                              " has something other than digits");
    }

    std::uint64_t plainNumber() {
        int c = plainByte();
        while (isSpace(c)) c = plainByte();
        if (c < '0' || c > '9') badDigit();
        std::uint64_t value = 0;
        for (; c >= '0' && c <= '9'; c = mBytes.next())
            value = std::min<std::uint64_t>(value * 10 + static_cast<unsigned>(c - '0'), 65536);
        if (c != -1 && !isSpace(c)) badDigit();
        return value;
    }

    void readPlainBits(unsigned char* bits, std::size_t bytes) {
        std::fill_n(bits, bytes, static_cast<unsigned char>(0));
        for (int x = 0; x < mInfo.width; ++x) {
            int c = plainByte();
            while (isSpace(c)) c = plainByte();
            if (c != '0' && c != '1') badDigit();
            if (c == '1') bits[x / 8] |= static_cast<unsigned char>(0x80 >> (x % 8));
        }
    }

    ByteSource& mSource;
    ByteCursor mBytes;
    bool mPlain = false;
    unsigned mMaximum = 1;
    std::uint64_t mPixels = 0;  // where they begin
    int mRow = 0;
    std::vector<unsigned char> mWide;  // a row of two-byte samples
};

}  // namespace

std::unique_ptr<ScanReader> openPnm(ByteSource& source) {
    return std::make_unique<PnmReader>(source);
}

}  // namespace Proof
