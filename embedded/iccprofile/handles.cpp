#include "embedded/iccprofile/handles.h"

#include "embedded/profiles.h"

namespace Embedded {
namespace Icc {
namespace {

thread_local std::string tLastError;

void noteError(cmsContext, cmsUInt32Number, const char* text) { tLastError = text; }

}  // namespace

Registry<Profile>& profiles() {
    static auto* const registry = new Registry<Profile>;
    return *registry;
}

Registry<Link>& links() {
    static auto* const registry = new Registry<Link>;
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

void setError(std::string reason) { tLastError = std::move(reason); }

}  // namespace Icc

std::string lastProfileError() { return Icc::tLastError; }

}  // namespace Embedded
