// SELECT: the part of the file system's commands that moves through the tree.
#include <algorithm>

#include "drivers/virtual/cards/file_system.h"

namespace drivers::cards {

namespace {

constexpr unsigned kOccurrence = 0x03; ///< bits of P2: first, last, next, previous
constexpr unsigned kReplyWanted = 0x0C;

std::uint16_t idAt(const Bytes &path, std::size_t position)
{
    return static_cast<std::uint16_t>(path[position] << 8U | path[position + 1]);
}

bool beginsWith(const Bytes &name, const Bytes &start)
{
    return name.size() >= start.size() && std::equal(start.begin(), start.end(), name.begin());
}

/// What SELECT answers with: a file's description in the template asked for, or nothing.
template <typename File>
Reply description(const Command &command, const File &file)
{
    switch (command.p2 & kReplyWanted) {
    case 0x00:
        return controlInformation(file, 0x6F);
    case 0x04:
        return controlInformation(file, 0x62);
    default:
        return sw::kOk;
    }
}

} // namespace

Reply FileSystem::select(const Command &command)
{
    if ((command.p2 & 0xF0U) != 0 || (command.p2 & kReplyWanted) == 0x08)
        return sw::kWrongP1P2;
    if (command.p1 != 0x04 && (command.p2 & kOccurrence) != 0)
        return sw::kWrongP1P2;
    switch (command.p1) {
    case 0x00:
    case 0x01:
    case 0x02:
    case 0x03:
        return selectById(command);
    case 0x04:
        return selectByName(command);
    case 0x08:
        return selectPath(command, m_master, command.data);
    case 0x09:
        return selectPath(command, *m_current, command.data);
    default:
        return sw::kWrongP1P2;
    }
}

Reply FileSystem::selectById(const Command &command)
{
    if (command.p1 == 0x03)
        return m_current->parent != nullptr ? choose(command, *m_current->parent) : Reply(sw::kFileNotFound);
    if (command.data.empty() && command.p1 == 0x00)
        return choose(command, m_master);
    if (command.data.size() != 2)
        return sw::kWrongLength;
    const std::uint16_t id = idAt(command.data, 0);
    if (command.p1 != 0x01) {
        if (const ElementaryFile *file = m_current->file(id))
            return choose(command, *m_current, *file);
    }
    if (command.p1 == 0x02)
        return sw::kFileNotFound;
    Directory *found = m_current->directory(id);
    if (command.p1 == 0x00 && found == nullptr) {
        // Besides its own files a directory sees itself, the one above and that one's directories.
        if (id == kMasterFileId)
            found = &m_master;
        else if (m_current->id == id)
            found = m_current;
        else if (m_current->parent != nullptr)
            found = m_current->parent->id == id ? m_current->parent : m_current->parent->directory(id);
    }
    return found != nullptr ? choose(command, *found) : Reply(sw::kFileNotFound);
}

Reply FileSystem::selectByName(const Command &command)
{
    if (command.data.empty())
        return sw::kWrongLength;
    std::vector<Directory *> matches;
    forEachDirectory(m_master, [&](Directory &directory) {
        if (beginsWith(directory.name, command.data))
            matches.push_back(&directory);
    });
    if (matches.empty())
        return sw::kFileNotFound;
    const auto here = std::find(matches.begin(), matches.end(), m_current);
    switch (command.p2 & kOccurrence) {
    case 0x00:
        return choose(command, *matches.front());
    case 0x01:
        return choose(command, *matches.back());
    case 0x02: {
        const auto next = here == matches.end() ? matches.begin() : here + 1;
        return next != matches.end() ? choose(command, **next) : Reply(sw::kFileNotFound);
    }
    default:
        return here != matches.end() && here != matches.begin() ? choose(command, **(here - 1))
                                                                : Reply(sw::kFileNotFound);
    }
}

Reply FileSystem::selectPath(const Command &command, Directory &start, const Bytes &path)
{
    if (path.empty() || path.size() % 2 != 0)
        return sw::kWrongLength;
    Directory *directory = &start;
    // A path from the master file is written without it; many programs write it all the same.
    const std::size_t first = &start == &m_master && path.size() > 2 && idAt(path, 0) == kMasterFileId ? 2 : 0;
    if (&start == &m_master && path.size() == 2 && idAt(path, 0) == kMasterFileId)
        return choose(command, m_master);
    for (std::size_t i = first; i < path.size(); i += 2) {
        const ElementaryFile *file = directory->file(idAt(path, i));
        if (file != nullptr && i + 2 == path.size())
            return choose(command, *directory, *file);
        directory = directory->directory(idAt(path, i));
        if (directory == nullptr)
            return sw::kFileNotFound;
    }
    return choose(command, *directory);
}

Reply FileSystem::choose(const Command &command, Directory &directory)
{
    // The rights that a PIN gives end where its directory ends.
    forEachDirectory(m_master, [&](Directory &other) {
        if (other.pin && !other.contains(directory))
            other.pin->verified = false;
    });
    m_current = &directory;
    m_currentFile.reset();
    if (directory.application)
        directory.application->restart();
    return description(command, directory);
}

Reply FileSystem::choose(const Command &command, Directory &directory, const ElementaryFile &file)
{
    if (&directory != m_current) {
        Reply moved = choose(command, directory);
        if (moved.status != sw::kOk)
            return moved;
    }
    m_currentFile = file.id;
    return description(command, file);
}

} // namespace drivers::cards
