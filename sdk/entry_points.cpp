#include "sdk/entry_points.h"

#define UNIFOLD_DEFINE_CALLED(name, Contract) sdk::EntryPoint name = nullptr;
#define UNIFOLD_DEFINE_UNCALLED(name) sdk::EntryPoint name = nullptr;
UNIFOLD_ENTRY_POINTS(UNIFOLD_DEFINE_CALLED, UNIFOLD_DEFINE_UNCALLED)
#undef UNIFOLD_DEFINE_CALLED
#undef UNIFOLD_DEFINE_UNCALLED
