// Where profiles come from.

#include "embedded/profiles.h"

#include <climits>

#include "embedded/iccprofile/handles.h"

namespace Embedded {
namespace {

using Icc::Profile;

constexpr std::uint32_t kMostChannels = 4;

// Takes the profile over; null when it is none that pixels of four bytes can
// have.
void* adopt(cmsHPROFILE lcms) {
    if (!lcms) return nullptr;  // Little CMS has given the reason
    std::unique_ptr<void, Icc::ProfileCloser> owned(lcms);
    auto profile = std::make_shared<Profile>();
    profile->lcms = std::move(owned);
    const cmsProfileClassSignature deviceClass = cmsGetDeviceClass(lcms);
    profile->space = cmsGetColorSpace(lcms);
    if (deviceClass == cmsSigNamedColorClass || deviceClass == cmsSigLinkClass ||
        cmsChannelsOf(cmsGetColorSpace(lcms)) > kMostChannels) {
        Icc::setError("not a profile of at most four channels");
        return nullptr;
    }
    profile->intent = cmsGetHeaderRenderingIntent(lcms);
    if (profile->intent > INTENT_ABSOLUTE_COLORIMETRIC) profile->intent = INTENT_PERCEPTUAL;
    return Icc::profiles().add(std::move(profile));
}

}  // namespace

void* openProfile(const char* path) {
    if (!path) {
        Icc::setError("no profile named");
        return nullptr;
    }
    return adopt(cmsOpenProfileFromFileTHR(Icc::context(), path, "r"));
}

void* openProfileInMemory(const void* data, std::size_t bytes) {
    if (!data || bytes > UINT_MAX) {
        Icc::setError("no profile given");
        return nullptr;
    }
    return adopt(
        cmsOpenProfileFromMemTHR(Icc::context(), data, static_cast<cmsUInt32Number>(bytes)));
}

void* makeSrgbProfile() { return adopt(cmsCreate_sRGBProfileTHR(Icc::context())); }

void* makeLabProfile() { return adopt(cmsCreateLab4ProfileTHR(Icc::context(), nullptr)); }

void* makeGreyProfile() {
    cmsToneCurve* const gamma = cmsBuildGamma(Icc::context(), 2.2);
    if (!gamma) return nullptr;
    const cmsHPROFILE grey = cmsCreateGrayProfileTHR(Icc::context(), cmsD50_xyY(), gamma);
    cmsFreeToneCurve(gamma);
    return adopt(grey);
}

std::uint32_t colourSpaceOf(void* profile) {
    const auto open = Icc::profiles().find(profile);
    return open ? open->space : 0;
}

std::string profileDescription(void* profile) {
    const auto open = Icc::profiles().find(profile);
    if (!open) return {};
    char text[256] = {};
    cmsGetProfileInfoASCII(open->lcms.get(), cmsInfoDescription, "en", "US", text, sizeof text);
    return text;
}

}  // namespace Embedded
