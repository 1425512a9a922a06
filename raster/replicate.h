// Repeating the pixels of a line.

#ifndef RASTER_REPLICATE_H
#define RASTER_REPLICATE_H

#include <cstddef>
#include <cstdint>
#include <span>

namespace Vaskel {

/// For each output pixel the input pixel that it repeats, by the rule itself: a
/// column count starts at 0, each input pixel is repeated while factor is above
/// it, adding 1 each time, and takes factor off. Stops after count pixels: for
/// some widths the rule gives one more than the truncated product. Returns how
/// many were written.
std::int64_t replicationSources(double factor, std::int32_t width, std::int64_t count,
                                std::uint32_t* sources);

/// A line to be enlarged: count output pixels, sources ascending and within
/// width input pixels of four bytes.
struct Replication {
    const std::uint32_t* sources;
    std::size_t count;
    std::size_t width;
    bool dense;  // each source is the one before or the next one
};

/// Whether that holds, as it does for factors of at least 1.
bool isDense(const std::uint32_t* sources, std::size_t count);

/// A way to do that.
struct ReplicateForm {
    const char* name;
    void (*run)(const Replication& replication, const unsigned int* line, unsigned char* out);
};

/// Pixel by pixel from the sources; faster forms are held to it.
extern const ReplicateForm kReplicateTable;

#if defined(__x86_64__)
/// Eight output pixels at a time. In a dense line they lie within eight input
/// pixels, and one permutation puts them in place; other lines are the table
/// form's.
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
