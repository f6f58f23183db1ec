// What the recording driver saw, and what it answers. The driver library owns the only instance, which dies with it:
// after an unload, or a reload, ask for it again.
#pragma once

#include "sdk/contracts.h"
#include "sdk/entry_point_table.h"

#include <functional>
#include <string>
#include <vector>

struct Recorder {
    /// Every call as text, in order, for example "vek_icc_poweron(1A2B, 0x02, 5000, char[256], &0)". Handles are
    /// hexadecimal, bytes 0x.., texts quoted, a null pointer "null". An output buffer shows its size if it came
    /// zero-filled, with "!" after it if not; an output number shows its value before the call.
    std::vector<std::string> calls;

    // What a call does, one function per entry point, with the contract's own type and the entry point's name. Unset,
    // the call returns 0 and writes nothing; vek_open returns the handle 1A2B.
#define UNIFOLD_SCRIPT_CALLED(name, Contract) std::function<sdk::Contract> name;
#define UNIFOLD_SCRIPT_UNCALLED(name)
    UNIFOLD_ENTRY_POINTS(UNIFOLD_SCRIPT_CALLED, UNIFOLD_SCRIPT_UNCALLED)
#undef UNIFOLD_SCRIPT_CALLED
#undef UNIFOLD_SCRIPT_UNCALLED
};

/// The recorder of the loaded library named "libtarvovek.so" or "libtarvozent.so"; fails the test program if the loaded
/// library has none.
Recorder &recorder();
