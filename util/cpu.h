// Which wide instructions there are to use.

#ifndef UTIL_CPU_H
#define UTIL_CPU_H

namespace Vaskel {

/// What the wide forms are made for; each level includes those before it.
enum class CpuLevel {
    Base,         ///< what every 64-bit CPU has
    Avx2,         ///< AVX2, FMA and POPCNT
    Avx512,       ///< AVX-512 F
    Avx512Vbmi2,  ///< AVX-512 BW, CD, VL, IFMA, VBMI and VBMI2, BMI and BMI2
};

/// The level that this CPU has and the system lets its programs use. Asks the
/// CPU anew each time, which may take microseconds on a virtual machine.
CpuLevel cpuLevel();

}  // namespace Vaskel

#endif
