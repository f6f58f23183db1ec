#include "drivers/virtual/cards/stripe_card.h"

#include "drivers/virtual/cards/json_node.h"

#include <algorithm>

namespace drivers::cards {

namespace {

StripeCard::Tracks tracksOf(const nlohmann::json &description)
{
    const JsonNode root(description);
    root.requireKind("stripe");
    root.allowOnly({"tracks"});
    const JsonNode members = root.at("tracks");
    members.allowOnly({"1", "2", "3"});
    StripeCard::Tracks tracks;
    for (int track = 1; track <= kStripeTracks; ++track) {
        const std::string key = std::to_string(track);
        std::string reason;
        const auto data = trackData(track, members.textOr(key, ""), reason);
        if (!data)
            members.at(key).fail(reason);
        tracks.at(static_cast<std::size_t>(track - 1)) = *data;
    }
    return tracks;
}

} // namespace

StripeCard::StripeCard(const nlohmann::json &description) : m_description(description), m_tracks(tracksOf(description))
{
}

nlohmann::json StripeCard::description() const
{
    nlohmann::json description = m_description;
    auto tracks = nlohmann::json::object();
    for (std::size_t i = 0; i < m_tracks.size(); ++i) {
        if (!m_tracks[i].empty())
            tracks[std::to_string(i + 1)] = m_tracks[i];
    }
    description["tracks"] = tracks;
    return description;
}

bool StripeCard::empty() const
{
    return std::all_of(m_tracks.begin(), m_tracks.end(), [](const std::string &track) { return track.empty(); });
}

StripeResult StripeCard::write(int selection, const Tracks &tracks)
{
    const std::vector<int> selected = tracksOfSelection(selection);
    if (selected.empty())
        return StripeResult::badSelection;
    Tracks written = m_tracks;
    for (const int track : selected) {
        const auto index = static_cast<std::size_t>(track - 1);
        std::string reason;
        const auto data = trackData(track, tracks.at(index), reason);
        if (!data || data->empty())
            return StripeResult::badTrack;
        written.at(index) = *data;
    }
    m_changed = m_changed || written != m_tracks;
    m_tracks = written;
    return StripeResult::ok;
}

} // namespace drivers::cards
