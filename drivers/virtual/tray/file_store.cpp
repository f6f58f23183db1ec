#include "drivers/virtual/tray/file_store.h"

#include <cerrno>
#include <cstdlib>
#include <fcntl.h>
#include <sys/file.h>
#include <system_error>
#include <unistd.h>
#include <utility>

namespace drivers::tray {

namespace fs = std::filesystem;

namespace {

constexpr char kLockName[] = ".lock";
constexpr std::size_t kMostBytes = std::size_t{16} << 20U;

[[noreturn]] void fail(const fs::path &file, int error = errno)
{
    throw std::system_error(error, std::generic_category(), file.string());
}

FileDescriptor openFile(const fs::path &file, int flags, mode_t mode = 0)
{
    // open() is variadic by its standard.
    const int descriptor = ::open(file.c_str(), flags | O_CLOEXEC, mode); // NOLINT(*-vararg)
    if (descriptor < 0)
        fail(file);
    return FileDescriptor(descriptor);
}

void writeAll(const FileDescriptor &file, const std::string &text, const fs::path &name)
{
    std::size_t written = 0;
    while (written < text.size()) {
        const ssize_t count = ::write(file.get(), text.data() + written, text.size() - written);
        if (count < 0 && errno != EINTR)
            fail(name);
        if (count > 0)
            written += static_cast<std::size_t>(count);
    }
}

void synchroniseFolder(const fs::path &folder)
{
    const FileDescriptor descriptor = openFile(folder, O_RDONLY | O_DIRECTORY);
    if (::fsync(descriptor.get()) != 0)
        fail(folder);
}

/// Removes the new file again unless it took the old one's place.
class TemporaryFile {
public:
    // Always the same name, so that what a killed program left behind is used up by the next change.
    explicit TemporaryFile(const fs::path &beside)
        : m_name(beside.parent_path() / ('.' + beside.filename().string() + ".new")),
          m_file(openFile(m_name, O_WRONLY | O_CREAT | O_TRUNC | O_NOFOLLOW, 0600))
    {
    }
    TemporaryFile(const TemporaryFile &) = delete;
    TemporaryFile &operator=(const TemporaryFile &) = delete;
    ~TemporaryFile()
    {
        if (!m_name.empty())
            ::unlink(m_name.c_str());
    }

    void write(const std::string &text) const
    {
        writeAll(m_file, text, m_name);
        if (::fsync(m_file.get()) != 0)
            fail(m_name);
    }

    void takePlaceOf(const fs::path &file)
    {
        if (::rename(m_name.c_str(), file.c_str()) != 0)
            fail(file);
        m_name.clear();
    }

private:
    fs::path m_name;
    FileDescriptor m_file;
};

} // namespace

FileDescriptor::FileDescriptor(FileDescriptor &&other) noexcept : m_descriptor(std::exchange(other.m_descriptor, -1)) {}

FileDescriptor &FileDescriptor::operator=(FileDescriptor &&other) noexcept
{
    std::swap(m_descriptor, other.m_descriptor);
    return *this;
}

FileDescriptor::~FileDescriptor()
{
    if (m_descriptor >= 0)
        ::close(m_descriptor);
}

void replaceFile(const fs::path &file, const std::string &text)
{
    TemporaryFile replacement(file);
    replacement.write(text);
    replacement.takePlaceOf(file);
    synchroniseFolder(file.parent_path());
}

void removeFile(const fs::path &file)
{
    if (::unlink(file.c_str()) != 0) {
        if (errno == ENOENT)
            return;
        fail(file);
    }
    synchroniseFolder(file.parent_path());
}

std::string readAll(const FileDescriptor &file, const fs::path &name)
{
    std::string text;
    char chunk[16384];
    for (;;) {
        const ssize_t count = ::read(file.get(), chunk, sizeof chunk);
        if (count == 0)
            return text;
        if (count > 0)
            text.append(chunk, static_cast<std::size_t>(count));
        else if (errno != EINTR)
            fail(name);
        if (text.size() > kMostBytes)
            fail(name, EFBIG);
    }
}

FolderLock::FolderLock(const fs::path &folder) : m_file(openFile(folder / kLockName, O_RDWR | O_CREAT, 0600))
{
    while (::flock(m_file.get(), LOCK_EX) != 0) {
        if (errno != EINTR)
            fail(folder / kLockName);
    }
}

bool WatchedFile::changed() const
{
    struct stat now = {};
    if (!m_lastRead || ::stat(m_file.c_str(), &now) != 0)
        return true;
    return now.st_dev != m_stamp.st_dev || now.st_ino != m_stamp.st_ino || now.st_size != m_stamp.st_size ||
           now.st_mtim.tv_sec != m_stamp.st_mtim.tv_sec || now.st_mtim.tv_nsec != m_stamp.st_mtim.tv_nsec;
}

std::string WatchedFile::read()
{
    acknowledge();
    return readAll(m_lastRead, m_file);
}

void WatchedFile::acknowledge()
{
    // Opening a pipe would wait for its writer.
    FileDescriptor file = openFile(m_file, O_RDONLY | O_NONBLOCK);
    struct stat stamp = {};
    if (::fstat(file.get(), &stamp) != 0)
        fail(m_file);
    if (!S_ISREG(stamp.st_mode))
        fail(m_file, S_ISDIR(stamp.st_mode) ? EISDIR : EINVAL);
    m_stamp = stamp;
    m_lastRead = std::move(file);
}

} // namespace drivers::tray
