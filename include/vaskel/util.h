// Seeded random numbers and the model of a pop-up choice.

#ifndef VASKEL_UTIL_H
#define VASKEL_UTIL_H

#include "vaskel/export.h"

namespace Vaskel {

/// A seed that the host offers as default for noise; 1234567 until the host
/// writes it. The library never reads it.
extern VASKEL_API int noiseed;

}  // namespace Vaskel

#endif
