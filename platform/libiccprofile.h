// LibICCProfile: the colour-management calls of the engines. Declarations
// only; the host supplies the bodies, embedded/iccprofile holds ours.
//
// Profiles and links are opaque handles that the host's library makes and
// releases. Colour-space codes are the four-character signatures of ICC.1,
// section 7.2.6, as a number with the first character most significant
// ('CMYK' is 0x434D594B). At every joint of a chain a pixel has 4 bytes:
//
//   'CMYK'  cyan, magenta, yellow, black; 0 is no ink, 255 full ink
//   'RGB '  red, green, blue, unused
//   'Lab '  L* 0..100 as 0..255, a* + 128, b* + 128, unused
//   'XYZ '  X, Y, Z, each 0..1 + 32767/32768 as 0..255, unused
//   'GRAY'  grey (0 is black), three unused
//
// and other spaces use their first three or four channels in order. Unused
// bytes of a source are ignored, those of a target are set to 0.

#ifndef PLATFORM_LIBICCPROFILE_H
#define PLATFORM_LIBICCPROFILE_H

#include <cstddef>
#include <cstdint>

#include "platform/export.h"

namespace LibICCProfile {

/// Sets the rendering intent used when a link is made *from* this profile.
///
/// 0 perceptual, 1 media-relative colorimetric, 2 saturation, 3 ICC-absolute
/// colorimetric (ICC.1, section 7.2.15); 4 to 9 leave the profile's intent as
/// it is. A handle that is null or not an open profile changes nothing.
PLATFORM_API void SetProfileRenderingIntent(void* profile, std::uint32_t intent);

/// A link that converts pixels of the first profile's space to the second's,
/// or null when it cannot be made (a null handle, profiles that do not fit,
/// memory). The caller releases it with DisposeProfileLink. The profiles need
/// not outlive it.
PLATFORM_API void* MakeProfileLink(void* from, void* to);

/// Releases a link; null is allowed.
PLATFORM_API void DisposeProfileLink(void* link);

/// Releases a profile handle; null is allowed. The library closes a profile
/// as often as it was added to a chain.
PLATFORM_API void CloseProfile(void* profile);

/// Converts one pixel of 4 bytes; true on success.
///
/// depth is the bits per component; the engines pass 8. A null link, a link
/// that was released, another depth or a space code other than the link's own
/// gives false and leaves target alone.
///
/// The engines rely on: success writes all four bytes of the target; a target
/// is never read; source and target do not overlap and need no alignment; one
/// link may be used from several threads at a time.
PLATFORM_API bool Match1Colour(void* link, std::uint32_t depth, std::uint32_t sourceSpace,
                               const unsigned char* source, std::uint32_t targetSpace,
                               unsigned char* target);

/// Converts count pixels of 4 bytes each, as Match1Colour does for one. A
/// count of 0 succeeds on a good link and touches neither buffer.
PLATFORM_API bool MatchColours(void* link, std::size_t count, std::uint32_t depth,
                               std::uint32_t sourceSpace, const unsigned char* source,
                               std::uint32_t targetSpace, unsigned char* target);

}  // namespace LibICCProfile

#endif
