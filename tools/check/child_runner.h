// Runs a check in a process of its own, since a library may crash, hang or end its program.
#pragma once

#include "tools/check/verdict.h"

#include <functional>

namespace check {

struct ChildResult {
    Outcome outcome;
    int milliseconds = 0;
};

/// Runs `body` in a child and returns what it came to. A crash, a call of exit() and a child that is not done after
/// `watchdogMs` are failures. The child's output goes nowhere, or to standard error if `verbose`.
ChildResult runInChild(const std::function<Outcome()> &body, int watchdogMs, bool verbose);

/// Names what the check does next, so that a crash or a hang can be told from where it happened. Call it in the child.
void beginStep(const char *step);

} // namespace check
