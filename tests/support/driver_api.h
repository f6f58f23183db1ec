// A driver library opened for a test, with the called entry points as members of their names.
#pragma once

#include "sdk/contracts.h"
#include "sdk/entry_point_table.h"

#include <dlfcn.h>

#include <stdexcept>
#include <string>

namespace testsupport {

class DriverApi {
public:
    /// Throws std::runtime_error with the dynamic loader's words if the library or a called entry point is missing.
    explicit DriverApi(const char *file) : m_library(dlopen(file, RTLD_NOW | RTLD_LOCAL))
    {
        if (m_library == nullptr)
            throw std::runtime_error(dlerror());
#define UNIFOLD_RESOLVE(name, Contract) resolve(name, #name);
#define UNIFOLD_IGNORE(name)
        UNIFOLD_ENTRY_POINTS(UNIFOLD_RESOLVE, UNIFOLD_IGNORE)
#undef UNIFOLD_RESOLVE
    }
    ~DriverApi()
    {
        dlclose(m_library);
    }
    DriverApi(const DriverApi &) = delete;
    DriverApi &operator=(const DriverApi &) = delete;

    void *symbol(const char *name) const
    {
        return dlsym(m_library, name);
    }

#define UNIFOLD_MEMBER(name, Contract) sdk::Contract *name = nullptr;
    UNIFOLD_ENTRY_POINTS(UNIFOLD_MEMBER, UNIFOLD_IGNORE)
#undef UNIFOLD_MEMBER
#undef UNIFOLD_IGNORE

private:
    template <class Function>
    void resolve(Function *&function, const char *name)
    {
        function = reinterpret_cast<Function *>(symbol(name));
        if (function == nullptr)
            throw std::runtime_error(std::string("no entry point ") + name);
    }

    void *m_library;
};

} // namespace testsupport
