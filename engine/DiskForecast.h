#pragma once

// How long a recording's disk lasts at the bitrate the recording is written at: the free space
// over the bytes a second of the last half minute. The warning level rises at 10 and at 2
// minutes left and falls again only with room to spare (a minute above), so that a bitrate that
// wavers around a mark does not warn again and again.
//
// A value kept by its owner and fed once a second; any thread, not shared.

#include <QtGlobal>
#include <deque>
#include <utility>

namespace selvane {

class DiskForecast
{
public:
    static constexpr qint64 kFirstWarningS = 600;
    static constexpr qint64 kLastWarningS = 120;
    enum Level
    {
        Room,
        TenMinutes,
        TwoMinutes,
    };

    // Returns true when the level changed with this reading.
    bool update(qint64 nowMs, qint64 bytesWritten, qint64 freeBytes);
    // Seconds left at the current bitrate; -1 while the bitrate is not known yet.
    qint64 secondsLeft() const { return m_secondsLeft; }
    qint64 freeBytes() const { return m_freeBytes; }
    Level level() const { return m_level; }

private:
    std::deque<std::pair<qint64, qint64>> m_samples; // (ms, bytes written)
    qint64 m_secondsLeft = -1;
    qint64 m_freeBytes = -1;
    Level m_level = Room;
};

} // namespace selvane
