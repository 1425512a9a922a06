// From the options of a trace to its outlines; shared by the commands that
// need a traced scan.

#ifndef SAMPLES_PROOF_TRACE_JOB_H
#define SAMPLES_PROOF_TRACE_JOB_H

#include <ctime>
#include <optional>
#include <string>

#include "samples/proof/outlines.h"

namespace Proof {

class Console;

/// Options as the user types them; the defaults suit scanned text and line
/// art from 300 to 1200 ppi.
struct TraceOptions {
    std::string input;
    int page = 1;
    std::string resolution;  // empty: the file's
    std::string threshold = "otsu";
    bool invert = false;
    std::string minSize = "0.1mm";
    std::string tolerance = "0.125scanpix";
    int filter = 2;
    int grid = 16;
    std::string step = "1scanpix";
    bool smooth = false;
    bool exact = false;
    std::string unit = "mm";
    bool quiet = false;
};

struct TracedScan {
    OutlinePage page;
    std::string name;
    std::optional<std::time_t> modified;  // the input, where known
    std::string description;              // one line for the user
    double xPpi = 0;                      // of the upright page
    double yPpi = 0;
    int cancelledBy = 0;  // the signal that stopped it, or 0
    int rows = 0;         // traced
    int allRows = 0;
};

/// Reads and traces a scan, with progress on the console, until it is done or
/// a signal asks to stop. Throws Failure; a signal during the first pass, in
/// which nothing is traced yet, is one.
TracedScan traceScan(const TraceOptions& options, Console& console);

}  // namespace Proof

#endif
