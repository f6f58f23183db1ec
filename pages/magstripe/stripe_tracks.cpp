#include "pages/magstripe/stripe_tracks.h"

#include "app/text_codec.h"
#include "sdk/entry_points.h"

int StripeTracks::fetch(sdk::DeviceHandle device)
{
    return sdk::call<vek_msr_qm_get>(device, buffers[0].data(), buffers[1].data(), buffers[2].data(), &lengths[0],
                                     &lengths[1], &lengths[2]);
}

QString StripeTracks::text(std::size_t index) const
{
    return QString::fromLatin1(boundedText(buffers.at(index)));
}
