// LibICCProfile: links between profiles.

#include <cstdint>
#include <cstring>
#include <thread>
#include <vector>

#include "adapter.h"
#include "check.h"
#include "platform/libiccprofile.h"

using namespace Check;

namespace {

constexpr std::uint32_t kRGB = 0x52474220;   // 'RGB '
constexpr std::uint32_t kCMYK = 0x434D594B;  // 'CMYK'
constexpr std::uint32_t kGray = 0x47524159;  // 'GRAY'
constexpr std::uint32_t kLab = 0x4C616220;   // 'Lab '
constexpr std::uint32_t kSpaces[] = {kRGB, kCMYK, kGray, kLab};

// How many of a target's four bytes carry a channel.
int channels(std::uint32_t space) { return space == kCMYK ? 4 : space == kGray ? 1 : 3; }

// A link with the two profiles that it came from closed again, or null.
struct Link {
    void* handle = nullptr;
    std::uint32_t from, to;

    Link(std::uint32_t f, std::uint32_t t) : from(f), to(t) {
        void* const a = Adapter::openProfile(f);
        void* const b = Adapter::openProfile(t);
        if (a && b) handle = LibICCProfile::MakeProfileLink(a, b);
        LibICCProfile::CloseProfile(a);
        LibICCProfile::CloseProfile(b);
    }
    ~Link() { LibICCProfile::DisposeProfileLink(handle); }
    Link(const Link&) = delete;
    Link& operator=(const Link&) = delete;

    bool match(std::size_t count, const unsigned char* source, unsigned char* target) const {
        return LibICCProfile::MatchColours(handle, count, 8, from, source, to, target);
    }
};

bool hasProfile(std::uint32_t space) {
    void* const profile = Adapter::openProfile(space);
    LibICCProfile::CloseProfile(profile);
    return profile != nullptr;
}

// All links between the spaces of which the host has profiles.
template <class Body>
void forEachLink(Body body) {
    int links = 0;
    for (std::uint32_t from : kSpaces)
        for (std::uint32_t to : kSpaces) {
            if (!hasProfile(from) || !hasProfile(to)) continue;
            CAPTURE(from);
            CAPTURE(to);
            const Link link(from, to);
            CHECK(link.handle != nullptr);
            if (link.handle) body(link);
            ++links;
        }
    if (links == 0) notChecked("the host has no profiles to link");
}

std::vector<unsigned char> pixels(std::size_t count, std::uint32_t seed) {
    Dice dice(seed);
    std::vector<unsigned char> bytes(4 * count);
    for (unsigned char& byte : bytes) byte = static_cast<unsigned char>(dice.below(256));
    return bytes;
}

}  // namespace

TEST_CASE("LibICCProfile::MatchColours: writes all four bytes, unused ones as 0") {
    forEachLink([](const Link& link) {
        constexpr std::size_t kCount = 300;
        const auto source = pixels(kCount, 7);
        std::vector<unsigned char> a(4 * kCount + 8, 0x11), b(4 * kCount + 8, 0xEE);
        CHECK(link.match(kCount, source.data(), a.data()));
        CHECK(link.match(kCount, source.data(), b.data()));
        for (std::size_t i = 0; i < 4 * kCount; ++i) {
            CHECK(a[i] == b[i]);  // written, and never read before
            if (static_cast<int>(i % 4) >= channels(link.to)) CHECK(a[i] == 0);
        }
        for (std::size_t i = 4 * kCount; i < a.size(); ++i) CHECK(a[i] == 0x11);
    });
}

TEST_CASE("LibICCProfile::MatchColours: unused bytes of a source are ignored") {
    forEachLink([](const Link& link) {
        auto one = pixels(100, 8);
        auto other = one;
        for (std::size_t i = 0; i < one.size(); ++i)
            if (static_cast<int>(i % 4) >= channels(link.from))
                other[i] = static_cast<unsigned char>(255 - one[i]);
        std::vector<unsigned char> a(400), b(400);
        CHECK(link.match(100, one.data(), a.data()));
        CHECK(link.match(100, other.data(), b.data()));
        CHECK(a == b);
    });
}

TEST_CASE("LibICCProfile::Match1Colour: one pixel as MatchColours does many, unaligned too") {
    forEachLink([](const Link& link) {
        const auto source = pixels(64, 9);
        std::vector<unsigned char> many(256), one(256 + 1);
        CHECK(link.match(64, source.data(), many.data()));
        for (std::size_t i = 0; i < 64; ++i) {
            unsigned char at[5];
            std::memcpy(at + 1, &source[4 * i], 4);
            CHECK(LibICCProfile::Match1Colour(link.handle, 8, link.from, at + 1, link.to,
                                              &one[4 * i + 1]));
            CHECK(std::memcmp(&one[4 * i + 1], &many[4 * i], 4) == 0);
        }
    });
}

TEST_CASE("LibICCProfile::MatchColours: a count of 0 succeeds and touches nothing") {
    forEachLink([](const Link& link) {
        CHECK(link.match(0, nullptr, nullptr));
        unsigned char source[4] = {1, 2, 3, 4}, target[4] = {9, 9, 9, 9};
        CHECK(link.match(0, source, target));
        for (unsigned char byte : target) CHECK(byte == 9);
    });
}

