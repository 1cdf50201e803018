#include "media/AudioInputs.h"

namespace selvane {

AudioInputs::AudioInputs()
{
    for (auto &queue : m_channels)
        queue = std::make_unique<SampleQueue>();
    for (auto &queue : m_overlays)
        queue = std::make_unique<SampleQueue>();
}

qint64 AudioInputs::droppedFrames() const
{
    qint64 total = 0;
    for (const auto &queue : m_channels)
        total += queue->droppedFrames();
    for (const auto &queue : m_overlays)
        total += queue->droppedFrames();
    return total;
}

} // namespace selvane
