// Files that several programs read and change at once: every change is whole and durable or did not happen.
#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <sys/stat.h>

namespace drivers::tray {

/// Closes the descriptor that it owns.
class FileDescriptor {
public:
    FileDescriptor() = default;
    explicit FileDescriptor(int descriptor) : m_descriptor(descriptor) {}
    FileDescriptor(FileDescriptor &&other) noexcept;
    FileDescriptor &operator=(FileDescriptor &&other) noexcept;
    FileDescriptor(const FileDescriptor &) = delete;
    FileDescriptor &operator=(const FileDescriptor &) = delete;
    ~FileDescriptor();

    int get() const { return m_descriptor; }
    explicit operator bool() const { return m_descriptor >= 0; }

private:
    int m_descriptor = -1;
};

/// Replaces the file: a new file beside it (mode 0600) is written, synchronised and renamed over it, and the folder
/// synchronised. Readers see the old text or the new one; writers of the same file have to take turns. Throws
/// std::system_error; the old file is then untouched.
void replaceFile(const std::filesystem::path &file, const std::string &text);

/// Removes the file durably; one that does not exist is no error. Throws std::system_error.
void removeFile(const std::filesystem::path &file);

/// Reads to the end. `name` is only named in the error. Throws std::system_error; more than 16 MiB, which no card or
/// dump has, are refused before they fill the memory.
std::string readAll(const FileDescriptor &file, const std::filesystem::path &name);

/// An exclusive lock among programs and threads, held while the object lives. It lies on a file of its own, so that
/// the files it guards can be replaced. Not recursive: taking it twice in one thread waits for ever.
class FolderLock {
public:
    /// Waits for the lock. Throws std::system_error if the folder is not there or not writable.
    explicit FolderLock(const std::filesystem::path &folder);

private:
    FileDescriptor m_file;
};

/// Follows one file that others replace.
class WatchedFile {
public:
    explicit WatchedFile(std::filesystem::path file) : m_file(std::move(file)) {}

    const std::filesystem::path &path() const { return m_file; }

    /// Whether the file is another one than at the last read, or was changed in place, or is gone.
    bool changed() const;

    /// The present text. Throws std::system_error; what is no regular file is refused.
    std::string read();

    /// Takes the present file for known, as its writer may do under the lock. Throws std::system_error.
    void acknowledge();

private:
    std::filesystem::path m_file;
    /// Stays open so that the inode number of what was read cannot be given to a newer file.
    FileDescriptor m_lastRead;
    struct stat m_stamp = {};
};

} // namespace drivers::tray
