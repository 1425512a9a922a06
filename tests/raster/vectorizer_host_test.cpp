// The tracer and its surroundings: order of calls, cancelling, exceptions,
// memory, copies, cleaning.

#include <doctest/doctest.h>

#include <climits>
#include <functional>
#include <memory>
#include <new>
#include <string>
#include <utility>
#include <vector>

#include "geometry/clean.h"
#include "raster/vectorizer.h"
#include "tests/support/bitmaps.h"
#include "tests/support/fake_host.h"
#include "vaskel/geometry.h"

namespace {

using Calls = std::vector<std::string>;

const Bitmap kRing = {"####", "#..#", "#..#", "####"};
const Outlines kRingOutlines = {{{1, 1}, {3, 1}, {3, 3}, {1, 3}}, {{0, 0}, {4, 0}, {4, 4}, {0, 4}}};

// Traces kRing; notes what is called, and can stop or throw at a call.
class ScriptedTracer : public TestTracer {
 public:
    explicit ScriptedTracer(FakeHost* host = nullptr) : TestTracer(-1), mHost(host) {}

    struct Failure {};

    int getLine(int line, int* runs) override {
        note("getLine " + std::to_string(line));
        if (line == stopAt) return 7;
        writeRuns(kRing[static_cast<std::size_t>(line)], runs);
        return 0;
    }
    int convertVertical(int line) override {
        note("convertVertical " + std::to_string(line));
        return 10 * line;
    }
    void addPath(Pemmit::Path* path) override {
        const PathPtr owned(path);
        note("addPath");
        TestTracer::addPath(PathPtr(Pemmit::patdup(path)).release());
    }

    void note(std::string call) {
        if (mHost)
            for (std::string& each : mHost->takeCalls()) calls.push_back(std::move(each));
        calls.push_back(std::move(call));
        if (static_cast<int>(calls.size()) == throwAt) throw Failure{};
    }

    int stopAt = -1;
    int throwAt = 0;
    Calls calls;

