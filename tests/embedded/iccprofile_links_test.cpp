#include <doctest/doctest.h>

#include <lcms2.h>

#include <cstdint>
#include <random>
#include <string>
#include <thread>
#include <vector>

#include "embedded/profiles.h"
#include "platform/libiccprofile.h"
#include "tests/support/guarded_bytes.h"

namespace {

using namespace LibICCProfile;
using namespace Embedded;

constexpr std::uint32_t kRgb = 0x52474220, kLab = 0x4C616220, kGray = 0x47524159,
                        kCmyk = 0x434D594B;

const std::string kPressProfile = std::string(VASKEL_SAMPLE_DATA) + "/FOGRA39L_coated.icc";

struct Pixels {
    explicit Pixels(std::size_t count, unsigned seed = 1) : bytes(4 * count) {
        std::mt19937 random(seed);
        for (std::size_t i = 0; i < bytes.size(); ++i)
            bytes[i] = static_cast<unsigned char>(random());
    }
    GuardedBytes bytes;
};

TEST_CASE("profiles: colour spaces are the signatures of their four characters") {
    struct Row {
        void* profile;
        std::uint32_t space;
    };
    const Row rows[] = {{makeSrgbProfile(), kRgb},
                        {makeLabProfile(), kLab},
                        {makeGreyProfile(), kGray},
                        {openProfile(kPressProfile.c_str()), kCmyk}};
    for (const Row& row : rows) {
        REQUIRE(row.profile != nullptr);
        CHECK(colourSpaceOf(row.profile) == row.space);
        CHECK_FALSE(profileDescription(row.profile).empty());
        CloseProfile(row.profile);
        CHECK(colourSpaceOf(row.profile) == 0);
        CloseProfile(row.profile);  // once more does no harm
    }
    CloseProfile(nullptr);
}

TEST_CASE("profiles: what cannot be opened leaves a reason") {
    CHECK(openProfile("no/such/profile.icc") == nullptr);
    CHECK_FALSE(lastProfileError().empty());
    CHECK(openProfile(nullptr) == nullptr);
    const char garbage[200] = "this is no profile";
    CHECK(openProfileInMemory(garbage, sizeof garbage) == nullptr);
    CHECK(openProfileInMemory(garbage, 0) == nullptr);
    CHECK(openProfileInMemory(nullptr, 5) == nullptr);
    CHECK_FALSE(lastProfileError().empty());
    CHECK(colourSpaceOf(nullptr) == 0);
    CHECK(profileDescription(nullptr).empty());
}

// The link's bytes against Little CMS called directly with the same flags.
void checkLink(void* from, std::uint32_t inFormat, void* to, std::uint32_t outFormat,
               cmsHPROFILE lcmsFrom, cmsHPROFILE lcmsTo, std::uint32_t intent,
               std::size_t outChannels) {
    void* const link = MakeProfileLink(from, to);
    REQUIRE(link != nullptr);
    const std::size_t count = 2000;
    Pixels in(count);
    GuardedBytes got(4 * count);
    REQUIRE(MatchColours(link, count, 8, colourSpaceOf(from), in.bytes.data(), colourSpaceOf(to),
                         got.data()));
    cmsHTRANSFORM direct = cmsCreateTransform(lcmsFrom, inFormat, lcmsTo, outFormat, intent,
                                              cmsFLAGS_NOOPTIMIZE | cmsFLAGS_NOCACHE);
    REQUIRE(direct != nullptr);
    std::vector<unsigned char> want(4 * count);
    cmsDoTransform(direct, in.bytes.data(), want.data(), static_cast<cmsUInt32Number>(count));
    cmsDeleteTransform(direct);
    for (std::size_t i = 0; i < count; ++i)
        for (std::size_t c = 0; c < 4; ++c)
            REQUIRE(got[4 * i + c] == (c < outChannels ? want[4 * i + c] : 0));
    GuardedBytes one(4);
    REQUIRE(
        Match1Colour(link, 8, colourSpaceOf(from), in.bytes.data(), colourSpaceOf(to), one.data()));
    for (std::size_t c = 0; c < 4; ++c) CHECK(one[c] == got[c]);
    DisposeProfileLink(link);
}

TEST_CASE("links: pixels are what Little CMS makes of them, unused bytes are 0") {
    void* const press = openProfile(kPressProfile.c_str());
    void* const srgb = makeSrgbProfile();
    void* const lab = makeLabProfile();
    const cmsHPROFILE lcmsPress = cmsOpenProfileFromFile(kPressProfile.c_str(), "r");
    const cmsHPROFILE lcmsSrgb = cmsCreate_sRGBProfile();
    const cmsHPROFILE lcmsLab = cmsCreateLab4Profile(nullptr);
    REQUIRE(press != nullptr);
    const std::uint32_t rgbFormat =
        COLORSPACE_SH(PT_RGB) | EXTRA_SH(1) | CHANNELS_SH(3) | BYTES_SH(1);
    const std::uint32_t labFormat =
        COLORSPACE_SH(PT_Lab) | EXTRA_SH(1) | CHANNELS_SH(3) | BYTES_SH(1);
    for (std::uint32_t intent = 0; intent < 4; ++intent) {
        CAPTURE(intent);
        SetProfileRenderingIntent(press, intent);
        SetProfileRenderingIntent(press, 4 + intent);  // leaves it as it is
        SetProfileRenderingIntent(srgb, intent);
        checkLink(press, TYPE_CMYK_8, srgb, rgbFormat, lcmsPress, lcmsSrgb, intent, 3);
        checkLink(srgb, rgbFormat, press, TYPE_CMYK_8, lcmsSrgb, lcmsPress, intent, 4);
        checkLink(press, TYPE_CMYK_8, lab, labFormat, lcmsPress, lcmsLab, intent, 3);
    }
    cmsCloseProfile(lcmsPress);
    cmsCloseProfile(lcmsSrgb);
    cmsCloseProfile(lcmsLab);
    CloseProfile(press);
    CloseProfile(srgb);
    CloseProfile(lab);
}

TEST_CASE("links: the intent of the from profile counts when the link is made") {
    void* const press = openProfile(kPressProfile.c_str());
    void* const lab = makeLabProfile();
    const unsigned char paper[4] = {0, 0, 0, 0};
    const auto paperLightness = [&](std::uint32_t pressIntent, std::uint32_t labIntent) {
        SetProfileRenderingIntent(press, pressIntent);
        SetProfileRenderingIntent(lab, labIntent);
        void* const link = MakeProfileLink(press, lab);
        SetProfileRenderingIntent(press, 1 - pressIntent % 2);  // too late for this link
        unsigned char out[4];
        REQUIRE(Match1Colour(link, 8, kCmyk, paper, kLab, out));
        DisposeProfileLink(link);
        return static_cast<int>(out[0]);
    };
    CHECK(paperLightness(1, 3) == 255);  // relative: paper is white
    CHECK(paperLightness(3, 1) < 250);   // absolute: paper has its own lightness
    CloseProfile(press);
    CloseProfile(lab);
}

TEST_CASE("links: handles and codes that do not fit give false and write nothing") {
    void* const srgb = makeSrgbProfile();
    void* const grey = makeGreyProfile();
    void* const link = MakeProfileLink(srgb, grey);
    REQUIRE(link != nullptr);
    CloseProfile(grey);  // a link outlives its profiles
    const unsigned char in[4] = {255, 255, 255, 9};
    unsigned char out[4] = {7, 7, 7, 7};
    CHECK_FALSE(Match1Colour(nullptr, 8, kRgb, in, kGray, out));
    CHECK_FALSE(Match1Colour(srgb, 8, kRgb, in, kGray, out));  // a profile is no link
    CHECK_FALSE(Match1Colour(link, 16, kRgb, in, kGray, out));
    CHECK_FALSE(Match1Colour(link, 8, kGray, in, kGray, out));
    CHECK_FALSE(Match1Colour(link, 8, kRgb, in, kRgb, out));
    CHECK_FALSE(MatchColours(nullptr, 0, 8, kRgb, in, kGray, out));
    CHECK(out[0] == 7);
    CHECK(MatchColours(link, 0, 8, kRgb, in, kGray, out));
    CHECK(out[0] == 7);
    CHECK(Match1Colour(link, 8, kRgb, in, kGray, out));
    CHECK(out[0] == 255);
    CHECK(out[1] == 0);
    CHECK(out[3] == 0);
    CHECK(MakeProfileLink(srgb, grey) == nullptr);  // closed
    CHECK(MakeProfileLink(nullptr, srgb) == nullptr);
    CHECK(MakeProfileLink(srgb, link) == nullptr);
    DisposeProfileLink(link);
    CHECK_FALSE(Match1Colour(link, 8, kRgb, in, kGray, out));
    CHECK_FALSE(lastProfileError().empty());
    DisposeProfileLink(link);
    DisposeProfileLink(nullptr);
    SetProfileRenderingIntent(nullptr, 1);
    CloseProfile(srgb);
}

TEST_CASE("profiles and links: a closed handle never comes back") {
    void* const first = makeSrgbProfile();
    void* const link = MakeProfileLink(first, first);
    CloseProfile(first);
    DisposeProfileLink(link);
    for (int i = 0; i < 20; ++i) {
        void* const next = makeSrgbProfile();
        void* const nextLink = MakeProfileLink(next, next);
        CHECK(next != first);
        CHECK(nextLink != link);
        CHECK(next != nextLink);
        DisposeProfileLink(nextLink);
        CloseProfile(next);
    }
}

TEST_CASE("links: a run may be converted in place") {
    void* const srgb = makeSrgbProfile();
    void* const lab = makeLabProfile();
    void* const link = MakeProfileLink(srgb, lab);
    Pixels pixels(100);
    GuardedBytes want(400);
    REQUIRE(MatchColours(link, 100, 8, kRgb, pixels.bytes.data(), kLab, want.data()));
    REQUIRE(MatchColours(link, 100, 8, kRgb, pixels.bytes.data(), kLab, pixels.bytes.data()));
    CHECK(pixels.bytes == want);
    DisposeProfileLink(link);
    CloseProfile(srgb);
    CloseProfile(lab);
}

TEST_CASE("links: one link serves several threads") {
    void* const press = openProfile(kPressProfile.c_str());
    void* const srgb = makeSrgbProfile();
    void* const link = MakeProfileLink(press, srgb);
    const std::size_t count = 3000;
    Pixels in(count, 5);
    std::vector<unsigned char> want(4 * count);
    REQUIRE(MatchColours(link, count, 8, kCmyk, in.bytes.data(), kRgb, want.data()));
    std::vector<std::vector<unsigned char>> got(4, std::vector<unsigned char>(4 * count));
    std::vector<std::thread> threads;
    for (auto& out : got)
        threads.emplace_back(
            [&] { MatchColours(link, count, 8, kCmyk, in.bytes.data(), kRgb, out.data()); });
    for (std::thread& thread : threads) thread.join();
    for (const auto& out : got) CHECK(out == want);
    DisposeProfileLink(link);
    CloseProfile(press);
    CloseProfile(srgb);
}

}  // namespace
