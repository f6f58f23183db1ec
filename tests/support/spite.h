// What the hostile driver draws its answers from, one object a call.
#pragma once

#include "tests/support/hostility.h"

#include <array>
#include <limits>
#include <random>
#include <string>

class Spite {
public:
    /// The driver's only control object.
    static Hostility &control();

    /// Counts the call.
    explicit Spite(const char *entryPoint);

    /// 0 .. limit - 1.
    std::uint32_t below(std::size_t limit) { return static_cast<std::uint32_t>(m_random() % limit); }

    template <typename Value, std::size_t count>
    Value oneOf(const std::array<Value, count> &values)
    {
        return values[below(count)];
    }

    /// Mostly success, since only then are the outputs looked at.
    int result();

    /// Sets a number output, lengths included: in range, out of it, negative.
    template <typename Number>
    void write(Number *out)
    {
        using Limits = std::numeric_limits<Number>;
        *out = oneOf<Number, 8>({0, 1, static_cast<Number>(-1), Limits::min(), Limits::max(), static_cast<Number>(8193),
                                 static_cast<Number>(1025), static_cast<Number>(m_random())});
    }

    /// Fills a text buffer behind `start`: often to its last byte, with no NUL anywhere.
    void fill(char *buffer, std::size_t size, const char *start = "");

    /// A few characters that mean something to somebody: markup, separators, formats, halves of characters.
    std::string piece();

    /// The text of vek_enum_devices: none, hundreds of names, a huge one, no "|" at the end.
    std::string deviceList();

    /// Leaves no file at `path`, or an empty, broken, cut, sound or huge picture.
    void leavePicture(const char *path);

private:
    std::mt19937 m_random;
};
