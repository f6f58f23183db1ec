#include "tests/fuzz/sdk_calls.h"

#include "drivers/virtual/cards/id_card.h"
#include "sdk/entry_point_table.h"

#include <array>
#include <iterator>
#include <tuple>
#include <utility>

#define UNIFOLD_DECLARE_CALLED(name, Contract) extern "C" sdk::Contract name;
#define UNIFOLD_DECLARE_UNCALLED(name) extern "C" int name();
UNIFOLD_ENTRY_POINTS(UNIFOLD_DECLARE_CALLED, UNIFOLD_DECLARE_UNCALLED)

namespace fuzz {

using drivers::CallShape;
using drivers::Parameter;
using drivers::Role;

char *Arguments::keep(ExactBuffer buffer)
{
    return m_memory.emplace_back(std::move(buffer)).data();
}

char *Arguments::buffer(std::size_t size)
{
    if (m_input.byte() == 0xFF)
        return nullptr;
    char *const memory = keep(ExactBuffer(size));
    m_texts.push_back(&m_memory.back());
    return memory;
}

/// A place for a number, or for the bytes whose capacity is the argument after them.
char *Arguments::numberPlace(const Parameter &parameter, std::size_t size)
{
    const std::uint8_t choice = m_input.byte();
    if (parameter.role == Role::ByteReply) {
        m_counted = std::min(m_input.number<std::uint16_t>() % (2 * parameter.size), parameter.size);
        size = m_counted;
    }
    return choice == 0xFF ? nullptr : keep(ExactBuffer(size));
}

char **Arguments::listPlace()
{
    if (m_input.byte() == 0xFF)
        return nullptr;
    m_listPlace = reinterpret_cast<char **>(keep(ExactBuffer(sizeof(char *)))); // NOLINT(*-reinterpret-cast)
    return m_listPlace;
}

/// A list that was handed out, perhaps given back already, or memory that never was a list.
char *Arguments::list()
{
    const std::uint8_t choice = m_input.byte();
    if (choice == 0xFF)
        return nullptr;
    if (m_session.lists.empty() || choice >= 0xF0)
        return keep(ExactBuffer(1));
    return m_session.lists.at(choice % m_session.lists.size());
}

const char *Arguments::path()
{
    constexpr std::array kNames = {"photo.jpg", "front.jpg", "no such folder/back.jpg", "", "."};
    const std::uint8_t choice = m_input.byte();
    if (choice == 0xFF)
        return nullptr;
    const std::string name = kNames.at(choice % kNames.size());
    return keep(exactText(name.empty() ? name : (m_session.pictures / name).string()));
}

const char *Arguments::text(const Parameter &parameter)
{
    if (std::string_view(parameter.name).find("Path") != std::string_view::npos)
        return path();
    const std::uint8_t choice = m_input.byte();
    const std::string text = m_input.text();
    if (choice == 0xFF)
        return nullptr;
    if (parameter.role != Role::CountedText)
        return keep(exactText(text));
    m_counted = text.size();
    // A count that is too large is no crime as long as a NUL ends the text.
    if (choice == 0xFE && text.find('\0') != std::string::npos)
        m_counted = m_input.number<std::uint32_t>();
    return keep(exactCharacters(text));
}

std::int64_t Arguments::flags()
{
    std::int64_t flags = m_input.number<std::uint16_t>();
    const std::int64_t drawn = drivers::cards::kIdOptionPhoto | drivers::cards::kIdOptionComposite;
    if ((flags & drawn) != 0 && m_session.drawings++ > 0)
        flags &= ~drawn;
    return flags;
}

std::int64_t Arguments::number(const Parameter &parameter, std::size_t size)
{
    const std::string_view name = parameter.name;
    if (name == "handle") {
        const std::uint8_t choice = m_input.byte();
        if (m_session.handles.empty() || choice >= 0xF0)
            return choice;
        return m_session.handles.at(choice % m_session.handles.size());
    }
    if (name == "commandLength" || name == "transactionDataLength" || name == "capacity")
        return static_cast<std::int64_t>(m_counted);
    if (name == "flags" && size == sizeof(std::uint32_t))
        return flags();
    constexpr std::array<std::int64_t, 6> kEdges = {-1, 0x7FFFFFFF, -0x80000000LL, 0xFF, 9600, 115200};
    const std::uint8_t choice = m_input.byte();
    return choice >= 0xF8 ? kEdges.at(choice % kEdges.size()) : choice;
}

void Arguments::check(std::int64_t result)
{
    if (m_shape.name == "vek_open" && result != 0)
        m_session.handles.push_back(result);
    if (m_listPlace != nullptr && *m_listPlace != nullptr)
        m_session.lists.push_back(*m_listPlace);
    require(m_listPlace == nullptr || (*m_listPlace != nullptr) == (result > 0),
            "there is a list if there are devices");
    for (const ExactBuffer *const buffer : m_texts)
        buffer->textLength();
}

namespace {

template <class Result, class... Types, std::size_t... indexes>
void callWith(const CallShape &shape, Result (*function)(Types...), Input &input, Session &session,
              std::index_sequence<indexes...>)
{
    Arguments arguments(shape, input, session);
    const std::tuple<Types...> values{arguments.make<Types>(indexes)...};
    if constexpr (std::is_void_v<Result>) {
        std::apply(function, values);
        arguments.check(0);
    } else {
        arguments.check(static_cast<std::int64_t>(std::apply(function, values)));
    }
}

using Caller = void (*)(Input &, Session &);

template <class Result, class... Types>
void callNamed(const char *name, Result (*function)(Types...), Input &input, Session &session)
{
    const CallShape *const shape = drivers::findCallShape(name);
    require(shape != nullptr, "every call has a shape");
    callWith(*shape, function, input, session, std::index_sequence_for<Types...>());
}

#define UNIFOLD_CALLER(name, Contract) [](Input &input, Session &session) { callNamed(#name, name, input, session); },
#define UNIFOLD_UNCALLED(name) [](Input &, Session &) { name(); },
constexpr Caller kCallers[] = {UNIFOLD_ENTRY_POINTS(UNIFOLD_CALLER, UNIFOLD_UNCALLED)};

} // namespace

void makeCall(std::size_t which, Input &input, Session &session)
{
    kCallers[which % std::size(kCallers)](input, session);
}

void endSession(Session &session)
{
    for (const sdk::DeviceHandle handle : session.handles)
        vek_close(handle, 0);
    for (char *const list : session.lists)
        vek_free_list(list);
    vek_idcr_set_separation('|');
}

} // namespace fuzz
