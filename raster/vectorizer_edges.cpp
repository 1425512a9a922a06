// The list of open edges, left to right, and what becomes of an edge that ends.
//
// Edges live in one array and are linked by 16-bit numbers; free places are
// linked the same way. Place 0 is the head of the list and never an edge, so
// that 65535 edges may be open at a time. No more than 65536 places are ever
// made: with the last one in use the free chain is empty.

#include <algorithm>
#include <cstdint>
#include <utility>

#include "platform/pemmit.h"
#include "raster/shared_block.h"
#include "raster/vectorizer.h"
#include "util/owned_path.h"
#include "vaskel/geometry.h"

namespace Vaskel {
namespace {

constexpr int kMostPlaces = 65536;

}  // namespace

void VectorizerInside::chainFree(Edge* edges, int first, int capacity) {
    for (int i = first; i < capacity; ++i) {
        edges[i] = Edge();
        edges[i].next = static_cast<unsigned short>(i + 1 < capacity ? i + 1 : 0);
    }
}

void Vectorizer::InitList() {
    mEdges = SharedBlock::make<Edge>(static_cast<std::size_t>(mEdgeCapacity));
    if (!mEdges) {
        VectorizerInside::releaseBuffers(*this);
        throw int{-1};
    }
    mEdges[0] = Edge();
    VectorizerInside::chainFree(mEdges, 1, mEdgeCapacity);
    mFreeEdge = 1;
}

// Doubles the array and returns the first new place, whose chain holds the
// other new ones; 0 when there may be no more. Nothing changes on failure.
unsigned short VectorizerInside::grow(Vectorizer& tracer) {
    const int old = tracer.mEdgeCapacity;
    if (old >= kMostPlaces) return 0;
    Edge* const fresh = SharedBlock::make<Edge>(static_cast<std::size_t>(2 * old));
    if (!fresh) throw int{-1};
    std::copy(tracer.mEdges, tracer.mEdges + old, fresh);
    chainFree(fresh, old, 2 * old);
    SharedBlock::release(tracer.mEdges);
    tracer.mEdges = fresh;
    tracer.mEdgeCapacity = 2 * old;
    return static_cast<unsigned short>(old);
}

unsigned short Vectorizer::InsertAfter(unsigned short after) {
    OwnedPath path(Pemmit::patbeg());
    const unsigned short i = VectorizerInside::insert(*this, after);
    mEdges[i].path = path.release();
    return i;
}

// The edge has left the list before anything that may throw.
void Vectorizer::DeleteIndex(unsigned short prev) {
    const unsigned short i = mEdges[prev].next;
    if (i == 0) return;
    VectorizerInside::remove(mEdges, mFreeEdge, prev);
    const OwnedPath path(std::exchange(mEdges[i].path, nullptr));
    // A path without points has handed them on to its partner.
    if (!path || Pemmit::patsiz(path.get()) == 0 || isAtMost(path->box, mMinSize)) return;
    OwnedPath cleaned(clean(path.get(), mMinSize));
    if (cleaned && !isAtMost(cleaned->box, mMinSize)) addPath(cleaned.release());
}

void VectorizerInside::releaseOpenEdges(Vectorizer& tracer) {
    if (keepsPoints(tracer)) return;  // which go together
    Edge* const edges = tracer.mEdges;
    while (const unsigned short i = edges[0].next) {
        remove(edges, tracer.mFreeEdge, 0);
        Pemmit::objrem(std::exchange(edges[i].path, nullptr));
    }
}

}  // namespace Vaskel
