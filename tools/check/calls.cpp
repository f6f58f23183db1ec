#include "tools/check/calls.h"

#include <algorithm>
#include <cstring>
#include <stdexcept>

namespace check {

const std::vector<Call> &allCalls()
{
    static const std::vector<Call> calls = [] {
        std::vector<Call> all;
        for (const auto family : {deviceCalls, stripeCalls, iccCalls, idCalls, mifareCalls}) {
            const std::vector<Call> some = family();
            all.insert(all.end(), some.begin(), some.end());
        }
        return all;
    }();
    return calls;
}

const Call &callNamed(const char *name)
{
    const auto &calls = allCalls();
    const auto found = std::find_if(calls.begin(), calls.end(),
                                    [name](const Call &call) { return std::strcmp(call.name, name) == 0; });
    if (found == calls.end())
        throw std::logic_error(std::string("no call ") + name);
    return *found;
}

} // namespace check
