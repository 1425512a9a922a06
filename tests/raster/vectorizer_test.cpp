#include <doctest/doctest.h>

#include <climits>
#include <cstring>
#include <string>
#include <vector>

#include "raster/vectorizer.h"
#include "tests/support/bitmaps.h"
#include "tests/support/fake_host.h"
#include "vaskel/geometry.h"

namespace {

struct TraceRow {
    const char* why;
    int minSize;
    Bitmap bitmap;
    Outlines outlines;
};

// An outline runs up its left edge's path from the start and down its right
// one's: x is the line coordinate, y the position.
const TraceRow kTraceRows[] = {
    {"no lines", 0, {}, {}},
    {"nothing set", 0, {"...", "..."}, {}},
    {"one run on one line is closed by the final pass",
     0,
     {".##"},
     {{{0, 1}, {1, 1}, {1, 3}, {0, 3}}}},
    {"two lines of it", 0, {".##", ".##"}, {{{0, 1}, {2, 1}, {2, 3}, {0, 3}}}},
    {"it ends before the last line", 0, {"...", ".##", "..."}, {{{1, 1}, {2, 1}, {2, 3}, {1, 3}}}},
    {"two runs", 0, {"#.#"}, {{{0, 0}, {1, 0}, {1, 1}, {0, 1}}, {{0, 2}, {1, 2}, {1, 3}, {0, 3}}}},
    {"a step keeps its two corners",
     0,
     {"##.", ".##"},
     {{{0, 0}, {1, 0}, {1, 1}, {2, 1}, {2, 3}, {1, 3}, {1, 2}, {0, 2}}}},
    // The gap's edges join first and are dropped as paths of their own: they
    // are the hole. The outer outline follows.
    {"a run that splits and merges has one hole",
     0,
     {"###", "#.#", "###"},
     {{{1, 1}, {2, 1}, {2, 2}, {1, 2}}, {{0, 0}, {3, 0}, {3, 3}, {0, 3}}}},
    // The notch joins the inner edges; the outer ones become each other's end.
    {"two runs that merge are one outline",
     0,
     {"#.#", "###"},
     {{{0, 2}, {1, 2}, {1, 1}, {0, 1}, {0, 0}, {2, 0}, {2, 3}, {0, 3}}}},
    {"a run that splits is one outline",
     0,
     {"###", "#.#"},
     {{{1, 2}, {2, 2}, {2, 3}, {0, 3}, {0, 0}, {2, 0}, {2, 1}, {1, 1}}}},
    {"touching at a corner is not touching",
     0,
     {"#.", ".#"},
     {{{0, 0}, {1, 0}, {1, 1}, {0, 1}}, {{1, 1}, {2, 1}, {2, 2}, {1, 2}}}},
    {"a box of the minimum size goes", 2, {"##", "##"}, {}},
    {"one line more stays", 2, {"##", "##", "##"}, {{{0, 0}, {3, 0}, {3, 2}, {0, 2}}}},
    {"one line less goes", 2, {"##"}, {}},
    {"a negative minimum size keeps everything", -1, {"#"}, {{{0, 0}, {1, 0}, {1, 1}, {0, 1}}}},
    // clean refuses outlines at most minSize wide (lines) but higher.
    {"a wide run of few lines is refused by cleaning", 2, {"####", "####"}, {}},
    {"three lines of it are not", 2, {"####", "####", "####"}, {{{0, 0}, {3, 0}, {3, 4}, {0, 4}}}},
};

TEST_CASE("vectorizer: outlines of small bitmaps, point by point") {
    Vaskel::cleanpar(0, 0, 0);
    int rows = 0;
    for (const TraceRow& row : kTraceRows)
        for (const bool flip : {false, true}) {
            CAPTURE(row.why);
            CAPTURE(flip);
            TestTracer tracer(row.minSize);
            CHECK(tracer.trace(row.bitmap, flip) == row.outlines);
            ++rows;
        }
    CHECK(rows == 2 * 17);
}

// ---- smoothing --------------------------------------------------------------

struct Move {
    int line;      // from this line on
    int position;  // the left edge is here
};

struct SmoothRow {
    const char* why;
    bool flip;
    std::vector<Move> moves;
    int lines;
    Points left;  // the left edge's points, from top to bottom
};

// The left edge is the first of its line: the parity before it is not flip.
// Moving right with flip, or left without, is the case that emits the way to
// the new position at once (A); the others leave it to the next line (B).
const SmoothRow kSmoothRows[] = {
    {"B: a staircase becomes a line",
     false,
     {{0, 0}, {1, 1}, {2, 2}, {3, 3}},
     4,
     {{0, 0}, {1, 0}, {2, 1}, {3, 2}, {4, 3}}},
    {"A: the same on the other side",
     true,
     {{0, 0}, {1, 1}, {2, 2}, {3, 3}},
     4,
     {{0, 0}, {1, 1}, {2, 2}, {3, 3}, {4, 3}}},
    {"A without flip is a move to the left",
     false,
     {{0, 3}, {1, 2}, {2, 1}, {3, 0}},
     4,
     {{0, 3}, {1, 2}, {2, 1}, {3, 0}, {4, 0}}},
    {"B with flip is a move to the left",
     true,
     {{0, 3}, {1, 2}, {2, 1}, {3, 0}},
     4,
     {{0, 3}, {1, 3}, {2, 2}, {3, 1}, {4, 0}}},
    {"A: a far move after a while keeps its corner",
     true,
     {{0, 0}, {4, 5}},
     8,
     {{0, 0}, {4, 0}, {4, 5}, {8, 5}}},
    {"A: one of two units too", true, {{0, 0}, {4, 2}}, 8, {{0, 0}, {4, 0}, {4, 2}, {8, 2}}},
    {"A: one of a unit does not", true, {{0, 0}, {4, 1}}, 8, {{0, 0}, {4, 1}, {8, 1}}},
    {"A: nor a far one on the next line", true, {{0, 0}, {1, 5}}, 8, {{0, 0}, {1, 5}, {8, 5}}},
    {"A: but one two lines on", true, {{0, 0}, {2, 5}}, 8, {{0, 0}, {2, 0}, {2, 5}, {8, 5}}},
    // After B at line 8 the last position is 10 still.
    {"A after a far B: the way of that move comes first",
     true,
     {{0, 10}, {8, 5}, {12, 8}},
     16,
     {{0, 10}, {8, 10}, {8, 5}, {12, 5}, {12, 8}, {16, 8}}},
    {"A after B on the next line: the way of B, no corner of its own",
     true,
     {{0, 10}, {8, 5}, {9, 8}},
     16,
     {{0, 10}, {8, 10}, {8, 5}, {9, 8}, {16, 8}}},
    {"A after a B of one unit: no way of B",
     true,
     {{0, 10}, {8, 9}, {12, 13}},
     16,
     {{0, 10}, {8, 10}, {12, 9}, {12, 13}, {16, 13}}},
    {"B after a far B: the way of that move comes first",
     true,
     {{0, 10}, {8, 5}, {12, 0}},
     16,
     {{0, 10}, {8, 10}, {8, 5}, {12, 5}, {12, 0}, {16, 0}}},
    {"B after a far B on the next line: no way of it",
     true,
     {{0, 10}, {8, 5}, {9, 0}},
     16,
     {{0, 10}, {8, 10}, {9, 5}, {9, 0}, {16, 0}}},
    {"the end after a far B: the way of that move comes first",
     true,
     {{0, 10}, {8, 5}},
     10,
     {{0, 10}, {8, 10}, {8, 5}, {10, 5}}},
    {"the end on the next line: no way of it",
     true,
     {{0, 10}, {8, 5}},
     9,
     {{0, 10}, {8, 10}, {9, 5}}},
    {"the end after a B of one unit", true, {{0, 10}, {8, 9}}, 16, {{0, 10}, {8, 10}, {16, 9}}},
    {"positions of the whole range",
     true,
     {{0, INT_MIN}, {4, INT_MAX - 8}},
     8,
     {{0, INT_MIN}, {4, INT_MIN}, {4, INT_MAX - 8}, {8, INT_MAX - 8}}},
};

TEST_CASE("vectorizer: steps of one unit become slanted lines with smoothing") {
    constexpr int kRight = INT_MAX - 1;
    int rows = 0;
    for (const SmoothRow& row : kSmoothRows) {
        CAPTURE(row.why);
        TestTracer tracer(-1, 0, 0, 0, 1, true);
        for (const Move& move : row.moves)
            while (static_cast<int>(tracer.lists.size()) < row.lines) {
                const auto line = static_cast<int>(tracer.lists.size());
                const Move* const next = &move + 1;
                if (next != row.moves.data() + row.moves.size() && line >= next->line) break;
                tracer.lists.push_back({move.position, kRight, kLineEnd});
            }
        const Outlines outlines = tracer.traceLists(row.flip);
        Points want = row.left;
        want.push_back({row.lines, kRight});
        want.push_back({0, kRight});
        REQUIRE(outlines.size() == 1);
        CHECK(outlines[0] == want);
        ++rows;
    }
    CHECK(rows == 18);
}

// The right edge is the second one: its parity is that after the left one.
TEST_CASE("vectorizer: the parity changes from edge to edge") {
    const Bitmap wedge = {"#....", "##...", "###..", "####."};
    TestTracer tracer(-1, 0, 0, 0, 1, true);
    CHECK(tracer.trace(wedge, false) ==
          Outlines{{{0, 0}, {4, 0}, {4, 4}, {3, 4}, {2, 3}, {1, 2}, {0, 1}}});
    CHECK(tracer.trace(wedge, true) ==
          Outlines{{{0, 0}, {4, 0}, {4, 4}, {3, 3}, {2, 2}, {1, 1}, {0, 1}}});
}

TEST_CASE("vectorizer: a staircase keeps all corners without smoothing") {
    TestTracer tracer(-1);
    Vaskel::cleanpar(0, 0, 0);
    CHECK(tracer.trace({"#..", "##.", "###"}) ==
          Outlines{{{0, 0}, {3, 0}, {3, 3}, {2, 3}, {2, 2}, {1, 2}, {1, 1}, {0, 1}}});
}

// ---- odd lists --------------------------------------------------------------

struct ListRow {
    const char* why;
    std::vector<std::vector<int>> lists;
    Outlines outlines;
};

const ListRow kListRows[] = {
    {"a position without a partner ends the line",
     {{1, 5, 9, kLineEnd}, {1, 5, kLineEnd}, {kLineEnd}},
     {{{0, 1}, {2, 1}, {2, 5}, {0, 5}}}},
    {"the line behind it is read as usual",
     {{1, 5, 9, kLineEnd}, {2, 6, kLineEnd}, {kLineEnd}},
     {{{0, 1}, {1, 1}, {1, 2}, {2, 2}, {2, 6}, {1, 6}, {1, 5}, {0, 5}}}},
    {"a single position makes no outline", {{7, kLineEnd}, {7, kLineEnd}, {kLineEnd}}, {}},
    {"an edge that is not there ends the line",
     {{7, kLineEnd}, {8, kLineEnd}, {2, 4, 8, kLineEnd}, {2, 4, kLineEnd}},
     {{{2, 2}, {4, 2}, {4, 4}, {2, 4}}}},
    {"two that are not there end it too",
     {{7, kLineEnd}, {7, 9, kLineEnd}, {kLineEnd}, {2, 4, kLineEnd}},
     {{{3, 2}, {4, 2}, {4, 4}, {3, 4}}}},
    {"edges left over are released", {{1, 5, kLineEnd}, {1, kLineEnd}, {9, kLineEnd}}, {}},
    {"runs without pixels",
     {{3, 3, 5, 5, kLineEnd}},
     {{{0, 3}, {1, 3}, {1, 3}, {0, 3}}, {{0, 5}, {1, 5}, {1, 5}, {0, 5}}}},
    {"positions out of order are taken as they come",
     {{9, 2, kLineEnd}},
     {{{0, 9}, {1, 9}, {1, 2}, {0, 2}}}},
    {"negative positions are as good as others",
     {{INT_MIN, -7, kLineEnd}},
     {{{0, INT_MIN}, {1, INT_MIN}, {1, -7}, {0, -7}}}},
};

TEST_CASE("vectorizer: lists with odd counts or out of order do no harm") {
    Vaskel::cleanpar(0, 0, 0);
    int rows = 0;
    for (const ListRow& row : kListRows) {
        CAPTURE(row.why);
        TestTracer tracer;
        tracer.lists = row.lists;
        CHECK(tracer.traceLists() == row.outlines);
        CHECK(tracer.trace({"#"}) == Outlines{{{0, 0}, {1, 0}, {1, 1}, {0, 1}}});
        ++rows;
    }
    CHECK(rows == 9);
}

TEST_CASE("vectorizer: a list may fill the buffer, with a terminator or without") {
    Vaskel::cleanpar(0, 0, 0);
    TestTracer tracer;
    std::vector<int> all(Vaskel::Vectorizer::mLineSize);
    for (std::size_t i = 0; i < all.size(); ++i) all[i] = static_cast<int>(2 * i);
    tracer.lists = {all};
    CHECK(tracer.traceLists().size() == 12500);
    CHECK(tracer.outlines[12499] == Points{{0, 49996}, {1, 49996}, {1, 49998}, {0, 49998}});

    // 24999 positions: the last one has no partner, the first two move.
    all.back() = kLineEnd;
    tracer.lists = {all, {0, 2, kLineEnd}};
    CHECK(tracer.traceLists().size() == 12499);

    // 12498 gaps that end on one line, and begin on one.
    all.resize(24998);
    all.push_back(kLineEnd);
    tracer.lists = {{0, 49994, kLineEnd}, all, {0, 49994, kLineEnd}};
    CHECK(tracer.traceLists().size() == 12498 + 1);
}

// ---- the interface ----------------------------------------------------------

TEST_CASE("vectorizer: the buffer's size is a constant of the class") {
    static_assert(Vaskel::Vectorizer::mLineSize == 25000);
    const int* const address = &Vaskel::Vectorizer::mLineSize;
    CHECK(*address == 25000);
}

#if defined(__x86_64__) && defined(__GXX_ABI_VERSION)
// Itanium C++ ABI, 2.3: a pointer to a virtual function is 1 plus its offset in
// the table, in which the destructor takes the first two places.
template <class Function>
std::ptrdiff_t placeInTable(Function function) {
    std::ptrdiff_t words[2];
    static_assert(sizeof function == sizeof words);
    std::memcpy(words, &function, sizeof words);
    return (words[0] - 1) / 8;
}

TEST_CASE("vectorizer: the virtual functions stand in the order that subclasses are built for") {
    CHECK(placeInTable(&Vaskel::Vectorizer::getLine) == 2);
    CHECK(placeInTable(&Vaskel::Vectorizer::convertVertical) == 3);
    CHECK(placeInTable(&Vaskel::Vectorizer::addPath) == 4);
    CHECK(sizeof(Vaskel::Vectorizer) == 56);
}
#endif

}  // namespace
