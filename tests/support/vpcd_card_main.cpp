// vpcd-card: a card of fixed replies in a slot of vsmartcard-vpcd's virtual reader, until the reader or the user ends
// it.
#include "tests/support/vpcd_card.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <exception>
#include <stdexcept>

namespace {

constexpr char kUsage[] = "usage: vpcd-card [--slot 0|1] ATR [COMMAND=REPLY]...\n"
                          "  All hexadecimal. A COMMAND that ends in * stands for every command that begins so;\n"
                          "  what no COMMAND matches is answered with 6D00.\n";

int run(int argc, char **argv)
{
    int next = 1;
    std::uint16_t port = testsupport::kVpcdPort0;
    if (next + 1 < argc && std::strcmp(argv[next], "--slot") == 0) {
        port = std::strcmp(argv[next + 1], "1") == 0 ? testsupport::kVpcdPort1 : testsupport::kVpcdPort0;
        next += 2;
    }
    const auto atr = next < argc ? drivers::fromHex(argv[next]) : std::nullopt;
    if (!atr || atr->empty()) {
        std::fputs(kUsage, stderr);
        return EXIT_FAILURE;
    }
    testsupport::ScriptedReplies replies;
    for (++next; next < argc; ++next) {
        const std::string rule = argv[next];
        const std::size_t equals = rule.find('=');
        if (equals == std::string::npos)
            throw std::invalid_argument("not COMMAND=REPLY: " + rule);
        replies.add(rule.substr(0, equals), rule.substr(equals + 1));
    }
    testsupport::VpcdCard card(*atr, replies, port);
    std::puts("card inserted");
    std::fflush(stdout);
    card.wait();
    return EXIT_SUCCESS;
}

} // namespace

int main(int argc, char **argv)
{
    try {
        return run(argc, argv);
    } catch (const std::exception &error) {
        std::fprintf(stderr, "vpcd-card: %s\n", error.what());
        return EXIT_FAILURE;
    }
}
