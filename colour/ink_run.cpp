#include "colour/ink_run.h"

#include <atomic>
#include <cstdint>
#include <cstring>
#include <iterator>

#include "platform/orlune.h"
#include "util/cpu.h"
#include "vaskel/colour.h"

namespace Vaskel {
namespace {

constexpr int kInks = 4;
constexpr int kChannels = 3;  // red, green, blue

// The inks' colours: iround of 0, 0.56, 0.86 of 255 and so on.
constexpr double kInkFractions[kInks][kChannels] = {
    {0, 0.56, 0.86}, {0.76, 0, 0.35}, {0.96, 0.89, 0}, {0.12, 0.12, 0.13}};
constexpr int kInkColours[kInks][kChannels] = {
    {0, 143, 219}, {194, 0, 89}, {245, 227, 0}, {31, 31, 33}};

double factor(int inkColour, int amount) { return 1 - (255 - inkColour) * amount / 65025.0; }

struct Row {
    double channels[kChannels + 1];  // padded, so that a row is two vectors
};

// A row for each amount of each ink, the first ink's times 255, with which the
// product begins: 32 KiB, made at the first use in a few microseconds rather than
// stored in the library.
constinit Row gRows[256][kInks]{};

[[gnu::cold]] bool makeRows() {
    for (int ink = 0; ink < kInks; ++ink)
        for (int amount = 0; amount < 256; ++amount)
            for (int channel = 0; channel < kChannels; ++channel)
                gRows[amount][ink].channels[channel] =
                    (ink == 0 ? 255 : 1) * factor(kInkColours[ink][channel], amount);
    return true;
}

// Orlune::iround for 0..255 without the call; the truncation and the difference
// are exact.
unsigned char rounded(double value) {
    const int whole = static_cast<int>(value);
    return static_cast<unsigned char>(whole + (value - whole >= 0.5));
}

}  // namespace

void inkRunPlain(unsigned char* pixels, int count) {
    int colours[kInks][kChannels];
    for (int ink = 0; ink < kInks; ++ink)
        for (int channel = 0; channel < kChannels; ++channel)
            colours[ink][channel] = Orlune::iround(kInkFractions[ink][channel] * 255);
    for (int i = 0; i < count; ++i, pixels += 4) {
        double light[kChannels] = {255, 255, 255};
        for (int ink = 0; ink < kInks; ++ink)
            if (pixels[ink] != 0)
                for (int channel = 0; channel < kChannels; ++channel)
                    light[channel] *= 1 - (255 - colours[ink][channel]) * pixels[ink] / 65025.0;
        pixels[0] = static_cast<unsigned char>(Orlune::iround(light[2]));
        pixels[1] = static_cast<unsigned char>(Orlune::iround(light[1]));
        pixels[2] = static_cast<unsigned char>(Orlune::iround(light[0]));
        pixels[3] = 0;
    }
}

void inkRunTable(unsigned char* pixels, int count) {
    [[maybe_unused]] static const bool made = makeRows();
    std::uint32_t lastInks = 0, lastResult = 0;
    const unsigned char white[4] = {255, 255, 255, 0};
    std::memcpy(&lastResult, white, 4);  // no ink is white
    for (int i = 0; i < count; ++i, pixels += 4) {
        std::uint32_t inks;
        std::memcpy(&inks, pixels, 4);
        if (inks != lastInks) {
            lastInks = inks;
            const Row& c = gRows[pixels[0]][0];
            const Row& m = gRows[pixels[1]][1];
            const Row& y = gRows[pixels[2]][2];
            const Row& k = gRows[pixels[3]][3];
            const auto light = [&](int channel) {
                return rounded(c.channels[channel] * m.channels[channel] * y.channels[channel] *
                               k.channels[channel]);
            };
            const unsigned char result[4] = {light(2), light(1), light(0), 0};
            std::memcpy(&lastResult, result, 4);
        }
        std::memcpy(pixels, &lastResult, 4);
    }
}

namespace {

constexpr InkRunForm kForms[] = {
    {"plain", inkRunPlain},
    {"table", inkRunTable},
#if defined(__x86_64__)
    {"avx2", inkRunAvx2},
    {"avx512", inkRunAvx512},
#endif
};

// Not by the list of all, so that the plain form stays out of the library.
using Run = void (*)(unsigned char* pixels, int count);
#if defined(__x86_64__)
Run bestRun() {
    const CpuLevel level = cpuLevel();
    return level >= CpuLevel::Avx512 ? inkRunAvx512
           : level >= CpuLevel::Avx2 ? inkRunAvx2
                                     : inkRunTable;
}
#else
Run bestRun() { return inkRunTable; }
#endif

std::atomic<const InkRunForm*> gForced{nullptr};

}  // namespace

std::span<const InkRunForm> inkRunForms() {
    std::size_t count = 1;
    while (kForms[count - 1].run != bestRun()) ++count;
    return std::span(kForms).first(count);
}

void forceInkRunForm(const InkRunForm* form) { gForced.store(form, std::memory_order_relaxed); }

void cmykrgbrun(unsigned char* pixels, int count) {
    static const Run best = bestRun();
    const InkRunForm* const forced = gForced.load(std::memory_order_relaxed);
    (forced ? forced->run : best)(pixels, count);
}

}  // namespace Vaskel
