// Everything that libvaskel.so exports, one header per family.

#ifndef VASKEL_VASKEL_H
#define VASKEL_VASKEL_H

#include "vaskel/colour.h"
#include "vaskel/encoding.h"
#include "vaskel/fonts.h"
#include "vaskel/geometry.h"
#include "vaskel/messages.h"
#include "vaskel/raster.h"
#include "vaskel/units.h"
#include "vaskel/util.h"

#endif
