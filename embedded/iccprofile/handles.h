// Profiles and links behind the opaque handles.

#ifndef EMBEDDED_ICCPROFILE_HANDLES_H
#define EMBEDDED_ICCPROFILE_HANDLES_H

#include <lcms2.h>

#include <cstddef>
#include <cstdint>
#include <memory>
#include <mutex>
#include <shared_mutex>
#include <string>
#include <unordered_map>

namespace Embedded::Icc {

struct ProfileCloser {
    void operator()(void* profile) const { cmsCloseProfile(profile); }
};
struct TransformRemover {
    void operator()(void* transform) const { cmsDeleteTransform(transform); }
};

struct Profile {
    std::unique_ptr<void, ProfileCloser> lcms;
    std::uint32_t intent = 0;
    std::uint32_t space = 0;
};

struct Link {
    std::unique_ptr<void, TransformRemover> lcms;
    std::uint32_t sourceSpace = 0, targetSpace = 0;
    std::size_t channels = 4;  // that it writes of a target pixel
};

/// The handles that are open. A handle is a number that comes only once, odd for
/// profiles and even for links, and is looked up before it is used, so that a
/// null, closed or foreign one is told from an open one.
template <class Object>
class Registry {
 public:
    explicit Registry(std::uintptr_t first) : mNext(first) {}

    void* add(std::shared_ptr<Object> object) {
        const std::unique_lock lock(mMutex);
        void* const handle = reinterpret_cast<void*>(mNext);
        mNext += 2;
        mOpen.emplace(handle, std::move(object));
        return handle;
    }
    std::shared_ptr<Object> find(void* handle) const {
        const std::shared_lock lock(mMutex);
        const auto found = mOpen.find(handle);
        return found == mOpen.end() ? nullptr : found->second;
    }
    void remove(void* handle) {
        std::shared_ptr<Object> last;  // released after the lock
        const std::unique_lock lock(mMutex);
        const auto found = mOpen.find(handle);
        if (found == mOpen.end()) return;
        last = std::move(found->second);
        mOpen.erase(found);
    }

 private:
    mutable std::shared_mutex mMutex;
    std::uintptr_t mNext;
    std::unordered_map<void*, std::shared_ptr<Object>> mOpen;
};

/// Both live until the process ends, whatever the order in which static objects
/// of programs go.
Registry<Profile>& profiles();
Registry<Link>& links();

/// Little CMS with errors going to lastProfileError of the thread.
cmsContext context();
/// Keeps the reason for the thread; without memory for it, none is kept.
void setError(const char* reason) noexcept;

}  // namespace Embedded::Icc

#endif
