#include "platform/orlune/progress.h"

#include <new>

#include "embedded/orlune/sinks.h"

namespace Orlune {
namespace {

bool pollCancel() {
    const auto handler = Embedded::sinks().pollCancel;
    return handler && (*handler)();
}

// The storage: at its start the address of what a Progress remembers, whether
// it was cancelled, which lies behind.
bool& cancelled(void* const* storage) { return *static_cast<bool*>(storage[0]); }

}  // namespace

Progress::Progress() : mHost{} { mHost[0] = ::new (&mHost[1]) bool(false); }
Progress::~Progress() = default;

void Progress::set(float percent) {
    if (const auto handler = Embedded::sinks().progress) (*handler)(percent);
}

bool Progress::isCanceled() const {
    if (!cancelled(mHost) && pollCancel()) cancelled(mHost) = true;
    return cancelled(mHost);
}

int cancel(int, int) { return pollCancel() ? 1 : 0; }

}  // namespace Orlune
