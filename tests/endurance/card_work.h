// Writes to the cards of the virtual reader that follow from a seed, and what they make of a card. Two processes that
// share the seed know the same work.
#pragma once

#include "tests/support/driver_api.h"

#include <array>
#include <cstdint>
#include <nlohmann/json.hpp>
#include <string>

namespace endurance {

using testsupport::DriverApi;

/// The cards that are written, as the first layout of a tray has them.
constexpr char kMifareCard[] = "mifare-wallet";
constexpr char kStripeCard[] = "stripe-three-tracks";

struct Operation {
    enum class Kind { WriteBlock, InitValue, Increase, Decrease, WriteStripe };

    Kind kind;
    std::uint8_t block = 0; ///< Mifare: the absolute block, of sector 0 or 1
    std::int32_t value = 0; ///< InitValue: the value; Increase, Decrease: the amount
    std::string data = {};  ///< WriteBlock: 32 hexadecimal digits
    int selection = 0;      ///< WriteStripe: as in sdk::MsrWrite
    std::array<std::string, 3> tracks = {};

    bool isStripe() const { return kind == Kind::WriteStripe; }
};

/// The operation of that number. Any one changes the card that it is made on.
Operation operationOf(std::uint32_t seed, std::uint32_t number);

/// Selects the Mifare card on the antenna and opens the block's sector. Returns the driver's code.
int openSector(const DriverApi &driver, sdk::DeviceHandle device, std::uint8_t block);

/// Makes the one call of a Mifare operation on an open sector, or of a stripe operation, which waits up to a second for
/// a swipe. Returns the driver's code.
int perform(const DriverApi &driver, sdk::DeviceHandle device, const Operation &operation);

/// Both cards as their files say.
struct Cards {
    nlohmann::json mifare;
    nlohmann::json stripe;

    bool operator==(const Cards &other) const { return mifare == other.mifare && stripe == other.stripe; }

    /// What the operation makes of them, reckoned apart from the driver.
    Cards after(const Operation &operation) const;
};

} // namespace endurance