 private:
    FakeHost* mHost;
};

TEST_CASE("vectorizer: each line shows progress, polls, is read and gets its coordinate") {
    Vaskel::cleanpar(0, 0, 0);
    FakeHost host;
    ScriptedTracer tracer(&host);
    CHECK(tracer.vectorize(4, false) == 0);
    CHECK(tracer.calls == Calls{"progress 0", "poll", "getLine 0", "convertVertical 0",   //
                                "progress 25", "poll", "getLine 1", "convertVertical 1",  //
                                "progress 50", "poll", "getLine 2", "convertVertical 2",  //
                                "progress 75", "poll", "getLine 3", "convertVertical 3",  //
                                "addPath", "addPath"});
    CHECK(host.takeCalls().empty());
}

TEST_CASE("vectorizer: the final pass does not ask convertVertical") {
    Vaskel::cleanpar(0, 0, 0);
    ScriptedTracer tracer;
    tracer.vectorize(4, false);
    // Lines 0 to 3 at 0, 10, 20, 30; the end at 4.
    CHECK(tracer.outlines ==
          Outlines{{{10, 1}, {30, 1}, {30, 3}, {10, 3}}, {{0, 0}, {4, 0}, {4, 4}, {0, 4}}});
}

TEST_CASE("vectorizer: no lines call nobody") {
    FakeHost host;
    ScriptedTracer tracer(&host);
    for (const int lines : {0, -1, INT_MIN}) CHECK(tracer.vectorize(lines, true) == 0);
    CHECK(tracer.calls.empty());
    CHECK(host.takeCalls().empty());
}

TEST_CASE("vectorizer: progress is a percentage of the lines") {
    FakeHost host;
    TestTracer tracer;
    tracer.trace({".", ".", "."});
    CHECK(host.takeCalls() ==
          Calls{"progress 0", "poll", "progress 33.3333", "poll", "progress 66.6667", "poll"});
}

// The outlines of the first lines of kRing, closed at that coordinate.
Outlines closedAt(int lines) {
    TestTracer tracer;
    return tracer.trace(Bitmap(kRing.begin(), kRing.begin() + lines));
}

TEST_CASE("vectorizer: a cancelled trace closes and delivers its outlines") {
    Vaskel::cleanpar(0, 0, 0);
    for (int n = 1; n <= 4; ++n) {
        CAPTURE(n);
        const Outlines want = closedAt(n - 1);
        FakeHost host({.cancelAtPoll = n});
        TestTracer tracer;
        CHECK(tracer.trace(kRing) == want);
        CHECK(host.polls() == n);
    }
    FakeHost host({.cancelAtPoll = 5});
    TestTracer tracer;
    CHECK(tracer.trace(kRing) == kRingOutlines);
    CHECK(host.polls() == 4);
}

TEST_CASE("vectorizer: where getLine stops, outlines are closed at that line") {
    Vaskel::cleanpar(0, 0, 0);
    for (int n = 0; n < 4; ++n) {
        CAPTURE(n);
        ScriptedTracer tracer;
        tracer.stopAt = n;
        CHECK(tracer.vectorize(4, false) == 0);
        CHECK(tracer.outlines.size() == closedAt(n).size());
        for (const Points& outline : tracer.outlines)
            CHECK(std::max(outline[1].x, outline[2].x) == n);
    }
    // After a stop on the first line nothing of an earlier bitmap shows.
    ScriptedTracer tracer;
    tracer.vectorize(2, false);
    tracer.outlines.clear();
    tracer.stopAt = 0;
    tracer.vectorize(4, false);
    CHECK(tracer.outlines.empty());
}

// ---- exceptions and memory --------------------------------------------------

TEST_CASE("vectorizer: an exception of any callback passes and leaves the tracer usable") {
    Vaskel::cleanpar(0, 0, 0);
    int failures = 0;
    for (int n = 1;; ++n) {
        ScriptedTracer tracer;
        tracer.throwAt = n;
        try {
            tracer.vectorize(4, false);
            break;
        } catch (const ScriptedTracer::Failure&) {
            ++failures;
        }
        tracer.throwAt = 0;
        tracer.outlines.clear();
        tracer.vectorize(4, false);
        CHECK(tracer.outlines.size() == 2);
    }
    CHECK(failures == 4 + 4 + 2);
}

TEST_CASE("vectorizer: an exception of the host passes and leaves the tracer usable") {
    Vaskel::cleanpar(0, 0, 0);
    int failures = 0;
    for (int n = 1;; ++n) {
        TestTracer tracer;
        bool thrown = false;
        {
            FakeHost host({.throwAtCall = n});
            try {
                tracer.trace(kRing);
            } catch (const HostFailure&) {
                thrown = true;
            }
        }
        if (!thrown) break;
        ++failures;
        CHECK(tracer.trace(kRing) == kRingOutlines);
    }
    CHECK(failures == 8);  // progress and poll of each line
}

// Keeps outlines without allocating.
class QuietTracer : public Vaskel::Vectorizer {
 public:
    using Vectorizer::Vectorizer;
    explicit QuietTracer(const Bitmap& bitmap) : Vectorizer(-1), mBitmap(&bitmap) {}
    int getLine(int line, int* runs) override {
        writeRuns((*mBitmap)[static_cast<std::size_t>(line)], runs);
        return 0;
    }
    void addPath(Pemmit::Path* path) override {
        ++outlines;
        Pemmit::objrem(path);
    }
    int lines() const { return static_cast<int>(mBitmap->size()); }
    int outlines = 0;

