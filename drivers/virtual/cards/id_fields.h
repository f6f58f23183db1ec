// The fields of a resident ID card: their names in a description and their order in the card's text, which depend on
// the kind letter.
#pragma once

#include <array>
#include <cstddef>
#include <string_view>
#include <vector>

namespace drivers::cards {

/// Kind letters: I 2017 foreign permanent residence, A resident, J Hong Kong, Macau and Taiwan residents' permit, Y
/// 2023 permanent residence. Any other letter has the fields of A.
using IdFieldNames = std::vector<std::string_view>;

/// The names of the fields behind the letter, in the order of the card's text: element 0 is the text's field 1.
const IdFieldNames &idFieldNames(char letter);

} // namespace drivers::cards
