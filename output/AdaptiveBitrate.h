#pragma once

// Decides an encoder's bitrate from how its stream targets keep up: a target whose queue grows
// (or had to be reset) is congested, and the bitrate steps down towards what that target has
// been sending, never below the floor; once every queue has stayed short for a while it steps
// back up towards the set bitrate (only while every target sends: one that is down proves
// nothing about the link). A value object fed readings by its owner (the encode worker)
// at least twice a second; it takes the time as an argument, so it runs on any clock.

#include <QtGlobal>
#include <vector>

namespace selvane {

class AdaptiveBitrate
{
public:
    // One reading of one target: its queue now, and its totals so far.
    struct Reading
    {
        qint64 queuedPackets = 0;
        qint64 queueResets = 0;
        qint64 bytesWritten = 0;
    };

    // Queues above this many packets (about half a second of a stream) mean congestion; at or
    // below the calm mark they mean the link keeps up.
    static constexpr qint64 kCongestedPackets = 24;
    static constexpr qint64 kCalmPackets = 8;
    // Readings closer together than this are skipped.
    static constexpr qint64 kReadingMs = 500;
    // Down at most once a second, to 75 % of the bitrate or to 80 % of what the slowest
    // congested target sent, whichever is lower; up by 15 % of the set bitrate every 5 s once
    // the queues have been calm for 10 s.
    static constexpr qint64 kDownGapMs = 1000;
    static constexpr qint64 kCalmBeforeUpMs = 10000;
    static constexpr qint64 kUpGapMs = 5000;

    void reset(qint64 setKbps, int floorPercent);
    // The bitrate to use from now on when it changes, 0 otherwise.
    qint64 update(qint64 nowMs, const std::vector<Reading> &targets);

    qint64 setKbps() const { return m_setKbps; }
    qint64 currentKbps() const { return m_currentKbps; }
    qint64 floorKbps() const;
    int steps() const { return m_steps; }
    // The slowest congested target's send rate at the last step down (kbit/s), for the log.
    qint64 measuredKbps() const { return m_measuredKbps; }

private:
    qint64 m_setKbps = 0;
    int m_floorPercent = 30;
    qint64 m_currentKbps = 0;
    int m_steps = 0;
    qint64 m_lastReadingMs = -1;
    qint64 m_lastStepMs = -1;
    qint64 m_calmSinceMs = -1;
    qint64 m_measuredKbps = 0;
    std::vector<Reading> m_previous;
};

} // namespace selvane
