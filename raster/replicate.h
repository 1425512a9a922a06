// Repeating the pixels of a line.

#ifndef RASTER_REPLICATE_H
#define RASTER_REPLICATE_H

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace Vaskel {

/// For each output pixel the input pixel that it repeats, by the rule itself: a
/// column count starts at 0, each input pixel is repeated while factor is above
/// it, adding 1 each time, and takes factor off. Stops after count pixels: for
/// some widths the rule gives one more than the truncated product.
std::vector<std::uint32_t> replicationSources(double factor, std::int32_t width,
                                              std::int64_t count);

/// Eight output pixels: the input pixel that the first one repeats, and how far
/// behind it those of all lie.
struct EightSources {
    std::uint32_t first;
    unsigned char places[8];
};

/// A line to be enlarged, sources ascending and within width input pixels of four
/// bytes.
struct Replication {
    std::vector<std::uint32_t> sources;
    /// The same for the whole eights, as many as begin eight pixels or more before
    /// the line's end. Empty where the pixels of one lie further apart, as they do
    /// for factors below 1.
    std::vector<EightSources> eights;

    Replication(std::vector<std::uint32_t> all, std::size_t width);
};

/// A way to do that. The next line lies ahead bytes behind this one; 0 if that is
/// not known.
struct ReplicateForm {
    const char* name;
    void (*run)(const Replication& replication, const unsigned int* line, std::uintptr_t ahead,
                unsigned char* out);
};

/// Pixel by pixel from the sources; faster forms are held to it.
extern const ReplicateForm kReplicateTable;

/// The table form's steps for the output pixels from first on.
void replicateFrom(std::size_t first, const Replication& replication, const unsigned int* line,
                   unsigned char* out);

#if defined(__x86_64__)
/// Eight output pixels at a time: one permutation puts them in place. What eights do
/// not hold is the table form's.
extern const ReplicateForm kReplicateAvx2;
#endif

/// The forms that this CPU can run, the best one last.
std::span<const ReplicateForm* const> replicateForms();

/// Makes every upsampler use form; null for the best one again. For tests and
/// benchmarks.
void forceReplicateForm(const ReplicateForm* form);
const ReplicateForm& chosenReplicateForm();

}  // namespace Vaskel

#endif
