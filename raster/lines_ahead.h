// Where a caller's lines lie, those that it gives and those that it takes.

#ifndef RASTER_LINES_AHEAD_H
#define RASTER_LINES_AHEAD_H

#include <cstddef>
#include <cstdint>

#include "util/stream.h"

namespace Vaskel {

/// Where a caller's next line will be, if lines go on as the last three lay.
/// Forms have it fetched while they work on a line: a CPU waits for memory most
/// of the time and does not look beyond the line by itself. Fetching never
/// faults, wherever the address may lead.
class LinesAhead {
 public:
    void took(const void* line) {
        const auto at = reinterpret_cast<std::uintptr_t>(line);
        const std::uintptr_t way = at - mLast;
        mStep = way == mWay ? way : 0;
        mWay = way;
        mLast = at;
    }
    /// From a line to the next; 0 if they do not lie evenly.
    std::uintptr_t step() const { return mStep; }
    std::uintptr_t next() const { return mLast + mStep; }

 private:
    std::uintptr_t mLast = 0, mWay = 0, mStep = 0;
};

/// Copies lines to where a caller takes them, past the caches once they make up an
/// image so large that these hold it no longer: without that, each of its cache
/// lines is read before it is written. Lines that come to one place, one after the
/// other, never are.
class TakenLines {
 public:
    void copy(void* to, const unsigned char* line, std::size_t bytes);

 private:
    LinesAhead mAhead;
    std::size_t mLaid = 0;  // bytes that lie evenly, side by side
};

/// How many bytes lie in the caches before, and how many lines went past them.
extern Streams gLineStreams;

}  // namespace Vaskel

#endif
