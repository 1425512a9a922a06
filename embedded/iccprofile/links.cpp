// The calls of LibICCProfile.
//
// Precision: Little CMS would fold an 8-bit transform into a table of 8-bit
// accuracy for speed. With HIGHRESPRECALC the table has the finer grid, and
// with 16-bit entries results are within one level of an unoptimised 16-bit
// transform on nearly all colours; see the figures in docs/colour.md.

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
constexpr cmsUInt32Number kFlags = cmsFLAGS_NOCACHE | cmsFLAGS_HIGHRESPRECALC;

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
        // What the link does not write, the unused bytes, stays 0.
        if (!link->fillsPixel) std::memset(target, 0, n * kPixelBytes);
        cmsDoTransform(link->lcms.get(), source, target, static_cast<cmsUInt32Number>(n));
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
        link->fillsPixel =
            cmsChannelsOf(static_cast<cmsColorSpaceSignature>(target->space)) == kPixelBytes;
        link->lcms.reset(cmsCreateTransformTHR(context(), source->lcms.get(),
                                               formatOf(source->space), target->lcms.get(),
                                               formatOf(target->space), source->intent, kFlags));
        return link->lcms ? links().add(std::move(link)) : nullptr;
    } catch (const std::bad_alloc&) {
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
