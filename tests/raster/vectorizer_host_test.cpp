// The tracer and its surroundings: order of calls, cancelling, exceptions,
// cleaning.

#include <doctest/doctest.h>

#include <algorithm>
#include <climits>
#include <string>
#include <utility>
#include <vector>

#include "geometry/clean.h"
#include "raster/vectorizer.h"
#include "tests/raster/ring.h"
#include "tests/support/bitmaps.h"
#include "tests/support/fake_host.h"
#include "vaskel/geometry.h"

namespace {

using Calls = std::vector<std::string>;

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

// ---- exceptions -------------------------------------------------------------

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
