// Pemmit: mates and joins.

#include <thread>
#include <utility>

#include "check.h"

using namespace Check;

namespace {

// Two fresh mates.
struct Mates {
    PathPtr p{Pemmit::patbeg()};
    PathPtr q{Pemmit::patbeg()};
    Mates() { Pemmit::patlinbb(p.get(), q.get()); }
};

// count points with the given x.
PointList row(int x, int count) {
    PointList points;
    for (int i = 0; i < count; ++i) points.push_back({x, i});
    return points;
}

PointList operator+(PointList a, const PointList& b) {
    a.insert(a.end(), b.begin(), b.end());
    return a;
}

PointList closed(PointList points) {
    if (!points.empty()) points.push_back(points.front());
    return points;
}

}  // namespace

TEST_CASE("Pemmit::patlinbb: mates keep box, size and walk of their own and grow at their ends") {
    Mates mates;
    append(mates.p.get(), row(1, 3));
    append(mates.q.get(), row(2, 2));
    checkWalks(mates.p.get(), closed(row(1, 3)));
    checkWalks(mates.q.get(), closed(row(2, 2)));
    append(mates.p.get(), row(3, 1));
    checkWalks(mates.p.get(), closed(row(1, 3) + row(3, 1)));
}

TEST_CASE("Pemmit::patlinee: mates close into p followed by q reversed, and q is empty") {
    for (int np : {0, 1, 2, 8, 1000})
        for (int nq : {0, 1, 2, 8, 1000}) {
            CAPTURE(np);
            CAPTURE(nq);
            Mates mates;
            append(mates.p.get(), row(1, np));
            append(mates.q.get(), row(2, nq));
            Pemmit::patlinee(mates.p.get(), mates.q.get());
            const PointList outline = row(1, np) + reversed(row(2, nq));
            CHECK((mates.p->flags & Pemmit::kFlagOpen) == 0);
            checkWalks(mates.p.get(), closed(outline));
            checkWalks(mates.q.get(), {});
            // Neither has a mate any more: each may go first, and on its own.
            mates.q.reset();
            checkWalks(mates.p.get(), closed(outline));
            append(mates.p.get(), row(3, 2));
            checkWalks(mates.p.get(), closed(outline + row(3, 2)));
        }
}

TEST_CASE("Pemmit::patlinee: of two pairs P becomes q, p reversed, P, and p and q end empty") {
    // Which of the four have points, as bits.
    for (unsigned filled = 0; filled < 16; ++filled) {
        CAPTURE(filled);
        const int nP = filled & 1 ? 3 : 0, np = filled & 2 ? 2 : 0;
        const int nQ = filled & 4 ? 4 : 0, nq = filled & 8 ? 5 : 0;
        Mates first, second;  // P and p, Q and q
        append(first.p.get(), row(1, nP));
        append(first.q.get(), row(2, np));
        append(second.p.get(), row(3, nQ));
        append(second.q.get(), row(4, nq));
        Pemmit::patlinee(first.q.get(), second.q.get());
        PointList head = row(4, nq) + reversed(row(2, np)) + row(1, nP);
        checkWalks(first.p.get(), closed(head));
        checkWalks(second.p.get(), closed(row(3, nQ)));
        checkWalks(first.q.get(), {});
        checkWalks(second.q.get(), {});
        first.q.reset();
        second.q.reset();

        // P and Q are mates: both grow at their free ends and close.
        append(first.p.get(), row(5, 2));
        append(second.p.get(), row(6, 1));
        head = head + row(5, 2);
        checkWalks(first.p.get(), closed(head));
        Pemmit::patlinee(second.p.get(), first.p.get());
        checkWalks(second.p.get(), closed(row(3, nQ) + row(6, 1) + reversed(head)));
        checkWalks(first.p.get(), {});
    }
}

TEST_CASE("Pemmit::patlinee: paths that a join has emptied can be built anew") {
    Mates first, second;
    append(first.p.get(), row(1, 2));
    append(first.q.get(), row(2, 2));
    append(second.p.get(), row(3, 2));
    append(second.q.get(), row(4, 2));
    Pemmit::patlinee(first.q.get(), second.q.get());
    append(first.q.get(), row(7, 3));
    checkWalks(first.q.get(), closed(row(7, 3)));
    checkWalks(first.p.get(), closed(row(4, 2) + reversed(row(2, 2)) + row(1, 2)));
}

TEST_CASE("Pemmit::patlinee: what a join has put together and taken apart may go on two threads") {
    // The paths are no mates any more, so they do not disturb each other,
    // whatever memory their points still share.
    constexpr int kRounds = 2000;
    std::vector<Mates> first(kRounds), second(kRounds);
    for (std::size_t i = 0; i < kRounds; ++i) {
        for (const auto& path :
             {first[i].p.get(), first[i].q.get(), second[i].p.get(), second[i].q.get()})
            append(path, row(static_cast<int>(i), 5));
        Pemmit::patlinee(first[i].q.get(), second[i].q.get());  // empties both
        Pemmit::patlinee(first[i].p.get(), second[i].p.get());  // closes
    }
    std::thread other([&] {
        for (Mates& mates : first) mates.p.reset();
    });
    for (Mates& mates : first) {
        append(mates.q.get(), row(1, 3));
        mates.q.reset();
    }
    for (Mates& mates : second) mates.q.reset();
    other.join();
    checkWalks(second[0].p.get(), {});
}

