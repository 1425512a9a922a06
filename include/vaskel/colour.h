// Colour models, and chains of ICC links.
//
// Ranges are part of each entry: bytes 0 to 255, percent 0 to 100, hues in
// hundredths of the circle (0 to 100, not degrees) or 0 to 1. Values outside a
// range have no meaning, but do no harm. Results are rounded with
// Orlune::iround unless an entry says that they are truncated (towards zero).
// The functions keep no state: safe on any thread. Of everything here only the
// changes and copies of a chain of links throw, std::bad_alloc, and leave the
// chain as it was.

#ifndef VASKEL_COLOUR_H
#define VASKEL_COLOUR_H

#include <cstddef>
#include <cstdint>
#include <vector>

#include "vaskel/export.h"

namespace Vaskel {

// ---- CMYK to RGB ------------------------------------------------------------
//
// Three models stand side by side on purpose: tools and stored previews ask for
// each of them.

/// The naive model, bytes to 0..255: 255 less the ink and the black.
///
///   cmykrgbpix(100, 0, 0, 200, &r, &g, &b)   r 0, g 55, b 55
VASKEL_API void cmykrgbpix(unsigned char c, unsigned char m, unsigned char y, unsigned char k,
                           int* r, int* g, int* b);

/// Printing inks that absorb a little of what they should not; percent to
/// 0..255. An amount of 255, which is no percentage, counts as 0: callers mark
/// unused inks with it.
///
///   cmykrgb(0, 0, 0, 100, &r, &g, &b)   r 31, g 31, b 33
VASKEL_API void cmykrgb(unsigned char c, unsigned char m, unsigned char y, unsigned char k, int* r,
                        int* g, int* b);

/// The model of cmykrgb for bytes; 255 is full ink.
VASKEL_API void cmykrgbscr(unsigned char c, unsigned char m, unsigned char y, unsigned char k,
                           int* r, int* g, int* b);

/// Inks of fixed colours over each other, in place for a run of count pixels of
/// four bytes: cyan, magenta, yellow, black become blue, green, red, 0.
///
///   0 0 0 0 becomes 255 255 255 0, 255 0 0 0 becomes 219 143 0 0
///
/// A count below 1 does nothing. pixels needs no alignment.
VASKEL_API void cmykrgbrun(unsigned char* pixels, int count);

// ---- HSL --------------------------------------------------------------------

/// Hue, saturation and lightness, each 0..100 and truncated, of the naive
/// model's RGB. Of a colour that the naive model shows as black the hue and
/// saturation are those of its chromatic inks, and the lightness is 0.
///
/// For a grey other than black nothing is written: *h, *s and *l keep what they
/// held, so that a grey does not lose the hue that a picker shows.
VASKEL_API void cmykhsl(unsigned char c, unsigned char m, unsigned char y, unsigned char k, int* h,
                        int* s, int* l);

/// RGB, 0..255, of hue, saturation and lightness, each 0..100. Hue 100 is hue
/// 0; hues of 7/6 of the circle and more, hues below -1/6 of it, and lightness
/// 0 give black.
VASKEL_API void hslrgb(int h, int s, int l, int* r, int* g, int* b);

/// What cmykrgbscr shows of the colour when it is printed with all of its black
/// as black ink.
VASKEL_API void hslrgbscr(int h, int s, int l, int* r, int* g, int* b);

// ---- RGB to CMYK ------------------------------------------------------------

/// CMYK bytes of RGB 0..255. Of the black, 255 less the largest component,
/// removal (0..1) is taken out of the chromatic inks and blackScale (0..1) is
/// printed. Each ink is limited to 0..255.
VASKEL_API void rgbcmyk(int r, int g, int b, unsigned char* c, unsigned char* m, unsigned char* y,
                        unsigned char* k, double removal, double blackScale);

/// rgbcmyk of hslrgb.
VASKEL_API void hslcmyk(int h, int s, int l, unsigned char* c, unsigned char* m, unsigned char* y,
                        unsigned char* k, double removal, double blackScale);

// ---- HSB --------------------------------------------------------------------

/// RGB on brightness' own scale of hue 0..1, saturation 0..1 (more counts as 1)
/// and brightness. A saturation of 0 or below gives the grey of brightness; a
/// hue of 1 is hue 0. For another hue outside -1/6 .. 1, and for one that is
/// not a number, nothing is written.
VASKEL_API void hsbToRGB(double h, double s, double brightness, double& r, double& g, double& b);

// ---- ICC link chains --------------------------------------------------------

/// Carries pixels through several ICC profiles in one call. Pixels have four
/// bytes at every joint; space codes and handles are those of LibICCProfile
/// (platform/libiccprofile.h), passed on unchanged.
///
///   colsynlnk chain;                      // from CMYK through a press to the screen
///   chain.add(document, 1, 'CMYK');
///   chain.add(press, 1, 'CMYK');
///   chain.add(monitor, 10, 'RGB ');
///   if (chain.isvalid('CMYK', 'RGB ')) chain.process(in, out, count);
///
/// The chain owns the profiles given to add and the links made by it. Copies
/// share all handles: of two copies only one may be reset or destroyed, the
/// other has to be cleared first. An object belongs to one thread at a time;
/// process may run on several.
class VASKEL_API colsynlnk {
 public:
    colsynlnk();
    /// Copies the handles, not what they stand for. Assignment does not release
    /// what the target held.
    colsynlnk(const colsynlnk& other);
    colsynlnk& operator=(const colsynlnk& other);
    /// As reset.
    ~colsynlnk();

    /// Appends a profile and, from the second one on, the link to it from the
    /// profile before. An intent below 10 is set on the profile first, 10 and
    /// above leave its own. Null is ignored. A link that cannot be made stays
    /// in the chain as null, and process fails on it. A profile added twice is
    /// closed twice. std::bad_alloc passes through, with the chain as it was
    /// and the profile still the caller's.
    void add(void* profile, unsigned int intent, unsigned int space);

    /// Appends a link of the caller's, from inSpace to outSpace. inSpace counts
    /// for the first link only and is not compared with the code before. Null
    /// is ignored. The link stays the caller's, unless add has appended
    /// profiles too: see reset.
    void addlink(void* link, unsigned int inSpace, unsigned int outSpace);

    /// Whether there is a link, the chain leads from inSpace to outSpace, and
    /// every link has its two codes.
    bool isvalid(unsigned int inSpace, unsigned int outSpace) const;

    /// Carries count pixels of 4 bytes from in to out: 1 on success. 0, with
    /// any part of out written or none, when a link refuses, or memory for the
    /// pixels between links cannot be had. Without a link nothing is written
    /// and the result is 1. in and out do not overlap.
    int process(const unsigned char* in, unsigned char* out, std::size_t count) const;

    /// Releases the first links, one less than there are profiles, and all
    /// profiles, and empties the chain. Links beyond that number, such as those
    /// added with addlink behind the profiles', are forgotten: the count
    /// follows the profiles, and hosts that mix both rely on it.
    void reset();

    /// Empties the chain without releasing anything.
    void clear();

 private:
    std::vector<void*> mProfiles;
    std::vector<void*> mLinks;
    std::vector<std::uint32_t> mSpaces;
};

}  // namespace Vaskel

#endif
