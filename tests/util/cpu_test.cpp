#include "util/cpu.h"

#include <doctest/doctest.h>

namespace {

using Vaskel::CpuLevel;
using Vaskel::cpuLevel;

TEST_CASE("cpu: the level is what the compiler's own question tells") {
    CpuLevel level = CpuLevel::Base;
#if defined(__x86_64__)
    if (__builtin_cpu_supports("avx2") && __builtin_cpu_supports("fma") &&
        __builtin_cpu_supports("popcnt")) {
        level = CpuLevel::Avx2;
        if (__builtin_cpu_supports("avx512f")) {
            level = CpuLevel::Avx512;
            // A system may hide some that the newest of them comes with.
            if (__builtin_cpu_supports("avx512bw") && __builtin_cpu_supports("avx512cd") &&
                __builtin_cpu_supports("avx512vl") && __builtin_cpu_supports("avx512ifma") &&
                __builtin_cpu_supports("avx512vbmi") && __builtin_cpu_supports("avx512vbmi2") &&
                __builtin_cpu_supports("bmi") && __builtin_cpu_supports("bmi2"))
                level = CpuLevel::Avx512Vbmi2;
        }
    }
#endif
    CHECK(cpuLevel() == level);
    CHECK(cpuLevel() == level);
}

}  // namespace