TEST_CASE("Pemmit::patlinee: 12,498 gaps that end on one line become one outline") {
    // The upper edge of every gap is a pair of mates, and each right side is
    // joined with the next gap's left side, as the tracer does at the line
    // where a comb's teeth end.
    constexpr int kGaps = 12498;
    constexpr int kSide = 10;
    const PathPtr outer(Pemmit::patbeg());
    Pemmit::Path* open = Pemmit::patbeg();
    Pemmit::patlinbb(outer.get(), open);
    append(outer.get(), row(0, kSide));
    append(open, row(1, kSide));
    for (int gap = 1; gap < kGaps; ++gap) {
        Pemmit::Path* const left = Pemmit::patbeg();
        Pemmit::Path* const right = Pemmit::patbeg();
        Pemmit::patlinbb(left, right);
        append(left, row(2 * gap, kSide));
        append(right, row(2 * gap + 1, kSide));
        Pemmit::patlinee(open, left);
        CHECK(Pemmit::patsiz(open) == 0);
        CHECK(Pemmit::patsiz(left) == 0);
        Pemmit::objrem(open);
        Pemmit::objrem(left);
        open = right;
    }
    Pemmit::patlinee(outer.get(), open);
    Pemmit::objrem(open);

    // outer took every side in: the last gap's left side is its beginning.
    PointList want;
    for (int gap = kGaps - 1; gap >= 1; --gap) {
        const PointList left = row(2 * gap, kSide);
        const PointList before = reversed(row(2 * gap - 1, kSide));
        want.insert(want.end(), left.begin(), left.end());
        want.insert(want.end(), before.begin(), before.end());
    }
    want = want + row(0, kSide) + reversed(row(2 * (kGaps - 1) + 1, kSide));
    checkWalks(outer.get(), closed(want));
}

namespace {

// The outlines as the contract words it, copied at every join.
struct Model {
    struct Side {
        Pemmit::Path* path;
        PointList points;
        int mate = -1;
        bool open = false;
    };
    std::vector<Side> sides;

    void check(std::size_t i) {
        CAPTURE(i);
        const Side& side = sides[i];
        checkWalks(side.path, side.open ? side.points : closed(side.points));
    }
};

}  // namespace

TEST_CASE("Pemmit: any order of building, joining, copying and releasing") {
    for (std::uint32_t seed = 1; seed <= 40; ++seed) {
        CAPTURE(seed);
        Dice dice(seed);
        Model model;
        auto& sides = model.sides;
        const auto remove = [&](std::size_t i) {
            Pemmit::objrem(sides[i].path);
            if (sides[i].mate >= 0) sides[static_cast<std::size_t>(sides[i].mate)].mate = -1;
            if (i + 1 != sides.size()) {
                std::swap(sides[i], sides.back());
                if (sides[i].mate >= 0)
                    sides[static_cast<std::size_t>(sides[i].mate)].mate = static_cast<int>(i);
            }
            sides.pop_back();
        };
        for (int step = 0; step < 400; ++step) {
            CAPTURE(step);
            const int count = static_cast<int>(sides.size());
            const int action = dice.below(20);
            if (count < 4 || (action == 0 && count < 24)) {
                sides.push_back({Pemmit::patbeg(), {}, count + 1, false});
                sides.push_back({Pemmit::patbeg(), {}, count, false});
                Pemmit::patlinbb(sides[sides.size() - 2].path, sides.back().path);
                continue;
            }
            const auto i = static_cast<std::size_t>(dice.below(count));
            Model::Side& p = sides[i];
            if (action < 10) {
                for (int n = dice.below(action == 1 ? 200 : 5); n >= 0; --n) {
                    p.points.push_back({dice.coordinate(), dice.coordinate()});
                    Pemmit::patlin(p.path, p.points.back().first, p.points.back().second);
                }
                model.check(i);
            } else if (action < 16) {
                const auto j = static_cast<std::size_t>(dice.below(count));
                Model::Side& q = sides[j];
                if (i == j || p.mate < 0 || q.mate < 0) continue;
                Pemmit::patlinee(p.path, q.path);
                if (p.mate == static_cast<int>(j)) {
                    p.points = p.points + reversed(std::exchange(q.points, {}));
                    p.mate = q.mate = -1;
                    p.open = false;
                } else {
                    const auto iP = static_cast<std::size_t>(p.mate);
                    Model::Side& P = sides[iP];
                    Model::Side& Q = sides[static_cast<std::size_t>(q.mate)];
                    P.points = std::exchange(q.points, {}) + reversed(std::exchange(p.points, {})) +
                               P.points;
                    P.mate = q.mate;
                    Q.mate = p.mate;
                    p.mate = q.mate = -1;
                    model.check(iP);
                }
                model.check(i);
                model.check(j);
            } else if (action == 16) {
                const PathPtr copy(Pemmit::patdup(p.path));
                checkWalks(copy.get(), p.open ? p.points : closed(p.points));
            } else if (action == 17 && p.mate < 0) {
                p.open = dice.below(2) == 0;
                if (p.open) {
                    p.points.push_back({step, -step});
                    Pemmit::patend(p.path, step, -step);
                } else {
                    Pemmit::patendclo(p.path);
                }
                model.check(i);
            } else if (action >= 18 && count > 6) {
                remove(i);
            }
        }
        for (std::size_t i = 0; i < sides.size(); ++i) model.check(i);
        while (!sides.empty()) remove(0);
    }
}
