// One call of an exported function as something that can be looked at and put off: its shape, its arguments, and the
// function that serves it.
#pragma once

#include "drivers/core/call_shapes.h"

#include <array>
#include <cstdint>
#include <cstring>
#include <type_traits>

namespace drivers {

/// An argument without its type. Pointers may be null.
class Argument {
public:
    template <class Type>
    explicit Argument(Type value)
    {
        if constexpr (std::is_pointer_v<Type>) {
            m_pointer = const_cast<void *>(static_cast<const void *>(value)); // NOLINT(*-const-cast)
            m_isPointer = true;
            m_width = sizeof(*value);
            m_isSigned = std::is_signed_v<std::remove_pointer_t<Type>>;
        } else {
            m_number = static_cast<std::int64_t>(value);
        }
    }

    bool isPointer() const { return m_isPointer; }
    char *text() const { return static_cast<char *>(m_pointer); }
    const void *address() const { return m_pointer; }

    /// The number itself, or the one behind the pointer; 0 for a null pointer.
    std::int64_t number() const
    {
        if (!m_isPointer || m_pointer == nullptr)
            return m_number;
        std::uint64_t bits = 0;
        std::memcpy(&bits, m_pointer, m_width); // the low bytes: all our machines are little-endian
        const std::size_t unused = 8 * (sizeof bits - m_width);
        const auto high = static_cast<std::int64_t>(bits << unused);
        return m_isSigned ? high >> unused : static_cast<std::int64_t>(bits);
    }

    /// Changes the number behind the pointer.
    void setNumber(std::uint64_t value) const
    {
        if (m_isPointer && m_pointer != nullptr)
            std::memcpy(m_pointer, &value, m_width);
    }

private:
    std::int64_t m_number = 0;
    void *m_pointer = nullptr;
    std::size_t m_width = 0;
    bool m_isPointer = false;
    bool m_isSigned = false;
};

/// Lives as long as the call.
struct Call {
    const CallShape &shape;
    const Argument *arguments; ///< one for each named parameter of the shape
    const void *context;
    std::int64_t (*serve)(const void *context);

    /// Carries the call out and returns its result, 0 for a function without one.
    std::int64_t proceed() const { return serve(context); }
};

/// What a driver puts around every one of its calls: calls proceed() once or not at all, and returns the result. Lets
/// no exception out.
using Around = std::int64_t (*)(const Call &call);

} // namespace drivers
