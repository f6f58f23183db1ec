// The memory that one call gets, each piece guarded, and what is checked of it afterwards.
#pragma once

#include "tools/check/guard_buffer.h"

#include <cstdint>
#include <functional>
#include <list>
#include <optional>
#include <string>

namespace check {

enum class TextKind {
    Any,
    Utf8,
    Hexadecimal, ///< an even number of digits
};

class Buffers {
public:
    explicit Buffers(std::string call) : m_call(std::move(call)) {}

    /// An input text, ending at a page that nobody may read.
    const char *input(const char *label, const std::string &text);

    /// A zero-filled output text of `size` bytes, the NUL included, which on success has at least `leastLength`
    /// characters.
    char *text(const char *label, std::size_t size, TextKind kind = TextKind::Any, std::size_t leastLength = 0);

    /// Output bytes that are no text.
    std::uint8_t *bytes(const char *label, std::size_t size);

    /// An output number, 0 before the call, that on success lies between `least` and `most`.
    template <class Number>
    Number *number(const char *label, std::int64_t least, std::int64_t most)
    {
        const GuardBuffer &memory = add(label, sizeof(Number));
        auto *const value = reinterpret_cast<Number *>(memory.data());
        onSuccess([=]() -> std::optional<std::string> {
            const auto got = static_cast<std::int64_t>(*value);
            if (got >= least && got <= most)
                return std::nullopt;
            return std::string(label) + " is " + std::to_string(got);
        });
        return value;
    }

    /// The length of a text of `size` bytes. Whether the NUL counts is left to the driver.
    template <class Number>
    Number *length(const char *label, std::size_t size)
    {
        return number<Number>(label, 0, static_cast<std::int64_t>(size));
    }

    /// A further condition on a call that succeeded: the reason if it is not met.
    using Condition = std::function<std::optional<std::string>()>;
    void onSuccess(Condition condition) { m_conditions.push_back(std::move(condition)); }

    /// What is wrong after the call, if anything.
    std::optional<std::string> problem(bool succeeded) const;

private:
    struct Text {
        std::string label;
        const GuardBuffer *memory;
        TextKind kind;
        std::size_t leastLength;
    };

    const GuardBuffer &add(const std::string &label, std::size_t size);
    static std::optional<std::string> problemOf(const Text &text, bool succeeded);

    std::string m_call;
    std::list<GuardBuffer> m_memory;
    std::list<Text> m_texts;
    std::list<Condition> m_conditions;
};

/// Whether bytes are well-formed UTF-8.
bool isUtf8(const std::string &text);

} // namespace check
