// What the command line decides for all checks.
#pragma once

#include "sdk/contracts.h"

#include <optional>
#include <string>

namespace check {

struct Settings {
    std::string library;
    std::string device; ///< empty: the first one of `transport`, or the default one
    int transport = 0;  ///< 0: the default device
    int baud = 9600;
    std::uint8_t slot = sdk::kSlotContact;
    int timeoutMs = 500; ///< what calls that wait are given
    int slackMs = 1000;  ///< how much later they may return
    int watchdogMs = 15000;
    bool allowWrites = false;
    bool ourCodes = false;
    bool verbose = false;
    std::optional<int> notSupportedCode;
};

} // namespace check
