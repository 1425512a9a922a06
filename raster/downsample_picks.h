// Nearest pick: which input pixel each output pixel takes, and taking them.

#ifndef RASTER_DOWNSAMPLE_PICKS_H
#define RASTER_DOWNSAMPLE_PICKS_H

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace Vaskel {

/// The picks of one image's lines; shared between copies.
struct DownsamplePicks {
    double fraction;     // of the horizontal factor
    std::uint32_t step;  // its whole part
    std::uint32_t width;
    std::size_t count;  // of picks: the output pixels of a line

    std::vector<std::uint32_t> sources;  // the input pixel of each pick, ascending
    double column;                       // what the column count comes to behind the last one

    /// For each whole block of kBlock input pixels how many are picked, and
    /// kBlock places: those of the picked ones first. Empty where blocks hold so
    /// few picks that taking them one by one is faster.
    static constexpr std::size_t kBlock = 16;
    std::vector<unsigned char> taken;
    std::vector<unsigned char> places;

    DownsamplePicks(double factorX, std::uint32_t stepX, std::uint32_t widthPx, std::size_t n);
};

/// Calls pick(j, i) for each output pixel j with the input pixel i, and returns
/// the column count at the end. The last pick lies before the line's end: n
/// factors are the width, so the walk has come to at most width - step after
/// n - 1 steps; the limit only guards that against the last bit. A rounded-down
/// fraction would give one pick more, for which there is no output pixel.
template <class Pick>
double walkPicks(double fraction, std::uint32_t step, std::uint32_t width, std::size_t n,
                 Pick pick) {
    double column = 0;
    std::uint64_t i = 0;
    for (std::size_t j = 0; j < n && i < width; ++j, i += step) {
        column += fraction;
        if (column >= 1) {
            column -= 1;
            ++i;
        }
        pick(j, static_cast<std::size_t>(i < width ? i : width - 1));
    }
    return column;
}

/// A way to take them: picks.count pixels of four bytes, or of one; out does not
/// overlap line. The next line that is picked from lies ahead bytes behind this
/// one, and where the caller will want the picks is taker; each is 0 if that is not
/// known. widen makes slots of four bytes from bytes, narrow takes their low bytes
/// back.
struct PickForm {
    const char* name;
    void (*pixels)(const DownsamplePicks& picks, const unsigned char* line, std::uintptr_t ahead,
                   std::uintptr_t taker, unsigned char* out);
    /// kPickRoom bytes behind the last one may be overwritten.
    void (*bytes)(const DownsamplePicks& picks, const unsigned char* line, std::uintptr_t ahead,
                  unsigned char* out);
    void (*widen)(const unsigned char* bytes, std::size_t count, unsigned char* slots);
    void (*narrow)(const unsigned char* slots, std::size_t count, unsigned char* bytes);
};
constexpr std::size_t kPickRoom = 16;

/// The rule itself, by its column count; faster forms are held to it.
extern const PickForm kPickPlain;

/// From the table of sources, which the rule has made.
extern const PickForm kPickTable;

#if defined(__x86_64__)
/// The table's pixels, eight gathered at a time; bytes of a block are moved
/// together by its places.
extern const PickForm kPickAvx2;
#endif

/// The forms that this CPU can run, the best one last.
std::span<const PickForm* const> pickForms();

/// Makes every downsampler use form; null for the best one again. For tests and
/// benchmarks.
void forcePickForm(const PickForm* form);
const PickForm& chosenPickForm();

}  // namespace Vaskel

#endif
