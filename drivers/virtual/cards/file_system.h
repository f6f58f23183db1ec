// The common commands of a card with files: SELECT, the READs and UPDATEs, GET DATA, GET CHALLENGE, VERIFY.
#pragma once

#include "drivers/virtual/cards/file_tree.h"

namespace drivers::cards {

class FileSystem {
public:
    explicit FileSystem(Revision &revision);

    Directory &master() { return m_master; }
    const Directory &master() const { return m_master; }
    const Directory &current() const { return *m_current; }
    const InstructionMap &instructions() const { return m_instructions; }

    /// Power on: the master file is current, no PIN is verified, every application starts anew.
    void reset();

private:
    Reply select(const Command &command);
    Reply selectByName(const Command &command);
    Reply selectPath(const Command &command, Directory &start, const Bytes &path);
    Reply selectById(const Command &command);
    Reply choose(const Command &command, Directory &directory);
    Reply choose(const Command &command, Directory &directory, const ElementaryFile &file);

    Reply readBinary(const Command &command);
    Reply updateBinary(const Command &command);
    Reply readRecord(const Command &command);
    Reply updateRecord(const Command &command);
    Reply getData(const Command &command);
    Reply getChallenge(const Command &command);
    Reply verify(const Command &command);

    ElementaryFile *currentFile();
    std::uint16_t useFile(bool byShortId, std::uint8_t shortId, bool records);
    std::uint16_t useBinary(const Command &command, std::size_t &offset);
    std::uint16_t useRecord(const Command &command);
    bool allows(Access access);

    Revision &m_revision;
    Directory m_master;
    Directory *m_current = &m_master;
    std::optional<std::uint16_t> m_currentFile; ///< by identifier, in the current directory
    InstructionMap m_instructions;
};

} // namespace drivers::cards
