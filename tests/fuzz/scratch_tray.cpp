#include "tests/fuzz/scratch_tray.h"

#include "tests/fuzz/require.h"

#include <cstdlib>
#include <fstream>
#include <iterator>

namespace fuzz {

namespace fs = std::filesystem;
using drivers::tray::Tray;

namespace {

fs::path newFolder()
{
    std::string name = (fs::temp_directory_path() / "unifold-fuzz-XXXXXX").string();
    require(::mkdtemp(name.data()) != nullptr, "there is a place for the scratch tray");
    return name;
}

std::string contentOf(const fs::path &file)
{
    std::ifstream stream(file, std::ios::binary);
    return {std::istreambuf_iterator<char>(stream), {}};
}

struct stat stampOf(const fs::path &file)
{
    struct stat stamp = {};
    ::stat(file.c_str(), &stamp);
    return stamp;
}

bool isSame(const struct stat &left, const struct stat &right)
{
    return left.st_ino == right.st_ino && left.st_size == right.st_size &&
           left.st_mtim.tv_sec == right.st_mtim.tv_sec && left.st_mtim.tv_nsec == right.st_mtim.tv_nsec;
}

} // namespace

ScratchTray::ScratchTray() : m_folder(newFolder()), m_tray(std::make_unique<Tray>(m_folder / "tray"))
{
    ::setenv(drivers::tray::kTrayVariable, m_tray->folder().c_str(), 1); // NOLINT(concurrency-mt-unsafe)
    for (const fs::directory_entry &entry : fs::recursive_directory_iterator(m_tray->folder())) {
        if (entry.path().extension() == ".json")
            m_originals[entry.path()] = {contentOf(entry.path()), stampOf(entry.path())};
    }
}

ScratchTray::~ScratchTray()
{
    std::error_code ignored;
    fs::remove_all(m_folder, ignored);
}

void ScratchTray::overwrite(const fs::path &file, const std::string &text)
{
    // A file of its own, not the old one's content: several changes within one tick of the clock have to be seen.
    const fs::path fresh = file.string() + ".fuzz";
    std::ofstream(fresh, std::ios::binary) << text;
    fs::rename(fresh, file);
}

void ScratchTray::restore()
{
    for (auto &[file, original] : m_originals) {
        if (isSame(stampOf(file), original.stamp))
            continue;
        overwrite(file, original.text);
        original.stamp = stampOf(file);
    }
}

} // namespace fuzz
