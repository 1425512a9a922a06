#ifndef VASKEL_COLOUR_H
#define VASKEL_COLOUR_H

#include "vaskel/export.h"

namespace Vaskel {}  // namespace Vaskel

#endif
