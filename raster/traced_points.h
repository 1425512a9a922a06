// The points of outlines that the tracer has not closed yet.
//
// An open outline is a row of chunks with two ends that grow, each with an edge
// of the tracer's list; the two edges are mates. Somewhere in the row is its
// seam, between the first chunks of the two mates: an outline begins with its
// seam. Joining the ends of two outlines links their last chunks; the row then
// has the two ends that are left, and of its two seams the tracer keeps one.
//
// A chunk has two sides, 0 before its first point and 1 behind its last, and
// rows are walked either way: who enters a chunk by one side leaves it by the
// other. A seam is always between two sides 0, and a growing end a side 1.

#ifndef RASTER_TRACED_POINTS_H
#define RASTER_TRACED_POINTS_H

#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

#include "platform/pemmit.h"

namespace Vaskel {

using TracedPoint = Pemmit::PointBase<int>;

constexpr std::size_t kChunkBytes = 256;

/// Some points in a row. The chunk of an end is found by where it writes.
struct alignas(kChunkBytes) TracedChunk {
    static constexpr int kPoints = 29;

    TracedChunk* link[2];  // the neighbour at each side; at an end null
    std::int64_t count;    // not that of a chunk that grows
    TracedPoint points[kPoints];
};
static_assert(sizeof(TracedChunk) == kChunkBytes);

/// Whether count points fit in behind the last one, of which there is one.
inline bool hasRoom(const TracedPoint* write, std::size_t count) {
    return -reinterpret_cast<std::uintptr_t>(write) % kChunkBytes >= count * sizeof(TracedPoint);
}

/// count points, and behind them the first one again.
struct TracedOutline {
    const TracedPoint* points;
    std::size_t count;
};

/// The points of all open outlines of one trace.
class TracedPoints {
 public:
    /// A chunk without neighbours and points. Throws std::bad_alloc.
    TracedChunk* take() {
        if (!mFree) makeChunks();
        TracedChunk* const chunk = mFree;
        mFree = chunk->link[1];
        chunk->link[0] = chunk->link[1] = nullptr;
        return chunk;
    }

    /// Another chunk for an end: returns where it writes. Throws std::bad_alloc.
    TracedPoint* extend(TracedPoint* write);

    /// Joins two ends.
    static void join(TracedPoint* write, TracedPoint* otherWrite);

    /// Takes a row apart: from first, at its seam, to the end that writes at
    /// write, and from the end of its mate back to otherFirst, the seam's other
    /// chunk. What is returned stays until the next call. Throws std::bad_alloc.
    TracedOutline close(TracedChunk* first, TracedPoint* write, TracedChunk* otherFirst,
                        TracedPoint* otherWrite);

 private:
    static constexpr std::size_t kChunksAtATime = 128;

    void makeChunks();
    void give(TracedChunk* chunk) {
        chunk->link[1] = mFree;
        mFree = chunk;
    }
    void makeRoom();
    void append(TracedChunk* chunk, int side);

    TracedChunk* mFree = nullptr;  // linked by their sides 1
    std::vector<std::unique_ptr<TracedChunk[]>> mMemory;
    std::vector<TracedPoint> mOutline;  // its size is the room there is
    std::size_t mCount = 0;             // of its points
};

}  // namespace Vaskel

#endif
