// What has to hold whatever the input is. The fuzzer keeps the input of a program that aborts.
#pragma once

#include <cstdio>
#include <cstdlib>

namespace fuzz {

inline void require(bool holds, const char *what)
{
    if (holds)
        return;
    std::fputs("does not hold: ", stderr);
    std::fputs(what, stderr);
    std::fputc('\n', stderr);
    std::abort();
}

} // namespace fuzz
