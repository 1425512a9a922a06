#include "bench/support/bare_stream.h"

namespace Bench {

int BareStream::encode(unsigned char c) {
    mGroup[mFill] = c;
    if (++mFill != 4) return 0;
    mFill = 0;
    for (int left = *mLength++; left > 0; --left) putuns8(static_cast<unsigned char>(*mText++));
    return 0;
}

[[gnu::noinline]] int DecidingStream::put(std::uint32_t group) {
    mFill = 0;
    for (int left = group == 0 ? 1 : 5; left > 0; --left)
        putuns8(static_cast<unsigned char>(*mText++));
    return 0;
}

int DecidingStream::encode(unsigned char c) {
    const std::uint32_t bytes = mBytes << 8 | c;
    if (mFill == 3) return put(bytes);
    mBytes = bytes;
    ++mFill;
    return 0;
}

}  // namespace Bench
