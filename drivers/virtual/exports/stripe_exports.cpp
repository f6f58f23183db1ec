// The calls of the magnetic stripe.
#include "drivers/core/abi.h"
#include "drivers/virtual/exports/library.h"

#include <algorithm>

using namespace drivers;
using exports::serve;

namespace {

/// A track as it came over the C interface. One that does not end within the size of a track buffer is no track.
std::optional<std::string> trackArgument(const char *text)
{
    if (text == nullptr)
        return std::string();
    const std::size_t length = strnlen(text, sdk::kTrackSize);
    return length < sdk::kTrackSize ? std::optional(std::string(text, length)) : std::nullopt;
}

} // namespace

int vek_msr_mode_switch(sdk::DeviceHandle handle, int mode)
{
    return serve(handle, [&](reader::Device &device) { return device.stripe.setMode(mode); });
}

int vek_msr_qm_start(sdk::DeviceHandle handle)
{
    return serve(handle, [](reader::Device &device) { return device.stripe.start(); });
}

int vek_msr_qm_status(sdk::DeviceHandle handle)
{
    return serve(handle, [](reader::Device &device) { return device.stripe.status(); });
}

int vek_msr_qm_get(sdk::DeviceHandle handle, char *track1, char *track2, char *track3, int *length1, int *length2,
                   int *length3)
{
    return serve(handle, [&](reader::Device &device) {
        const std::array buffers = {track1, track2, track3};
        const std::array lengths = {length1, length2, length3};
        if (std::count(buffers.begin(), buffers.end(), nullptr) != 0 ||
            std::count(lengths.begin(), lengths.end(), nullptr) != 0)
            return kBadArgument;
        reader::Tracks tracks;
        if (const ReturnCode result = device.stripe.get(tracks); result != kSuccess)
            return result;
        for (std::size_t i = 0; i < tracks.size(); ++i) {
            if (const ReturnCode copied = copyText(buffers.at(i), sdk::kTrackSize, tracks.at(i)); copied != kSuccess)
                return copied;
            *lengths.at(i) = static_cast<int>(tracks.at(i).size());
        }
        return kSuccess;
    });
}

int vek_msr_qm_stop(sdk::DeviceHandle handle)
{
    return serve(handle, [](reader::Device &device) { return device.stripe.stop(); });
}

int vek_msr_write(sdk::DeviceHandle handle, int selection, int, const char *track1, const char *track2,
                  const char *track3, int timeoutMs)
{
    return serve(handle, [&](reader::Device &device) {
        const auto first = trackArgument(track1);
        const auto second = trackArgument(track2);
        const auto third = trackArgument(track3);
        if (!first || !second || !third)
            return kBadArgument;
        return device.stripe.write(selection, {*first, *second, *third}, waitTime(timeoutMs));
    });
}