 private:
    const Bitmap* mBitmap = nullptr;
};

TEST_CASE("vectorizer: without memory for its buffers the constructor throws -1") {
    int minusOnes = 0;
    const int taken = failEachAllocation([&] {
        try {
            QuietTracer tracer(kRing);
        } catch (const int value) {
            CHECK(value == -1);
            ++minusOnes;
        }
    });
    CHECK(taken == 3);
    CHECK(minusOnes == 3);
}

TEST_CASE("vectorizer: memory that ends while tracing leaves the tracer usable") {
    // 300 runs: the edge list grows twice.
    const Bitmap wide = {std::string(600, '#'), std::string(600, '#')};
    Bitmap comb = wide;
    for (std::size_t x = 1; x < comb[0].size(); x += 2) comb[0][x] = '.';
    struct Row {
        Vaskel::AddLineForm form;
        int n;
        int enough;  // of allocations that fail
    };
    constexpr Row kRows[] = {{Vaskel::AddLineForm::kPlain, 0, 600},  // a path for each edge
                             {Vaskel::AddLineForm::kPlain, 1, 600},
                             {Vaskel::AddLineForm::kFast, 0, 10},  // 600 edges: 5 times 128
                             {Vaskel::AddLineForm::kFast, 1, 10}};
    for (const Row& row : kRows) {
        CAPTURE(static_cast<int>(row.form));
        CAPTURE(row.n);
        Vaskel::gAddLineForm = row.form;
        Vaskel::cleanpar(row.n, 1, 1);
        QuietTracer tracer(comb);
        tracer.vectorize(tracer.lines(), false);
        const int want = tracer.outlines;
        CHECK(want > 0);
        int minusOnes = 0, others = 0;
        const int taken = failEachAllocation([&] {
            QuietTracer fresh(tracer);  // has the buffers, but must have its own
            try {
                fresh.vectorize(fresh.lines(), false);
            } catch (const int value) {
                CHECK(value == -1);
                ++minusOnes;
            } catch (const std::bad_alloc&) {
                ++others;
            }
        });
        CHECK(taken > row.enough);
        CHECK(minusOnes + others > row.enough);  // the host does without some
        CHECK(minusOnes == 3);                   // two lines and a list as large as the source's
        tracer.outlines = 0;
        tracer.vectorize(tracer.lines(), false);
        CHECK(tracer.outlines == want);
    }
    Vaskel::gAddLineForm = Vaskel::AddLineForm::kFast;
    Vaskel::cleanpar(0, 0, 0);
}

TEST_CASE("vectorizer: an edge list that cannot grow throws -1") {
    Vaskel::cleanpar(0, 0, 0);
    Bitmap comb = {std::string(600, '#'), std::string(600, '#')};
    for (std::size_t x = 1; x < comb[0].size(); x += 2) comb[0][x] = '.';
    int minusOnes = 0;
    failEachAllocation([&] {
        try {
            QuietTracer tracer(comb);
            try {
                tracer.vectorize(tracer.lines(), false);
            } catch (const int value) {
                CHECK(value == -1);
                ++minusOnes;
                tracer.outlines = 0;
                tracer.vectorize(tracer.lines(), false);
                CHECK(tracer.outlines == 1);
            } catch (const std::bad_alloc&) {
            }
        } catch (const int) {
        }
    });
    CHECK(minusOnes == 2);  // 256 to 512 and 512 to 1024
}

// Makes the line before it disappear, so that its edges stay open.
class HoardingTracer : public Vaskel::Vectorizer {
 public:
    explicit HoardingTracer(std::vector<int> counts) : Vectorizer(-1), mCounts(std::move(counts)) {}
    int getLine(int line, int* runs) override {
        if (mLast) mLast[0] = kLineEnd;
        const int count = mCounts[static_cast<std::size_t>(line)];
        for (int i = 0; i < count; ++i) runs[i] = i;
        runs[count] = kLineEnd;
        mLast = runs;
        return 0;
    }
    void addPath(Pemmit::Path* path) override { Pemmit::objrem(path); }
    int trace() {
        mLast = nullptr;
        return vectorize(static_cast<int>(mCounts.size()), false);
    }
    std::vector<int> mCounts;

