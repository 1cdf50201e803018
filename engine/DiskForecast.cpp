#include "engine/DiskForecast.h"

namespace selvane {

namespace {
constexpr qint64 kWindowMs = 30'000;
constexpr qint64 kShortestMs = 3'000; // a bitrate needs this much of a run to be told
constexpr qint64 kHysteresisS = 60;
} // namespace

bool DiskForecast::update(qint64 nowMs, qint64 bytesWritten, qint64 freeBytes)
{
    m_freeBytes = freeBytes;
    // A new file (a segment, a retry) starts its count again: the series does too.
    if (!m_samples.empty() && bytesWritten < m_samples.back().second)
        m_samples.clear();
    m_samples.emplace_back(nowMs, bytesWritten);
    while (m_samples.size() > 2 && nowMs - m_samples.front().first > kWindowMs)
        m_samples.pop_front();
    const qint64 spanMs = m_samples.back().first - m_samples.front().first;
    const qint64 bytes = m_samples.back().second - m_samples.front().second;
    if (freeBytes < 0 || spanMs < kShortestMs || bytes <= 0) {
        m_secondsLeft = -1;
        return false;
    }
    m_secondsLeft = freeBytes * spanMs / bytes / 1000;
    // Up at once at each mark; down only a minute above it.
    Level level = Room;
    if (m_secondsLeft <= kLastWarningS)
        level = TwoMinutes;
    else if (m_secondsLeft <= kLastWarningS + kHysteresisS && m_level == TwoMinutes)
        level = TwoMinutes;
    else if (m_secondsLeft <= kFirstWarningS)
        level = TenMinutes;
    else if (m_secondsLeft <= kFirstWarningS + kHysteresisS && m_level != Room)
        level = TenMinutes;
    const bool changed = level != m_level;
    m_level = level;
    return changed;
}

} // namespace selvane
