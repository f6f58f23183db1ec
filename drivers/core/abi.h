// The exports of a driver library, declared from the one table of entry points. A definition that drifts from its
// contract does not compile, since C++ allows no second type for an extern "C" name.
//
// With UNIFOLD_WRAPPED_EXPORTS what is defined as vek_open becomes the hidden symbol served_vek_open, and the exported
// one is the wrapper of drivers/core/exports.h.
#pragma once

#include "sdk/contracts.h"
#include "sdk/entry_point_table.h"

namespace sdk {

/// An entry point nobody calls: its arguments are unknown, so it is declared without any and touches none.
using Uncalled = int();

} // namespace sdk

#define UNIFOLD_EXPORT extern "C" __attribute__((visibility("default")))

#ifdef UNIFOLD_WRAPPED_EXPORTS
#define UNIFOLD_DECLARE_CALLED(name, Contract)                                                                         \
    extern "C" __attribute__((visibility("hidden"))) sdk::Contract name __asm__("served_" #name);
#define UNIFOLD_DECLARE_UNCALLED(name)
#else
#define UNIFOLD_DECLARE_CALLED(name, Contract) UNIFOLD_EXPORT sdk::Contract name;
#define UNIFOLD_DECLARE_UNCALLED(name) UNIFOLD_EXPORT sdk::Uncalled name;
#endif
UNIFOLD_ENTRY_POINTS(UNIFOLD_DECLARE_CALLED, UNIFOLD_DECLARE_UNCALLED)
#undef UNIFOLD_DECLARE_CALLED
#undef UNIFOLD_DECLARE_UNCALLED
