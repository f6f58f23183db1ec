// The entry points that nobody calls. Their arguments are unknown, so they touch none.
#include "examples/driver/exports.h"

#define IGNORE_CALLED(name, Contract)
#define DEFINE_UNCALLED(name)                                                                                          \
    int name()                                                                                                         \
    {                                                                                                                  \
        return example::kNotSupported;                                                                                 \
    }
UNIFOLD_ENTRY_POINTS(IGNORE_CALLED, DEFINE_UNCALLED)
