// Faults of LibICCProfile.

#include <atomic>
#include <vector>

#include "faults/faults.h"
#include "platform/libiccprofile.h"

namespace LibICCProfile {

namespace {

constexpr std::uint32_t kRGB = 0x52474220;
constexpr std::uint32_t kCMYK = 0x434D594B;

}  // namespace

void SetProfileRenderingIntent(void* profile, std::uint32_t intent) {
    static auto* const next =
        real<void(void*, std::uint32_t)>("_ZN13LibICCProfile25SetProfileRenderingIntentEPvj");
    next(profile, fault("intents-wrap") ? intent % 4 : intent);
}

void* MakeProfileLink(void* from, void* to) {
    static auto* const next =
        real<void*(void*, void*)>("_ZN13LibICCProfile15MakeProfileLinkEPvS0_");
    return next(fault("links-need-one-end") && !from ? to : from,
                fault("links-need-one-end") && !to ? from : to);
}

bool Match1Colour(void* link, std::uint32_t depth, std::uint32_t sourceSpace,
                  const unsigned char* source, std::uint32_t targetSpace, unsigned char* target) {
    static auto* const next =
        real<bool(void*, std::uint32_t, std::uint32_t, const unsigned char*, std::uint32_t,
                  unsigned char*)>("_ZN13LibICCProfile12Match1ColourEPvjjPKhjPh");
    if (fault("any-depth-is-taken")) depth = 8;
    const bool done = next(link, depth, sourceSpace, source, targetSpace, target);
    if (fault("one-pixel-is-rounded") && done) target[0] &= 0xFE;
    return done;
}

bool MatchColours(void* link, std::size_t count, std::uint32_t depth, std::uint32_t sourceSpace,
                  const unsigned char* source, std::uint32_t targetSpace, unsigned char* target) {
    static auto* const next =
        real<bool(void*, std::size_t, std::uint32_t, std::uint32_t, const unsigned char*,
                  std::uint32_t, unsigned char*)>("_ZN13LibICCProfile12MatchColoursEPvmjjPKhjPh");
    if (fault("no-pixels-fail") && count == 0) return false;
    if (fault("links-fail-now-and-then")) {
        static std::atomic<int> calls = 0;
        if (++calls % 50 == 0) return false;
    }
    const std::vector<unsigned char> before(target, target + 4 * count);
    const bool done = next(link, count, depth, sourceSpace, source, targetSpace, target);
    for (std::size_t i = 0; done && i < count; ++i) {
        if (fault("fourth-bytes-are-kept") && targetSpace == kRGB)
            target[4 * i + 3] = before[4 * i + 3];
        if (fault("fourth-bytes-count") && sourceSpace == kRGB) target[4 * i] ^= source[4 * i + 3];
        if (fault("ink-is-light") && targetSpace == kCMYK)
            for (std::size_t k = 0; k < 4; ++k) target[4 * i + k] ^= 0xFF;
    }
    return done;
}

}  // namespace LibICCProfile
