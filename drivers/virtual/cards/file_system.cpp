#include "drivers/virtual/cards/file_system.h"

#include <algorithm>

#include "drivers/virtual/cards/cryptogram.h"

namespace drivers::cards {

FileSystem::FileSystem(Revision &revision) : m_revision(revision)
{
    m_master.id = kMasterFileId;
    const auto add = [this](std::uint8_t instruction, Reply (FileSystem::*handler)(const Command &)) {
        m_instructions[instruction] = {0x00, [this, handler](const Command &c) { return (this->*handler)(c); }};
    };
    add(0x20, &FileSystem::verify);
    add(0x84, &FileSystem::getChallenge);
    add(0xA4, &FileSystem::select);
    add(0xB0, &FileSystem::readBinary);
    add(0xB2, &FileSystem::readRecord);
    add(0xCA, &FileSystem::getData);
    add(0xD6, &FileSystem::updateBinary);
    add(0xDC, &FileSystem::updateRecord);
}

void FileSystem::reset()
{
    m_current = &m_master;
    m_currentFile.reset();
    forEachDirectory(m_master, [](Directory &directory) {
        if (directory.pin)
            directory.pin->verified = false;
        if (directory.application)
            directory.application->restart();
    });
}

ElementaryFile *FileSystem::currentFile()
{
    return m_currentFile ? m_current->file(*m_currentFile) : nullptr;
}

bool FileSystem::allows(Access access)
{
    if (access != Access::kPin)
        return access == Access::kAlways;
    const Pin *pin = m_current->guard();
    return pin != nullptr && pin->verified;
}

/// Makes the file that a command names, by its short identifier or as the current one, the current file.
std::uint16_t FileSystem::useFile(bool byShortId, std::uint8_t shortId, bool records)
{
    const ElementaryFile *file = byShortId ? m_current->fileByShortId(shortId) : currentFile();
    if (file == nullptr)
        return byShortId ? sw::kFileNotFound : sw::kNoCurrentFile;
    if (file->hasRecords != records)
        return sw::kIncompatibleFile;
    m_currentFile = file->id;
    return sw::kOk;
}

std::uint16_t FileSystem::useBinary(const Command &command, std::size_t &offset)
{
    const bool byShortId = (command.p1 & 0x80U) != 0;
    if (byShortId && (command.p1 & 0x60U) != 0)
        return sw::kWrongP1P2;
    offset = byShortId ? command.p2 : command.p1p2();
    return useFile(byShortId, command.p1 & 0x1FU, false);
}

Reply FileSystem::readBinary(const Command &command)
{
    if (!command.data.empty() || !command.expected)
        return sw::kWrongLength;
    std::size_t offset = 0;
    const std::uint16_t status = useBinary(command, offset);
    if (status != sw::kOk)
        return status;
    const ElementaryFile &file = *currentFile();
    if (!allows(file.read))
        return sw::kSecurityNotSatisfied;
    if (offset >= file.content.size())
        return sw::kWrongOffset;
    const std::size_t count = std::min(*command.expected, file.content.size() - offset);
    const auto begin = file.content.begin() + static_cast<std::ptrdiff_t>(offset);
    return Bytes(begin, begin + static_cast<std::ptrdiff_t>(count));
}

Reply FileSystem::updateBinary(const Command &command)
{
    if (command.data.empty())
        return sw::kWrongLength;
    std::size_t offset = 0;
    const std::uint16_t status = useBinary(command, offset);
    if (status != sw::kOk)
        return status;
    ElementaryFile &file = *currentFile();
    if (!allows(file.update))
        return sw::kSecurityNotSatisfied;
    if (offset > file.content.size())
        return sw::kWrongOffset;
    if (command.data.size() > file.content.size() - offset)
        return sw::kNoSpace;
    std::copy(command.data.begin(), command.data.end(), file.content.begin() + static_cast<std::ptrdiff_t>(offset));
    file.changed = true;
    m_revision.bump();
    return sw::kOk;
}

/// Records are named by their number, or by their identifier, which in this card's files is the number too.
std::uint16_t FileSystem::useRecord(const Command &command)
{
    const unsigned mode = command.p2 & 0x07U;
    if ((mode != 0x04 && mode != 0x00) || command.p1 == 0)
        return sw::kWrongP1P2;
    const auto shortId = static_cast<std::uint8_t>(command.p2 >> 3U);
    return useFile(shortId != 0, shortId, true);
}

Reply FileSystem::readRecord(const Command &command)
{
    if (!command.data.empty() || !command.expected)
        return sw::kWrongLength;
    const std::uint16_t status = useRecord(command);
    if (status != sw::kOk)
        return status;
    const ElementaryFile &file = *currentFile();
    if (!allows(file.read))
        return sw::kSecurityNotSatisfied;
    const auto record = file.records.find(command.p1);
    if (record == file.records.end())
        return sw::kRecordNotFound;
    return record->second;
}

Reply FileSystem::updateRecord(const Command &command)
{
    if (command.data.empty())
        return sw::kWrongLength;
    const std::uint16_t status = useRecord(command);
    if (status != sw::kOk)
        return status;
    ElementaryFile &file = *currentFile();
    if (!allows(file.update))
        return sw::kSecurityNotSatisfied;
    const auto record = file.records.find(command.p1);
    if (record == file.records.end())
        return sw::kRecordNotFound;
    if (record->second.size() != command.data.size())
        return sw::kWrongLength;
    record->second = command.data;
    file.changed = true;
    m_revision.bump();
    return sw::kOk;
}

Reply FileSystem::getData(const Command &command)
{
    if (!command.data.empty() || !command.expected)
        return sw::kWrongLength;
    const auto object = m_current->dataObjects.find(command.p1p2());
    if (object == m_current->dataObjects.end())
        return sw::kReferenceNotFound;
    return object->second;
}

Reply FileSystem::getChallenge(const Command &command)
{
    constexpr std::size_t kUsual = 8;
    constexpr std::size_t kMax = 16;
    if (command.p1p2() != 0)
        return sw::kWrongP1P2;
    if (!command.data.empty() || !command.expected)
        return sw::kWrongLength;
    return randomBytes(*command.expected <= kMax ? *command.expected : kUsual);
}

Reply FileSystem::verify(const Command &command)
{
    if (command.p1 != 0)
        return sw::kWrongP1P2;
    Pin *pin = m_current->guard();
    if (pin == nullptr || pin->reference != command.p2)
        return sw::kReferenceNotFound;
    if (pin->left == 0)
        return sw::kPinBlocked;
    const auto triesLeft = [pin] {
        return static_cast<std::uint16_t>(sw::kPinWrong | static_cast<unsigned>(pin->left));
    };
    if (command.data.empty())
        return pin->verified ? sw::kOk : triesLeft();
    const int before = pin->left;
    pin->verified = command.data == pin->value;
    pin->left = pin->verified ? pin->tries : pin->left - 1;
    if (pin->left != before)
        m_revision.bump();
    return pin->verified ? sw::kOk : triesLeft();
}

} // namespace drivers::cards
