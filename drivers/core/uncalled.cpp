// The entry points that nobody calls, exported by every driver all the same.
#include "drivers/core/abi.h"
#include "drivers/core/return_codes.h"

#define UNIFOLD_SKIP_CALLED(name, Contract)
#define UNIFOLD_DEFINE_UNCALLED(name)                                                                                  \
    UNIFOLD_EXPORT int name()                                                                                          \
    {                                                                                                                  \
        return drivers::kNotSupported;                                                                                 \
    }
UNIFOLD_ENTRY_POINTS(UNIFOLD_SKIP_CALLED, UNIFOLD_DEFINE_UNCALLED)
