#include "tools/check/picture_folder.h"

#include <cerrno>
#include <cstdlib>
#include <filesystem>
#include <system_error>

namespace check {

namespace {

std::string &folder()
{
    static std::string path;
    return path;
}

} // namespace

PictureFolder::PictureFolder()
{
    std::string name = (std::filesystem::temp_directory_path() / "unifold-driver-check.XXXXXX").string();
    if (mkdtemp(name.data()) == nullptr)
        throw std::filesystem::filesystem_error("no temporary folder", name,
                                                std::error_code(errno, std::generic_category()));
    folder() = name;
}

PictureFolder::~PictureFolder()
{
    std::error_code ignored;
    std::filesystem::remove_all(folder(), ignored);
    folder().clear();
}

const std::string &pictureFolder()
{
    return folder();
}

} // namespace check
