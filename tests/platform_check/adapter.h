// The platform check's view of a host, to be filled in by whoever writes one.
//
// The check calls a host through the declarations of platform/. Some of what
// it has to do no declared call can: hear a beep, cancel an operation, draw a
// curve, open a profile. These few functions do it. Copy embedded_adapter.cpp,
// which does so for the embedded platform, and replace the bodies.
//
// A host that cannot do one of these things says so (std::nullopt, false or
// null, as noted), and the contracts that need it are listed as not checked.

#ifndef PLATFORM_CHECK_ADAPTER_H
#define PLATFORM_CHECK_ADAPTER_H

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "platform/pemmit.h"

namespace Adapter {

/// Called once before the first check, to start the host's libraries if they
/// need it and to begin to record.
void begin();

/// Sets the document resolution; false if the check may not.
bool setResolution(int ppi);

/// The tones of all Orlune::Beep calls since the last question, in order.
std::optional<std::vector<int>> takeBeeps();

/// The lines of all Orlune::debug and Orlune::debugstring calls since the last
/// question, in order, without a line feed.
std::optional<std::vector<std::string>> takeDebugLines();

/// The arguments of all Orlune::Progress::set calls since the last question.
std::optional<std::vector<float>> takeProgress();

/// Whether the user wants operations to stop from now on: what isCanceled and
/// cancel answer. False if the check may not say so.
bool setCancelled(bool cancelled);

/// Appends a cubic segment to a path that has points: control points (x1, y1)
/// and (x2, y2), end (x3, y3). False if the host has no curves.
bool addCurve(Pemmit::Path* path, int x1, int y1, int x2, int y2, int x3, int y3);

/// How far, in distances, the points that a walk delivers may lie from a curve,
/// before they are rounded to whole distances.
double flatness();

/// A new object that takes children, and what makes child its last child.
/// Null, or false, if the host has no such objects.
Pemmit::Path* makeCompound();
bool addChild(Pemmit::Object* parent, Pemmit::Object* child);

/// A newly opened profile of the given colour space (the codes of
/// platform/libiccprofile.h) that can stand at both ends of a link, or null if
/// the host has none. The check closes it. Asked for 'RGB ', 'CMYK', 'GRAY'
/// and 'Lab '.
void* openProfile(std::uint32_t space);

}  // namespace Adapter

#endif
