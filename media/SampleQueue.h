#pragma once

// A bounded FIFO of interleaved stereo s16 frames between one or more decoder threads (push)
// and the mixer thread (take). Drop rule: when full, the oldest frames give way (counted in
// droppedFrames), so a source nobody pulls cannot grow without limit. take() fills what is
// missing with silence. Any thread (one mutex).

#include <QtGlobal>

#include <cstdint>
#include <mutex>
#include <vector>

namespace selvane {

class SampleQueue
{
public:
    explicit SampleQueue(int capacityFrames = 96000);

    void push(const std::int16_t *samples, int frames);
    // Copies up to `frames` frames into `out` and zero-fills the rest; returns the frames that
    // were real audio.
    int take(std::int16_t *out, int frames);
    void clear();
    // Drops all but the newest `frames` frames (counted as dropped).
    void trimTo(int frames);
    int queuedFrames() const;
    qint64 droppedFrames() const;
    int capacityFrames() const { return m_capacity; }

private:
    mutable std::mutex m_mutex;
    std::vector<std::int16_t> m_ring; // 2 values a frame
    int m_capacity = 0;
    int m_head = 0;  // first queued frame
    int m_count = 0; // queued frames
    qint64 m_dropped = 0;
};

} // namespace selvane
