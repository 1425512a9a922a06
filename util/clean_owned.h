// Cleaning an outline that its owner gives up, for the tracer.

#ifndef UTIL_CLEAN_OWNED_H
#define UTIL_CLEAN_OWNED_H

#include "platform/pemmit.h"

namespace Vaskel {

/// Vaskel::clean(path, size) for a closed outline that patlin alone has made,
/// followed by objrem(path), which is gone in every case. Where cleaning would
/// copy all points as they are, the result is path itself.
///
/// Throws std::bad_alloc; path is gone then too.
Pemmit::Path* cleanOwned(Pemmit::Path* path, int size);

}  // namespace Vaskel

#endif
