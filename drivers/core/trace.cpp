#include "drivers/core/trace.h"

#include "drivers/core/trace_file.h"
#include "drivers/core/trace_mask.h"

#include <algorithm>
#include <atomic>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <dlfcn.h>
#include <nlohmann/json.hpp>
#include <unistd.h>

namespace drivers {

namespace {

using Json = nlohmann::ordered_json; // a line reads from left to right
using Clock = std::chrono::steady_clock;

std::string variable(const char *name)
{
    const char *const value = ::secure_getenv(name);
    return value == nullptr ? "" : value;
}

/// The library that this code is a part of, by its file's name.
std::string libraryName()
{
    static const char anchor = 0;
    Dl_info info = {};
    if (::dladdr(&anchor, &info) == 0 || info.dli_fname == nullptr)
        return {};
    const std::string file = info.dli_fname;
    return file.substr(file.rfind('/') + 1);
}

struct Trace {
    TraceFile file{variable(kTraceVariable)};
    bool showSecrets = variable(kTraceSecretsVariable) == "1";
    std::string library = libraryName();
    std::atomic<std::uint64_t> calls = 0;
};

Trace &trace()
{
    static Trace instance;
    return instance;
}

/// The number of the call in which this thread is; 0: in none.
thread_local std::uint64_t currentCall = 0;

std::string now()
{
    timespec time = {};
    ::clock_gettime(CLOCK_REALTIME, &time);
    tm parts = {};
    ::gmtime_r(&time.tv_sec, &parts);
    char text[64];
    const std::size_t length = std::strftime(text, sizeof text, "%Y-%m-%dT%H:%M:%S", &parts);
    std::string fraction = std::to_string(1000000 + time.tv_nsec / 1000);
    fraction.front() = '.';
    return std::string(text, length) + fraction + 'Z';
}

std::int64_t microseconds(Clock::duration duration)
{
    return std::chrono::duration_cast<std::chrono::microseconds>(duration).count();
}

Json beginLine(const char *event)
{
    return {{"time", now()},         {"event", event},       {"library", trace().library},
            {"process", ::getpid()}, {"thread", ::gettid()}, {"number", currentCall}};
}

void append(const Json &line)
{
    trace().file.append(line.dump() + '\n');
}

/// Text as it is, or its bytes in hexadecimal where it is no UTF-8.
Json textJson(const std::string &text)
{
    try {
        Json(text).dump();
        return text;
    } catch (const Json::type_error &) {
        return {{"bytes", toHex(Bytes(text.begin(), text.end()))}};
    }
}

class Arguments {
public:
    explicit Arguments(const Call &call) : m_call(call) {}

    /// What goes in; of what comes out only that there is no place for it.
    Json in() const
    {
        return collect([this](std::size_t i) { return inValue(i); });
    }
    Json out() const
    {
        return collect([this](std::size_t i) { return outValue(i); });
    }
    bool givesList() const { return m_call.shape.parameters[1].role == Role::List; }

private:
    const Parameter &parameter(std::size_t i) const { return m_call.shape.parameters.at(i); }
    const Argument &argument(std::size_t i) const { return m_call.arguments[i]; }

    /// The values that `value(i)` gives, by name. A discarded one is left out.
    template <class Value>
    Json collect(Value value) const
    {
        Json members = Json::object();
        for (std::size_t i = 0; i < CallShape::kMostParameters && parameter(i).name != nullptr; ++i) {
            if (Json member = value(i); !member.is_discarded())
                members[parameter(i).name] = std::move(member);
        }
        return members;
    }

    Json inValue(std::size_t i) const
    {
        const Argument &value = argument(i);
        if (value.isPointer() && value.address() == nullptr)
            return nullptr;
        switch (parameter(i).role) {
        case Role::Number:
            return value.isPointer() ? Json(Json::value_t::discarded) : Json(value.number());
        case Role::Character:
            return textJson(std::string(1, static_cast<char>(value.number())));
        case Role::Text:
            return shown(i, {value.text(), ::strnlen(value.text(), parameter(i).size)});
        case Role::CountedText: {
            const auto length = std::clamp<std::int64_t>(argument(parameter(i).companion).number(), 0, kMostText);
            return shown(i, {value.text(), ::strnlen(value.text(), static_cast<std::size_t>(length))});
        }
        default:
            return Json::value_t::discarded;
        }
    }

