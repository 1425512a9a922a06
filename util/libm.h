// The functions of the C library whose last bit may differ between systems.
// Engines call them through this header only, so that one place shows where
// results depend on the C library.

#ifndef UTIL_LIBM_H
#define UTIL_LIBM_H

#include <cmath>

namespace Vaskel::libm {

inline double sin(double x) { return std::sin(x); }
inline double atan2(double y, double x) { return std::atan2(y, x); }

}  // namespace Vaskel::libm

#endif
