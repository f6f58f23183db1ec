// The text of an ID card: from the fields that the driver returns to the lines that the page shows.
#pragma once

#include <QByteArray>

#include <array>
#include <cstddef>

constexpr std::size_t kIdcFieldCount = 20;
constexpr std::size_t kIdcOutputSize = 1024;

/// The fields in the order of the driver's text; a null pointer where the text has fewer.
using IdcFields = std::array<const char *, kIdcFieldCount>;

/// Splits the NUL-terminated `text` at every "|", whatever separator the driver was told to use. Writes a NUL over each
/// and points into `text`, which must outlive the fields. The last of kIdcFieldCount fields holds all the rest.
IdcFields splitIdcFields(char *text);

/// The card as UTF-8 lines with "\r\n" between them. The first letter of field 0 tells the kind: I permanent residence
/// card of 2017, A resident ID card, J residence permit for Hong Kong, Macau and Taiwan residents, Y permanent
/// residence card of 2023; any other is laid out like J without its title. A missing field is empty. Ends the program
/// when the lines and their NUL need more than kIdcOutputSize bytes; fields that together have 512 bytes never do.
QByteArray renderIdcFields(const IdcFields &fields);