TEST_CASE("LibICCProfile::Match1Colour: refuses null, released links, other depths and spaces") {
    const unsigned char source[4] = {1, 2, 3, 4};
    unsigned char target[4] = {9, 9, 9, 9};
    const auto untouched = [&] { return std::memcmp(target, "\x09\x09\x09\x09", 4) == 0; };
    CHECK_FALSE(LibICCProfile::Match1Colour(nullptr, 8, kRGB, source, kRGB, target));
    CHECK_FALSE(LibICCProfile::MatchColours(nullptr, 1, 8, kRGB, source, kRGB, target));
    CHECK(untouched());
    {
        void* released = nullptr;
        {
            const Link link(kRGB, kGray);
            released = link.handle;
        }
        CHECK_FALSE(LibICCProfile::Match1Colour(released, 8, kRGB, source, kGray, target));
        CHECK(untouched());
    }
    forEachLink([&](const Link& link) {
        for (std::uint32_t depth : {0u, 1u, 7u, 9u, 16u, 32u}) {
            CAPTURE(depth);
            CHECK_FALSE(LibICCProfile::Match1Colour(link.handle, depth, link.from, source, link.to,
                                                    target));
            CHECK_FALSE(LibICCProfile::MatchColours(link.handle, 1, depth, link.from, source,
                                                    link.to, target));
        }
        for (std::uint32_t space : {kRGB, kCMYK, kGray, kLab, 0u, 0xFFFFFFFFu}) {
            CAPTURE(space);
            if (space != link.from)
                CHECK_FALSE(
                    LibICCProfile::Match1Colour(link.handle, 8, space, source, link.to, target));
            if (space != link.to)
                CHECK_FALSE(LibICCProfile::MatchColours(link.handle, 1, 8, link.from, source, space,
                                                        target));
        }
        CHECK(untouched());
    });
}

TEST_CASE("LibICCProfile::MakeProfileLink: null handles give null, and null is released") {
    CHECK(LibICCProfile::MakeProfileLink(nullptr, nullptr) == nullptr);
    LibICCProfile::DisposeProfileLink(nullptr);
    LibICCProfile::CloseProfile(nullptr);
    LibICCProfile::SetProfileRenderingIntent(nullptr, 1);
    for (std::uint32_t space : kSpaces) {
        void* const profile = Adapter::openProfile(space);
        if (!profile) continue;
        CHECK(LibICCProfile::MakeProfileLink(profile, nullptr) == nullptr);
        CHECK(LibICCProfile::MakeProfileLink(nullptr, profile) == nullptr);
        LibICCProfile::CloseProfile(profile);
    }
}

TEST_CASE("LibICCProfile: in device spaces white is light or paper, and black is not") {
    // 255 is full light in RGB and grey, 0 is no ink in CMYK.
    const auto isWhite = [](std::uint32_t space, const unsigned char* px) {
        for (int i = 0; i < channels(space); ++i)
            if (space == kCMYK ? px[i] > 8 : px[i] < 247) return false;
        return true;
    };
    forEachLink([&](const Link& link) {
        if (link.from == kLab || link.to == kLab) return;
        constexpr unsigned char kLow[4] = {0, 0, 0, 0};
        constexpr unsigned char kHigh[4] = {255, 255, 255, 255};
        unsigned char target[4];
        CHECK(link.match(1, link.from == kCMYK ? kLow : kHigh, target));
        CHECK(isWhite(link.to, target));
        CHECK(link.match(1, link.from == kCMYK ? kHigh : kLow, target));
        CHECK_FALSE(isWhite(link.to, target));
    });
}

TEST_CASE("LibICCProfile::SetProfileRenderingIntent: 4 to 9 leave the profile's intent") {
    const auto source = pixels(200, 10);
    const auto convert = [&](std::vector<std::uint32_t> intents) {
        std::vector<unsigned char> target(800);
        void* const from = Adapter::openProfile(kRGB);
        void* const to = Adapter::openProfile(kCMYK);
        for (std::uint32_t intent : intents) LibICCProfile::SetProfileRenderingIntent(from, intent);
        void* const link = from && to ? LibICCProfile::MakeProfileLink(from, to) : nullptr;
        if (link) {
            CHECK(LibICCProfile::MatchColours(link, 200, 8, kRGB, source.data(), kCMYK,
                                              target.data()));
        }
        LibICCProfile::DisposeProfileLink(link);
        LibICCProfile::CloseProfile(from);
        LibICCProfile::CloseProfile(to);
        return target;
    };
    if (!hasProfile(kRGB) || !hasProfile(kCMYK)) {
        notChecked("the host has no RGB and CMYK profiles");
        return;
    }
    for (std::uint32_t intent : {0u, 1u, 2u, 3u}) {
        CAPTURE(intent);
        const auto plain = convert({intent});
        for (std::uint32_t ignored : {4u, 5u, 9u}) CHECK(convert({intent, ignored}) == plain);
    }
}

TEST_CASE("LibICCProfile::MatchColours: one link may be used from several threads") {
    forEachLink([](const Link& link) {
        const auto source = pixels(500, 11);
        std::vector<unsigned char> want(2000);
        CHECK(link.match(500, source.data(), want.data()));
        int wrong[4] = {};
        std::vector<std::thread> threads;
        for (int& count : wrong)
            threads.emplace_back([&] {
                for (int round = 0; round < 20; ++round) {
                    std::vector<unsigned char> target(2000);
                    if (!link.match(500, source.data(), target.data()) || target != want) ++count;
                }
            });
        for (std::thread& thread : threads) thread.join();
        for (int count : wrong) CHECK(count == 0);
    });
}
