#include "tests/endurance/small_disk.h"

#include <array>
#include <cerrno>
#include <fcntl.h>
#include <fstream>
#include <sched.h>
#include <sys/mount.h>
#include <system_error>
#include <unistd.h>

namespace endurance {

namespace fs = std::filesystem;

namespace {

constexpr char kOptions[] = "size=256k,nr_inodes=100,mode=0700";
constexpr char kFiller[] = "filler";
constexpr char kManyFiles[] = "files";

[[noreturn]] void fail(const std::string &what)
{
    throw std::system_error(errno, std::generic_category(), what);
}

/// In the user namespace one is who one was, without the right to change groups, as the kernel asks for.
bool enterUserNamespace()
{
    const std::string user = std::to_string(::geteuid()) + ' ' + std::to_string(::geteuid()) + " 1";
    const std::string group = std::to_string(::getegid()) + ' ' + std::to_string(::getegid()) + " 1";
    if (::unshare(CLONE_NEWUSER | CLONE_NEWNS) != 0)
        return false;
    const auto write = [](const char *file, const std::string &text) {
        return static_cast<bool>(std::ofstream(file) << text << std::flush);
    };
    return write("/proc/self/setgroups", "deny") && write("/proc/self/uid_map", user) &&
           write("/proc/self/gid_map", group);
}

} // namespace

std::string enterOwnMounts()
{
    // A fresh mount must not show outside.
    if ((::unshare(CLONE_NEWNS) == 0 || enterUserNamespace()) &&
        ::mount("none", "/", nullptr, MS_REC | MS_PRIVATE, nullptr) == 0)
        return {};
    return "this system lets neither root nor a user namespace mount (" + std::generic_category().message(errno) +
           "): run as root with CAP_SYS_ADMIN, or allow user namespaces";
}

SmallDisk::SmallDisk(fs::path folder) : m_folder(std::move(folder))
{
    if (::mount("none", m_folder.c_str(), "tmpfs", 0, kOptions) != 0)
        fail(m_folder);
}

SmallDisk::~SmallDisk()
{
    ::umount2(m_folder.c_str(), MNT_DETACH);
}

void SmallDisk::fill(int freePages) const
{
    const int file = ::open((m_folder / kFiller).c_str(), O_WRONLY | O_CREAT | O_CLOEXEC, 0600);
    if (file < 0)
        fail(kFiller);
    std::array<char, 4096> page{};
    off_t size = ::lseek(file, 0, SEEK_END);
    for (ssize_t count = 0; (count = ::write(file, page.data(), page.size())) > 0;)
        size += count;
    const bool full = errno == ENOSPC;
    const bool cut = ::ftruncate(file, size - freePages * off_t{sizeof page}) == 0;
    ::close(file);
    if (!full || !cut)
        fail(kFiller);
}

void SmallDisk::fillWithFiles() const
{
    fs::create_directory(m_folder / kManyFiles);
    for (int i = 0;; ++i) {
        const int file =
            ::open((m_folder / kManyFiles / std::to_string(i)).c_str(), O_WRONLY | O_CREAT | O_CLOEXEC, 0600);
        if (file < 0) {
            if (errno == ENOSPC)
                return;
            fail(kManyFiles);
        }
        ::close(file);
    }
}

void SmallDisk::empty() const
{
    fs::remove(m_folder / kFiller);
    fs::remove_all(m_folder / kManyFiles);
}

} // namespace endurance
