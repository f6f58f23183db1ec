// The bench's side of the SDK: one program-wide pointer per entry point, named exactly like the symbol that fills it,
// and the typed call through it.
#pragma once

#include "sdk/contracts.h"
#include "sdk/entry_point_table.h"

#include <utility>

namespace sdk {

/// An entry point whose signature is not stated: sdk::call() gives it the one of its contract.
using EntryPoint = void (*)();

} // namespace sdk

// Null until sdk::load() resolves them; left as they are by sdk::unload(). They are never tested for null: calling a
// feature whose symbol is missing from the library is undefined, and the loader's console lines are the only warning.
#define UNIFOLD_DECLARE_CALLED(name, Contract) extern sdk::EntryPoint name;
#define UNIFOLD_DECLARE_UNCALLED(name) extern sdk::EntryPoint name;
UNIFOLD_ENTRY_POINTS(UNIFOLD_DECLARE_CALLED, UNIFOLD_DECLARE_UNCALLED)
#undef UNIFOLD_DECLARE_CALLED
#undef UNIFOLD_DECLARE_UNCALLED

namespace sdk {

template <EntryPoint &entryPoint>
struct ContractOf;

#define UNIFOLD_CONTRACT_OF_CALLED(name, Contract)                                                                     \
    template <>                                                                                                        \
    struct ContractOf<::name> {                                                                                        \
        using Type = Contract;                                                                                         \
    };
#define UNIFOLD_CONTRACT_OF_UNCALLED(name)
UNIFOLD_ENTRY_POINTS(UNIFOLD_CONTRACT_OF_CALLED, UNIFOLD_CONTRACT_OF_UNCALLED)
#undef UNIFOLD_CONTRACT_OF_CALLED
#undef UNIFOLD_CONTRACT_OF_UNCALLED

/// The table pointer under its contract's type. Entry points without a contract do not compile.
template <EntryPoint &entryPoint>
typename ContractOf<entryPoint>::Type *contract()
{
    return reinterpret_cast<typename ContractOf<entryPoint>::Type *>(entryPoint);
}

/// Calls the entry point with the arguments of its contract: sdk::call<vek_close>(handle, 0). Nothing else is done.
template <EntryPoint &entryPoint, typename... Arguments>
auto call(Arguments &&...arguments)
{
    return contract<entryPoint>()(std::forward<Arguments>(arguments)...);
}

} // namespace sdk