 private:
    int* mLast = nullptr;
};

TEST_CASE("vectorizer: 65534 open edges are fine, two more throw -2, and that does no harm") {
    HoardingTracer tracer({24998, 24998, 15538});
    CHECK(tracer.trace() == 0);
    tracer.mCounts = {24998, 24998, 15540};
    bool thrown = false;
    try {
        tracer.trace();
    } catch (const int value) {
        CHECK(value == -2);
        thrown = true;
    }
    CHECK(thrown);
    tracer.mCounts = {24998, 24998, 15538};
    CHECK(tracer.trace() == 0);
}

// ---- copies -----------------------------------------------------------------

TEST_CASE("vectorizer: copies and assigned ones trace, whichever goes first") {
    Vaskel::cleanpar(0, 0, 0);
    for (const bool sourceFirst : {true, false}) {
        CAPTURE(sourceFirst);
        auto source = std::make_unique<TestTracer>();
        auto copy = std::make_unique<TestTracer>(*source);
        TestTracer assigned(5);
        assigned = *source;
        CHECK(copy->trace(kRing) == kRingOutlines);
        CHECK(source->trace(kRing) == kRingOutlines);
        auto second = std::make_unique<TestTracer>(*copy);
        (sourceFirst ? source : copy).reset();
        std::unique_ptr<TestTracer>& left = sourceFirst ? copy : source;
        CHECK(left->trace(kRing) == kRingOutlines);
        left.reset();
        CHECK(second->trace(kRing) == kRingOutlines);
        CHECK(assigned.trace(kRing) == kRingOutlines);
        const TestTracer& itself = assigned;
        assigned = itself;
        CHECK(assigned.trace(kRing) == kRingOutlines);
    }
}

TEST_CASE("vectorizer: a copy takes the minimum size and the smoothing with it") {
    TestTracer source(3, 0, 0, 0, 1, true);
    TestTracer copy(source);
    TestTracer assigned(-1);
    assigned = source;
    const Bitmap steps = {"####", ".####", "..####", "...####"};
    const Outlines want = source.trace(steps);
    REQUIRE(want.size() == 1);
    CHECK(want[0].size() == 10);  // slanted on both sides
    CHECK(copy.trace(steps) == want);
    CHECK(assigned.trace(steps) == want);
    CHECK(copy.trace({"###", "###", "###"}).empty());
    CHECK(assigned.trace({"###", "###", "###"}).empty());
}

TEST_CASE("vectorizer: copying takes no memory, tracing with a copy takes its own") {
    const QuietTracer source(kRing);
    const long before = allocationCount();
    QuietTracer copy(source);
    CHECK(allocationCount() == before);
    failEachAllocation([&] {
        QuietTracer other(source);
        try {
            other.vectorize(other.lines(), false);
        } catch (const int value) {
            CHECK(value == -1);
        } catch (const std::bad_alloc&) {
        }
    });
    copy.vectorize(copy.lines(), false);
    CHECK(copy.outlines == 2);
}

// Runs an action at the n-th callback.
class ActingTracer : public TestTracer {
 public:
    int getLine(int line, int* runs) override {
        act();
        writeRuns(kRing[static_cast<std::size_t>(line)], runs);
        return 0;
    }
    int convertVertical(int line) override {
        act();
        return line;
    }
    void addPath(Pemmit::Path* path) override {
        PathPtr owned(path);
        act();
        TestTracer::addPath(owned.release());
    }
    void act() {
        if (--left == 0) action();
    }
    int left = 0;
    std::function<void()> action;
};

TEST_CASE("vectorizer: callbacks may copy, trace with a copy, with this object, and assign it") {
    Vaskel::cleanpar(0, 0, 0);
    Bitmap busy = {std::string(600, '#'), std::string(600, '#')};
    for (std::size_t x = 1; x < busy[0].size(); x += 2) busy[0][x] = '.';
    int calls = 0;
    for (int n = 1; n <= 10; ++n) {
        CAPTURE(n);
        ActingTracer tracer;
        std::unique_ptr<ActingTracer> copy;
        const auto traceAside = [&](ActingTracer& with) {
            const Outlines kept = tracer.outlines;
            with.left = 0;
            with.outlines.clear();
            with.vectorize(4, true);
            CHECK(with.outlines == kRingOutlines);
            with.outlines = &with == &tracer ? kept : Outlines();
            ++calls;
        };
        const std::function<void()> actions[] = {
            [&] { copy = std::make_unique<ActingTracer>(tracer); },
            [&] {
                copy = std::make_unique<ActingTracer>(tracer);
                traceAside(*copy);
            },
            [&] { traceAside(tracer); },
            [&] {
                ActingTracer other;
                traceAside(other);
                static_cast<Vaskel::Vectorizer&>(tracer) = other;
            },
        };
        for (const auto& action : actions) {
            tracer.outlines.clear();
            tracer.action = action;
            tracer.left = n;
            tracer.vectorize(4, false);
            CHECK(tracer.outlines == kRingOutlines);
            tracer.left = 0;
            if (copy) {
                copy->outlines.clear();
                copy->left = 0;
                copy->vectorize(4, false);
                CHECK(copy->outlines == kRingOutlines);
            }
        }
        CHECK(static_cast<TestTracer&>(tracer).outlines == kRingOutlines);
    }
    CHECK(calls == 30);
}

// ---- cleaning ---------------------------------------------------------------

struct ParameterRow {
    int p1, p2, p3, p4;
    int step;
};

const ParameterRow kParameterRows[] = {
    {1, 2, 7, 2, 3},   {0, 5, -7, 2, -3},           {2, 0, 1, 0, 0},   {3, 1, 12, 12, 1},
    {-4, -5, 1, 2, 0}, {1, 1, INT_MAX, 1, INT_MAX}, {1, 1, 6, -1, -6}, {1, 1, INT_MIN, -1, INT_MAX},
};

TEST_CASE("vectorizer: cleaning parameters are set by vecsetpar and by the constructor") {
    int rows = 0;
    for (const ParameterRow& row : kParameterRows) {
        CAPTURE(row.p3);
        CAPTURE(row.p4);
        const Vaskel::CleanState& state = Vaskel::cleanState();
        Vaskel::vecsetpar(row.p1, row.p2, row.p3, row.p4);
        CHECK(state.order == row.p1);
        CHECK(state.tolerance == row.p2);
        CHECK(state.step == row.step);
        Vaskel::cleanpar(9, 9, 9);
        const TestTracer plain(3);
        CHECK(state.step == 9);
        const TestTracer tracer(3, row.p1, row.p2, row.p3, row.p4, false);
        CHECK(state.order == row.p1);
        CHECK(state.tolerance == row.p2);
        CHECK(state.step == row.step);
        ++rows;
    }
    CHECK(rows == 8);
    Vaskel::cleanpar(0, 0, 0);
}

TEST_CASE("vectorizer: outlines are cleaned, and dropped if that makes them small") {
    const Bitmap block(8, std::string(8, '#'));
    TestTracer tracer(5);
    Vaskel::cleanpar(0, 0, 0);
    CHECK(tracer.trace(block) == Outlines{{{0, 0}, {8, 0}, {8, 8}, {0, 8}}});

    // A tolerance of 1 takes the corners of a one-unit staircase.
    Vaskel::cleanpar(0, 1, 0);
    const Outlines stairs = tracer.trace({"#######", ".#######", "..#######", "...#######",
                                          "....#######", ".....#######", "......#######"});
    REQUIRE(stairs.size() == 1);
    CHECK(stairs[0].size() < 8);

    // One sample a side and the filter: all four points near the middle.
    Vaskel::cleanpar(1, 0, 8);
    CHECK(tracer.trace(block).empty());
    Vaskel::cleanpar(1, 0, 1);
    CHECK(tracer.trace(block).size() == 1);
    Vaskel::cleanpar(0, 0, 0);
}

TEST_CASE("vectorizer: an outline that cleaning refuses is dropped") {
    Vaskel::cleanpar(0, 0, 0);
    TestTracer tracer(2);
    CHECK(tracer.trace({"######", "######"}).empty());  // 2 lines, 6 positions
    CHECK(tracer.trace(Bitmap(6, "##")).size() == 1);   // 6 lines, 2 positions
}

}  // namespace