    Json outValue(std::size_t i) const
    {
        const Argument &value = argument(i);
        if (!value.isPointer() || value.address() == nullptr)
            return Json::value_t::discarded;
        switch (parameter(i).role) {
        case Role::Number:
            return value.number();
        case Role::TextReply:
        case Role::HexReply:
            return shown(i, {value.text(), ::strnlen(value.text(), parameter(i).size)});
        case Role::ByteReply: {
            const auto length = std::clamp<std::int64_t>(argument(parameter(i).companion).number(), 0,
                                                         static_cast<std::int64_t>(parameter(i).size));
            const auto *const bytes = static_cast<const std::uint8_t *>(value.address());
            return toHex(Bytes(bytes, bytes + length));
        }
        case Role::List: {
            const char *const list = *static_cast<char *const *>(value.address());
            return list == nullptr ? Json() : textJson({list, ::strnlen(list, parameter(i).size)});
        }
        default:
            return Json::value_t::discarded;
        }
    }

    Json shown(std::size_t i, std::string text) const
    {
        if (trace().showSecrets)
            return textJson(text);
        if (parameter(i).secret == Secret::Answer)
            return textJson(maskedAnswer(commandText(), std::move(text)));
        return textJson(masked(std::move(text), parameter(i).secret, argument(1).number()));
    }

    /// The header of the command that a call has sent.
    std::string commandText() const
    {
        constexpr std::size_t kHeaderDigits = 8;
        const auto isCommand = [](const Parameter &one) { return one.secret == Secret::Command; };
        const auto &parameters = m_call.shape.parameters;
        const auto found = std::find_if(parameters.begin(), parameters.end(), isCommand);
        if (found == parameters.end())
            return {};
        const char *const text = argument(static_cast<std::size_t>(found - parameters.begin())).text();
        return text == nullptr ? std::string() : std::string(text, ::strnlen(text, kHeaderDigits));
    }

    static constexpr std::int64_t kMostText = 1 << 18; // an extended APDU in hexadecimal

    const Call &m_call;
};

/// A line that cannot be made is left out.
template <class Write>
void quietly(Write &&write) noexcept
{
    try {
        write();
    } catch (...) { // NOLINT(bugprone-empty-catch)
    }
}

} // namespace

bool traceIsOn() noexcept
{
    try {
        return trace().file.isOpen();
    } catch (...) {
        return false;
    }
}

std::int64_t traceCall(const Call &call, Around around) noexcept
{
    const std::uint64_t outer = currentCall;
    currentCall = ++trace().calls;
    const Arguments arguments(call);
    quietly([&] {
        Json line = beginLine("call");
        line["call"] = call.shape.name;
        line["arguments"] = arguments.in();
        append(line);
    });
    const auto begin = Clock::now();
    const std::int64_t result = around == nullptr ? call.proceed() : around(call);
    const auto took = Clock::now() - begin;
    quietly([&] {
        Json line = beginLine("return");
        line["call"] = call.shape.name;
        line["result"] = result;
        // A call that failed leaves its outputs as they were.
        if (result == kSuccess || (arguments.givesList() && result > 0))
            line["outputs"] = arguments.out();
        line["microseconds"] = microseconds(took);
        append(line);
    });
    currentCall = outer;
    return result;
}

void traceExchange(const Bytes &command, const Bytes &reply, ReturnCode result, Clock::duration took) noexcept
{
    quietly([&] {
        const bool all = trace().showSecrets;
        Json line = beginLine("exchange");
        line["command"] = all ? toHex(command) : masked(toHex(command), Secret::Command);
        line["reply"] = all ? toHex(reply) : maskedAnswer(toHex(command), toHex(reply));
        line["result"] = static_cast<int>(result);
        line["microseconds"] = microseconds(took);
        append(line);
    });
}

} // namespace drivers
