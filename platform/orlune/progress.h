// Orlune: progress display and cancellation of long operations.

#ifndef PLATFORM_ORLUNE_PROGRESS_H
#define PLATFORM_ORLUNE_PROGRESS_H

#include "platform/export.h"

namespace Orlune {

/// A progress display that lives as long as the object. Engines construct it on
/// the stack and use it on that thread; an operation begun from a callback of
/// another one has a display of its own within the outer one's life. Handlers
/// behind set and isCanceled may throw; the destructor does not.
class PLATFORM_API Progress {
 public:
    Progress();
    ~Progress();
    Progress(const Progress&) = delete;
    Progress& operator=(const Progress&) = delete;

    /// Shows how far the operation is, 0 to 100 percent.
    void set(float percent);

    /// Whether the user wants the operation to stop. Once true it stays true
    /// for this object.
    bool isCanceled() const;

 private:
    void* mHost[4];  // the host's own; 32 bytes, pointer-aligned
};

/// Lets the system react during a long operation and tells whether the user
/// has cancelled (not 0) or not (0). Both arguments are reserved; the engines
/// pass 0 and ignore the result. May throw.
PLATFORM_API int cancel(int reserved1, int reserved2);

}  // namespace Orlune

#endif
