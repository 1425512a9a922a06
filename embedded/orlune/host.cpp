#include "embedded/host.h"

#include <utility>

#include "embedded/orlune/sinks.h"

namespace Embedded {

Sinks& sinks() {
    static Sinks* const instance = new Sinks;  // outlives every static destructor
    return *instance;
}

void onBeep(std::function<void(int)> handler) { sinks().beep = std::move(handler); }
void onDebugLine(std::function<void(const char*)> handler) {
    sinks().debugLine = std::move(handler);
}
void onProgress(std::function<void(float)> handler) { sinks().progress = std::move(handler); }
void onPollCancel(std::function<bool()> handler) { sinks().pollCancel = std::move(handler); }
void setResolution(int ppi) { sinks().ppi = ppi < 1 ? 1 : ppi; }
void setFlatness(double distance) { sinks().flatness = distance; }

}  // namespace Embedded
