#pragma once

// Decides, tick by tick, when the channel on air has failed and what stands in for it, and
// when it is back. A channel has failed when it is reconnecting or has failed outright, or
// when it has delivered no new picture for `failoverMs` while it should be playing; it is
// back once it has delivered steadily (a picture at least every kSteadyGapUs, no reconnect)
// for `returnMs`. A paused, ended or empty channel is the operator's doing: never a failure.
//
// What stands in: the channel's backup channel when it has one and that channel is sound,
// else the standby (the channel's backup file or stream, or the show's slate).
//
// Pure logic on values: the program switcher owns one and feeds it each tick's readings on the
// program thread. Not thread-safe.

#include "engine/EngineTypes.h"

#include <array>

namespace selvane {

struct FailoverConfig
{
    static constexpr int kDefaultFailoverMs = 2000;
    static constexpr int kDefaultReturnMs = 3000;
    static constexpr int kNoBackupChannel = -1;

    bool enabled = false;
    int failoverMs = kDefaultFailoverMs;
    int returnMs = kDefaultReturnMs;
    // Per channel: the channel that stands in for it, or kNoBackupChannel (the standby).
    std::array<int, kChannelCount> backupChannel{-1, -1, -1, -1};

    bool operator==(const FailoverConfig &) const = default;
};

class FailoverRule
{
public:
    static constexpr qint64 kSteadyGapUs = 500'000;

    struct Reading
    {
        ChannelState state = ChannelState::Idle;
        quint64 pictures = 0;   // pictures the channel has delivered so far
        quint64 generation = 0; // moves on with every new source
    };

    // What the program should do at this tick.
    struct Step
    {
        enum Kind
        {
            Stay,
            Fail,   // put `backup` on air for `channel`
            Return, // put `channel` back on air
        } kind = Stay;
        int channel = -1;
        int backup = -1; // a channel, or the standby's number
    };

    explicit FailoverRule(int standby) : m_standby(standby) {}

    void setConfig(const FailoverConfig &config) { m_config = config; }
    const FailoverConfig &config() const { return m_config; }

    // Every tick, before the picture is chosen: the channels' readings, the channel on the
    // bus and whether the bus is in the middle of a transition or shows a still.
    Step step(qint64 nowUs, const std::array<Reading, kChannelCount> &readings, int busChannel,
              bool busy);

    // The operator (or the schedule) put something on air: a failover in progress is over.
    void forget() { m_failedChannel = -1; }
    // The channel that has failed and is stood in for, or -1.
    int failedChannel() const { return m_failedChannel; }
    int standIn() const { return m_standIn; }

private:
    struct Watch
    {
        quint64 pictures = 0;
        quint64 generation = 0;
        qint64 lastPictureUs = 0;
        qint64 steadySinceUs = -1;
    };

    void observe(int channel, qint64 nowUs, const Reading &reading);
    bool failing(int channel, qint64 nowUs, const Reading &reading) const;
    bool sound(int channel, qint64 nowUs, const Reading &reading) const;

    int m_standby;
    FailoverConfig m_config;
    std::array<Watch, kChannelCount> m_watch{};
    bool m_started = false;
    int m_failedChannel = -1;
    int m_standIn = -1;
};

} // namespace selvane
