// What goes wrong with the tray's files.
#pragma once

#include <stdexcept>
#include <string>

namespace drivers::tray {

/// A file of the tray cannot be read, understood or written. what() names the file, the place in it and the reason.
class TrayError : public std::runtime_error {
public:
    enum class Subject {
        Tray, ///< the folder, tray.json or the lock
        Card, ///< a card's file, or a card that does not exist
    };

    TrayError(Subject subject, const std::string &text) : std::runtime_error(text), m_subject(subject) {}

    Subject subject() const { return m_subject; }

private:
    Subject m_subject;
};

} // namespace drivers::tray
