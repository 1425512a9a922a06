// The calls of LibICCProfile.
//
// Precision: by default Little CMS folds a transform of 8-bit pixels into a
// table. Between a press CMYK and sRGB, on random colours, that was off by up to
// 19 (to RGB) and 29 levels (to CMYK) against an unoptimised 16-bit transform,
// and its finer grid (HIGHRESPRECALC) still by up to 15 and 18. Transforms are
// therefore made without optimisation: no colour differs from the 16-bit result
// rounded to 8 bits, a link is made in a millisecond instead of up to 140, and
// a pixel costs four to nine times as much. Proofs are looked at for their
// colours.

#include <algorithm>
#include <cstring>

#include "embedded/iccprofile/handles.h"
#include "platform/libiccprofile.h"

namespace LibICCProfile {
namespace {

using namespace Embedded::Icc;

constexpr std::uint32_t kDepth = 8;
constexpr std::uint32_t kLastIntent = INTENT_ABSOLUTE_COLORIMETRIC;
constexpr std::size_t kPixelBytes = 4;

// No cache, so that one transform may run on several threads.
constexpr cmsUInt32Number kFlags = cmsFLAGS_NOCACHE | cmsFLAGS_NOOPTIMIZE;

// Four bytes a pixel: the space's channels, then unused ones.
cmsUInt32Number formatOf(std::uint32_t space) {
    const auto signature = static_cast<cmsColorSpaceSignature>(space);
    const cmsUInt32Number channels = cmsChannelsOf(signature);
    return COLORSPACE_SH(static_cast<cmsUInt32Number>(_cmsLCMScolorSpace(signature))) |
           CHANNELS_SH(channels) | EXTRA_SH(static_cast<cmsUInt32Number>(kPixelBytes) - channels) |
           BYTES_SH(1);
}

bool transform(void* handle, std::size_t count, std::uint32_t depth, std::uint32_t sourceSpace,
               const unsigned char* source, std::uint32_t targetSpace, unsigned char* target) {
    const auto link = links().find(handle);
    if (!link || depth != kDepth || sourceSpace != link->sourceSpace ||
        targetSpace != link->targetSpace) {
        setError(!link             ? "no such link"
                 : depth != kDepth ? "components of another depth than 8 bits"
                                   : "the link is between other colour spaces");
        return false;
    }
    constexpr std::size_t kMostAtOnce = std::size_t{1} << 28;
    while (count > 0) {
        const std::size_t n = std::min(count, kMostAtOnce);
        cmsDoTransform(link->lcms.get(), source, target, static_cast<cmsUInt32Number>(n));
        // Afterwards, so that source and target may be one buffer.
        for (std::size_t i = 0; i < n && link->channels < kPixelBytes; ++i)
            std::memset(target + i * kPixelBytes + link->channels, 0, kPixelBytes - link->channels);
        source += n * kPixelBytes;
        target += n * kPixelBytes;
        count -= n;
    }
    return true;
}

}  // namespace

void SetProfileRenderingIntent(void* profile, std::uint32_t intent) {
    const auto open = profiles().find(profile);
    if (open && intent <= kLastIntent) open->intent = intent;
}

void* MakeProfileLink(void* from, void* to) {
    try {
        const auto source = profiles().find(from), target = profiles().find(to);
        if (!source || !target) {
            setError("no such profile");
            return nullptr;
        }
        auto link = std::make_shared<Link>();
        link->sourceSpace = source->space;
        link->targetSpace = target->space;
        link->channels = cmsChannelsOf(static_cast<cmsColorSpaceSignature>(target->space));
        link->lcms.reset(cmsCreateTransformTHR(context(), source->lcms.get(),
                                               formatOf(source->space), target->lcms.get(),
                                               formatOf(target->space), source->intent, kFlags));
        return link->lcms ? links().add(std::move(link)) : nullptr;
    } catch (const std::bad_alloc&) {
        setError("no memory");
        return nullptr;
    }
}

void DisposeProfileLink(void* link) { links().remove(link); }

void CloseProfile(void* profile) { profiles().remove(profile); }

bool Match1Colour(void* link, std::uint32_t depth, std::uint32_t sourceSpace,
                  const unsigned char* source, std::uint32_t targetSpace, unsigned char* target) {
    return transform(link, 1, depth, sourceSpace, source, targetSpace, target);
}

bool MatchColours(void* link, std::size_t count, std::uint32_t depth, std::uint32_t sourceSpace,
                  const unsigned char* source, std::uint32_t targetSpace, unsigned char* target) {
    return transform(link, count, depth, sourceSpace, source, targetSpace, target);
}

}  // namespace LibICCProfile
