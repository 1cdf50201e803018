#include "media/SampleQueue.h"

#include <algorithm>
#include <cstring>

namespace selvane {

SampleQueue::SampleQueue(int capacityFrames)
    : m_ring(std::size_t(std::max(1, capacityFrames)) * 2), m_capacity(std::max(1, capacityFrames))
{
}

void SampleQueue::push(const std::int16_t *samples, int frames)
{
    if (frames <= 0)
        return;
    std::lock_guard lock(m_mutex);
    if (frames >= m_capacity) {
        // Only the newest capacity's worth can be kept.
        samples += std::size_t(frames - m_capacity) * 2;
        m_dropped += m_count + (frames - m_capacity);
        frames = m_capacity;
        m_head = 0;
        m_count = 0;
    }
    const int overflow = m_count + frames - m_capacity;
    if (overflow > 0) {
        m_head = (m_head + overflow) % m_capacity;
        m_count -= overflow;
        m_dropped += overflow;
    }
    int tail = (m_head + m_count) % m_capacity;
    int left = frames;
    while (left > 0) {
        const int chunk = std::min(left, m_capacity - tail);
        std::memcpy(&m_ring[std::size_t(tail) * 2], samples, std::size_t(chunk) * 4);
        samples += std::size_t(chunk) * 2;
        left -= chunk;
        tail = (tail + chunk) % m_capacity;
    }
    m_count += frames;
}

int SampleQueue::take(std::int16_t *out, int frames)
{
    std::lock_guard lock(m_mutex);
    const int available = std::min(frames, m_count);
    int copied = 0;
    while (copied < available) {
        const int chunk = std::min(available - copied, m_capacity - m_head);
        std::memcpy(out + std::size_t(copied) * 2, &m_ring[std::size_t(m_head) * 2],
                    std::size_t(chunk) * 4);
        copied += chunk;
        m_head = (m_head + chunk) % m_capacity;
    }
    m_count -= available;
    if (frames > available)
        std::memset(out + std::size_t(available) * 2, 0, std::size_t(frames - available) * 4);
    return available;
}

void SampleQueue::clear()
{
    std::lock_guard lock(m_mutex);
    m_head = 0;
    m_count = 0;
}

void SampleQueue::trimTo(int frames)
{
    std::lock_guard lock(m_mutex);
    const int excess = m_count - std::max(0, frames);
    if (excess <= 0)
        return;
    m_head = (m_head + excess) % m_capacity;
    m_count -= excess;
    m_dropped += excess;
}

qint64 SampleQueue::droppedFrames() const
{
    std::lock_guard lock(m_mutex);
    return m_dropped;
}

int SampleQueue::queuedFrames() const
{
    std::lock_guard lock(m_mutex);
    return m_count;
}

} // namespace selvane
