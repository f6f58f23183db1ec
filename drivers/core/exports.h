// The exported functions of a driver: thin wrappers, all made from the table of entry points, around the functions that
// serve the calls. With UNIFOLD_WRAPPED_EXPORTS defined abi.h gives the latter symbols of their own.
//
// One source file of the driver says UNIFOLD_DEFINE_EXPORTS(around), where `around` is an Around function or null.
#pragma once

#include "drivers/core/exported_call.h"
#include "drivers/core/return_codes.h"
#include "drivers/core/trace.h"
#include "sdk/entry_point_table.h"

#include <tuple>

namespace drivers {

template <class Function>
struct Signature;

template <class R, class... Arguments>
struct Signature<R(Arguments...)> {
    using Result = R;
    template <std::size_t index>
    using Parameter = std::tuple_element_t<index, std::tuple<Arguments...>>;
};

template <class Contract>
using ResultOf = typename Signature<Contract>::Result;

template <class Contract, std::size_t index>
using ParameterOf = typename Signature<Contract>::template Parameter<index>;

template <class Result, class... Arguments>
Result performCall(const CallShape &shape, Around around, Result (*served)(Arguments...),
                   Arguments... arguments) noexcept
{
    if (around == nullptr && !traceIsOn())
        return served(arguments...);
    const auto serve = [&]() -> std::int64_t {
        if constexpr (std::is_void_v<Result>) {
            served(arguments...);
            return 0;
        } else {
            return static_cast<std::int64_t>(served(arguments...));
        }
    };
    using Serve = decltype(serve);
    const std::array<Argument, sizeof...(Arguments)> values = {Argument(arguments)...};
    const Call call = {shape, values.data(), &serve,
                       [](const void *context) { return (*static_cast<const Serve *>(context))(); }};
    const std::int64_t result = traceIsOn() ? traceCall(call, around) : around(call);
    return static_cast<Result>(result);
}

} // namespace drivers

// How many parameters each contract has: a function cannot be defined by its type alone.
#define UNIFOLD_ARITY_EnumDevices 2
#define UNIFOLD_ARITY_FreeList 1
#define UNIFOLD_ARITY_Open 3
#define UNIFOLD_ARITY_Close 2
#define UNIFOLD_ARITY_SetBaud 3
#define UNIFOLD_ARITY_FirmVersion 3
#define UNIFOLD_ARITY_Beep 4
#define UNIFOLD_ARITY_MsrModeSwitch 2
#define UNIFOLD_ARITY_MsrSession 1
#define UNIFOLD_ARITY_MsrGet 7
#define UNIFOLD_ARITY_MsrWrite 7
#define UNIFOLD_ARITY_IccPowerOn 5
#define UNIFOLD_ARITY_IccPowerOff 3
#define UNIFOLD_ARITY_IccStatus 2
#define UNIFOLD_ARITY_IccApdu 6
#define UNIFOLD_ARITY_ProbeRf 3
#define UNIFOLD_ARITY_PbocGetCardInfo 9
#define UNIFOLD_ARITY_PbocGetArqc 10
#define UNIFOLD_ARITY_IdcrGetInfo 9
#define UNIFOLD_ARITY_IdcrReadText 3
#define UNIFOLD_ARITY_IdcrTransive 8
#define UNIFOLD_ARITY_IdcrSetSeparation 1
#define UNIFOLD_ARITY_MifareRequest 4
#define UNIFOLD_ARITY_MifareKey 4
#define UNIFOLD_ARITY_MifareReadBlock 3
#define UNIFOLD_ARITY_MifareWriteBlock 3
#define UNIFOLD_ARITY_MifareValue 3
#define UNIFOLD_ARITY_MifareReadValue 3
#define UNIFOLD_ARITY_SsseGetInfo 5

