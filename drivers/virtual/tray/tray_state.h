// What lies in the reader and what the reader itself remembers: the contents of tray.json.
#pragma once

#include "drivers/virtual/tray/fault.h"

#include <array>
#include <cstdint>
#include <map>
#include <nlohmann/json.hpp>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace drivers::tray {

enum class Slot { Contact, Antenna, Psam1, Psam2, Psam3, Psam4, IdPlate, Stripe };

constexpr std::array kAllSlots = {Slot::Contact, Slot::Antenna, Slot::Psam1,   Slot::Psam2,
                                  Slot::Psam3,   Slot::Psam4,   Slot::IdPlate, Slot::Stripe};

/// The slot's name in files and on command lines: contact, antenna, psam1 to psam4, id, stripe.
std::string_view slotName(Slot slot);
std::optional<Slot> slotOfName(std::string_view name);

/// Whether a card of this kind (cpu, mifare, id, stripe) goes into the slot.
bool slotTakesKind(Slot slot, std::string_view kind);

/// What lies in a slot.
struct SlotContent {
    std::string card;           ///< the card's id; empty: nothing lies there
    std::uint64_t inserted = 0; ///< which insertion it was, counted over the whole tray; tells a card that was taken
                                ///< out and put back from one that stayed
};

/// One swipe, with what the stripe held at that moment.
struct Swipe {
    std::uint64_t number = 0;
    std::string card;
    std::array<std::string, 3> tracks;

    bool empty() const { return tracks[0].empty() && tracks[1].empty() && tracks[2].empty(); }
};

/// The rate of one serial reader, bits per second.
struct SerialRate {
    static constexpr int kFactoryRate = 9600;

    int stored = kFactoryRate;
    std::optional<int> temporary; ///< until the power goes

    int inForce() const { return temporary.value_or(stored); }
};

struct TrayState {
    /// How many swipes are kept for the sessions that have not fetched them yet.
    static constexpr std::size_t kKeptSwipes = 16;

    std::array<SlotContent, kAllSlots.size()> contents;
    std::uint64_t insertions = 0;
    std::uint64_t powerCycles = 0;
    std::uint64_t beeps = 0;
    std::uint64_t beepMs = 0; ///< sum of the sounding times
    std::uint64_t swipeCount = 0;
    std::vector<Swipe> swipes; ///< the last ones, oldest first; those made in keyboard mode are not among them
    bool keyboardMode = false;
    std::map<std::string, SerialRate> serial; ///< by device name; a device not named has the factory rate
    std::vector<Fault> faults;

    SlotContent &at(Slot slot) { return contents[static_cast<std::size_t>(slot)]; }
    const SlotContent &at(Slot slot) const { return contents[static_cast<std::size_t>(slot)]; }

    /// Puts a card in, in place of what lies there.
    void put(Slot slot, const std::string &card);
    void take(Slot slot);

    /// Takes a card out of whatever slot it lies in.
    void forget(const std::string &card);

    /// Records a swipe; in keyboard mode it is only counted.
    void swipe(const std::string &card, const std::array<std::string, 3> &tracks);

    /// Takes the reader's power away and gives it back.
    void cyclePower();
};

/// `document` has passed tray.schema.json.
TrayState stateFromJson(const nlohmann::json &document);
nlohmann::json toJson(const TrayState &state);

} // namespace drivers::tray
