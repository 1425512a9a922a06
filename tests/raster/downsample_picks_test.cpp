// Every form of nearest pick takes the plain form's pixels.

#include <doctest/doctest.h>

#include <cstring>
#include <random>
#include <string>
#include <vector>

#include "raster/downsample_picks.h"
#include "tests/support/guarded_bytes.h"
#include "vaskel/raster.h"

using namespace Vaskel;

namespace {

constexpr unsigned kSeed = 2417;
constexpr std::uintptr_t kNowhere = std::uintptr_t{1} << 40;  // behind a line

struct ForcedPick {
    explicit ForcedPick(const PickForm* form) { forcePickForm(form); }
    ~ForcedPick() { forcePickForm(nullptr); }
    ForcedPick(const ForcedPick&) = delete;
    ForcedPick& operator=(const ForcedPick&) = delete;
};

void fill(GuardedBytes& bytes, std::mt19937& random) {
    for (std::size_t i = 0; i < bytes.size(); ++i) bytes[i] = static_cast<unsigned char>(random());
}

DownsamplePicks picksFor(unsigned width, std::size_t n) {
    const double factor = static_cast<double>(width) / static_cast<double>(n);
    return {factor, static_cast<std::uint32_t>(factor), width, n};
}

// Input and output end at unmapped pages, save for the room that bytes may use.
void checkForms(const DownsamplePicks& picks, std::mt19937& random) {
    CAPTURE(picks.width);
    CAPTURE(picks.count);
    const std::size_t n = picks.count;
    GuardedBytes pixels(4 * std::size_t{picks.width}), bytes(picks.width);
    fill(pixels, random);
    fill(bytes, random);
    GuardedBytes wantPixels(4 * n), wantBytes(n + kPickRoom);
    kPickPlain.pixels(picks, pixels.data(), 0, 0, wantPixels.data());
    kPickPlain.bytes(picks, bytes.data(), 0, wantBytes.data());
    for (const PickForm* form : pickForms().subspan(1)) {
        CAPTURE(std::string(form->name));
        GuardedBytes gotPixels(4 * n), gotBytes(n + kPickRoom);
        form->pixels(picks, pixels.data(), kNowhere, kNowhere, gotPixels.data());
        form->bytes(picks, bytes.data(), kNowhere, gotBytes.data());
        REQUIRE(gotPixels == wantPixels);
        REQUIRE(std::memcmp(gotBytes.data(), wantBytes.data(), n) == 0);
        // There and back, from slots whose upper bytes count for nothing.
        GuardedBytes line(n), slots(4 * n), wantSlots(4 * n), back(n);
        std::memcpy(line.data(), wantBytes.data(), n);
        form->widen(line.data(), n, slots.data());
        kPickPlain.widen(line.data(), n, wantSlots.data());
        REQUIRE(slots == wantSlots);
        form->narrow(slots.data(), n, back.data());
        REQUIRE(back == line);
        form->narrow(wantPixels.data(), n, back.data());
        kPickPlain.narrow(wantPixels.data(), n, line.data());
        REQUIRE(back == line);
    }
}

}  // namespace

TEST_CASE("nearest pick: every form takes the plain form's pixels, all small sizes") {
    std::mt19937 random(kSeed);
    for (unsigned width = 1; width <= 70; ++width)
        for (std::size_t n = 1; n <= width; ++n) checkForms(picksFor(width, n), random);
}

TEST_CASE("nearest pick: every form takes the plain form's pixels, random sizes") {
    std::mt19937 random(kSeed + 1);
    for (int round = 0; round < 2000; ++round) {
        const unsigned width = 1 + static_cast<unsigned>(random() % 3000);
        // Factors near 1, anywhere, and up to a few pixels for the line.
        const std::size_t most = round % 3 == 0 ? width : 1 + width / (1 + random() % 12);
        const std::size_t n = round % 3 == 0 ? width - random() % (1 + width / 8)
                                             : 1 + static_cast<std::size_t>(random() % most);
        checkForms(picksFor(width, n), random);
    }
}

