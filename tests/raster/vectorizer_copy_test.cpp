// Copies of tracers, taken before, after and while they trace.

#include <doctest/doctest.h>

#include <cstddef>
#include <functional>
#include <memory>
#include <string>

#include "raster/vectorizer.h"
#include "tests/raster/ring.h"
#include "tests/support/bitmaps.h"
#include "vaskel/geometry.h"

namespace {

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

}  // namespace
