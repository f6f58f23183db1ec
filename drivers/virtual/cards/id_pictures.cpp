#include "drivers/virtual/cards/id_pictures.h"

#include "drivers/virtual/cards/id_composite.h"
#include "drivers/virtual/cards/id_portrait.h"
#include "drivers/virtual/cards/picture_file.h"

namespace drivers::cards {

void prepareIdPictures()
{
    prepareText();
}

Picture idPhoto(const IdCard &card)
{
    Canvas canvas(kIdPhotoWidth, kIdPhotoHeight);
    drawPortrait(canvas, card);
    return canvas.picture();
}

Picture idFront(const IdCard &card)
{
    Canvas canvas(kIdCompositeWidth, kIdCompositeHeight);
    drawIdFront(canvas, card);
    return canvas.picture();
}

Picture idBack(const IdCard &card)
{
    Canvas canvas(kIdCompositeWidth, kIdCompositeHeight);
    drawIdBack(canvas, card);
    return canvas.picture();
}

void writeIdPhoto(const IdCard &card, const std::string &path)
{
    replaceFile(path, encodeJpeg(idPhoto(card)));
}

void writeIdFront(const IdCard &card, const std::string &path)
{
    replaceFile(path, encodeJpeg(idFront(card)));
}

void writeIdBack(const IdCard &card, const std::string &path)
{
    replaceFile(path, encodeJpeg(idBack(card)));
}

} // namespace drivers::cards
