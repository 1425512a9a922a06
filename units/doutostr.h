// Fixed-point text of a rounded number, in two forms.

#ifndef UNITS_DOUTOSTR_H
#define UNITS_DOUTOSTR_H

#include <algorithm>
#include <atomic>
#include <bit>
#include <cstdint>
#include <span>

#include "vaskel/export.h"

namespace Vaskel {

// The widths of one text, brought into the range where no place value
// overflows: unit = 10^decimals is a 32-bit integer, like the numbers printed,
// and the first place, unit * 10^(intDigits - 1), is at most 10^18. A first
// place above 10^9 holds no digit of a 32-bit number but is still counted for
// the blanks.
struct TextWidths {
    double unit;              // 10^decimals
    std::uint64_t wideBits;   // see inWide
    std::uint32_t wordLimit;  // placesInWord takes numbers below; 0 for none
    std::uint32_t unitsBit;   // 2^decimals
    signed char intDigits;    // -1, or 1 .. 19 - decimals
    unsigned char decimals;   // 0 .. 9
    bool upTo12;              // texts in a word have 5 to 12 bytes with their terminator
    unsigned char signs;      // which signs, 32 of these apart: kPlusSigns or kBlankSigns
    // Of wide texts: where among all of them the places of their digits begin and, so
    // many bytes too far, their signs; and what the longest of them lacks of 32 bytes.
    unsigned char placesAt, signsAt, shortBy;

    static constexpr unsigned char kPlusSigns = 0;    // "-", and "+" 32 behind it
    static constexpr unsigned char kBlankSigns = 64;  // "-", and " " 32 behind it

    static constexpr int kWideRow = 32;  // bytes for the places of digits, by decimals
    static constexpr int kSignsAhead = 4;

    // The bits of a number without its sign, in the order of amounts; NaNs are highest.
    static constexpr std::uint64_t amountBits(double value) {
        return std::bit_cast<std::uint64_t>(value) << 1;
    }
    // Whether formatNumberAvx512 takes scaled, which is rounded to the nearest integer,
    // and halves away from zero.
    constexpr bool inWide(double scaled) const { return amountBits(scaled) < wideBits; }

    static constexpr TextWidths of(int intDigits, int decimals, bool plusSign) {
        constexpr double powers[] = {1, 1e1, 1e2, 1e3, 1e4, 1e5, 1e6, 1e7, 1e8, 1e9};
        const int counted = std::clamp(decimals, 0, 9);
        const int width = intDigits < 0 ? -1 : std::clamp(intDigits, 1, 19 - counted);
        const int places = width + counted;
        const auto limit = [&](bool fits, int digits) {
            return width > 0 && fits ? powers[std::min(places, digits)] : 0;
        };
        const double wideLimit = limit(counted <= 6 && width + places + 1 <= 16, 8);
        const int skipped = 2 * (8 - places);
        return {powers[counted],
                wideLimit > 0 ? amountBits(wideLimit - 0.5) : 0,
                static_cast<std::uint32_t>(limit(counted <= 5 && width + places + 1 <= 24, 6)),
                1u << counted,
                static_cast<signed char>(width),
                static_cast<unsigned char>(counted),
                width >= 2 && width + places + 2 <= 12,
                plusSign ? kPlusSigns : kBlankSigns,
                static_cast<unsigned char>(kWideRow * counted + skipped),
                static_cast<unsigned char>((plusSign ? kPlusSigns : kBlankSigns) + skipped +
                                           kSignsAhead),
                static_cast<unsigned char>(15 + skipped)};
    }
};

// The rule itself: writes rounded / 10^decimals and the terminator.
void placesPlain(int rounded, char* out, const TextWidths& widths);

// The same text for n below widths.wordLimit, negated if negative: up to six
// digits of which none is too many for the width, put together in one machine
// word with blanks before it.
[[gnu::noinline]] void placesInWord(bool negative, std::uint32_t n, char* out,
                                    const TextWidths& widths);

// doutostr behind its widths.
using FormatNumber = void(double value, char* out, const TextWidths& widths);

// By placesInWord, or as formatByHost where that takes no such number.
FormatNumber formatNumberInWord;

// The host says what value is, rounded; the rest is the rule itself.
FormatNumber formatByHost;

#if defined(__x86_64__)
// Up to eight digits, each in a lane of a vector, and up to 16 characters in one
// store; other numbers go to formatNumberInWord. For CpuLevel::Avx512Vbmi2.
FormatNumber formatNumberAvx512;
#endif

struct NumberForm {
    const char* name;
    FormatNumber* run;
};

// The forms that this CPU can run, the best one last.
std::span<const NumberForm> numberForms();

// Makes the formatters use form; null for the best one again. For tests and
// benchmarks.
void forceNumberForm(const NumberForm* form);

// What the formatters call: at first a function that puts the best form here.
extern VASKEL_HIDDEN std::atomic<FormatNumber*> gFormatNumber;

inline void formatNumber(double value, char* out, const TextWidths& widths) {
    gFormatNumber.load(std::memory_order_relaxed)(value, out, widths);
}

}  // namespace Vaskel

#endif
