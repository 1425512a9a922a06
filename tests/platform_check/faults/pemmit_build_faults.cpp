// Faults of Pemmit: building, joining, copying, releasing, curves.

#include <climits>
#include <cmath>
#include <map>

#include "embedded/document.h"
#include "faults/faults.h"
#include "platform/pemmit.h"

namespace {

std::map<const Pemmit::Object*, Pemmit::Path*> gMates;  // while a fault needs them

}  // namespace

namespace Pemmit {

Path* patbeg() {
    static auto* const next = real<Path*()>("_ZN6Pemmit6patbegEv");
    Path* const path = next();
    if (fault("paths-begin-open")) path->flags |= kFlagOpen;
    if (fault("empty-box-is-zero")) path->box = {0, 0, 0, 0};
    return path;
}

void patlin(Path* path, int x, int y) {
    static auto* const next = real<void(Path*, int, int)>("_ZN6Pemmit6patlinEPNS_4PathEii");
    const Box before = path->box;
    static int calls = 0;
    if (fault("large-documents-lose-points") && ++calls > 2'900'000) return;
    next(path, x, y);
    if (fault("patlin-closes")) path->flags &= ~kFlagOpen;
    if (fault("box-is-exclusive") && path->box.maxX != before.maxX && path->box.maxX < INT_MAX)
        ++path->box.maxX;
}

void patrun(Path* path, const PointBase<int>* points, int count) {
    static auto* const next = real<void(Path*, const PointBase<int>*, int)>(
        "_ZN6Pemmit6patrunEPNS_4PathEPKNS_9PointBaseIiEEi");
    const Box before = path->box;
    next(path, points, count);
    if (fault("patrun-forgets-the-box")) path->box = before;
}

Path* patnew(const PointBase<int>* points, int count) {
    static auto* const next =
        real<Path*(const PointBase<int>*, int)>("_ZN6Pemmit6patnewEPKNS_9PointBaseIiEEi");
    Path* const path = next(points, count);
    if (fault("patnew-leaves-open")) path->flags |= kFlagOpen;
    return path;
}

void patend(Path* path, int x, int y) {
    static auto* const next = real<void(Path*, int, int)>("_ZN6Pemmit6patendEPNS_4PathEii");
    next(path, x, y);
    if (fault("patend-leaves-closed")) path->flags &= ~kFlagOpen;
}

void patendclo(Path* path) {
    static auto* const next = real<void(Path*)>("_ZN6Pemmit9patendcloEPNS_4PathE");
    int x = 0, y = 0;
    if (fault("patendclo-adds-a-point") && scan(path, 0, 0).scanex(&x, &y) >= 0) patlin(path, x, y);
    next(path);
}

void patlinbb(Path* p, Path* q) {
    static auto* const next = real<void(Path*, Path*)>("_ZN6Pemmit8patlinbbEPNS_4PathES1_");
    next(p, q);
    if (fault("mates-share-a-point")) patlin(q, 0, 0);
    if (fault("mates-feel-each-other-go")) gMates[p] = q, gMates[q] = p;
}

void patlinee(Path* p, Path* q) {
    static auto* const next = real<void(Path*, Path*)>("_ZN6Pemmit8patlineeEPNS_4PathES1_");
    const Box before = p->box;
    if (fault("joins-from-the-other-side")) return next(q, p);
    next(p, q);
    if (fault("joins-leave-boxes")) p->box = before;
}

Path* patdup(const Path* path) {
    static auto* const next = real<Path*(const Path*)>("_ZN6Pemmit6patdupEPKNS_4PathE");
    Path* const copy = next(path);
    if (fault("copies-are-closed")) copy->flags &= ~kFlagOpen;
    if (fault("copies-keep-their-next")) copy->next = path->next;
    if (fault("copies-of-groups-are-shallow") && (path->flags & kFlagChildren)) {
        objrem(copy);
        return Embedded::makeCompound();
    }
    return copy;
}

void objrem(Object* object) {
    static auto* const next = real<void(Object*)>("_ZN6Pemmit6objremEPNS_6ObjectE");
    Object* const parent = Embedded::parentOf(object);
    const Box box = parent ? parent->box : Box();
    next(object);
    if (const auto mate = gMates.find(object); mate != gMates.end()) {
        patlin(mate->second, 0, 0);
        gMates.erase(mate->second);
        gMates.erase(object);
    }
    if (fault("parents-never-shrink") && parent) parent->box = box;
}

void flaset(Object* object, std::uint32_t mask, bool on) {
    static auto* const next =
        real<void(Object*, std::uint32_t, bool)>("_ZN6Pemmit6flasetEPNS_6ObjectEjb");
    next(object, mask, on);
    if (fault("flaset-replaces") && on) object->flags = mask;
}

bezier::bezier() : p{} {
    if (fault("bezier-begins-anywhere")) p[2].y = 1;
}

void bezier::cubfla(double tolerance, void (*callback)(void*, const PointBase<double>*),
                    void* context) const {
    using Callback = void(void*, const PointBase<double>*);
    static auto* const next = real<void(const bezier*, double, Callback*, void*)>(
        "_ZNK6Pemmit6bezier6cubflaEdPFvPvPKNS_9PointBaseIdEEES1_");
    if (fault("cubfla-delivers-p0")) callback(context, &p[0]);
    if (fault("cubfla-is-coarse")) tolerance *= 8;
    if (fault("cubfla-turns-its-tolerance-round")) tolerance = 1 / tolerance;
    if (fault("cubfla-swallows-exceptions")) {
        try {
            next(this, tolerance, callback, context);
        } catch (...) {
        }
        return;
    }
    if (fault("cubfla-runs-backwards")) {
        bezier turned;
        for (int i = 0; i < 4; ++i) turned.p[i] = p[3 - i];
        return next(&turned, tolerance, callback, context);
    }
    if (fault("cubfla-never-ends") && !(tolerance > 0))
        for (;;) callback(context, &p[1]);
    if (fault("cubfla-never-ends-on-nan") && std::isnan(p[1].x))
        for (;;) callback(context, &p[3]);
    if (fault("cubfla-misses-p3")) {
        bezier moved = *this;
        moved.p[3].x += 1e-9;
        return next(&moved, tolerance, callback, context);
    }
    next(this, tolerance, callback, context);
}

}  // namespace Pemmit

namespace Embedded {

// Not platform calls, but the adapter's way to what other hosts do inside.

bool addCurve(Pemmit::Path* path, int x1, int y1, int x2, int y2, int x3, int y3) {
    static auto* const next = real<bool(Pemmit::Path*, int, int, int, int, int, int)>(
        "_ZN8Embedded8addCurveEPN6Pemmit4PathEiiiiii");
    if (!fault("curves-are-chords")) return next(path, x1, y1, x2, y2, x3, y3);
    Pemmit::patlin(path, x3, y3);
    return true;
}

bool addChild(Pemmit::Object* parent, Pemmit::Object* child) {
    static auto* const next =
        real<bool(Pemmit::Object*, Pemmit::Object*)>("_ZN8Embedded8addChildEPN6Pemmit6ObjectES2_");
    const Pemmit::Box box = parent->box;
    const bool done = next(parent, child);
    if (fault("parents-never-grow")) parent->box = box;
    return done;
}

}  // namespace Embedded
