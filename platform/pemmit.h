// Pemmit: the document objects that the engines read and build. Declarations
// only; the host supplies the bodies, embedded/pemmit holds ours.

#ifndef PLATFORM_PEMMIT_H
#define PLATFORM_PEMMIT_H

#include "platform/pemmit/bezier.h"
#include "platform/pemmit/build.h"
#include "platform/pemmit/object.h"
#include "platform/pemmit/walk.h"

#endif
