// The embedded platform as an embedding program sees it: where the platform's
// beeps, developer lines, progress and questions about cancelling go, and the
// document resolution. All settings are process-wide and belong to one thread.
//
// An empty handler restores the default. Handlers may throw; the exception
// passes through the engine that made the call.

#ifndef EMBEDDED_HOST_H
#define EMBEDDED_HOST_H

#include <functional>

#include "platform/export.h"

namespace Embedded {

/// Receives the tone of every Orlune::Beep. Default: nothing.
PLATFORM_API void onBeep(std::function<void(int tone)> handler);

/// Receives every line of Orlune::debug and Orlune::debugstring, without a
/// line feed. Default: the line goes to standard error.
PLATFORM_API void onDebugLine(std::function<void(const char* line)> handler);

/// Receives the percentage of every Orlune::Progress::set. Default: nothing.
PLATFORM_API void onProgress(std::function<void(float percent)> handler);

/// Asked by every Orlune::Progress::isCanceled and Orlune::cancel; true asks
/// the operation to stop. Default: never.
PLATFORM_API void onPollCancel(std::function<bool()> handler);

/// Sets what Pemmit::getppi returns; 2400 until set. Values below 1 count as 1.
PLATFORM_API void setResolution(int ppi);

/// Sets how far, in distances, the points that a walk delivers may lie from a
/// curve; 0.5 until set. Applies to curves added afterwards.
PLATFORM_API void setFlatness(double distance);

}  // namespace Embedded

#endif
