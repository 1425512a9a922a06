// The self-intersection test word by word, slow and with nothing shared with
// the engine: what every form of the engine has to answer.

#ifndef TESTS_GEOMETRY_LITERAL_INTERSECT_H
#define TESTS_GEOMETRY_LITERAL_INTERSECT_H

#include <algorithm>
#include <cmath>
#include <deque>
#include <vector>

#include "platform/pemmit.h"

namespace LiteralIntersect {

struct Segment;

struct Vertex {
    int x = 0, y = 0;
    const Segment* arriving = nullptr;
    const Segment* leaving = nullptr;

    const Segment* otherThan(const Segment* s) const { return s == arriving ? leaving : arriving; }
};

struct Segment {
    const Vertex* a;
    const Vertex* b;

    const Vertex* farFrom(const Vertex* v) const { return v == a ? b : a; }
    /// The line's equation at p.
    double line(const Vertex& p) const {
        const double ax = a->x, ay = a->y, bx = b->x, by = b->y;
        return (ay - by) * p.x + (bx - ax) * p.y + (by * ax - bx * ay);
    }
};

/// Which rule decided about a pair, and how often it said no and yes.
struct Tally {
    long parallel[2] = {}, proper = 0, elsewhere = 0, noNeighbour = 0;
    long touch[4][2] = {};  // s = 0, s = 1, t = 0, t = 1
    long meet[4][2] = {};   // s = t = 0; s = 1, t = 0; s = 0, t = 1; s = t = 1
};

inline bool precedes(const Vertex& v, const Vertex& w) {
    return v.x < w.x || (v.x == w.x && v.y < w.y);
}

inline bool spansOverlap(int a1, int b1, int a2, int b2) {
    return std::max(a2, b2) > std::min(a1, b1) && std::max(a1, b1) > std::min(a2, b2);
}

inline double angle(const Vertex* from, const Vertex* to) {
    return std::atan2(static_cast<double>(to->x) - from->x, static_cast<double>(to->y) - from->y);
}

inline double angleFrom(double base, double angle) {
    return angle - base < 0 ? angle - base + 6.2831853 : angle - base;
}

// v, an end of toucher, lies within touched.
inline bool passes(const Segment* toucher, const Vertex* v, const Segment* touched, long* noYes,
                   Tally& tally) {
    const Segment* next = v->otherThan(toucher);
    if (!next) return ++tally.noNeighbour, false;
    const double f = touched->line(*next->farFrom(v));
    const double q = touched->line(*toucher->farFrom(v));
    const bool yes = f * q < 0;
    ++noYes[yes];
    return yes;
}

/// Whether the entering segment one crosses the active segment two.
inline bool pairCrosses(const Segment* one, const Segment* two, Tally& tally) {
    const Vertex *a1 = one->a, *b1 = one->b, *a2 = two->a, *b2 = two->b;
    const double det = (static_cast<double>(b2->y) - a2->y) * (static_cast<double>(b1->x) - a1->x) +
                       (static_cast<double>(a1->y) - b1->y) * (static_cast<double>(b2->x) - a2->x);
    if (det == 0) {
        bool yes = false;
        if (a1->x == b1->x && b1->x == a2->x && a2->x == b2->x)
            yes = spansOverlap(a1->y, b1->y, a2->y, b2->y);
        else if (one->line(*a2) == 0)
            yes = spansOverlap(a1->x, b1->x, a2->x, b2->x);
        ++tally.parallel[yes];
        return yes;
    }
    const double s = -one->line(*a2) / det;
    const double t = two->line(*a1) / det;
    const auto within = [](double p) { return 0 < p && p < 1; };
    if (within(s) && within(t)) return ++tally.proper, true;
    if (s == 0 && within(t)) return passes(two, a2, one, tally.touch[0], tally);
    if (s == 1 && within(t)) return passes(two, b2, one, tally.touch[1], tally);
    if (t == 0 && within(s)) return passes(one, a1, two, tally.touch[2], tally);
    if (t == 1 && within(s)) return passes(one, b1, two, tally.touch[3], tally);
    if (!(s == 0 || s == 1) || !(t == 0 || t == 1)) return ++tally.elsewhere, false;

    const Vertex* v = s == 0 ? a2 : b2;
    const Segment* next1 = a1->otherThan(one);  // at a1 for t = 1 too
    const Segment* next2 = v->otherThan(two);
    if (!next1 || !next2 || next1 == two || next2 == one) return ++tally.noNeighbour, false;
    const double base = angle(v, t == 0 ? b1 : a1);
    const double other1 = angleFrom(base, angle(v, next1->farFrom(a1)));
    const double first2 = angleFrom(base, angle(v, s == 0 ? b2 : a2));
    const double other2 = angleFrom(base, angle(v, next2->farFrom(v)));
    const bool yes = (first2 < other1) + (other2 < other1) == 1;
    ++tally.meet[(s == 1 ? 1 : 0) + (t == 1 ? 2 : 0)][yes];
    return yes;
}

class Sweep {
 public:
    /// How often the system was asked, and which rules decided.
    int polls = 0;
    Tally tally;

    int intersect(const Pemmit::Object* object) {
        if (!object) return 0;
        if (object->flags & 8u) {
            collect(object);
        } else if (object->flags & 0x80000000u) {
            Pemmit::queryseq children;
            for (const Pemmit::Object* c = children.quebeg(object, nullptr); c; c = c->next)
                if (c->flags & 8u) collect(c);
        } else {
            return 0;
        }
        return sweep();
    }

 private:
    void collect(const Pemmit::Object* path) {
        Pemmit::scan walk;
        walk.scabeg(path, 0, -1);
        std::vector<Vertex*> mine;
        std::vector<Segment*> edges;
        for (Vertex v; walk.scanex(&v.x, &v.y) >= 0;) {
            mVertexStore.push_back(v);
            mine.push_back(&mVertexStore.back());
            if (mine.size() < 2) continue;
            Vertex* previous = mine[mine.size() - 2];
            mSegmentStore.push_back({previous, mine.back()});
            edges.push_back(&mSegmentStore.back());
            previous->leaving = mine.back()->arriving = edges.back();
        }
        walk.scaend();
        if (mine.size() == 1) mine.pop_back();
        if (mine.size() > 1 && mine.front()->x == mine.back()->x &&
            mine.front()->y == mine.back()->y) {
            edges.back()->b = mine.front();
            mine.front()->arriving = edges.back();
            mine.pop_back();
        }
        mVertices.insert(mVertices.end(), mine.begin(), mine.end());
    }

    int sweep() {
        std::stable_sort(mVertices.begin(), mVertices.end(),
                         [](const Vertex* v, const Vertex* w) { return precedes(*v, *w); });
        std::vector<const Segment*> active;
        for (std::size_t i = 0; i < mVertices.size(); ++i) {
            if (i % 200 == 0) ++polls;
            const Vertex* v = mVertices[i];
            for (const Segment* s : {v->arriving, v->leaving})
                active.erase(std::remove(active.begin(), active.end(), s), active.end());
            for (const Segment* s : {v->arriving, v->leaving}) {
                if (!s || !precedes(*v, *s->farFrom(v))) continue;
                for (const Segment* other : active)
                    if (pairCrosses(s, other, tally)) return 1;
                active.push_back(s);
            }
        }
        return 0;
    }

    std::deque<Vertex> mVertexStore;
    std::deque<Segment> mSegmentStore;
    std::vector<const Vertex*> mVertices;
};

}  // namespace LiteralIntersect

#endif
