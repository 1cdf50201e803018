#pragma once

// Times for the sound of a capture device (a microphone). The device stamps each block with the
// wall clock less the latency it reports, and that report wanders while the device starts (and
// whenever the sound server changes its buffering), so stamps taken as they are leave holes and
// overlaps between blocks that follow each other, which the sample queue fills with silence or
// cuts: heard as stutter. Here a block that comes near where the previous one ended follows it
// seamlessly; the times move towards the device's stamps by a hair each block (about as fast as
// two clocks drift apart, a thousandth), so a device whose clock runs apart is followed over
// minutes without a click, while the wandering of its first seconds is not heard. A block far
// from where it should be (the device stalled or skipped) starts where its stamp says.
//
// A value owned by one capture thread.

#include <QtGlobal>

namespace selvane {

class ContinuousStamps
{
public:
    // A block this far from the previous one's end still follows it.
    static constexpr qint64 kFollowUs = 150'000;
    // The most the times move towards the device's stamps in one block.
    static constexpr qint64 kSteerUs = 20;

    // The time to give a block of `frames` frames at 48 kHz that the device stamped `stampUs`.
    qint64 place(qint64 stampUs, int frames);
    void reset() { m_started = false; }

private:
    bool m_started = false;
    qint64 m_anchorUs = 0; // the time of the first frame counted ...
    qint64 m_frames = 0;   // ... and the frames given times since
};

} // namespace selvane
