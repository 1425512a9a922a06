// What an embedding program has set through embedded/host.h.

#ifndef EMBEDDED_ORLUNE_SINKS_H
#define EMBEDDED_ORLUNE_SINKS_H

#include <functional>
#include <memory>

namespace Embedded {

/// A handler, null for the default. Whoever calls it holds a copy of the pointer
/// meanwhile, so that a handler that replaces itself stays alive.
template <class Signature>
using Sink = std::shared_ptr<const std::function<Signature>>;

struct Sinks {
    Sink<void(int)> beep;
    Sink<void(const char*)> debugLine;
    Sink<void(float)> progress;
    Sink<bool()> pollCancel;
    int ppi = 2400;
    double flatness = 0.5;
};

/// The one set of sinks; usable from the first call on, whatever the order in
/// which libraries are loaded.
Sinks& sinks();

}  // namespace Embedded

#endif
