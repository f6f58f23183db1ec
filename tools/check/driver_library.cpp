#include "tools/check/driver_library.h"

#include "tools/check/child_runner.h"

#include <dlfcn.h>

namespace check {

const std::vector<std::string> &entryPointNames()
{
#define UNIFOLD_NAME_OF_CALLED(name, Contract) #name,
#define UNIFOLD_NAME_OF_UNCALLED(name) #name,
    static const std::vector<std::string> names = {
        UNIFOLD_ENTRY_POINTS(UNIFOLD_NAME_OF_CALLED, UNIFOLD_NAME_OF_UNCALLED)};
#undef UNIFOLD_NAME_OF_CALLED
#undef UNIFOLD_NAME_OF_UNCALLED
    return names;
}

DriverLibrary::DriverLibrary(const std::string &file) : m_library(nullptr)
{
    beginStep("loading the library");
    m_library = dlopen(file.c_str(), RTLD_LAZY);
    if (m_library == nullptr) {
        const char *const words = dlerror();
        m_error = words != nullptr ? words : "unknown reason";
        return;
    }
#define UNIFOLD_RESOLVE(name, Contract) name = reinterpret_cast<sdk::Contract *>(dlsym(m_library, #name));
#define UNIFOLD_IGNORE(name)
    UNIFOLD_ENTRY_POINTS(UNIFOLD_RESOLVE, UNIFOLD_IGNORE)
#undef UNIFOLD_RESOLVE
#undef UNIFOLD_IGNORE
}

DriverLibrary::~DriverLibrary()
{
    if (m_library == nullptr)
        return;
    beginStep("unloading the library");
    dlclose(m_library);
}

bool DriverLibrary::has(const char *name) const
{
    return m_library != nullptr && dlsym(m_library, name) != nullptr;
}

} // namespace check
