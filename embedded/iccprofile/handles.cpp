#include "embedded/iccprofile/handles.h"

#include <new>

#include "embedded/profiles.h"

namespace Embedded {
namespace Icc {
namespace {

thread_local std::string tLastError;

// Called from C, which no exception may pass.
void noteError(cmsContext, cmsUInt32Number, const char* text) { setError(text); }

}  // namespace

Registry<Profile>& profiles() {
    static auto* const registry = new Registry<Profile>(1);
    return *registry;
}

Registry<Link>& links() {
    static auto* const registry = new Registry<Link>(2);
    return *registry;
}

cmsContext context() {
    static const cmsContext made = [] {
        const cmsContext fresh = cmsCreateContext(nullptr, nullptr);
        cmsSetLogErrorHandlerTHR(fresh, noteError);
        return fresh;
    }();
    return made;
}

void setError(const char* reason) noexcept {
    try {
        tLastError = reason;
    } catch (const std::bad_alloc&) {
        tLastError.clear();
    }
}

}  // namespace Icc

std::string lastProfileError() { return Icc::tLastError; }

}  // namespace Embedded
