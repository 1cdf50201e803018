#include "media/SourceFeeds.h"

namespace selvane {

SourceMapping SourceFeed::mapping() const
{
    std::lock_guard lock(m_mutex);
    return m_mapping;
}

void SourceFeed::setMapping(const SourceMapping &mapping)
{
    std::lock_guard lock(m_mutex);
    m_mapping = mapping;
}

void SourceFeed::reset()
{
    m_frames.clear();
    m_sound.clear();
    setMapping({});
    m_generation.fetch_add(1);
}

SourceFeeds::SourceFeeds()
{
    for (auto &feed : m_channels)
        feed = std::make_unique<SourceFeed>();
    for (auto &feed : m_overlays)
        feed = std::make_unique<SourceFeed>();
    m_standby = std::make_unique<SourceFeed>();
}

qint64 SourceFeeds::droppedAudioFrames() const
{
    qint64 total = 0;
    for (const auto &feed : m_channels)
        total += feed->sound().droppedFrames();
    for (const auto &feed : m_overlays)
        total += feed->sound().droppedFrames();
    return total + m_standby->sound().droppedFrames();
}

} // namespace selvane