TEST_CASE("nearest pick: blocks hold all picks but those of the last pixels") {
    for (unsigned width : {15u, 16u, 17u, 160u, 1000u})
        for (std::size_t n : {std::size_t{width} / 5 + 1, std::size_t{width} / 2 + 1}) {
            const DownsamplePicks picks = picksFor(width, n);
            CAPTURE(width);
            CAPTURE(n);
            REQUIRE(picks.taken.size() == width / 16);
            std::size_t j = 0;
            for (std::size_t block = 0; block < picks.taken.size(); ++block)
                for (unsigned i = 0; i < picks.taken[block]; ++i, ++j)
                    CHECK(picks.sources[j] == 16 * block + picks.places[16 * block + i]);
            for (; j < picks.count; ++j) CHECK(picks.sources[j] >= width / 16 * 16);
        }
    CHECK(picksFor(160, 20).taken.empty());  // factor 8: one by one
}

TEST_CASE("nearest pick: the forced form takes lines, bytes and adjusted lines") {
    static int pixels = 0, bytes = 0, narrowed = 0;
    pixels = bytes = narrowed = 0;
    static const PickForm counting = {
        "counting",
        [](const DownsamplePicks& picks, const unsigned char* line, std::uintptr_t ahead,
           std::uintptr_t taker, unsigned char* out) {
            ++pixels;
            kPickPlain.pixels(picks, line, ahead, taker, out);
        },
        [](const DownsamplePicks& picks, const unsigned char* line, std::uintptr_t ahead,
           unsigned char* out) {
            ++bytes;
            kPickPlain.bytes(picks, line, ahead, out);
        },
        kPickPlain.widen,
        [](const unsigned char* slots, std::size_t count, unsigned char* out) {
            ++narrowed;
            kPickPlain.narrow(slots, count, out);
        }};
    const ForcedPick forced(&counting);
    downsampler sampler(5, 2, 10, 5);  // 0, 3, 5, 8 of line 2, then of line 4
    sampler.setFiltering(false);
    const unsigned line[10] = {10, 11, 12, 13, 14, 15, 16, 17, 18, 19};
    const unsigned char narrow[10] = {0, 1, 2, 3, 4, 5, 6, 7, 8, 9};
    unsigned out[4] = {};
    for (int i = 0; i < 3; ++i) sampler.stuff(line);
    sampler.get(out);
    CHECK(pixels == 1);
    CHECK(out[0] == 10);
    CHECK(out[3] == 18);
    unsigned char bytesOut[4] = {};
    for (int i = 0; i < 2; ++i) sampler.stuff(narrow);
    sampler.get(bytesOut);
    CHECK(bytes == 1);
    CHECK(narrowed == 0);  // bytes are taken as they were picked
    CHECK(bytesOut[1] == 3);
    sampler.adjust(narrow, bytesOut);
    CHECK(bytes == 2);
    for (int i = 0; i < 3; ++i) sampler.stuff(line);
    sampler.get(bytesOut);
    CHECK(narrowed == 1);
    CHECK(bytesOut[3] == 18);
}

TEST_CASE("nearest pick: all forms give whole images alike") {
    std::mt19937 random(kSeed + 2);
    for (int round = 0; round < 60; ++round) {
        const unsigned width = 1 + static_cast<unsigned>(random() % 200);
        const double factor = 1 + static_cast<double>(random() % 600) / 100;
        std::vector<unsigned char> outputs[2];
        const std::uint32_t seed = static_cast<std::uint32_t>(random());
        for (int form = 0; form < 2; ++form) {
            const ForcedPick forced(form ? nullptr : &kPickPlain);
            std::mt19937 pixels(seed);
            downsampler sampler(factor, 1, width, 20);
            sampler.setFiltering(false);
            const std::size_t n = sampler.resize(width);
            GuardedBytes wide(4 * std::size_t{width}), narrow(width), out(4 * n), line(n);
            const auto keep = [&](const GuardedBytes& taken) {
                outputs[form].insert(outputs[form].end(), taken.data(),
                                     taken.data() + taken.size());
            };
            for (int y = 0; y < 20; ++y) {
                fill(wide, pixels);
                fill(narrow, pixels);
                if (y % 5 < 3)
                    sampler.stuff(reinterpret_cast<const unsigned*>(wide.data()));
                else
                    sampler.stuff(narrow.data());
                while (sampler.ready()) {
                    if (pixels() % 2)
                        sampler.get(reinterpret_cast<unsigned*>(out.data())), keep(out);
                    else
                        sampler.get(line.data()), keep(line);
                }
                sampler.adjust(narrow.data(), line.data());
                keep(line);
            }
            sampler.getlastline(reinterpret_cast<unsigned*>(out.data()));
            keep(out);
        }
        CAPTURE(width);
        CAPTURE(factor);
        CHECK(outputs[0] == outputs[1]);
    }
}

