// A PBOC debit/credit application: GET PROCESSING OPTIONS, GENERATE AC, EXTERNAL AUTHENTICATE, GET DATA.
#pragma once

#include "drivers/virtual/cards/file_tree.h"
#include "drivers/virtual/cards/json_node.h"
#include "drivers/virtual/cards/payment_directory.h"

namespace drivers::cards {

/// Makes the application "type": "pboc". Throws std::runtime_error with the place.
/// @return what the payment directories say about it
PaymentEntry buildPboc(const JsonNode &node, Directory &directory, Revision &revision);

} // namespace drivers::cards
