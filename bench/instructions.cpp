// Counts instructions under valgrind's callgrind: each fixed work once to warm
// up, then once counted, into a file of its own. The program prints the works'
// names in the order of those files; check.py runs it.

#include <valgrind/callgrind.h>

#include <cstdio>

#include "bench/support/fixed_works.h"

int main() {
    Bench::forceBaselineForms();
    for (const Bench::FixedWork& work : Bench::fixedWorks()) {
        const auto run = work.prepare();
        run();
        CALLGRIND_ZERO_STATS;
        CALLGRIND_TOGGLE_COLLECT;
        run();
        CALLGRIND_TOGGLE_COLLECT;
        CALLGRIND_DUMP_STATS;
        std::puts(work.name);
    }
}
