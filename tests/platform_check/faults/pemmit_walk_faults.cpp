// Faults of Pemmit: walks and sizes.

#include <algorithm>
#include <atomic>
#include <climits>
#include <map>
#include <utility>

#include "faults/faults.h"
#include "platform/pemmit.h"

namespace {

// What a spoilt walk has to know beside the real one.
struct WalkState {
    int left = INT_MAX;  // points until it pretends to end
    std::pair<int, int> last{INT_MIN, INT_MAX};
    bool begun = false;
};
std::map<const void*, WalkState>& walks() {
    thread_local std::map<const void*, WalkState> states;
    return states;
}

// Of all walks, the one that began last.
Pemmit::scan* gLastWalk = nullptr;

}  // namespace

namespace Pemmit {

int getppi() {
    static auto* const next = real<int()>("_ZN6Pemmit6getppiEv");
    static const int first = next();
    return fault("ppi-is-kept") ? first : next();
}

void scan::scabeg(const Object* object, int direction, int start) {
    static auto* const next =
        real<void(scan*, const Object*, int, int)>("_ZN6Pemmit4scan6scabegEPKNS_6ObjectEii");
    static auto* const size = real<int(const Path*)>("_ZN6Pemmit6patsizEPKNS_4PathE");
    const int count = object ? size(static_cast<const Path*>(object)) : 0;
    const bool closed = count > 0 && (object->flags & kFlagOpen) == 0;
    if (fault("walk-clamps-its-start") && start >= count) start = count - 1;
    if (fault("walk-takes-any-negative-start") && start < -1) start = -1;
    if (fault("backward-numbers-from-the-end") && direction && start >= 0 && start < count)
        start = count - 1 - start;
    if (fault("groups-walk-their-first-child") && object && (object->flags & kFlagChildren))
        object = queryseq().quebeg(object, nullptr);
    if (fault("scabeg-goes-on-with-the-old") &&
        std::exchange(walks()[this].begun, object != nullptr))
        return;
    if (fault("walks-share-a-cursor")) gLastWalk = this;
    next(this, object, direction, start);
    if (fault("walk-stays-open") && closed)
        walks()[this].left =
            (direction ? (start < 0 ? count : start + 1) : count - std::max(start, 0)) - 1;
}

scan::scan(const Object* object, int direction, int start) {
    real<void(scan*)>("_ZN6Pemmit4scanC1Ev")(this);
    scabeg(object, direction, start);
}

scan::~scan() {
    real<void(scan*)>("_ZN6Pemmit4scanD1Ev")(this);
    walks().erase(this);
    if (gLastWalk == this) gLastWalk = nullptr;
}

int scan::scanex(int* x, int* y) {
    static auto* const next = real<int(scan*, int*, int*)>("_ZN6Pemmit4scan6scanexEPiS1_");
    if (fault("walk-stays-open") && walks()[this].left-- <= 0) return -1;
    if (fault("walks-share-a-cursor") && gLastWalk) return next(gLastWalk, x, y);
    if (fault("walks-end-now-and-then")) {
        static std::atomic<int> calls = 0;
        if (++calls % 1000 == 0) return -1;
    }
    if (fault("walk-clears-at-its-end")) {
        const int rc = next(this, x, y);
        if (rc < 0) *x = *y = 0;
        return rc;
    }
    if (fault("walk-drops-equal-neighbours")) {
        WalkState& state = walks()[this];
        int rc = 0;
        while ((rc = next(this, x, y)) >= 0 && state.last == std::pair(*x, *y)) {
        }
        if (rc >= 0) state.last = {*x, *y};
        return rc;
    }
    return next(this, x, y);
}

int scan::scarun(scan* walk, const PointBase<int>** points, int* step) {
    static auto* const next = real<int(scan*, const PointBase<int>**, int*)>(
        "_ZN6Pemmit4scan6scarunEPS0_PPKNS_9PointBaseIiEEPi");
    const int count = next(walk, points, step);
    if (fault("runs-are-never-turned-round") && count > 1 && *step < 0) {
        *points -= count - 1;
        *step = 1;
    }
    return count;
}

void scan::scaend() {
    static auto* const next = real<void(scan*)>("_ZN6Pemmit4scan6scaendEv");
    if (!fault("scaend-does-nothing")) next(this);
}

Object* queryseq::quebeg(const Object* list, const Object* object) {
    static auto* const next = real<Object*(queryseq*, const Object*, const Object*)>(
        "_ZN6Pemmit8queryseq6quebegEPKNS_6ObjectES3_");
    if (fault("a-path-has-no-contour") && !(list->flags & kFlagChildren)) return nullptr;
    if (fault("sequence-begins-at-the-front")) object = nullptr;
    Object* const first = next(this, list, object);
    return fault("sequence-skips-the-first") && first && first != list ? first->next : first;
}

int patsiz(const Path* path) {
    static auto* const next = real<int(const Path*)>("_ZN6Pemmit6patsizEPKNS_4PathE");
    const int count = next(path);
    if (fault("patsiz-of-nothing-is-one") && count == 0) return 1;
    return fault("patsiz-counts-stored-points") && count > 0 && !(path->flags & kFlagOpen)
               ? count - 1
               : count;
}

}  // namespace Pemmit
