#include "drivers/virtual/cards/stripe_tracks.h"

#include <algorithm>
#include <array>

namespace drivers::cards {

namespace {

struct TrackRule {
    std::size_t capacity;
    char startSentinel;
    std::string_view alphabet;
};

constexpr char kEndSentinel = '?';
constexpr std::string_view kAlphanumeric = " #$()-./0123456789ABCDEFGHIJKLMNOPQRSTUVWXYZ[\\]^";
constexpr std::string_view kNumeric = "0123456789=";
constexpr std::array<TrackRule, kStripeTracks> kRules{{
    {76, '%', kAlphanumeric},
    {37, ';', kNumeric},
    {104, ';', kNumeric},
}};

const TrackRule &ruleOf(int track)
{
    return kRules.at(static_cast<std::size_t>(track - 1));
}

std::string_view withoutSentinels(const TrackRule &rule, std::string_view text)
{
    if (text.size() >= 2 && text.front() == rule.startSentinel && text.back() == kEndSentinel)
        return text.substr(1, text.size() - 2);
    return text;
}

} // namespace

std::size_t trackCapacity(int track)
{
    return ruleOf(track).capacity;
}

bool trackHolds(int track, char character)
{
    return ruleOf(track).alphabet.find(character) != std::string_view::npos;
}

std::optional<std::string> trackData(int track, std::string_view text, std::string &reason)
{
    const std::string_view data = withoutSentinels(ruleOf(track), text);
    for (std::size_t i = 0; i < data.size(); ++i) {
        if (!trackHolds(track, data[i])) {
            reason = "character " + std::to_string(i + 1) + " is not in the alphabet of track " + std::to_string(track);
            return std::nullopt;
        }
    }
    if (data.size() > trackCapacity(track)) {
        reason = "track " + std::to_string(track) + " holds " + std::to_string(trackCapacity(track)) +
                 " characters, not " + std::to_string(data.size());
        return std::nullopt;
    }
    return std::string(data);
}

std::vector<int> tracksOfSelection(int selection)
{
    constexpr std::array<int, 7> kSelections{1, 2, 3, 12, 13, 23, 123};
    std::vector<int> tracks;
    if (std::find(kSelections.begin(), kSelections.end(), selection) == kSelections.end())
        return tracks;
    for (int rest = selection; rest != 0; rest /= 10)
        tracks.insert(tracks.begin(), rest % 10);
    return tracks;
}

} // namespace drivers::cards
