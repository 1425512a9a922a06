// Texts written by forms that take no more room than they need.

#ifndef TESTS_UNITS_WRITTEN_H
#define TESTS_UNITS_WRITTEN_H

#include <cstring>
#include <string>

#include "tests/support/guarded_bytes.h"

/// Runs form into memory that ends where the text has to end.
template <class Form>
bool writes(const std::string& want, Form form) {
    GuardedBytes out(want.size() + 1);
    std::memset(out.data(), 0x55, out.size());
    form(out.chars());
    return std::memcmp(out.chars(), want.c_str(), want.size() + 1) == 0;
}

#endif
