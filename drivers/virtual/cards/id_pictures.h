// The pictures of an ID card as a reader makes them: photograph 102 x 126, front and back 404 x 257, JPEG.
#pragma once

#include "drivers/virtual/cards/id_card.h"
#include "drivers/virtual/cards/picture.h"

#include <string>

namespace drivers::cards {

/// Loads what drawing needs, which takes the first picture of a thread tens of milliseconds: there is time for that
/// while a card is waited for. Throws as the drawing does.
void prepareIdPictures();

/// Draw from the card's own fields, so that another name makes another picture. Throw std::runtime_error if there is
/// no memory.
Picture idPhoto(const IdCard &card);
Picture idFront(const IdCard &card);
Picture idBack(const IdCard &card);

/// Write a picture as a JPEG file (picture_file.h): the path holds the old file or the whole new one. Throw
/// std::runtime_error with the path and the reason: missing folder, full disk, no permission.
void writeIdPhoto(const IdCard &card, const std::string &path);
void writeIdFront(const IdCard &card, const std::string &path);
void writeIdBack(const IdCard &card, const std::string &path);

} // namespace drivers::cards