#define UNIFOLD_P(C, n) drivers::ParameterOf<sdk::C, n> a##n
#define UNIFOLD_PARAMETERS_1(C) UNIFOLD_P(C, 0)
#define UNIFOLD_PARAMETERS_2(C) UNIFOLD_PARAMETERS_1(C), UNIFOLD_P(C, 1)
#define UNIFOLD_PARAMETERS_3(C) UNIFOLD_PARAMETERS_2(C), UNIFOLD_P(C, 2)
#define UNIFOLD_PARAMETERS_4(C) UNIFOLD_PARAMETERS_3(C), UNIFOLD_P(C, 3)
#define UNIFOLD_PARAMETERS_5(C) UNIFOLD_PARAMETERS_4(C), UNIFOLD_P(C, 4)
#define UNIFOLD_PARAMETERS_6(C) UNIFOLD_PARAMETERS_5(C), UNIFOLD_P(C, 5)
#define UNIFOLD_PARAMETERS_7(C) UNIFOLD_PARAMETERS_6(C), UNIFOLD_P(C, 6)
#define UNIFOLD_PARAMETERS_8(C) UNIFOLD_PARAMETERS_7(C), UNIFOLD_P(C, 7)
#define UNIFOLD_PARAMETERS_9(C) UNIFOLD_PARAMETERS_8(C), UNIFOLD_P(C, 8)
#define UNIFOLD_PARAMETERS_10(C) UNIFOLD_PARAMETERS_9(C), UNIFOLD_P(C, 9)
#define UNIFOLD_ARGUMENTS_1 a0
#define UNIFOLD_ARGUMENTS_2 UNIFOLD_ARGUMENTS_1, a1
#define UNIFOLD_ARGUMENTS_3 UNIFOLD_ARGUMENTS_2, a2
#define UNIFOLD_ARGUMENTS_4 UNIFOLD_ARGUMENTS_3, a3
#define UNIFOLD_ARGUMENTS_5 UNIFOLD_ARGUMENTS_4, a4
#define UNIFOLD_ARGUMENTS_6 UNIFOLD_ARGUMENTS_5, a5
#define UNIFOLD_ARGUMENTS_7 UNIFOLD_ARGUMENTS_6, a6
#define UNIFOLD_ARGUMENTS_8 UNIFOLD_ARGUMENTS_7, a7
#define UNIFOLD_ARGUMENTS_9 UNIFOLD_ARGUMENTS_8, a8
#define UNIFOLD_ARGUMENTS_10 UNIFOLD_ARGUMENTS_9, a9
#define UNIFOLD_JOIN_(a, b) a##b
#define UNIFOLD_JOIN(a, b) UNIFOLD_JOIN_(a, b)

#define UNIFOLD_DEFINE_CALLED(name, Contract)                                                                          \
    extern "C" __attribute__((visibility("hidden"))) sdk::Contract served_##name;                                      \
    extern "C" __attribute__((visibility("default"))) sdk::Contract name;                                              \
    drivers::ResultOf<sdk::Contract> name(                                                                             \
        UNIFOLD_JOIN(UNIFOLD_PARAMETERS_, UNIFOLD_JOIN(UNIFOLD_ARITY_, Contract))(Contract))                           \
    {                                                                                                                  \
        static const drivers::CallShape &shape = *drivers::findCallShape(#name);                                       \
        return drivers::performCall(shape, kAroundExports, served_##name,                                              \
                                    UNIFOLD_JOIN(UNIFOLD_ARGUMENTS_, UNIFOLD_JOIN(UNIFOLD_ARITY_, Contract)));         \
    }

// The arguments of these are unknown, so none is touched.
#define UNIFOLD_DEFINE_UNCALLED(name)                                                                                  \
    extern "C" __attribute__((visibility("default"))) int name();                                                      \
    int name()                                                                                                         \
    {                                                                                                                  \
        static constexpr drivers::CallShape kShape{#name, {}};                                                         \
        return drivers::performCall(                                                                                   \
            kShape, kAroundExports, +[]() -> int { return drivers::kNotSupported; });                                  \
    }

#define UNIFOLD_DEFINE_EXPORTS(around)                                                                                 \
    static constexpr drivers::Around kAroundExports = around;                                                          \
    UNIFOLD_ENTRY_POINTS(UNIFOLD_DEFINE_CALLED, UNIFOLD_DEFINE_UNCALLED)
