// Where a caller's lines lie, and lines that are written past the caches.

#include <doctest/doctest.h>

#include <cstring>
#include <vector>

#include "raster/lines_ahead.h"
#include "tests/support/guarded_bytes.h"
#include "vaskel/raster.h"

using namespace Vaskel;

namespace {

TEST_CASE("lines: where the next line will be follows from the last three") {
    const unsigned char image[400] = {};
    LinesAhead ahead;
    struct Row {
        const char* why;
        int line, step;
    };
    for (const Row& row : {Row{"one", 0, 0}, Row{"two", 1, 0}, Row{"three", 2, 40},
                           Row{"four", 3, 40}, Row{"a leap", 6, 0}, Row{"another way", 5, 0},
                           Row{"upwards", 4, -40}, Row{"again", 4, 0}, Row{"and again", 4, 0}}) {
        CAPTURE(row.why);
        const unsigned char* const line = &image[40 * row.line];
        ahead.took(line);
        CHECK(static_cast<std::intptr_t>(ahead.step()) == row.step);
        CHECK(ahead.next() == reinterpret_cast<std::uintptr_t>(line) + ahead.step());
    }
}

// Lets lines go past the caches from so many bytes on.
struct StreamsFrom {
    explicit StreamsFrom(std::size_t bytes) {
        gLineStreams.from = bytes;
        gLineStreams.count = 0;
    }
    ~StreamsFrom() { gLineStreams.from = kShipped; }
    const std::size_t kShipped = gLineStreams.from;
};

// Of 20 lines so many go past the caches: step bytes apart, one that stays where the
// line before was.
unsigned streamed(std::size_t from, std::ptrdiff_t step, std::size_t bytes, int stays) {
    const StreamsFrom streams(from);
    GuardedBytes image(400 * 20);
    std::vector<unsigned char> line(bytes);
    TakenLines taken;
    unsigned char* to = image.data() + (step < 0 ? image.size() - bytes : 0);
    for (int y = 0; y < 20; ++y) {
        for (unsigned char& byte : line) byte = static_cast<unsigned char>(byte + y + 1);
        taken.copy(to, line.data(), bytes);
        CHECK(std::memcmp(to, line.data(), bytes) == 0);
        if (y != stays) to += step;
    }
    return gLineStreams.count;
}

TEST_CASE("lines: those of an image go past the caches once it is large enough") {
    struct Row {
        const char* why;
        std::size_t from;
        std::ptrdiff_t step;
        std::size_t bytes;
        int stays;
        unsigned streamed;
    };
    const Row rows[] = {
        {"the third line tells that they lie evenly", 0, 200, 200, -1, 18},
        {"ten lines in the caches, from the third one on", 2000, 200, 200, -1, 8},
        {"with gaps", 2000, 300, 200, -1, 8},
        {"upwards", 2000, -200, 200, -1, 8},
        {"one that stays begins anew, after two more", 2000, 200, 200, 5, 2},
        {"all in one place", 0, 0, 200, -1, 0},
        {"over one another", 0, 199, 200, -1, 0},
        {"upwards over one another", 0, -199, 200, -1, 0},
        {"small ones", 0, 50, 50, -1, 18},
        {"the image as it is shipped", gLineStreams.from, 200, 200, -1, 0},
    };
    for (const Row& row : rows) {
        CAPTURE(row.why);
        CHECK(streamed(row.from, row.step, row.bytes, row.stays) == row.streamed);
    }
}

TEST_CASE("lines: past the caches or not, every byte is copied and none besides") {
    const StreamsFrom streams(0);
    for (std::size_t bytes = 1; bytes < 300; ++bytes)
        for (std::size_t at = 0; at < 64; at += 7) {
            CAPTURE(bytes);
            CAPTURE(at);
            const std::size_t step = bytes + 3;
            std::vector<unsigned char> line(bytes), image(at + 5 * step, 0xEE);
            auto want = image;
            TakenLines taken;
            for (std::size_t y = 0; y < 5; ++y) {
                for (std::size_t i = 0; i < bytes; ++i)
                    line[i] = static_cast<unsigned char>(31 * y + i);
                std::memcpy(&want[at + y * step], line.data(), bytes);
                taken.copy(&image[at + y * step], line.data(), bytes);
            }
            REQUIRE(image == want);
        }
    CHECK(gLineStreams.count.load() == 299 * 10 * 3);
}

TEST_CASE("upsampler: a large image goes past the caches, and is the same") {
    const unsigned line[6] = {1, 2, 3, 4, 5, 6};
    const auto enlarged = [&] {
        upsampler u(1, 3.5, 6);
        std::vector<unsigned> image(21 * 21);
        unsigned* to = image.data();
        for (int y = 0; y < 6; ++y)
            for (u.stuff(line); u.ready(); to += 21) u.get(to, 84);
        CHECK(to == image.data() + image.size());
        return image;
    };
    const std::vector<unsigned> want = enlarged();
    const StreamsFrom streams(840);
    CHECK(enlarged() == want);
    CHECK(gLineStreams.count.load() == 9);
}

}  // namespace
