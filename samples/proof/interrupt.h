// Ctrl-C and a polite kill as a question that can be asked.

#ifndef SAMPLES_PROOF_INTERRUPT_H
#define SAMPLES_PROOF_INTERRUPT_H

#include <csignal>

namespace Proof {

/// While it lives, the first SIGINT or SIGTERM is only remembered; the second
/// one ends the program the hard way. One at a time.
class Interrupt {
 public:
    Interrupt();
    ~Interrupt();
    Interrupt(const Interrupt&) = delete;
    Interrupt& operator=(const Interrupt&) = delete;

    /// The number of the signal that came, or 0.
    static int pending();

 private:
    struct sigaction mOldInterrupt;
    struct sigaction mOldTerminate;
};

}  // namespace Proof

#endif
