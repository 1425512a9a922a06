// One fixed piece of work of each engine on a small fixed input, for counting
// instructions and memory rather than time. Where an engine chooses among forms
// by the CPU, the best one that every CPU can run is forced.

#ifndef BENCH_SUPPORT_FIXED_WORKS_H
#define BENCH_SUPPORT_FIXED_WORKS_H

#include <functional>
#include <vector>

namespace Bench {

struct FixedWork {
    const char* name;
    /// Makes the input and returns the work on it, which can be done repeatedly.
    std::function<void()> (*prepare)();
};

/// All of them, in the order of the families.
const std::vector<FixedWork>& fixedWorks();

/// Forces every engine's best form for any CPU.
void forceBaselineForms();

}  // namespace Bench

#endif
