// Calls of the C interface made out of an input: every argument is of the kind that the call's shape tells, but of any
// value, and in memory of exactly its size.
#pragma once

#include "drivers/core/call_shapes.h"
#include "tests/fuzz/exact_memory.h"
#include "tests/fuzz/input.h"

#include <deque>
#include <filesystem>
#include <string>
#include <type_traits>
#include <vector>

namespace fuzz {

/// What calls leave behind for later ones.
struct Session {
    std::filesystem::path pictures; ///< the only folder that paths lead to
    std::vector<sdk::DeviceHandle> handles;
    std::vector<char *> lists;
    int drawings = 0; ///< drawing takes the time of a hundred other calls
};

/// The arguments of one call.
class Arguments {
public:
    Arguments(const drivers::CallShape &shape, Input &input, Session &session)
        : m_shape(shape), m_input(input), m_session(session)
    {
    }

    template <class Type>
    Type make(std::size_t index)
    {
        const drivers::Parameter &parameter = m_shape.parameters.at(index);
        if constexpr (std::is_same_v<Type, char **>)
            return listPlace();
        else if constexpr (std::is_same_v<Type, const char *>)
            return text(parameter);
        else if constexpr (std::is_same_v<Type, char *>)
            return parameter.role == drivers::Role::Pointer ? list() : buffer(parameter.size);
        else if constexpr (std::is_pointer_v<Type>)
            return reinterpret_cast<Type>(numberPlace(parameter, sizeof(std::remove_pointer_t<Type>))); // NOLINT
        else
            return static_cast<Type>(number(parameter, sizeof(Type)));
    }

    /// What holds after every call.
    void check(std::int64_t result);

private:
    char *keep(ExactBuffer buffer);
    char *buffer(std::size_t size);
    char *numberPlace(const drivers::Parameter &parameter, std::size_t size);
    char **listPlace();
    char *list();
    const char *text(const drivers::Parameter &parameter);
    const char *path();
    std::int64_t number(const drivers::Parameter &parameter, std::size_t size);
    std::int64_t flags();

    const drivers::CallShape &m_shape;
    Input &m_input;
    Session &m_session;
    std::deque<ExactBuffer> m_memory;
    std::vector<const ExactBuffer *> m_texts; ///< the replies that are text
    char **m_listPlace = nullptr;
    std::size_t m_counted = 0; ///< characters of the counted text, or capacity for the counted bytes
};

/// Makes one of the 85 calls, the `which`-th of the table (modulo their number).
void makeCall(std::size_t which, Input &input, Session &session);

/// Closes and gives back what the calls left.
void endSession(Session &session);

} // namespace fuzz
