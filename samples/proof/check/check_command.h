// What the commands that check outlines share.

#ifndef SAMPLES_PROOF_CHECK_CHECK_COMMAND_H
#define SAMPLES_PROOF_CHECK_CHECK_COMMAND_H

#include "samples/proof/check/check_report.h"
#include "samples/proof/console.h"
#include "samples/proof/failure.h"

namespace Proof {

/// Shows progress, and ends at a signal.
CheckSettings checkSettings(Console& console);

/// What ends a command whose check a signal has ended.
Failure cancelledCheck();

}  // namespace Proof

#endif
