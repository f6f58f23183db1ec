#include "sdk/loader.h"

#include "sdk/entry_points.h"

#include <dlfcn.h>

#include <array>
#include <cstdio>
#include <cstdlib>
#include <cstring>

std::intptr_t plib_handle = 0;
int initialized = 0;

namespace sdk {

namespace {

std::array<char, kLibraryNameSize> libraryName{};

struct TableEntry {
    EntryPoint *pointer;
    const char *name;
};

#define UNIFOLD_ENTRY_OF_CALLED(name, Contract) {&::name, #name},
#define UNIFOLD_ENTRY_OF_UNCALLED(name) {&::name, #name},
constexpr TableEntry kTable[] = {UNIFOLD_ENTRY_POINTS(UNIFOLD_ENTRY_OF_CALLED, UNIFOLD_ENTRY_OF_UNCALLED)};
#undef UNIFOLD_ENTRY_OF_CALLED
#undef UNIFOLD_ENTRY_OF_UNCALLED

static_assert(std::size(kTable) == 85);

/// Standard output may be a pipe or a file, where the C library would hold lines back.
template <typename... Arguments>
void console(const char *format, Arguments... arguments)
{
    std::printf(format, arguments...);
    std::fflush(stdout);
}

void resolve(const TableEntry &entry)
{
    void *const library = reinterpret_cast<void *>(plib_handle);
    *entry.pointer = reinterpret_cast<EntryPoint>(dlsym(library, entry.name));
    if (*entry.pointer != nullptr)
        console("Load symbol %s success.\r\n", entry.name);
    else
        console("Load symbol %s failed!--------------------------\r\n", entry.name);
}

} // namespace

void setLibraryName(const char *name)
{
    libraryName.fill('\0');
    const std::size_t length = std::strlen(name);
    if (length >= libraryName.size()) {
        std::fputs("library name too long\n", stderr);
        std::abort();
    }
    std::memcpy(libraryName.data(), name, length);
}

int openLibrary(const char *name)
{
    if (plib_handle != 0)
        return 0;
    plib_handle = reinterpret_cast<std::intptr_t>(dlopen(name, RTLD_LAZY));
    console("Load library %s %s!\r\n", name, plib_handle != 0 ? "success" : "failed");
    return plib_handle != 0 ? 1 : 0;
}

std::uint32_t load()
{
    openLibrary(libraryName.data());
    if (plib_handle == 0)
        return kLoadFailed;
    console("%s\n", "Load symbols......\r");
    for (const TableEntry &entry : kTable)
        resolve(entry);
    console("%s\n", "Load symbols done.\r");
    initialized = 1;
    return 0;
}

int isInitialized()
{
    return initialized;
}

void unload()
{
    if (plib_handle != 0) {
        dlclose(reinterpret_cast<void *>(plib_handle));
        plib_handle = 0;
    }
    initialized = 0;
}

} // namespace sdk
