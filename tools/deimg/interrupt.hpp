/// Ctrl-C and its kin: running jobs stop cleanly and the program ends the way its caller expects.
#ifndef DEIMG_TOOLS_DEIMG_INTERRUPT_HPP
#define DEIMG_TOOLS_DEIMG_INTERRUPT_HPP

#include <atomic>

namespace deimg::cli {

/// From now on SIGINT, SIGTERM and SIGHUP set the cancel flag; a second one ends the program at
/// once. Writing to a full disk or a closed pipe becomes an ordinary error.
void CatchInterrupts();

/// Set once the user has asked to stop.
const std::atomic<bool>& CancelFlag();

/// Ends the program by the signal that was caught, if any, so that a shell sees it.
void FinishInterrupt();

}  // namespace deimg::cli

#endif  // DEIMG_TOOLS_DEIMG_INTERRUPT_HPP
