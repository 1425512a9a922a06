#ifndef VASKEL_GEOMETRY_H
#define VASKEL_GEOMETRY_H

#include "vaskel/export.h"

namespace Vaskel {}  // namespace Vaskel

#endif
