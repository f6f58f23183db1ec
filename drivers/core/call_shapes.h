// The called entry points as data: which argument is what, how long its text may be, what of it is secret. For whoever
// looks at calls from outside: the trace, the faults of the virtual reader.
#pragma once

#include "sdk/contracts.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <string_view>

namespace drivers {

/// What an argument carries. `Number` covers all numbers, those that come back through a pointer too.
enum class Role : std::uint8_t {
    Number,
    Character,
    Text,        ///< NUL-terminated, in
    CountedText, ///< in, its length in the companion
    List,        ///< the device list of vek_enum_devices
    Pointer,     ///< only the address is meant
    TextReply,   ///< NUL-terminated, out
    HexReply,    ///< the same in hexadecimal digits
    ByteReply,   ///< bytes, out, their number in the companion
};

/// What must not be shown unless asked for.
enum class Secret : std::uint8_t {
    None,
    All,     ///< a key, a track
    Command, ///< the data of APDUs that carry a PIN
    Answer,  ///< track data in a card's answer, as hexadecimal BER-TLV
    Letters, ///< track data among the letters of a PBOC result
    Block,   ///< all of it if the block is a sector trailer, where the keys are
};

struct Parameter {
    static constexpr std::size_t kNone = ~std::size_t{0};

    const char *name = nullptr;
    Role role = Role::Number;
    std::size_t size = 0;          ///< a reply's buffer; of a text, how many bytes are looked at
    std::size_t companion = kNone; ///< the parameter that holds the length
    Secret secret = Secret::None;
};

struct CallShape {
    static constexpr std::size_t kMostParameters = 10;

    std::string_view name;
    std::array<Parameter, kMostParameters> parameters{};

    constexpr bool takesHandle() const
    {
        return parameters[0].name != nullptr && std::string_view(parameters[0].name) == "handle";
    }
    constexpr bool givesReply() const
    {
        for (const Parameter &parameter : parameters) {
            if (parameter.role >= Role::TextReply)
                return true;
        }
        return false;
    }
};

/// The shape of a called entry point, or null for any other name.
const CallShape *findCallShape(std::string_view name);

/// Whether `name` is one of the SDK's entry points, called or not.
bool isEntryPoint(std::string_view name);

} // namespace drivers
