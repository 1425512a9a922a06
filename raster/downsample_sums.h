// What a downsampler keeps between lines.

#ifndef RASTER_DOWNSAMPLE_SUMS_H
#define RASTER_DOWNSAMPLE_SUMS_H

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <vector>

#include "raster/downsample_estimate.h"
#include "raster/downsample_halved.h"
#include "raster/downsample_packed.h"
#include "raster/downsample_picks.h"
#include "raster/lines_ahead.h"

namespace Vaskel {

/// The sums of an output line, and what is known of them: assigned samplers
/// share both.
struct DownsampleSums {
    std::vector<float> values;
    std::size_t used = 0;  // all values behind are 0

    // While the lines are exact, sums may be held packed: values are all 0 then.
    PackedRule rule;
    std::vector<std::uint16_t> packed;
    enum { kNone, kHalved, kPacked, kFloats } held = kNone;
    int packedChannels = 0;  // of the lines that are packed
    std::vector<unsigned char> halved;

    LinesAhead ahead, outAhead;  // the caller's lines, and those it takes

    // Picks of one byte whose slots are not made yet, as long as picksWait.
    std::vector<unsigned char> picks;
    bool picksWait = false;

    // Lines that nobody has asked the sums of yet: values are all 0 then. Exact
    // ones are never kept.
    KeptLines kept;
    std::vector<std::uint32_t> open;  // places; of a fixed room

    // Single precision holds all integers up to 2^24.
    static constexpr double kExactIntegers = 16777216;

    // Lines may be added in any order as long as their weights are multiples of
    // 1 / steps and the weights added so far do not exceed exactWeight.
    double steps = 0;
    double exactWeight = -1;
    double weight = 0;
    bool coarse = false;  // MeanRule::coarse
    double factorY;

    // Cell sums are at most weight * 255 * factor, and multiples of 1 / units.
    [[gnu::cold]] DownsampleSums(std::size_t count, const DownsampleCells& cells, double factorDown)
        : values(count),
          rule(cells, factorDown),
          picks(count / 4 + kPickRoom),
          factorY(factorDown) {
        if (rule.area != 0) packed = std::vector<std::uint16_t>(4 * cells.ends.size());
        if (rule.halves) halved = std::vector<unsigned char>(HalvedLine::bytes(cells.ends.size()));
        const int bits = fractionBitsOf(factorY);
        if (bits < 0 || cells.fractionBits < 0) {
            kept.prepare(cells, factorY);
            // About as many as settling them all would take.
            open.reserve(8 + count / 32);
            return;
        }
        steps = std::ldexp(1, bits);
        const double units = std::ldexp(steps, cells.fractionBits);
        exactWeight = kExactIntegers / (255 * cells.factor * units);
        // The distance of a mean to a half is a multiple of 1 / (2 units area).
        coarse = 2 * units * cells.factor * factorY <= 2048;
    }

    double weightWith(double lineWeight) const {
        const bool multiple =
            lineWeight >= 0 && lineWeight * steps == std::floor(lineWeight * steps);
        return weight + (multiple ? lineWeight : std::numeric_limits<double>::infinity());
    }
    // Whether a line of this weight leaves all sums exact.
    bool add(double lineWeight) {
        weight = weightWith(lineWeight);
        return exact();
    }
    bool exact() const { return weight <= exactWeight; }

    // Whether a line of this weight can go to packed sums, which hold an output
    // line's weight, no more.
    bool packs(int channels, double lineWeight) const {
        return rule.area != 0 && (channels == 4 || !rule.bytes.empty()) &&
               (held == kNone || (held <= kPacked && channels == packedChannels)) &&
               weightWith(lineWeight) <= std::min(exactWeight, factorY);
    }
    // Whether a line that packs can be the halved one, or completes it.
    bool halves(int channels, double lineWeight) const {
        return rule.halves && held <= kHalved && channels == 4 && lineWeight == 1;
    }
    void expand() {
        if (held == kHalved) toPacked();
    }
    void unpack() {
        if (held == kHalved || held == kPacked) toFloats();
    }
    void clear() {
        std::fill_n(values.begin(), used, 0.0f);
        used = 0;
        weight = 0;
        held = kNone;
        kept.clear();
    }

 private:
    [[gnu::cold]] void toPacked() {
        expandHalved(packed.size() / 4, halved.data(), packed.data());
        held = kPacked;
    }
    [[gnu::cold]] void toFloats() {
        expand();
        used = packed.size() / 4 * static_cast<std::size_t>(packedChannels);
        for (std::size_t i = 0; i < used; ++i)
            values[i] = static_cast<float>(packed[i] * rule.unit);
        held = kFloats;
    }
};

}  // namespace Vaskel

#endif
