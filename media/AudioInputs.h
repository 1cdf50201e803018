#pragma once

// Where decoded sound waits for the mixer: one bounded sample queue per input channel and per
// overlay-video slot, and which channel's sound belongs to the program. Decoder threads push,
// the mixer thread takes; the program channel is written by the engine. Any thread.

#include "media/SampleQueue.h"

#include <array>
#include <atomic>
#include <memory>

namespace selvane {

class AudioInputs
{
public:
    static constexpr int kChannels = 4;
    static constexpr int kOverlaySlots = 4;

    AudioInputs();

    SampleQueue &channel(int index) { return *m_channels[std::size_t(index)]; }
    SampleQueue &overlaySlot(int index) { return *m_overlays[std::size_t(index)]; }
    static bool isChannel(int index) { return index >= 0 && index < kChannels; }
    static bool isOverlaySlot(int index) { return index >= 0 && index < kOverlaySlots; }

    // The channel whose sound goes into the program mix, or -1 (still pictures, black).
    void setProgramChannel(int channel)
    {
        m_programChannel.store(isChannel(channel) ? channel : -1);
    }
    int programChannel() const { return m_programChannel.load(); }

    // Sound dropped by every queue since the start (oldest frames given way).
    qint64 droppedFrames() const;

private:
    std::array<std::unique_ptr<SampleQueue>, kChannels> m_channels;
    std::array<std::unique_ptr<SampleQueue>, kOverlaySlots> m_overlays;
    std::atomic<int> m_programChannel{-1};
};

} // namespace selvane
