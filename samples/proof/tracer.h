// The tracer at work: rows of ink in, outlines out.

#ifndef SAMPLES_PROOF_TRACER_H
#define SAMPLES_PROOF_TRACER_H

#include <functional>

#include "samples/proof/ink_rows.h"
#include "samples/proof/outlines.h"

namespace Proof {

/// How outlines are made; lengths in outline units.
struct TraceSettings {
    int unitsPerPixel = 1;  // outline units a pixel
    int minSize = 0;        // what is at most so wide and so high is dropped
    bool smooth = false;    // steps of one unit become diagonals
    int filter = 0;         // order of the low-pass filter; 0: none
    int tolerance = 0;      // how far outlines may be from the filtered ones
    int step = 1;           // resampling distance along the outline
};

struct TraceResult {
    Outlines outlines;
    bool cancelled = false;
    int rows = 0;  // that were traced; all of them unless cancelled
};

/// Traces all rows. watch is asked once a row, through the platform's
/// progress and cancellation, with the percentage done; false stops, and what
/// was open is closed at the row reached. Throws Failure where a row has more
/// run boundaries than the tracer takes, and passes on what rows throws. The
/// platform's handlers for both are the defaults afterwards.
TraceResult traceRows(InkRows& rows, const Orientation& orientation, const TraceSettings& settings,
                      const std::function<bool(double percent)>& watch);

}  // namespace Proof

#endif
