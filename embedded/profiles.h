// The embedded colour management as an embedding program sees it: where the
// profile handles of LibICCProfile come from, and why one could not be had.
//
// Handles are released with LibICCProfile::CloseProfile, or by the chain that
// they are added to. They may be used on any thread, one profile on one thread
// at a time.

#ifndef EMBEDDED_PROFILES_H
#define EMBEDDED_PROFILES_H

#include <cstddef>
#include <cstdint>
#include <string>

#include "platform/export.h"

namespace Embedded {

/// Opens the ICC profile in a file; null on failure. Profiles of more than four
/// channels, and named-colour profiles, are refused: pixels have four bytes.
PLATFORM_API void* openProfile(const char* path);

/// Opens a profile that stands in memory; null on failure. The memory is copied.
PLATFORM_API void* openProfileInMemory(const void* data, std::size_t bytes);

/// sRGB (IEC 61966-2-1), CIE L*a*b* of D50, and grey of D50 with a gamma of 2.2.
PLATFORM_API void* makeSrgbProfile();
PLATFORM_API void* makeLabProfile();
PLATFORM_API void* makeGreyProfile();

/// The profile's colour space as a four-character code, for instance
/// 0x434D594B for 'CMYK'; 0 for a handle that is no open profile.
PLATFORM_API std::uint32_t colourSpaceOf(void* profile);

/// The profile's description in English, UTF-8; empty for a handle that is no
/// open profile.
PLATFORM_API std::string profileDescription(void* profile);

/// Why the last call on this thread that failed did so, here or in
/// LibICCProfile; empty when none has failed.
PLATFORM_API std::string lastProfileError();

}  // namespace Embedded

#endif
