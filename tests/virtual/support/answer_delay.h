// How soon a call that waits for a card answers when the card comes.
#pragma once

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <future>
#include <limits>
#include <thread>

/// What the users are promised, in milliseconds.
constexpr std::int64_t kPromisedAnswerMs = 50;

/// Milliseconds from the return of `putCard` (in another thread, while `call` waits) to the return of `call`. A busy
/// machine may hold up any round, so the quickest of up to five counts, each begun by `takeCard`. `call` tells whether
/// it found the card; the largest number comes back if it did not.
template <class TakeCard, class PutCard, class Call>
std::int64_t quickestAnswerMs(const TakeCard &takeCard, const PutCard &putCard, const Call &call)
{
    using Clock = std::chrono::steady_clock;
    auto quickest = std::numeric_limits<std::int64_t>::max();
    for (int round = 0; round < 5 && quickest >= kPromisedAnswerMs; ++round) {
        takeCard();
        auto put = std::async(std::launch::async, [&] {
            std::this_thread::sleep_for(std::chrono::milliseconds(150));
            putCard();
            return Clock::now();
        });
        const bool found = call();
        const auto answered = Clock::now();
        const auto delay = answered - put.get();
        if (!found)
            return std::numeric_limits<std::int64_t>::max();
        quickest =
            std::min<std::int64_t>(quickest, std::chrono::duration_cast<std::chrono::milliseconds>(delay).count());
    }
    return quickest;
}
