#ifndef VASKEL_MESSAGES_H
#define VASKEL_MESSAGES_H

#include "vaskel/export.h"

namespace Vaskel {}  // namespace Vaskel

#endif
