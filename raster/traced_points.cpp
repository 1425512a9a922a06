#include "raster/traced_points.h"

#include <algorithm>

namespace Vaskel {
namespace {

// A write position is never at the beginning of a chunk's memory.
TracedChunk* chunkOf(TracedPoint* write) {
    const std::uintptr_t last = reinterpret_cast<std::uintptr_t>(write) - 1;
    return reinterpret_cast<TracedChunk*>(last - last % kChunkBytes);
}

TracedChunk* stopAt(TracedPoint* write) {
    TracedChunk* const chunk = chunkOf(write);
    chunk->count = write - chunk->points;
    return chunk;
}

// The chunk behind one that was entered by side; side becomes that by which the
// next one is entered. No two chunks are neighbours by both of their sides,
// since rows are not rings.
TracedChunk* next(const TracedChunk* chunk, int& side) {
    TracedChunk* const neighbour = chunk->link[1 - side];
    side = neighbour && neighbour->link[1] == chunk ? 1 : 0;
    return neighbour;
}

}  // namespace

void TracedPoints::makeChunks() {
    mMemory.push_back(nullptr);
    try {
        mMemory.back() = std::make_unique_for_overwrite<TracedChunk[]>(kChunksAtATime);
    } catch (...) {
        mMemory.pop_back();
        throw;
    }
    for (std::size_t i = kChunksAtATime; i-- > 0;) give(&mMemory.back()[i]);
}

TracedPoint* TracedPoints::extend(TracedPoint* write) {
    TracedChunk* const fresh = take();
    TracedChunk* const last = stopAt(write);
    last->link[1] = fresh;
    fresh->link[0] = last;
    return fresh->points;
}

void TracedPoints::join(TracedPoint* write, TracedPoint* otherWrite) {
    TracedChunk* const last = stopAt(write);
    TracedChunk* const otherLast = stopAt(otherWrite);
    last->link[1] = otherLast;
    otherLast->link[1] = last;
}

// Room for a chunk's points and one more.
void TracedPoints::makeRoom() {
    if (mOutline.size() - mCount <= TracedChunk::kPoints)
        mOutline.resize(2 * mOutline.size() + 8 * TracedChunk::kPoints);
}

// Point by point: the last ones were just written one by one, and a wide load
// behind narrow stores would have to wait for them.
void TracedPoints::append(TracedChunk* chunk, int side) {
    makeRoom();
    TracedPoint* const out = mOutline.data() + mCount;
    const TracedPoint* const points = chunk->points;
    const auto count = static_cast<std::size_t>(chunk->count);
    if (side == 0)
        for (std::size_t i = 0; i < count; ++i) out[i] = points[i];
    else
        for (std::size_t i = 0; i < count; ++i) out[i] = points[count - 1 - i];
    mCount += count;
    give(chunk);
}

TracedOutline TracedPoints::close(TracedChunk* first, TracedPoint* write, TracedChunk* otherFirst,
                                  TracedPoint* otherWrite) {
    mCount = 0;
    stopAt(write);
    int side = 0;
    for (TracedChunk* chunk = first; chunk;) {
        int nextSide = side;
        TracedChunk* const behind = next(chunk, nextSide);
        append(chunk, side);
        chunk = behind;
        side = nextSide;
    }
    side = 1;
    for (TracedChunk* chunk = stopAt(otherWrite);;) {
        int nextSide = side;
        TracedChunk* const behind = next(chunk, nextSide);
        append(chunk, side);
        if (chunk == otherFirst) break;
        chunk = behind;
        side = nextSide;
    }
    mOutline[mCount] = mOutline[0];
    return {mOutline.data(), mCount};
}

}  // namespace Vaskel
