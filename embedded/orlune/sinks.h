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

/// Initialised as constants and never destroyed, so that the sinks are usable from
/// the first call to the last one, whatever the order in which libraries are loaded.
union SinkStore {
    constexpr SinkStore() : sinks{} {}
    ~SinkStore() {}
    Sinks sinks;
};
inline constinit SinkStore gSinkStore;

/// The one set of sinks.
inline Sinks& sinks() { return gSinkStore.sinks; }

}  // namespace Embedded

#endif
