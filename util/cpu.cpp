// What the CPU has, asked of itself. The compiler's __builtin_cpu_supports tells
// the same, but brings 4 KiB of tables of all CPUs' features into the library
// and goes through them whenever it is loaded.

#include "util/cpu.h"

#if defined(__x86_64__)
#include <cpuid.h>
#endif

namespace Vaskel {

#if defined(__x86_64__)
namespace {

constexpr bool has(unsigned bits, unsigned wanted) { return (bits & wanted) == wanted; }

// Which registers the system saves when it changes threads.
unsigned savedRegisters() {
    unsigned low, high;
    __asm__("xgetbv" : "=a"(low), "=d"(high) : "c"(0));
    return low;
}
constexpr unsigned kYmm = 0x06;  // XMM and the upper halves of YMM
constexpr unsigned kZmm = 0xE6;  // and masks, upper halves of ZMM, ZMM 16 to 31

}  // namespace

CpuLevel cpuLevel() {
    unsigned a, b, c, d;
    if (!__get_cpuid(1, &a, &b, &c, &d) || !has(c, bit_OSXSAVE | bit_AVX | bit_FMA | bit_POPCNT))
        return CpuLevel::Base;
    const unsigned saved = savedRegisters();
    if (!has(saved, kYmm) || !__get_cpuid_count(7, 0, &a, &b, &c, &d) || !has(b, bit_AVX2))
        return CpuLevel::Base;
    if (!has(saved, kZmm) || !has(b, bit_AVX512F)) return CpuLevel::Avx2;
    // Every CPU with VBMI2 has the older ones of these, but a system may hide some.
    return has(b,
               bit_AVX512BW | bit_AVX512CD | bit_AVX512VL | bit_AVX512IFMA | bit_BMI | bit_BMI2) &&
                   has(c, bit_AVX512VBMI | bit_AVX512VBMI2)
               ? CpuLevel::Avx512Vbmi2
               : CpuLevel::Avx512;
}
#else
CpuLevel cpuLevel() { return CpuLevel::Base; }
#endif

}  // namespace Vaskel
