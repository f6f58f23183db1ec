// Signals that ask the program to end. They wait until it can tidy up: what it leaves behind are pictures of ID cards.
#pragma once

#include <csignal>

namespace check {

/// Makes SIGINT, SIGTERM and SIGHUP wait, but for those that are ignored, and a closed pipe an error of writing. Call
/// it once, before anything else.
void deferInterruption();

/// Whether one has come. It can only come while a system call waits with interruptibleMask().
bool isInterrupted();

/// For ppoll().
const sigset_t &interruptibleMask();

/// Sets all back to how the program was started. Call it in a child.
void restoreSignals();

/// Ends the program by the signal that has come, if any.
void endIfInterrupted();

} // namespace check
