#include "samples/proof/interrupt.h"

namespace Proof {
namespace {

volatile std::sig_atomic_t gPending = 0;

void remember(int signal) { gPending = signal; }

}  // namespace

Interrupt::Interrupt() {
    gPending = 0;
    struct sigaction action = {};
    action.sa_handler = remember;
    // The handler goes with the first signal; reads and writes go on.
    action.sa_flags = static_cast<int>(SA_RESETHAND | SA_RESTART);
    sigemptyset(&action.sa_mask);
    sigaction(SIGINT, nullptr, &mOldInterrupt);
    sigaction(SIGTERM, nullptr, &mOldTerminate);
    // What the parent has chosen to ignore (nohup, a background job) stays so.
    if (mOldInterrupt.sa_handler != SIG_IGN) sigaction(SIGINT, &action, nullptr);
    if (mOldTerminate.sa_handler != SIG_IGN) sigaction(SIGTERM, &action, nullptr);
}

Interrupt::~Interrupt() {
    sigaction(SIGINT, &mOldInterrupt, nullptr);
    sigaction(SIGTERM, &mOldTerminate, nullptr);
}

int Interrupt::pending() { return gPending; }

}  // namespace Proof
