#ifndef VASKEL_UNITS_H
#define VASKEL_UNITS_H

#include "vaskel/export.h"

namespace Vaskel {}  // namespace Vaskel

#endif
