// together_program <milliseconds> <seed>: works in the tray beside others and writes its Sums to standard output.
#include "tests/endurance/together_work.h"

#include <cstdio>
#include <exception>
#include <string>
#include <unistd.h>

int main(int argc, char **argv)
{
    if (argc != 3)
        return 2;
    try {
        const testsupport::DriverApi driver("libtarvovek.so");
        const endurance::Sums sums = endurance::workTogether(driver, std::chrono::milliseconds(std::stol(argv[1])),
                                                             static_cast<std::uint32_t>(std::stoul(argv[2])));
        return ::write(STDOUT_FILENO, &sums, sizeof sums) == sizeof sums ? 0 : 1;
    } catch (const std::exception &error) {
        std::fprintf(stderr, "together_program: %s\n", error.what());
        return 1;
    }
}
