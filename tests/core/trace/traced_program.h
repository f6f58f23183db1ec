// What a test of the trace runs in a process of its own.
#pragma once

/// Runs the part of that name with a driver library and returns the exit code.
int runTracedPart(const char *part);
