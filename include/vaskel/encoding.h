#ifndef VASKEL_ENCODING_H
#define VASKEL_ENCODING_H

#include "vaskel/export.h"

namespace Vaskel {}  // namespace Vaskel

#endif
