#include "encoding/unicode_tables.h"

#if defined(__x86_64__)

namespace Vaskel {

constinit UnicodeTables gUnicodeTables{};

namespace {

struct Filler {
    std::uint8_t* at;
    std::uint8_t* const end;

    explicit Filler(Shuffle& shuffle) : at(shuffle.data()), end(at + shuffle.size()) {}
    void add(unsigned byte) { *at++ = static_cast<std::uint8_t>(byte); }
    void zeros() {
        while (at != end) *at++ = 0x80;
    }
};

void makeForUnits(unsigned mask) {
    Filler kept(gUnicodeTables.keptUnits[mask]), oneOrTwo(gUnicodeTables.oneOrTwo[mask]);
    for (unsigned unit = 0; unit < 8; ++unit) {
        const bool in = (mask >> unit & 1) != 0;
        oneOrTwo.add(2 * unit);
        if (!in) oneOrTwo.add(2 * unit + 1);
        if (!in) continue;
        kept.add(2 * unit);
        kept.add(2 * unit + 1);
    }
    kept.zeros();
    oneOrTwo.zeros();
}

void makeForCodes(unsigned codes) {
    Filler kept(gUnicodeTables.keptBytes[codes]);
    const std::uint8_t* const begin = kept.at;
    for (unsigned lane = 0; lane < 4; ++lane)
        for (unsigned i = 4 - keptBytes(codes >> 2 * lane & 3); i < 4; ++i) kept.add(4 * lane + i);
    gUnicodeTables.keptByteCounts[codes] = static_cast<std::uint8_t>(kept.at - begin);
    kept.zeros();
}

void makeForLanes(unsigned mask) {
    std::uint64_t& lanes = gUnicodeTables.keptLanes[mask];
    lanes = 0;
    for (unsigned lane = 0, at = 0; lane < 8; ++lane)
        if (mask >> lane & 1) lanes |= std::uint64_t{lane} << 8 * at++;
}

bool makeAll() {
    for (unsigned index = 0; index < 256; ++index) {
        makeForUnits(index);
        makeForCodes(index);
        makeForLanes(index);
    }
    return true;
}

}  // namespace

void makeUnicodeTables() { [[maybe_unused]] static const bool made = makeAll(); }

}  // namespace Vaskel

#endif
