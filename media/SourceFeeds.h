#pragma once

// What every source (the four channels, the four overlay-video slots and the standby, which
// plays the backup or the slate when the channel on air fails) hands to the program:
// its pictures (FrameQueue) and its sound (TimedSampleQueue), both stamped with the source's own
// times, and the mapping of those times onto the program clock.
//
// One rule for every source kind: a picture or sound of source time t belongs on the program at
// t + offsetUs. The program thread sets the mapping when a source's timeline starts (its first
// picture) and moves it when the source falls behind or runs too far ahead; the mixer reads it
// to take each source's sound for the program time of each block. Decoder threads push,
// the program thread pops pictures, the mixer thread takes sound. Any thread.

#include "media/FrameQueue.h"
#include "media/ProgramBus.h"
#include "media/TimedSampleQueue.h"

#include <array>
#include <atomic>
#include <memory>
#include <mutex>

namespace selvane {

struct SourceMapping
{
    bool anchored = false;
    quint64 timeline = 0; // the source timeline the offset belongs to
    qint64 offsetUs = 0;  // program time = source time + offsetUs
};

class SourceFeed
{
public:
    // A live source's queue holds this long of its pictures, whatever its rate: room for the
    // longest jitter margin the program keeps, and for the burst that follows a stall.
    static constexpr qint64 kLiveQueueSpanUs = 1'500'000;

    FrameQueue &frames() { return m_frames; }
    TimedSampleQueue &sound() { return m_sound; }
    const FrameQueue &frames() const { return m_frames; }
    const TimedSampleQueue &sound() const { return m_sound; }

    // Live sources never make their decoder wait and keep a jitter margin.
    void setLive(bool live) { m_live.store(live); }
    bool isLive() const { return m_live.load(); }

    SourceMapping mapping() const;
    void setMapping(const SourceMapping &mapping);
    // A new source: what is queued and the mapping are forgotten, and the generation moves on
    // so that the program lets go of the old source's last picture too.
    void reset();
    quint64 generation() const { return m_generation.load(); }

private:
    FrameQueue m_frames;
    TimedSampleQueue m_sound;
    std::atomic<bool> m_live{false};
    std::atomic<quint64> m_generation{0};
    mutable std::mutex m_mutex;
    SourceMapping m_mapping;
};

class SourceFeeds
{
public:
    static constexpr int kChannels = 4;
    static constexpr int kOverlaySlots = 4;
    // The standby's number on the program bus, after the channels': what stands in for a
    // channel that failed on air (its backup file or stream, or the slate).
    static constexpr int kStandby = kChannels;

    SourceFeeds();

    SourceFeed &channel(int index) { return *m_channels[std::size_t(index)]; }
    SourceFeed &overlaySlot(int index) { return *m_overlays[std::size_t(index)]; }
    SourceFeed &standby() { return *m_standby; }
    static bool isChannel(int index) { return index >= 0 && index < kChannels; }
    // A channel or the standby: what the program bus may put on air.
    static bool isOnAirSource(int index) { return index >= 0 && index <= kStandby; }

    // What is on air when: the program channel, transitions and the fade to black, read by the
    // program thread for pictures and by the mixer for sound.
    ProgramBus &bus() { return m_bus; }
    const ProgramBus &bus() const { return m_bus; }
    // The channel whose sound goes into the program mix from now on, or -1 (stills, black).
    void setProgramChannel(int channel)
    {
        m_bus.cut(isChannel(channel) ? channel : -1, ProgramBus::kAlways);
    }
    int programChannel() const { return m_bus.program(); }

    // Sound dropped and silence filled by every queue since the start.
    qint64 droppedAudioFrames() const;

private:
    std::array<std::unique_ptr<SourceFeed>, kChannels> m_channels;
    std::array<std::unique_ptr<SourceFeed>, kOverlaySlots> m_overlays;
    std::unique_ptr<SourceFeed> m_standby;
    ProgramBus m_bus;
};

} // namespace selvane
