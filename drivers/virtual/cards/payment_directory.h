// The directories that tell a terminal which payment applications a card has.
#pragma once

#include "drivers/virtual/cards/file_tree.h"
#include "drivers/virtual/cards/json_node.h"

namespace drivers::cards {

/// What a payment directory says about one application.
struct PaymentEntry {
    Bytes aid;
    Bytes label;
    std::uint8_t priority = 1; ///< 1 is the first choice
};

/// Adds 1PAY.SYS.DDF01, whose entries are records, and 2PAY.SYS.DDF01, whose entries come with its SELECT.
void buildPaymentDirectories(const std::vector<PaymentEntry> &entries, Directory &master);

} // namespace drivers::cards
