// What a directory of a card can do beyond its files.
#pragma once

#include <nlohmann/json.hpp>

#include "drivers/virtual/cards/instructions.h"

namespace drivers::cards {

class Application {
public:
    Application() = default;
    virtual ~Application() = default;
    Application(const Application &) = delete;
    Application &operator=(const Application &) = delete;

    /// Instructions that go before the card's common ones while the application is selected.
    const InstructionMap &instructions() const { return m_instructions; }

    /// The application was selected, or the card lost its power: what it remembers of a transaction is gone.
    virtual void restart() {}

    /// Brings the application's part of the card's description up to date.
    virtual void save(nlohmann::json &description) const { (void)description; }

protected:
    InstructionMap m_instructions;
};

} // namespace drivers::cards
