// Tracing when memory ends, and lists of edges that grow.

#include <doctest/doctest.h>

#include <cstddef>
#include <new>
#include <string>
#include <utility>
#include <vector>

#include "raster/vectorizer.h"
#include "tests/raster/ring.h"
#include "tests/support/bitmaps.h"
#include "tests/support/fake_host.h"
#include "vaskel/geometry.h"

namespace {

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

}  // namespace
