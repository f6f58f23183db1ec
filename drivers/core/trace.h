// The trace: every call of a driver as lines of JSON in a file, for whoever wants to know what a program asked of its
// reader. docs/faults-and-trace.md describes the lines.
//
// UNIFOLD_TRACE names the file; it is read when the library serves its first call. What was written stays whole when
// the program is killed, and several programs may share the file: a line is one write(2) to its end.
#pragma once

#include "drivers/core/bytes.h"
#include "drivers/core/exported_call.h"
#include "drivers/core/return_codes.h"

#include <chrono>

namespace drivers {

constexpr char kTraceVariable[] = "UNIFOLD_TRACE";
/// Set to 1: keys, PINs and track data are written as they are.
constexpr char kTraceSecretsVariable[] = "UNIFOLD_TRACE_SECRETS";

/// Whether there is a trace to write to. Cheap.
bool traceIsOn() noexcept;

/// Carries out the call, within `around` unless that is null, and writes a line before it and one after it. A line that
/// cannot be made or written is left out; the call does not suffer.
std::int64_t traceCall(const Call &call, Around around) noexcept;

/// Writes what went to the card and came back, as it went: before 61xx and 6Cxx are completed.
void traceExchange(const Bytes &command, const Bytes &reply, ReturnCode result,
                   std::chrono::steady_clock::duration took) noexcept;

/// Runs `exchange(command, reply)`, a ReturnCode, and writes it to the trace if there is one.
template <class Exchange>
ReturnCode tracedExchange(Exchange &&exchange, const Bytes &command, Bytes &reply)
{
    if (!traceIsOn())
        return exchange(command, reply);
    const auto begin = std::chrono::steady_clock::now();
    const ReturnCode result = exchange(command, reply);
    traceExchange(command, reply, result, std::chrono::steady_clock::now() - begin);
    return result;
}

} // namespace drivers
