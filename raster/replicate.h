// Repeating the pixels of a line.

#ifndef RASTER_REPLICATE_H
#define RASTER_REPLICATE_H

#include <cstdint>

namespace Vaskel {

/// For each output pixel the input pixel that it repeats, by the rule itself: a
/// column count starts at 0, each input pixel is repeated while factor is above
/// it, adding 1 each time, and takes factor off. Stops after count pixels: for
/// some widths the rule gives one more than the truncated product. Returns how
/// many were written.
std::int64_t replicationSources(double factor, std::int32_t width, std::int64_t count,
                                std::uint32_t* sources);

}  // namespace Vaskel

#endif
