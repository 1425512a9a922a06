#include "raster/downsample_picks.h"

#include <algorithm>
#include <atomic>
#include <cmath>
#include <cstring>
#include <iterator>

#include "util/cpu.h"

namespace Vaskel {
namespace {

// From this factor on a block has less than three picks.
constexpr double kBlockFactors = 6;

}  // namespace

DownsamplePicks::DownsamplePicks(double factorX, std::uint32_t stepX, std::uint32_t widthPx,
                                 std::size_t n)
    : fraction(factorX - std::trunc(factorX)), step(stepX), width(widthPx), count(n), sources(n) {
    std::size_t walked = 0;
    column = walkPicks(fraction, step, width, n, [&](std::size_t j, std::size_t i) {
        sources[j] = static_cast<std::uint32_t>(i);
        walked = j + 1;
    });
    count = walked;
    sources.resize(walked);
    if (factorX >= kBlockFactors) return;
    taken.resize(width / kBlock);
    places.resize(kBlock * taken.size());
    for (const std::uint32_t source : sources) {
        const std::size_t block = source / kBlock;
        if (block == taken.size()) break;  // the rest of the line
        // A pixel can be taken twice only where the limit held it back, at the
        // line's end: no block overflows.
        if (taken[block] == kBlock) {
            taken.clear(), places.clear();
            break;
        }
        places[kBlock * block + taken[block]++] = static_cast<unsigned char>(source % kBlock);
    }
}

namespace {

void pixelsPlain(const DownsamplePicks& picks, const unsigned char* line, std::uintptr_t,
                 std::uintptr_t, unsigned char* out) {
    walkPicks(picks.fraction, picks.step, picks.width, picks.count,
              [&](std::size_t j, std::size_t i) { std::memcpy(out + 4 * j, line + 4 * i, 4); });
}

void bytesPlain(const DownsamplePicks& picks, const unsigned char* line, std::uintptr_t,
                unsigned char* out) {
    walkPicks(picks.fraction, picks.step, picks.width, picks.count,
              [&](std::size_t j, std::size_t i) { out[j] = line[i]; });
}

void pixelsTable(const DownsamplePicks& picks, const unsigned char* line, std::uintptr_t,
                 std::uintptr_t, unsigned char* out) {
    for (std::size_t j = 0; j < picks.count; ++j)
        std::memcpy(out + 4 * j, line + std::size_t{4} * picks.sources[j], 4);
}

void bytesTable(const DownsamplePicks& picks, const unsigned char* line, std::uintptr_t,
                unsigned char* out) {
    const std::uint32_t* const sources = picks.sources.data();
    for (std::size_t j = 0, n = picks.count; j < n; ++j) out[j] = line[sources[j]];
}

void widenPlain(const unsigned char* bytes, std::size_t count, unsigned char* slots) {
    for (std::size_t j = 0; j < count; ++j) {
        const std::uint32_t slot = bytes[j];
        std::memcpy(slots + 4 * j, &slot, 4);
    }
}

void narrowPlain(const unsigned char* slots, std::size_t count, unsigned char* bytes) {
    for (std::size_t j = 0; j < count; ++j) {
        std::uint32_t slot;
        std::memcpy(&slot, slots + 4 * j, 4);
        bytes[j] = static_cast<unsigned char>(slot);
    }
}

#if defined(__x86_64__)
constexpr const PickForm* kForms[] = {&kPickPlain, &kPickTable, &kPickAvx2};
const PickForm& bestForm() { return cpuLevel() >= CpuLevel::Avx2 ? kPickAvx2 : kPickTable; }
#else
constexpr const PickForm* kForms[] = {&kPickPlain, &kPickTable};
const PickForm& bestForm() { return kPickTable; }
#endif

std::atomic<const PickForm*> gForced{nullptr};

}  // namespace

const PickForm kPickPlain = {"plain", pixelsPlain, bytesPlain, widenPlain, narrowPlain};
const PickForm kPickTable = {"table", pixelsTable, bytesTable, widenPlain, narrowPlain};

std::span<const PickForm* const> pickForms() {
    return {std::begin(kForms), std::find(std::begin(kForms), std::end(kForms), &bestForm()) + 1};
}

void forcePickForm(const PickForm* form) { gForced.store(form, std::memory_order_relaxed); }

const PickForm& chosenPickForm() {
    if (const PickForm* form = gForced.load(std::memory_order_relaxed)) return *form;
    // Not by the list of all, so that the plain form stays out of the library.
    static const PickForm& best = bestForm();
    return best;
}

}  // namespace Vaskel
