// A field that holds one number, read at once: which of the first 16 bytes belong to it,
// its digits side by side, and their value by few multiplications.

#if defined(__x86_64__)

#include <cstdint>

#include "units/strtodou.h"
#include "util/avx512.h"

// It reads bytes behind the text, in the page of one that belongs to it, which does no
// harm but would be reported. Tools that watch every read of a program as it is, such as
// memcheck, know none of these instructions.
#define VASKEL_AVX512                                                                       \
    __attribute__((target("avx512f,avx512bw,avx512vl,avx512vbmi,avx512vbmi2,bmi,bmi2,fma"), \
                   no_sanitize("address")))

namespace Vaskel {
namespace {

constexpr int kBytes = 16;
constexpr int kMostDigits = 15;

struct Tables {
    unsigned char zeros[kBytes], tens[kBytes], separatorBits[kBytes], points[kBytes];
    unsigned char minuses[kBytes];
    // What two, four and eight digits side by side count for. There is no sixteenth one.
    signed char pairs[kBytes];
    std::int16_t fours[kBytes / 2], eights[kBytes / 2];
    double tenMillions[2];
    std::uint64_t signBits[2];
    double divisors[kMostDigits + 1];  // 10^(15 - i)
};

constexpr Tables makeTables() {
    Tables tables{};
    for (int i = 0; i < kBytes; ++i) {
        tables.zeros[i] = '0';
        tables.tens[i] = 10;
        tables.separatorBits[i] = '.' ^ ',';
        tables.points[i] = '.' | ',';
        tables.minuses[i] = '-';
        tables.pairs[i] = i == 15 ? 0 : i % 2 != 0 || i == 14 ? 1 : 10;
    }
    for (int i = 0; i < kBytes / 2; ++i) {
        tables.fours[i] = i % 2 != 0 ? 1 : i == 6 ? 10 : 100;
        tables.eights[i] = i % 2 != 0 ? 1 : i == 2 ? 1000 : 10000;
    }
    for (int i = 0; i < 2; ++i) {
        tables.tenMillions[i] = 1e7;
        tables.signBits[i] = std::uint64_t{1} << 63;
    }
    double power = 1;
    for (int i = kMostDigits; i >= 0; --i, power *= 10) tables.divisors[i] = power;
    return tables;
}
alignas(64) constexpr Tables kTables = makeTables();

VASKEL_AVX512 inline __m128i load(const void* bytes) {
    return _mm_load_si128(static_cast<const __m128i*>(bytes));
}

// A number of one to 15 digits whose terminator is among the 17 bytes from s on, unless
// the first 16 lie in two pages; also where s is null there is none.
//
// Which bytes: the digits and the first separator are ones among these bits, and 1 added
// behind the sign runs through them up to the number's end, which it makes the lowest of
// all ones. A second separator, like anything else, stands there in the terminator's place.
//
// Value: the digits in front, without sign and separator, make the number n * 10^(15 - d)
// of 15 digits, where d is how many there are. With i of them before the separator, it is
// divided by 10^(15 - i). The plain form divides n by 10^(d - i): the same quotient, of
// integers below 2^53 and powers of ten that are exact in all cases, rounded once. It has
// no division where there is no separator, and here that is exact.
[[gnu::always_inline]] VASKEL_AVX512 inline bool readNumber(const char* s, double* out) {
    const Tables* tables = &kTables;
    // Used where they lie: the compiler would make some of them anew.
    __asm__("" : "+r"(tables));
    // Also at the beginning of a page.
    if (((reinterpret_cast<std::uintptr_t>(s) + 15) & 0xFF0) == 0) [[unlikely]]
        return false;
    const __m128i text = _mm_loadu_si128(reinterpret_cast<const __m128i*>(s));
    const __m128i values = _mm_sub_epi8(text, load(tables->zeros));
    std::uint64_t digits = _mm_cmplt_epu8_mask(values, load(tables->tens));
    std::uint64_t separators =
        _mm_cmpeq_epi8_mask(_mm_or_si128(text, load(tables->separatorBits)), load(tables->points));
    // Not widened once more.
    __asm__("" : "+r"(digits), "+r"(separators));
    std::uint64_t sign = ((static_cast<unsigned char>(*s) - '+') & 0xFD) == 0;
    __asm__("" : "+r"(sign));
    const std::uint64_t end = (digits | _blsi_u64(separators)) + sign + 1;
    const std::uint64_t used = digits & ~end;
    if (used - 1 >= 0xFFFE || s[_tzcnt_u64(end)] != '\0') [[unlikely]]
        return false;

    const std::uint64_t whole = _tzcnt_u64(used + sign + 1) - sign;
    const __m128i packed = _mm_maskz_compress_epi8(static_cast<__mmask16>(used), values);
    const __m128i pairs = _mm_maddubs_epi16(packed, load(tables->pairs));
    const __m128i fours = _mm_madd_epi16(pairs, load(tables->fours));
    const __m128i eights = _mm_madd_epi16(_mm_packus_epi32(fours, fours), load(tables->eights));
    const __m128d halves = _mm_cvtepi32_pd(eights);
    const __m128d number =
        _mm_fmadd_pd(halves, _mm_load_pd(tables->tenMillions), _mm_unpackhi_pd(halves, halves));
    const double amount = _mm_cvtsd_f64(number) / tables->divisors[whole];
    const auto negative = static_cast<__mmask8>(_mm_cmpeq_epi8_mask(text, load(tables->minuses)));
    const __m128i signBit = _mm_maskz_load_epi64(negative, tables->signBits);
    *out = _mm_cvtsd_f64(_mm_xor_pd(lowestOf(amount), _mm_castsi128_pd(signBit)));
    return true;
}

[[gnu::noinline, gnu::cold]] int readOther(const char* s, double* out) {
    if (!s || *s != ' ') return readFieldByBytes(s, out);
    do ++s;
    while (*s == ' ');
    return readFieldAvx512(s, out);  // not here again by a blank
}

}  // namespace

VASKEL_AVX512 bool readsNumberAvx512(const char* s, double* out) { return readNumber(s, out); }

[[gnu::aligned(64)]] VASKEL_AVX512 int readFieldAvx512(const char* s, double* out) {
    if (!readNumber(s, out)) [[unlikely]]
        return readOther(s, out);
    return 0;
}

}  // namespace Vaskel

#endif
