#pragma once

// A bounded FIFO of interleaved stereo s16 frames between one or more decoder threads (push)
// and the mixer thread (take). When full, the oldest frames give way: a source nobody pulls
// cannot grow without limit. take() fills what is missing with silence. Any thread.

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
    int queuedFrames() const;
    int capacityFrames() const { return m_capacity; }

private:
    mutable std::mutex m_mutex;
    std::vector<std::int16_t> m_ring; // 2 values a frame
    int m_capacity = 0;
    int m_head = 0;  // first queued frame
    int m_count = 0; // queued frames
};

} // namespace selvane