TEST_CASE("nearest pick: forms are told where the next line lies, and where picks go") {
    static std::vector<std::uintptr_t> told, takers;
    told.clear();
    takers.clear();
    static const PickForm listening = {
        "listening",
        [](const DownsamplePicks& picks, const unsigned char* line, std::uintptr_t ahead,
           std::uintptr_t taker, unsigned char* out) {
            told.push_back(ahead);
            takers.push_back(taker);
            kPickPlain.pixels(picks, line, ahead, taker, out);
        },
        kPickPlain.bytes, kPickPlain.widen, kPickPlain.narrow};
    const ForcedPick forced(&listening);
    downsampler sampler(5, 2, 10, 10);  // picks from lines 2, 4, 7 and 9
    sampler.setFiltering(false);
    const std::vector<unsigned> image(100);
    unsigned out[4][4];
    std::size_t taken = 0;
    for (std::size_t y = 0; y < 10; ++y) {
        sampler.stuff(&image[10 * y]);
        while (sampler.ready()) sampler.get(out[taken++]);
    }
    CHECK(told == std::vector<std::uintptr_t>{2 * 40, 3 * 40, 2 * 40, 3 * 40});
    // Three lines tell that they lie evenly.
    CHECK(takers == std::vector<std::uintptr_t>{0, 0, 0, reinterpret_cast<std::uintptr_t>(out[3])});
}

// Slots are made of picked bytes when someone asks for them; whoever asks, in
// whatever order, finds what slots made at once would hold.
TEST_CASE("nearest pick: lines hold slots of four bytes, whatever is asked for when") {
    constexpr unsigned kWidth = 20, kHeight = 30;
    constexpr std::size_t n = 8;  // of 2.5 pixels
    const DownsamplePicks picks = picksFor(kWidth, n);
    for (unsigned seed = kSeed; seed < kSeed + 500; ++seed) {
        CAPTURE(seed);
        std::mt19937 random(seed);
        downsampler samplers[2] = {{5, 2, kWidth, kHeight}, {5, 2, kWidth, kHeight}};
        samplers[0].setFiltering(false);
        samplers[1] = samplers[0];  // one line for both
        std::vector<unsigned> slots(n), line(kWidth), out(n);
        auto* const lineBytes = reinterpret_cast<unsigned char*>(line.data());
        auto* const slotBytes = reinterpret_cast<unsigned char*>(slots.data());
        for (int call = 0; call < 40; ++call) {
            CAPTURE(call);
            downsampler& sampler = samplers[random() % 2];
            std::vector<unsigned char> bytes(n), want(n);
            for (std::size_t j = 0; j < n; ++j)
                want[j] =
                    sampler.isFiltering() ? slotBytes[j] : static_cast<unsigned char>(slots[j]);
            for (unsigned& pixel : line) pixel = static_cast<unsigned>(random());
            switch (random() % 6) {
                case 0:
                    if (sampler.isFiltering()) break;
                    sampler.stuff(line.data());
                    if (!sampler.ready()) break;
                    for (std::size_t j = 0; j < n; ++j) slots[j] = line[picks.sources[j]];
                    break;
                case 1:
                    if (sampler.isFiltering()) break;
                    sampler.stuff(lineBytes);
                    if (!sampler.ready()) break;
                    for (std::size_t j = 0; j < n; ++j) slots[j] = lineBytes[picks.sources[j]];
                    break;
                case 2:
                    if (!sampler.ready()) break;
                    sampler.get(bytes.data());
                    REQUIRE(bytes == want);
                    break;
                case 3:
                    if (sampler.isFiltering()) break;
                    sampler.getlastline(out.data());
                    REQUIRE(out == slots);
                    sampler.getlastline(bytes.data());
                    REQUIRE(bytes == want);
                    break;
                case 4:
                    if (!sampler.ready()) break;
                    sampler.get(out.data());
                    REQUIRE(out == slots);
                    break;
                default:
                    sampler.adjust(lineBytes, bytes.data());
                    sampler.setFiltering(random() % 3 == 0);
            }
        }
    }
}
