#include "drivers/virtual/tray/fault.h"

#include <array>
#include <cstdio>

namespace drivers::tray {

using nlohmann::json;

namespace {

constexpr std::array<std::string_view, 6> kKindNames = {"code", "delay", "removed", "short", "flipped", "unplugged"};

/// The member that holds Fault::value, or null for a kind without one.
const char *valueName(FaultKind kind)
{
    switch (kind) {
    case FaultKind::Code:
        return "code";
    case FaultKind::Delay:
        return "delayMs";
    case FaultKind::Short:
        return "keep";
    case FaultKind::Flipped:
        return "offset";
    default:
        return nullptr;
    }
}

} // namespace

std::string_view faultKindName(FaultKind kind)
{
    return kKindNames.at(static_cast<std::size_t>(kind));
}

std::optional<FaultKind> faultKindOfName(std::string_view name)
{
    for (std::size_t i = 0; i < kKindNames.size(); ++i) {
        if (kKindNames.at(i) == name)
            return static_cast<FaultKind>(i);
    }
    return std::nullopt;
}

Fault faultFromJson(const json &document)
{
    Fault fault;
    fault.id = document.at("id");
    fault.kind = faultKindOfName(document.at("kind").get<std::string>()).value();
    fault.call = document.value("call", "");
    fault.slot = document.value("slot", "");
    fault.from = document.value("from", fault.from);
    fault.times = document.value("times", fault.times);
    fault.seen = document.value("seen", fault.seen);
    if (const char *const name = valueName(fault.kind))
        fault.value = document.value(name, fault.value);
    fault.mask = document.value("mask", fault.mask);
    return fault;
}

json toJson(const Fault &fault)
{
    json document = {{"id", fault.id},
                     {"kind", faultKindName(fault.kind)},
                     {"from", fault.from},
                     {"times", fault.times},
                     {"seen", writtenCount(fault.seen)}};
    if (!fault.call.empty())
        document["call"] = fault.call;
    if (!fault.slot.empty())
        document["slot"] = fault.slot;
    if (const char *const name = valueName(fault.kind))
        document[name] = fault.value;
    if (fault.kind == FaultKind::Flipped)
        document["mask"] = fault.mask;
    return document;
}

std::string describe(const Fault &fault)
{
    const std::string value = std::to_string(fault.value);
    switch (fault.kind) {
    case FaultKind::Code:
        return fault.call + " returns " + value;
    case FaultKind::Delay:
        return fault.call + " takes " + value + " ms longer";
    case FaultKind::Removed:
        return "the card in " + fault.slot + " goes";
    case FaultKind::Short:
        return fault.call + " replies with " + value + " bytes at most";
    case FaultKind::Flipped: {
        std::array<char, 8> mask{};
        std::snprintf(mask.data(), mask.size(), "%02X", static_cast<unsigned>(fault.mask)); // NOLINT(*-vararg)
        return fault.call + " replies with byte " + value + " XOR " + mask.data();
    }
    case FaultKind::Unplugged:
        break;
    }
    return "the reader is unplugged";
}

} // namespace drivers::tray
