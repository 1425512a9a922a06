// What an embedding program has set through embedded/host.h.

#ifndef EMBEDDED_ORLUNE_SINKS_H
#define EMBEDDED_ORLUNE_SINKS_H

#include <functional>

namespace Embedded {

struct Sinks {
    std::function<void(int)> beep;
    std::function<void(const char*)> debugLine;
    std::function<void(float)> progress;
    std::function<bool()> pollCancel;
    int ppi = 2400;
    double flatness = 0.5;
};

/// The one set of sinks; usable from the first call on, whatever the order in
/// which libraries are loaded.
Sinks& sinks();

}  // namespace Embedded

#endif
