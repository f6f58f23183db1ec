#include "drivers/virtual/tray/tray.h"

#include "drivers/virtual/tray/embedded_files.h"
#include "drivers/virtual/tray/schema_check.h"

#include <algorithm>
#include <cstdlib>
#include <system_error>

namespace drivers::tray {

namespace fs = std::filesystem;
using nlohmann::json;

namespace {

constexpr char kStateSchema[] = "tray.schema.json";

/// Runs `action` and turns what the file system reports into a TrayError.
template <typename Action>
auto withFiles(TrayError::Subject subject, Action action)
{
    try {
        return action();
    } catch (const std::system_error &error) {
        throw TrayError(subject, error.what());
    }
}

std::string jsonText(const json &document)
{
    return document.dump(2) + '\n';
}

TrayState parseState(const std::string &text, const fs::path &file)
{
    const json document = parseJson(text, file.string(), TrayError::Subject::Tray);
    checkAgainstSchema(document, kStateSchema, file.string(), TrayError::Subject::Tray);
    return stateFromJson(document);
}

/// Nothing in the slots. What counts on is kept, so that no program mistakes a new card or swipe for one it knows.
TrayState emptied(const TrayState &before)
{
    TrayState state;
    state.insertions = before.insertions;
    state.swipeCount = before.swipeCount;
    state.powerCycles = before.powerCycles + 1;
    return state;
}

TrayState firstLayout(TrayState state)
{
    for (const EmbeddedFile &file : embeddedLayout()) {
        const json layout = json::parse(file.text);
        for (const auto &[slot, card] : layout.items())
            state.put(slotOfName(slot).value(), card.get<std::string>());
    }
    return state;
}

std::string idOfFile(const fs::path &file)
{
    return file.extension() == ".json" && isCardId(file.stem().string()) ? file.stem().string() : std::string();
}

bool isSampleCard(const std::string &id)
{
    const auto &deck = embeddedDeck();
    return std::any_of(deck.begin(), deck.end(),
                       [&id](const EmbeddedFile &file) { return idOfFile(fs::path(file.name)) == id; });
}

/// A folder that was named by mistake must not lose its rights to others, nor its files.
void requireOwnFolder(const fs::path &folder)
{
    if (!fs::exists(folder))
        return;
    for (const fs::directory_entry &entry : fs::directory_iterator(folder)) {
        const std::string name = entry.path().filename().string();
        if (name != "cards" && name != ".lock" && name != ".tray.json.new" && name != "tray.json")
            throw TrayError(TrayError::Subject::Tray,
                            folder.string() + ": is no tray, and not empty (there is " + name + ")");
    }
}

} // namespace

fs::path trayFolder()
{
    // Nothing in our libraries and tools changes the environment.
    const auto variable = [](const char *name) {
        const char *const value = std::getenv(name); // NOLINT(concurrency-mt-unsafe)
        return std::string(value == nullptr ? "" : value);
    };
    if (const std::string folder = variable(kTrayVariable); !folder.empty())
        return folder;
    if (const std::string data = variable("XDG_DATA_HOME"); !data.empty() && data.front() == '/')
        return fs::path(data) / "unifold-bench" / "tray";
    if (const std::string home = variable("HOME"); !home.empty())
        return fs::path(home) / ".local" / "share" / "unifold-bench" / "tray";
    throw TrayError(TrayError::Subject::Tray,
                    std::string("no place for the tray: set ") + kTrayVariable + ", XDG_DATA_HOME or HOME");
}

bool isCardId(const std::string &id)
{
    constexpr std::string_view kFirst = "abcdefghijklmnopqrstuvwxyz0123456789";
    constexpr std::string_view kAll = "abcdefghijklmnopqrstuvwxyz0123456789._-";
    return !id.empty() && id.size() <= 64 && kFirst.find(id.front()) != std::string_view::npos &&
           id.find_first_not_of(kAll) == std::string::npos;
}

Tray::Tray(fs::path folder) : m_folder(std::move(folder)), m_file(m_folder / "tray.json")
{
    withFiles(TrayError::Subject::Tray, [this] {
        if (fs::exists(m_file.path()))
            return;
        if (fs::create_directories(m_folder))
            fs::permissions(m_folder, fs::perms::owner_all);
        layOut();
    });
}

void Tray::layOut()
{
    requireOwnFolder(m_folder);
    // Another program may be laying it out at this moment; who comes second finds it done.
    const FolderLock held(m_folder);
    if (fs::exists(m_file.path()))
        return;
    fs::permissions(m_folder, fs::perms::owner_all);
    saveSampleCards(held, false);
    // Last, since its being there says that the tray is complete.
    replaceFile(m_file.path(), jsonText(toJson(firstLayout({}))));
}

void Tray::saveSampleCards(const FolderLock &held, bool replace)
{
    fs::create_directories(m_folder / "cards");
    fs::permissions(m_folder / "cards", fs::perms::owner_all);
    for (const EmbeddedFile &file : embeddedDeck()) {
        const std::string id = idOfFile(fs::path(file.name));
        if (replace || !fs::exists(cardFile(id)))
            saveCard(held, id, json::parse(file.text));
    }
}

std::shared_ptr<const TrayState> Tray::state()
{
    return withFiles(TrayError::Subject::Tray, [this] {
        const std::lock_guard guard(m_mutex);
        if (m_state == nullptr || m_file.changed()) {
            m_state.reset(); // a text that is refused must be refused again by the next call
            m_state = std::make_shared<const TrayState>(parseState(m_file.read(), m_file.path()));
        }
        return m_state;
    });
}

FolderLock Tray::lock() const
{
    return withFiles(TrayError::Subject::Tray, [this] { return FolderLock(m_folder); });
}

void Tray::update(const std::function<void(TrayState &)> &change)
{
    update(lock(), change);
}

void Tray::update(const FolderLock &, const std::function<void(TrayState &)> &change)
{
    TrayState changed = *state();
    change(changed);
    withFiles(TrayError::Subject::Tray, [&] { replaceFile(m_file.path(), jsonText(toJson(changed))); });
}

std::vector<std::string> Tray::cardIds() const
{
    return withFiles(TrayError::Subject::Tray, [this] {
        std::vector<std::string> ids;
        for (const fs::directory_entry &entry : fs::directory_iterator(m_folder / "cards")) {
            if (std::string id = idOfFile(entry.path()); !id.empty())
                ids.push_back(std::move(id));
        }
        std::sort(ids.begin(), ids.end());
        return ids;
    });
}

fs::path Tray::cardFile(const std::string &id) const
{
    if (!isCardId(id))
        throw TrayError(TrayError::Subject::Card, '"' + id + "\" is no card id (a-z 0-9 . _ -, 64 at most)");
    return m_folder / "cards" / (id + ".json");
}

json Tray::card(const std::string &id) const
{
    WatchedFile file(cardFile(id));
    return readCard(file);
}

json Tray::readCard(WatchedFile &file)
{
    const std::string text = withFiles(TrayError::Subject::Card, [&] { return file.read(); });
    json document = parseJson(text, file.path().string(), TrayError::Subject::Card);
    checkCard(document, file.path().string());
    return document;
}

void Tray::saveCard(const FolderLock &, const std::string &id, const json &card)
{
    const fs::path file = cardFile(id);
    checkCard(card, file.string());
    // A write that fails is no fault of the card.
    withFiles(TrayError::Subject::Tray, [&] { replaceFile(file, jsonText(card)); });
}

void Tray::removeCard(const std::string &id)
{
    const fs::path file = cardFile(id);
    const FolderLock held = lock();
    if (!fs::exists(file))
        throw TrayError(TrayError::Subject::Card, file.string() + ": there is no such card");
    update(held, [&](TrayState &state) { state.forget(id); });
    withFiles(TrayError::Subject::Card, [&] { removeFile(file); });
}

void Tray::put(Slot slot, const std::string &id)
{
    const FolderLock held = lock();
    const std::string kind = card(id).at("kind");
    if (!slotTakesKind(slot, kind))
        throw TrayError(TrayError::Subject::Card, "card " + id + " is of the kind " + kind + ", which slot " +
                                                      std::string(slotName(slot)) + " does not take");
    update(held, [&](TrayState &state) {
        state.forget(id);
        state.put(slot, id);
    });
}

void Tray::reset()
{
    const FolderLock held = lock();
    TrayState before;
    try {
        before = *state();
    } catch (const TrayError &) {
        // A tray that cannot be read any more is what a reset is for.
    }
    withFiles(TrayError::Subject::Tray, [&] {
        fs::permissions(m_folder, fs::perms::owner_all);
        saveSampleCards(held, true);
        replaceFile(m_file.path(), jsonText(toJson(firstLayout(emptied(before)))));
        // Only now: what lies in a slot is in the deck at any moment.
        for (const std::string &id : cardIds()) {
            if (!isSampleCard(id))
                removeFile(cardFile(id));
        }
    });
}

} // namespace drivers::tray
