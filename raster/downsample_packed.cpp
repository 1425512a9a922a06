#include "raster/downsample_packed.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstring>

#include "raster/downsample_halved.h"

namespace Vaskel {
namespace {

constexpr unsigned kMostUnits = 64;  // two shares' products with bytes stay within 16 bits

bool isUniform(const DownsampleCells& cells) {
    return cells.pattern.period != 0 && cells.ends.back().rest == 0 &&
           cells.ends.back().pixel + std::uint64_t{1} == cells.width;
}

std::vector<unsigned char> vectorShares(const CellPattern& pattern) {
    const std::size_t blocks = (pattern.span + 3) / 4;
    std::vector<unsigned char> shares(pattern.period * blocks * 16);
    unsigned char* to = shares.data();
    for (std::size_t k = 0; k < pattern.period; k += 4)
        for (std::size_t first = k; first < k + 2; ++first)
            for (std::size_t i = 0; i < blocks; ++i)
                for (const std::size_t cell : {first, first + 2})
                    for (int channel = 0; channel < 4; ++channel, to += 4)
                        std::memcpy(to, pattern.sharesOf(cell) + 4 * i, 4);
    return shares;
}

std::vector<ByteCells> byteCells(const CellPattern& pattern, std::size_t period) {
    std::vector<ByteCells> all(period / 8);
    for (std::size_t half = 0; half < period / 4; ++half) {
        // Of a period of four cells the second half is the next one.
        const std::size_t k = 4 * half % pattern.period;
        const std::size_t periods = 4 * half / pattern.period;
        ByteCells& cells = all[half / 2];
        cells.starts[half % 2] =
            static_cast<std::uint32_t>(pattern.starts[k] + periods * pattern.pixels);
        for (std::size_t i = 0; i < 16; ++i) {
            const std::size_t cell = k + i / 4;
            const std::size_t place = pattern.starts[cell] - pattern.starts[k] + i % 4;
            const unsigned char share = pattern.sharesOf(cell)[i % 4];
            if (share != 0 && place >= 16) return {};
            cells.places[16 * (half % 2) + i] = static_cast<unsigned char>(place & 15);
            cells.shares[16 * (half % 2) + i] = share;
        }
    }
    return all;
}

}  // namespace

// For powers of two the multiplier is exact. Else, with 2^shift < area <
// 2^(shift + 1), it exceeds 2^(16 + shift) / area by less than 1, so that a
// product with less than 256 areas is too large by less than 256 areas. The
// quotient comes out right if that is at most 2^(16 + shift) / area, by which it
// lies below the next integer at least: if 256 area^2 <= 2^(16 + shift), which
// holds up to area 128, since 2^shift > area / 2.
// Test: "packed sums: means of all areas and sums".
PackedRule PackedRule::forArea(unsigned area) {
    PackedRule rule;
    const bool power = std::has_single_bit(area);
    if (area < 2 || area > (power ? 256u : 128u)) return rule;
    rule.area = area;
    rule.half = area / 2;
    rule.shift = std::bit_width(area - 1) - 1;
    rule.multiplier = ((1u << (16 + rule.shift)) + area - 1) / area;
    return rule;
}

[[gnu::cold]] PackedRule::PackedRule(const DownsampleCells& cells, double factorY) {
    const int bitsY = fractionBitsOf(factorY);
    if (bitsY < 0 || cells.fractionBits < 0 || !isUniform(cells)) return;
    const double steps = std::ldexp(1, bitsY + cells.fractionBits);
    const double cellArea = cells.factor * factorY * steps;
    if (steps > kMostUnits || cellArea > 256) return;
    *this = forArea(static_cast<unsigned>(cellArea));
    unitsY = 1u << bitsY;
    unit = 1 / steps;
    if (area == 0) return;
    const CellPattern& pattern = cells.pattern;
    halves = cells.factor == 2 && factorY == 2;
    shares = vectorShares(pattern);
    if (pattern.span > 4) return;
    bytesPeriod = std::max(pattern.period, std::size_t{8});
    bytesPixels = pattern.pixels * (bytesPeriod / pattern.period);
    bytes = byteCells(pattern, bytesPeriod);
}

namespace {

template <std::size_t kChannels, PackedStep kStep>
void cellsFrom(std::size_t first, const DownsampleCells& cells, const PackedRule& rule,
               const PackedLine& line, std::uint16_t* sums, unsigned char* out) {
    const unsigned whole = 1u << cells.fractionBits;
    std::size_t i = first > 0 ? cells.ends[first - 1].pixel + std::size_t{1} : 0;
    double left = first > 0 ? cells.ends[first - 1].rest : 0;
    for (std::size_t k = first; k < cells.ends.size(); ++k) {
        unsigned sum[4] = {};
        const auto add = [&](std::size_t pixel, unsigned share) {
            for (std::size_t c = 0; c < kChannels; ++c)
                sum[c] += share * line.bytes[kChannels * pixel + c];
        };
        if (left != 0) add(i - 1, static_cast<unsigned>(left * whole));
        for (; i < cells.ends[k].pixel; ++i) add(i, whole);
        left = cells.ends[k].rest;
        add(i++, static_cast<unsigned>((1 - left) * whole));
        for (std::size_t c = 0; c < kChannels; ++c) {
            const unsigned more = line.weight * sum[c];
            if constexpr (kStep == PackedStep::kBegin)
                sums[kChannels * k + c] = static_cast<std::uint16_t>(more);
            else if constexpr (kStep == PackedStep::kAdd)
                sums[kChannels * k + c] =
                    static_cast<std::uint16_t>(sums[kChannels * k + c] + more);
            else
                out[kChannels * k + c] =
                    static_cast<unsigned char>(rule.mean(sums[kChannels * k + c] + more));
            if (kStep == PackedStep::kFinish && line.rest != 0)
                sums[kChannels * k + c] = static_cast<std::uint16_t>(line.rest * sum[c]);
        }
    }
}

}  // namespace

void packedCells(PackedStep step, std::size_t first, const DownsampleCells& cells,
                 const PackedRule& rule, const PackedLine& line, std::uint16_t* sums,
                 unsigned char* out) {
    const auto take = [&]<std::size_t kChannels>() {
        step == PackedStep::kBegin
            ? cellsFrom<kChannels, PackedStep::kBegin>(first, cells, rule, line, sums, out)
        : step == PackedStep::kAdd
            ? cellsFrom<kChannels, PackedStep::kAdd>(first, cells, rule, line, sums, out)
            : cellsFrom<kChannels, PackedStep::kFinish>(first, cells, rule, line, sums, out);
    };
    line.channels == 4 ? take.operator()<4>() : take.operator()<1>();
}

const PackedForm kPackedPlain = {
    [](const DownsampleCells& cells, const PackedRule& rule, const PackedLine& line,
       std::uint16_t* sums) {
        packedCells(PackedStep::kBegin, 0, cells, rule, line, sums, nullptr);
    },
    [](const DownsampleCells& cells, const PackedRule& rule, const PackedLine& line,
       std::uint16_t* sums) { packedCells(PackedStep::kAdd, 0, cells, rule, line, sums, nullptr); },
    [](const DownsampleCells& cells, const PackedRule& rule, const PackedLine& line,
       std::uint16_t* sums,
       unsigned char* out) { packedCells(PackedStep::kFinish, 0, cells, rule, line, sums, out); },
    &kHalvedPlain};

}  // namespace Vaskel
