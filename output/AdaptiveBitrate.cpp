#include "output/AdaptiveBitrate.h"

#include <algorithm>
#include <limits>

namespace selvane {

void AdaptiveBitrate::reset(qint64 setKbps, int floorPercent)
{
    *this = {};
    m_setKbps = std::max<qint64>(1, setKbps);
    m_floorPercent = std::clamp(floorPercent, 5, 100);
    m_currentKbps = m_setKbps;
}

qint64 AdaptiveBitrate::floorKbps() const
{
    return std::max<qint64>(1, m_setKbps * m_floorPercent / 100);
}

qint64 AdaptiveBitrate::update(qint64 nowMs, const std::vector<Reading> &targets)
{
    if (m_lastReadingMs >= 0 && nowMs - m_lastReadingMs < kReadingMs)
        return 0;
    const qint64 elapsedMs = m_lastReadingMs < 0 ? 0 : nowMs - m_lastReadingMs;
    const bool comparable = m_previous.size() == targets.size() && elapsedMs > 0;
    bool congested = false;
    bool calm = true;
    qint64 slowestKbps = std::numeric_limits<qint64>::max();
    for (std::size_t i = 0; i < targets.size(); ++i) {
        const Reading &now = targets[i];
        const bool reset = comparable && now.queueResets > m_previous[i].queueResets;
        const bool backlog = now.queuedPackets > kCongestedPackets;
        // A target that sent nothing (down, reconnecting, its queue dropped) proves nothing.
        const bool sending = comparable && now.bytesWritten > m_previous[i].bytesWritten;
        calm = calm && sending && !reset && now.queuedPackets <= kCalmPackets;
        if (!reset && !backlog)
            continue;
        congested = true;
        if (comparable && now.bytesWritten >= m_previous[i].bytesWritten)
            slowestKbps = std::min(slowestKbps,
                                   (now.bytesWritten - m_previous[i].bytesWritten) * 8 / elapsedMs);
    }
    m_previous = targets;
    m_lastReadingMs = nowMs;

    if (congested) {
        m_calmSinceMs = -1;
        if (m_lastStepMs >= 0 && nowMs - m_lastStepMs < kDownGapMs)
            return 0;
        qint64 next = m_currentKbps * 3 / 4;
        if (slowestKbps != std::numeric_limits<qint64>::max()) {
            m_measuredKbps = slowestKbps;
            next = std::min(next, slowestKbps * 4 / 5);
        }
        next = std::max(next, floorKbps());
        if (next >= m_currentKbps)
            return 0;
        m_currentKbps = next;
        m_lastStepMs = nowMs;
        ++m_steps;
        return next;
    }
    if (!calm) {
        m_calmSinceMs = -1;
        return 0;
    }
    if (m_calmSinceMs < 0)
        m_calmSinceMs = nowMs;
    if (m_currentKbps >= m_setKbps || nowMs - m_calmSinceMs < kCalmBeforeUpMs ||
        (m_lastStepMs >= 0 && nowMs - m_lastStepMs < kUpGapMs))
        return 0;
    m_currentKbps = std::min(m_setKbps, m_currentKbps + std::max<qint64>(1, m_setKbps * 15 / 100));
    m_lastStepMs = nowMs;
    ++m_steps;
    return m_currentKbps;
}

} // namespace selvane
