// Rounds of loading and unloading a library, with what each leaves behind in this process.
#pragma once

#include <QString>

#include <functional>

namespace endurance {

/// What of a process grows when something is not given back.
struct Figures {
    std::size_t heapBytes; ///< in use, as the allocator counts
    int files;             ///< open descriptors
    int threads;
    long residentKilobytes;

    static Figures now();
};

/// Whether a library of that file name is in memory.
bool isLoaded(const char *library);

/// Runs `round(i)` for i = 0, 1, ... until UNIFOLD_UNLOAD_ROUNDS are done (without it 1000, or fewer if they take too
/// long), and writes the figures to the log. No round may leave a library of that name behind. The first ones settle
/// what is made once and kept: caches of the dynamic loader and of libraries that stay. Returns an empty text, or what
/// grew from there on.
QString runLoadRounds(const char *library, const std::function<void(int)> &round);

} // namespace endurance
