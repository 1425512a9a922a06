#include "bench/support/bare_stream.h"

namespace Bench {

int BareStream::encode(unsigned char c) {
    mGroup[mFill] = c;
    if (++mFill != 4) return 0;
    mFill = 0;
    for (int left = *mLength++; left > 0; --left) putuns8(static_cast<unsigned char>(*mText++));
    return 0;
}

}  // namespace Bench
