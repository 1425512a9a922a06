#ifndef VASKEL_FONTS_H
#define VASKEL_FONTS_H

#include "vaskel/export.h"

namespace Fonts {}  // namespace Fonts

#endif
