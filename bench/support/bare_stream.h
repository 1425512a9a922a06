// The calls that an ASCII85 stream's interface asks for, one a byte taken and
// one a character given, without any encoding. Compiled apart from its users,
// like the engine, so that no call is known when its caller is compiled.

#ifndef BENCH_SUPPORT_BARE_STREAM_H
#define BENCH_SUPPORT_BARE_STREAM_H

#include <cstdint>

namespace Bench {

class BareStream {
 public:
    virtual ~BareStream() = default;
    virtual void finish() = 0;
    virtual int encode(unsigned char c);
    virtual void putuns8(unsigned char c) = 0;

    /// Begins: texts has the characters of all groups of four bytes, lengths how
    /// many each has.
    void start(const char* texts, const unsigned char* lengths) {
        mText = texts;
        mLength = lengths;
        mFill = 0;
    }

 protected:
    const char* mText = nullptr;
    int mFill = 0;

 private:
    unsigned char mGroup[4] = {};
    const unsigned char* mLength = nullptr;
};

/// The same, but how many characters a group has is told by whether its bytes are
/// all zero, which no encoder can know before it has them.
class DecidingStream : public BareStream {
 public:
    int encode(unsigned char c) override;

 private:
    int put(std::uint32_t group);

    std::uint32_t mBytes = 0;
};

}  // namespace Bench

#endif
