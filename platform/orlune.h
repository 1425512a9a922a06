// Orlune: the system services that the engines call. Declarations only; the
// host supplies the bodies, embedded/orlune holds ours.

#ifndef PLATFORM_ORLUNE_H
#define PLATFORM_ORLUNE_H

#include "platform/orlune/arithmetic.h"
#include "platform/orlune/diagnostics.h"
#include "platform/orlune/error.h"
#include "platform/orlune/progress.h"
#include "platform/orlune/strings.h"
#include "platform/orlune/text.h"
#include "platform/orlune/unit.h"
#include "platform/orlune/url.h"

#endif
