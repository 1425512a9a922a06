#include "samples/proof/runs.h"

#include <doctest/doctest.h>

#include <random>
#include <vector>

#include "tests/support/guarded_bytes.h"

using Proof::findRuns;

namespace {

constexpr int kKept = -7;

bool inked(const GuardedBytes& row, int x) { return (row.data()[x / 8] & (0x80 >> (x % 8))) != 0; }

// The rule itself: pixel by pixel.
std::vector<int> runsPlain(const GuardedBytes& row, int width, int scale) {
    std::vector<int> runs;
    for (int x = 0; x <= width; ++x) {
        const bool left = x > 0 && inked(row, x - 1);
        const bool right = x < width && inked(row, x);
        if (left != right) runs.push_back(x * scale);
    }
    return runs;
}

std::vector<int> found(const GuardedBytes& row, int width, int scale) {
    std::vector<int> runs(static_cast<std::size_t>(width) + 2, kKept);
    const int count = findRuns(row.data(), width, scale, runs.data(), width + 1);
    REQUIRE(count >= 0);
    REQUIRE(count <= width + 1);
    CHECK(runs[static_cast<std::size_t>(count)] == kKept);
    runs.resize(static_cast<std::size_t>(count));
    return runs;
}

}  // namespace

TEST_CASE("runs of short rows") {
    struct Row {
        std::string pixels;
        std::vector<int> want;
    };
    const Row rows[] = {
        {".", {}},
        {"#", {0, 1}},
        {"........", {}},
        {"########", {0, 8}},
        {"#..##...", {0, 1, 3, 5}},
        {".......#", {7, 8}},
        {"#.#.#.#.#", {0, 1, 2, 3, 4, 5, 6, 7, 8, 9}},
    };
    for (const Row& row : rows) {
        CAPTURE(row.pixels);
        const std::string& pixels = row.pixels;
        GuardedBytes packed((pixels.size() + 7) / 8);
        for (std::size_t x = 0; x < pixels.size(); ++x)
            if (pixels[x] == '#') packed[x / 8] |= static_cast<unsigned char>(0x80 >> (x % 8));
        CHECK(found(packed, static_cast<int>(pixels.size()), 1) == row.want);
    }
}

TEST_CASE("runs of random rows are those found pixel by pixel") {
    std::mt19937 random(20240612);
    for (int round = 0; round < 2000; ++round) {
        const int width = 1 + static_cast<int>(random() % 400);
        const int scale = round % 2 ? 1 : 16;
        GuardedBytes row(static_cast<std::size_t>((width + 7) / 8),
                         round % 4 < 2 ? GuardedBytes::AtEnd : GuardedBytes::AtStart);
        // From solid to noise: a run goes on with 0 to 7 chances out of 8.
        const unsigned keep = random() % 8;
        bool ink = random() % 2;
        for (int x = 0; x < width; ++x) {
            if (random() % 8 >= keep) ink = random() % 2;
            if (ink)
                row[static_cast<std::size_t>(x / 8)] |= static_cast<unsigned char>(0x80 >> (x % 8));
        }
        CAPTURE(round);
        CAPTURE(width);
        CHECK(found(row, width, scale) == runsPlain(row, width, scale));
    }
}

TEST_CASE("a row that does not fit is counted to its end and stored as far as it fits") {
    GuardedBytes row(16);
    for (std::size_t i = 0; i < row.size(); ++i) row[i] = 0xAA;
    for (const int capacity : {0, 1, 127, 128}) {
        CAPTURE(capacity);
        GuardedBytes runs(static_cast<std::size_t>(capacity) * sizeof(int));
        int* to = reinterpret_cast<int*>(runs.data());
        CHECK(findRuns(row.data(), 128, 1, to, capacity) == 128);
        for (int i = 0; i < capacity; ++i) CHECK(to[i] == i);
    }
}
