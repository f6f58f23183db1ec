// The controls of the hostile driver. The library owns the only instance, which dies with it: after an unload, or a
// reload, ask for it again.
#pragma once

#include "tests/support/loaded_driver.h"

#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <vector>

struct Hostility {
    /// All answers follow from the seed, the entry point's name and how often it has been called since the seed was
    /// set, so that a call that comes at some other time, as a timer's do, changes no other answer. Starts as the
    /// environment variable UNIFOLD_HOSTILE_SEED, or as 0.
    std::uint32_t seed = 0;

    /// Calls since the seed was set, by entry point.
    std::map<std::string, std::uint32_t> calls;

    /// Pieces of markup written into buffers and lists so far. Each is "<b>m1;</b>" with its own number: shown text
    /// that has "m1;" without "<b>" before it was taken for markup.
    std::uint32_t markers = 0;

    /// Length of all texts passed in, which are read to their NULs.
    std::size_t inputBytes = 0;

    /// Device lists handed out and not given back.
    std::vector<std::unique_ptr<char[]>> lists;

    void reseed(std::uint32_t newSeed)
    {
        seed = newSeed;
        calls.clear();
    }
};

/// The controls of the loaded hostile driver.
inline Hostility &hostility()
{
    return driverControl<Hostility>("unifold_test_hostility");
}
