#include "drivers/virtual/reader/id_pictures_output.h"

#include "drivers/virtual/cards/id_pictures.h"

#include <stdexcept>

namespace drivers::reader {

namespace {

bool usable(const char *path)
{
    return path != nullptr && *path != '\0';
}

} // namespace

bool canWritePictures(std::uint32_t options, const PicturePaths &paths)
{
    const bool photo = (options & cards::kIdOptionPhoto) == 0 || usable(paths.photo);
    const bool composite = (options & cards::kIdOptionComposite) == 0 || (usable(paths.front) && usable(paths.back));
    return photo && composite;
}

ReturnCode writePictures(const cards::IdCard &card, std::uint32_t options, const PicturePaths &paths)
{
    try {
        if ((options & cards::kIdOptionPhoto) != 0)
            cards::writeIdPhoto(card, paths.photo);
        if ((options & cards::kIdOptionComposite) != 0) {
            cards::writeIdFront(card, paths.front);
            cards::writeIdBack(card, paths.back);
        }
        return kSuccess;
    } catch (const std::runtime_error &) {
        return kTransportFailure;
    }
}

} // namespace drivers::reader
