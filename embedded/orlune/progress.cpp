#include "platform/orlune/progress.h"

#include "embedded/orlune/sinks.h"

namespace Orlune {
namespace {

bool pollCancel() {
    const auto handler = Embedded::sinks().pollCancel;
    return handler && handler();
}

// The one thing that a Progress remembers: that it was cancelled.
bool& cancelled(void* const* storage) {
    return *reinterpret_cast<bool*>(const_cast<void**>(storage));
}

}  // namespace

Progress::Progress() : mHost{} {}
Progress::~Progress() = default;

void Progress::set(float percent) {
    const auto handler = Embedded::sinks().progress;
    if (handler) handler(percent);
}

bool Progress::isCanceled() const {
    if (!cancelled(mHost) && pollCancel()) cancelled(mHost) = true;
    return cancelled(mHost);
}

int cancel(int, int) { return pollCancel() ? 1 : 0; }

}  // namespace Orlune
