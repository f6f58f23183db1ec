// The library under check, opened as the bench opens one, with the called entry points as members of their names.
#pragma once

#include "sdk/contracts.h"
#include "sdk/entry_point_table.h"

#include <string>
#include <vector>

namespace check {

/// The names of all entry points, in table order.
const std::vector<std::string> &entryPointNames();

class DriverLibrary {
public:
    /// isOpen() tells whether it worked, error() the dynamic loader's words.
    explicit DriverLibrary(const std::string &file);
    ~DriverLibrary();
    DriverLibrary(const DriverLibrary &) = delete;
    DriverLibrary &operator=(const DriverLibrary &) = delete;

    bool isOpen() const { return m_library != nullptr; }
    const std::string &error() const { return m_error; }
    bool has(const char *name) const;

    // Null where the library lacks the name.
#define UNIFOLD_MEMBER(name, Contract) sdk::Contract *name = nullptr;
#define UNIFOLD_IGNORE(name)
    UNIFOLD_ENTRY_POINTS(UNIFOLD_MEMBER, UNIFOLD_IGNORE)
#undef UNIFOLD_MEMBER
#undef UNIFOLD_IGNORE

private:
    void *m_library;
    std::string m_error;
};

} // namespace check
