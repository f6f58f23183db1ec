// What the trace hides. Input: a card's command, its answer, and a text of letters; the first two also as they are, not
// only in hexadecimal.
#include "drivers/core/trace_mask.h"
#include "tests/fuzz/input.h"
#include "tests/fuzz/require.h"

using namespace drivers;
using fuzz::Input;
using fuzz::require;

namespace {

void checkMasked(const std::string &text, const std::string &shown)
{
    require(shown.size() == text.size(), "what is masked keeps its length");
    for (std::size_t i = 0; i < text.size(); ++i)
        require(shown[i] == text[i] || shown[i] == '*', "nothing becomes anything but stars");
}

void checkExchange(const std::string &command, const std::string &answer)
{
    constexpr std::size_t kHeaderDigits = 10;
    const std::string shown = masked(command, Secret::Command);
    checkMasked(command, shown);
    checkMasked(answer, maskedAnswer(command, answer));
    const bool verifies = command.size() >= kHeaderDigits && command.compare(2, 2, "20") == 0;
    require(!verifies || shown.find_first_not_of('*', kHeaderDigits) == std::string::npos, "a PIN is hidden");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    Input input(data, size);
    const Bytes command = input.bytes();
    const Bytes answer = input.bytes();
    const std::string letters = input.text();
    checkExchange(toHex(command), toHex(answer));
    checkExchange({command.begin(), command.end()}, {answer.begin(), answer.end()});
    checkMasked(letters, masked(letters, Secret::Letters));
    return 0;
}
