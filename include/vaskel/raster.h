#ifndef VASKEL_RASTER_H
#define VASKEL_RASTER_H

#include "vaskel/export.h"

namespace Vaskel {}  // namespace Vaskel

#endif
