// What the library exports, and what its files share.
#pragma once

#include "sdk/contracts.h"
#include "sdk/entry_point_table.h"

#define EXPORT extern "C" __attribute__((visibility("default")))

// Declares vek_open and all the others under the types of their contracts: a definition that differs does not compile.
#define DECLARE_CALLED(name, Contract) EXPORT sdk::Contract name;
#define DECLARE_UNCALLED(name) EXPORT int name();
UNIFOLD_ENTRY_POINTS(DECLARE_CALLED, DECLARE_UNCALLED)
#undef DECLARE_CALLED
#undef DECLARE_UNCALLED

namespace example {

// 0 is success; what the others mean is the library's own business. Not above 0: vek_icc_status and vek_msr_qm_status
// answer with a state there.
constexpr int kSuccess = 0;
constexpr int kBadHandle = -1;
constexpr int kBadArgument = -2;
constexpr int kNotPowered = -3;
constexpr int kNotSupported = -4;

/// Whether vek_open gave out this handle and vek_close has not ended it.
bool isOpen(sdk::DeviceHandle handle);

/// The answer of a call that this reader has no hardware for.
int unserved(sdk::DeviceHandle handle);

} // namespace example
