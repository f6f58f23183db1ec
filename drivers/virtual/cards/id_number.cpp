#include "drivers/virtual/cards/id_number.h"

namespace drivers::cards {

namespace {

constexpr std::size_t kDigits = 17;

} // namespace

std::optional<char> idNumberCheckCharacter(std::string_view digits)
{
    if (digits.size() != kDigits)
        return std::nullopt;
    int remainder = 0;
    for (const char digit : digits) {
        if (digit < '0' || digit > '9')
            return std::nullopt;
        remainder = (remainder + (digit - '0')) * 2 % 11;
    }
    // The whole number, the check character counted as its last digit and X as ten, is congruent to 1.
    const int check = (12 - remainder) % 11;
    return check == 10 ? 'X' : static_cast<char>('0' + check);
}

bool isValidIdNumber(std::string_view number)
{
    if (number.size() != kDigits + 1)
        return false;
    const auto check = idNumberCheckCharacter(number.substr(0, kDigits));
    return check && *check == number.back();
}

} // namespace drivers::cards
