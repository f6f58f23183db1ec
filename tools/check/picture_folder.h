// Where the pictures of an ID card go that a check reads.
#pragma once

#include <string>

namespace check {

/// A temporary folder that goes with the object.
class PictureFolder {
public:
    /// Throws std::filesystem::filesystem_error if none can be made.
    PictureFolder();
    ~PictureFolder();
    PictureFolder(const PictureFolder &) = delete;
    PictureFolder &operator=(const PictureFolder &) = delete;
};

/// The folder of the living object; empty without one.
const std::string &pictureFolder();

} // namespace check
