// Paths of the host that belong to whoever holds the pointer.

#ifndef UTIL_OWNED_PATH_H
#define UTIL_OWNED_PATH_H

#include <memory>

#include "platform/pemmit.h"

namespace Vaskel {

struct PathRemover {
    void operator()(Pemmit::Path* path) const { Pemmit::objrem(path); }
};
using OwnedPath = std::unique_ptr<Pemmit::Path, PathRemover>;

}  // namespace Vaskel

#endif
