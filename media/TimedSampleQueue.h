#pragma once

// The sound of one source on its way to the mixer, with the source time of every sample: a
// bounded ring of interleaved stereo s16 frames at 48 kHz that is always contiguous in time
// (headUs is the time of the oldest queued frame; frame i plays at headUs + i / 48 kHz).
//
// push() keeps it contiguous: a small gap before the new block is filled with silence, a small
// overlap is cut from the new block, and anything larger, or a new timeline, starts the queue
// anew at the new block. takeAt() gives the mixer the frames that belong to a wanted time:
// what is older is dropped, what is missing is silence, so a source's sound follows its
// timestamps, never its arrival. Drop rule when full: the oldest frames give way.
// Every dropped or filled frame is counted. Any thread (one mutex).

#include <QtGlobal>
#include <cstdint>
#include <mutex>
#include <vector>

namespace selvane {

class TimedSampleQueue
{
public:
    // Gaps and overlaps up to this size are smoothed over instead of starting anew.
    static constexpr qint64 kJoinUs = 200'000;
    // A block this close to where the queue ends joins it as it is, and the mixer lets the
    // queue be this far from the wanted time before it corrects.
    static constexpr qint64 kToleranceUs = 5'000;

    explicit TimedSampleQueue(int capacityFrames = 4 * 48000);

    // `mediaUs`: the time of the first frame of the block; `timeline`: the source's timeline.
    void push(const std::int16_t *samples, int frames, qint64 mediaUs, quint64 timeline);
    // Fills `frames` frames for the time `wantedUs` of `timeline`; returns the real frames.
    // Sound of an older timeline is dropped; sound of a newer one waits.
    int takeAt(std::int16_t *out, int frames, qint64 wantedUs, quint64 timeline);
    // Takes the oldest frames whatever their time (sources without a mapping yet are drained).
    int takeOldest(std::int16_t *out, int frames);
    void clear();

    int queuedFrames() const;
    // The time of the oldest queued frame and its timeline; false when empty.
    bool head(qint64 *mediaUs, quint64 *timeline) const;
    // Where the sound pushed so far ends (also once it has all been taken); false before the
    // first push and after clear().
    bool end(qint64 *mediaUs, quint64 *timeline) const;
    qint64 droppedFrames() const;
    qint64 filledFrames() const;

private:
    void dropLocked(int frames);
    int copyLocked(std::int16_t *out, int frames);
    void appendLocked(const std::int16_t *samples, int frames);
    qint64 headUsLocked() const;
    void restartLocked(qint64 mediaUs);

    mutable std::mutex m_mutex;
    std::vector<std::int16_t> m_ring;
    int m_capacity = 0;
    int m_head = 0;
    int m_count = 0;
    // The head's time, kept exact: base time plus frames consumed since (no rounding creeps in).
    qint64 m_baseUs = 0;
    qint64 m_consumed = 0;
    quint64 m_timeline = 0;
    bool m_pushed = false;
    qint64 m_dropped = 0;
    qint64 m_filled = 0;
};

} // namespace selvane
