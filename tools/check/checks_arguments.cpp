// Arguments that no call can fulfil: a person may have typed them. Null pointers are never among them, since the
// contracts do not allow them, except where our own drivers promise to refuse them.
#include "tools/check/checks.h"
#include "tools/check/session.h"

namespace check {

namespace {

enum class Demand {
    Refusal,
    RefusalOrStatus, ///< the card itself may refuse it, with an error status
    RefusalByOurs,   ///< nothing but our own drivers promises a refusal
};

struct Absurdity {
    const char *name;
    const char *what;
    Demand demand;
    Call call;
};

constexpr std::uint8_t kNoSlot = 0x77;
constexpr std::uint8_t kFarBlock = 200;

int exchange(const DriverLibrary &driver, const Target &target, Buffers &buffers, const std::string &command)
{
    return driver.vek_icc_apdu(target.handle, target.slot, buffers.input("command", command),
                               static_cast<std::uint32_t>(command.size()),
                               buffers.text("reply", sdk::kApduReplySize, TextKind::Hexadecimal, 4),
                               buffers.length<std::uint32_t>("length", sdk::kApduReplySize));
}

int enterSector(const DriverLibrary &driver, const Target &target, Buffers &buffers, std::uint8_t sector, char type,
                const char *key)
{
    return driver.vek_mifare_authentication(target.handle, sector, type, buffers.input("key", key));
}

std::vector<Absurdity> apduAbsurdities()
{
    return {
        {"apdu.odd",
         "An APDU of an odd number of digits is refused.",
         Demand::Refusal,
         {"vek_icc_apdu",
          0,
          {"vek_icc_poweron"},
          [](const DriverLibrary &driver, const Target &target, Buffers &buffers) {
              return exchange(driver, target, buffers, "00A");
          }}},
        {"apdu.letters",
         "An APDU that is not hexadecimal is refused.",
         Demand::Refusal,
         {"vek_icc_apdu",
          0,
          {"vek_icc_poweron"},
          [](const DriverLibrary &driver, const Target &target, Buffers &buffers) {
              return exchange(driver, target, buffers, "00A4GG00");
          }}},
        {"apdu.empty",
         "An empty APDU is refused or answered with a status.",
         Demand::RefusalOrStatus,
         {"vek_icc_apdu",
          0,
          {"vek_icc_poweron"},
          [](const DriverLibrary &driver, const Target &target, Buffers &buffers) {
              return exchange(driver, target, buffers, "");
          }}},
        {"apdu.long",
         "An APDU longer than any is refused or answered with a status.",
         Demand::RefusalOrStatus,
         {"vek_icc_apdu",
          0,
          {"vek_icc_poweron"},
          [](const DriverLibrary &driver, const Target &target, Buffers &buffers) {
              constexpr std::size_t kDigits = 200000;
              return exchange(driver, target, buffers, std::string(kDigits, '0'));
          }}},
        {"slot",
         "A slot code that does not exist is refused.",
         Demand::Refusal,
         {"vek_icc_poweron",
          0,
          {},
          [](const DriverLibrary &driver, const Target &target, Buffers &buffers) {
              return driver.vek_icc_poweron(target.handle, kNoSlot, 0, buffers.text("atr", sdk::kAtrSize),
                                            buffers.length<std::uint32_t>("length", sdk::kAtrSize));
          }}},
    };
}

std::vector<Absurdity> mifareAbsurdities()
{
    const std::vector<const char *> enter = {"vek_mifare_request", "vek_mifare_authentication"};
    return {
        {"mifare.sector",
         "A sector that a card does not have is refused.",
         Demand::Refusal,
         {"vek_mifare_authentication",
          0,
          {"vek_mifare_request"},
          [](const DriverLibrary &driver, const Target &target, Buffers &buffers) {
              return enterSector(driver, target, buffers, kFarBlock, 'A', "FFFFFFFFFFFF");
          }}},
        {"mifare.key_short",
         "A key that is too short is refused.",
         Demand::Refusal,
         {"vek_mifare_authentication",
          0,
          {"vek_mifare_request"},
          [](const DriverLibrary &driver, const Target &target, Buffers &buffers) {
              return enterSector(driver, target, buffers, 1, 'A', "FF");
          }}},
        {"mifare.key_letters",
         "A key that is not hexadecimal is refused.",
         Demand::Refusal,
         {"vek_mifare_authentication",
          0,
          {"vek_mifare_request"},
          [](const DriverLibrary &driver, const Target &target, Buffers &buffers) {
              return enterSector(driver, target, buffers, 1, 'A', "GGGGGGGGGGGG");
          }}},
        {"mifare.block",
         "A block that a card does not have is refused.",
         Demand::Refusal,
         {"vek_mifare_read_block", 0, enter,
          [](const DriverLibrary &driver, const Target &target, Buffers &buffers) {
              return driver.vek_mifare_read_block(target.handle, kFarBlock,
                                                  buffers.text("data", sdk::kMifareBlockSize));
          }}},
    };
}

std::vector<Absurdity> nullAbsurdities()
{
    return {
        {"null.version",
         "Null buffers of vek_firm_version are refused.",
         Demand::RefusalByOurs,
         {"vek_firm_version",
          0,
          {},
          [](const DriverLibrary &driver, const Target &target, Buffers &) {
              return driver.vek_firm_version(target.handle, nullptr, nullptr);
          }}},
        {"null.poweron",
         "Null buffers of vek_icc_poweron are refused.",
         Demand::RefusalByOurs,
         {"vek_icc_poweron",
          0,
          {},
          [](const DriverLibrary &driver, const Target &target, Buffers &) {
              return driver.vek_icc_poweron(target.handle, target.slot, 0, nullptr, nullptr);
          }}},
        {"null.apdu",
         "Null buffers of vek_icc_apdu are refused.",
         Demand::RefusalByOurs,
         {"vek_icc_apdu",
          0,
          {"vek_icc_poweron"},
          [](const DriverLibrary &driver, const Target &target, Buffers &) {
              return driver.vek_icc_apdu(target.handle, target.slot, nullptr, 4, nullptr, nullptr);
          }}},
        {"null.id",
         "Null buffers of vek_idcr_getinfo are refused.",
         Demand::RefusalByOurs,
         {"vek_idcr_getinfo",
          0,
          {},
          [](const DriverLibrary &driver, const Target &target, Buffers &) {
              return driver.vek_idcr_getinfo(target.handle, 0, 0, 1, nullptr, nullptr, nullptr, nullptr, nullptr);
          }}},
        {"null.mifare",
         "Null buffers of vek_mifare_request are refused.",
         Demand::RefusalByOurs,
         {"vek_mifare_request",
          0,
          {},
          [](const DriverLibrary &driver, const Target &target, Buffers &) {
              return driver.vek_mifare_request(target.handle, 0, nullptr, nullptr);
          }}},
    };
}

Outcome isRefused(const DriverLibrary &driver, const Settings &settings, const Absurdity &absurdity)
{
    if (absurdity.demand == Demand::RefusalByOurs && !settings.ourCodes)
        return notApplicable("the contract leaves it open; only with --our-codes");
    if (const auto hindered = obstacle(driver, settings, absurdity.call))
        return *hindered;
    const Session session(driver, settings);
    if (!session.isOpen())
        return notApplicable(kNoDevice);
    const Answer answer =
        makeCallInTurn(driver, settings, {session.handle(), settings.slot, settings.timeoutMs}, absurdity.call);
    if (const auto early = settled(settings, answer))
        return *early;
    const bool accepted = answer.result == 0 && absurdity.demand != Demand::RefusalOrStatus;
    return !accepted ? pass("returned " + std::to_string(answer.result)) : fail("returned 0");
}

} // namespace

std::vector<Check> argumentChecks()
{
    std::vector<Check> checks;
    for (const auto family : {apduAbsurdities, mifareAbsurdities, nullAbsurdities}) {
        for (const Absurdity &absurdity : family()) {
            checks.push_back({std::string("argument.") + absurdity.name, absurdity.what,
                              withLibrary([absurdity](const DriverLibrary &driver, const Settings &settings) {
                                  return isRefused(driver, settings, absurdity);
                              })});
        }
    }
    return checks;
}

} // namespace check
