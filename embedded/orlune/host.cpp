#include "embedded/host.h"

#include <utility>

#include "embedded/orlune/sinks.h"

namespace Embedded {
namespace {

// Replaces a sink; the old handler goes last, when the new one is in place.
template <class Signature>
void replace(Sink<Signature>& sink, std::function<Signature> handler) {
    Sink<Signature> next;
    if (handler) next = std::make_shared<const std::function<Signature>>(std::move(handler));
    sink.swap(next);
}

}  // namespace

void onBeep(std::function<void(int)> handler) { replace(sinks().beep, std::move(handler)); }
void onDebugLine(std::function<void(const char*)> handler) {
    replace(sinks().debugLine, std::move(handler));
}
void onProgress(std::function<void(float)> handler) {
    replace(sinks().progress, std::move(handler));
}
void onPollCancel(std::function<bool()> handler) {
    replace(sinks().pollCancel, std::move(handler));
}
void setResolution(int ppi) { sinks().ppi = ppi < 1 ? 1 : ppi; }
void setFlatness(double distance) { sinks().flatness = distance; }

}  // namespace Embedded
