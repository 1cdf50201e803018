#include "engine/FailoverRule.h"

namespace selvane {

void FailoverRule::observe(int channel, qint64 nowUs, const Reading &reading)
{
    Watch &watch = m_watch[std::size_t(channel)];
    if (!m_started || reading.generation != watch.generation) {
        // A new source (or the first look): it is given the full time to show a picture.
        watch = {reading.pictures, reading.generation, nowUs, -1};
        return;
    }
    if (reading.state == ChannelState::Paused || reading.state == ChannelState::Ended ||
        reading.state == ChannelState::Idle) {
        // The operator's pause (or an end): its silence is no failure, and once it plays again
        // it has the full time to show a picture.
        watch.lastPictureUs = nowUs;
        watch.pictures = reading.pictures;
        watch.steadySinceUs = -1;
        return;
    }
    const bool gap = nowUs - watch.lastPictureUs > kSteadyGapUs;
    if (reading.pictures != watch.pictures) {
        watch.pictures = reading.pictures;
        if (gap)
            watch.steadySinceUs = -1; // it comes back now: steadiness counts from here
        watch.lastPictureUs = nowUs;
    }
    const bool steady =
        reading.state == ChannelState::Playing && nowUs - watch.lastPictureUs <= kSteadyGapUs;
    if (!steady)
        watch.steadySinceUs = -1;
    else if (watch.steadySinceUs < 0)
        watch.steadySinceUs = nowUs;
}

bool FailoverRule::failing(int channel, qint64 nowUs, const Reading &reading) const
{
    switch (reading.state) {
    case ChannelState::Reconnecting:
    case ChannelState::Failed:
        return true;
    case ChannelState::Opening:
    case ChannelState::Playing:
        return nowUs - m_watch[std::size_t(channel)].lastPictureUs >=
               qint64(m_config.failoverMs) * 1000;
    case ChannelState::Idle:
    case ChannelState::Paused:
    case ChannelState::Ended:
        break;
    }
    return false;
}

bool FailoverRule::sound(int channel, qint64 nowUs, const Reading &reading) const
{
    const qint64 since = m_watch[std::size_t(channel)].steadySinceUs;
    return since >= 0 && nowUs - since >= qint64(m_config.returnMs) * 1000 &&
           !failing(channel, nowUs, reading);
}

FailoverRule::Step FailoverRule::step(qint64 nowUs,
                                      const std::array<Reading, kChannelCount> &readings,
                                      int busChannel, bool busy)
{
    for (int c = 0; c < kChannelCount; ++c)
        observe(c, nowUs, readings[std::size_t(c)]);
    m_started = true;
    if (!m_config.enabled) {
        m_failedChannel = -1;
        return {};
    }
    if (busy)
        return {};
    const auto readingOf = [&](int c) -> const Reading & {
        return readings[std::size_t(c)];
    };
    if (m_failedChannel < 0) {
        if (busChannel < 0 || busChannel >= kChannelCount ||
            !failing(busChannel, nowUs, readingOf(busChannel)))
            return {};
        const int backup = m_config.backupChannel[std::size_t(busChannel)];
        // A backup channel stands in when it delivers itself; otherwise the standby does.
        const bool backupSound = backup >= 0 && backup < kChannelCount && backup != busChannel &&
                                 readingOf(backup).state == ChannelState::Playing &&
                                 !failing(backup, nowUs, readingOf(backup));
        m_failedChannel = busChannel;
        m_standIn = backupSound ? backup : m_standby;
        return {Step::Fail, m_failedChannel, m_standIn};
    }
    if (busChannel != m_standIn) {
        // Something else went to air meanwhile (the caller forgets on the operator's cuts).
        m_failedChannel = -1;
        return {};
    }
    const int channel = m_failedChannel;
    if (sound(channel, nowUs, readingOf(channel))) {
        m_failedChannel = -1;
        m_standIn = -1;
        return {Step::Return, channel, channel};
    }
    if (m_standIn != m_standby && failing(m_standIn, nowUs, readingOf(m_standIn))) {
        // The backup channel failed in its turn: the standby takes over.
        m_standIn = m_standby;
        return {Step::Fail, channel, m_standIn};
    }
    return {};
}

} // namespace selvane
