// Loads a driver library at run time and fills the SDK function table (sdk/entry_points.h).
//
// The state is program-wide, as the table is, and unguarded: GUI thread only. Progress goes to standard output, line
// by line and flushed at once; the reason of a failed dlopen is not shown.
#pragma once

#include <cstdint>

/// Handle from dlopen; 0 while no library is open.
extern std::intptr_t plib_handle;

/// 1 after a load has run through the whole table; 0 after an unload.
extern int initialized;

namespace sdk {

constexpr int kLibraryNameSize = 1024;

/// What load() returns when the library did not open: all bits set.
constexpr std::uint32_t kLoadFailed = 0xFFFFFFFFU;

/// Stores the file name that load() will open. A name of kLibraryNameSize bytes or more ends the program: a bounded
/// copy that would overflow is fatal, never a truncation to some other file's name.
void setLibraryName(const char *name);

/// Opens the library unless one is open already, in which case `name` is not looked at. Returns 1 when it was opened
/// by this call, 0 when it was not.
int openLibrary(const char *name);

/// Opens the library named by setLibraryName and resolves all entry points in table order. A missing symbol leaves a
/// null pointer and is no failure. With a library already open it resolves again from that one. Returns 0, or
/// kLoadFailed when no library could be opened.
std::uint32_t load();

int isInitialized();

/// Closes the library, if one is open. The table pointers keep their now stale addresses.
void unload();

} // namespace sdk
