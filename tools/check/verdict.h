// What a check comes to.
#pragma once

#include <string>
#include <utility>

namespace check {

enum class Verdict : char {
    Pass = 'p',
    Fail = 'f',
    NotSupported = 's',  ///< the library says that it does not offer this
    NotApplicable = 'a', ///< nothing to check it with: no device, no card, no permission to write
};

struct Outcome {
    Verdict verdict = Verdict::Pass;
    std::string reason;
};

inline Outcome pass(std::string note = {})
{
    return {Verdict::Pass, std::move(note)};
}

inline Outcome fail(std::string reason)
{
    return {Verdict::Fail, std::move(reason)};
}

inline Outcome notSupported(std::string reason)
{
    return {Verdict::NotSupported, std::move(reason)};
}

inline Outcome notApplicable(std::string reason)
{
    return {Verdict::NotApplicable, std::move(reason)};
}

} // namespace check
