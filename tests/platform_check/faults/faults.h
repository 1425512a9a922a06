// Faults: the embedded platform with one contract broken on purpose, as proof
// that the platform check sees it.
//
// The definitions in this folder stand in the program, and so in front of
// those of the shared library, which they call for all that they do not spoil.
// The environment variable PLATFORM_FAULT names the fault; without it there is
// none.

#ifndef PLATFORM_CHECK_FAULTS_H
#define PLATFORM_CHECK_FAULTS_H

#include <dlfcn.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>

inline bool fault(const char* name) {
    static const char* const chosen = std::getenv("PLATFORM_FAULT");
    return chosen && std::strcmp(chosen, name) == 0;
}

/// The library's own function of this name, as the Itanium C++ ABI writes it;
/// member functions take their object as first argument.
template <class Function>
Function* real(const char* symbol) {
    void* const found = dlsym(RTLD_NEXT, symbol);
    if (!found) {
        std::fprintf(stderr, "no function %s to put a fault in\n", symbol);
        std::abort();
    }
    return reinterpret_cast<Function*>(found);
}

#endif
