// A file system of a few hundred kilobytes, to be filled up.
#pragma once

#include <filesystem>
#include <string>

namespace endurance {

/// Gives this process mounts of its own, which end with it and its children: with the right to mount (root), else in a
/// user namespace. To be called while the process has one thread. Returns an empty text, or what the system refused.
std::string enterOwnMounts();

/// A tmpfs in a folder while this lives. Needs enterOwnMounts().
class SmallDisk {
public:
    /// Throws std::system_error.
    explicit SmallDisk(std::filesystem::path folder);
    ~SmallDisk();
    SmallDisk(const SmallDisk &) = delete;
    SmallDisk &operator=(const SmallDisk &) = delete;

    const std::filesystem::path &folder() const { return m_folder; }

    /// Leaves that many pages of space (what the file system gives out at a time). Throws std::system_error.
    void fill(int freePages = 0) const;

    /// Leaves no room for another file, though there is space. Throws std::system_error.
    void fillWithFiles() const;

    /// Takes away what fill() and fillWithFiles() put there.
    void empty() const;

private:
    std::filesystem::path m_folder;
};

} // namespace endurance
