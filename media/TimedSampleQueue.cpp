#include "media/TimedSampleQueue.h"

#include "media/AudioFormat.h"

#include <algorithm>
#include <cstring>

namespace selvane {

namespace {

qint64 framesToUs(qint64 frames)
{
    return frames * 1000000 / audio::kSampleRate;
}
qint64 usToFrames(qint64 us)
{
    return us * audio::kSampleRate / 1000000;
}

} // namespace

qint64 TimedSampleQueue::headUsLocked() const
{
    return m_baseUs + framesToUs(m_consumed);
}

void TimedSampleQueue::restartLocked(qint64 mediaUs)
{
    m_head = 0;
    m_count = 0;
    m_baseUs = mediaUs;
    m_consumed = 0;
}

TimedSampleQueue::TimedSampleQueue(int capacityFrames)
    : m_ring(std::size_t(std::max(1, capacityFrames)) * 2), m_capacity(std::max(1, capacityFrames))
{
}

void TimedSampleQueue::appendLocked(const std::int16_t *samples, int frames)
{
    if (frames <= 0)
        return;
    if (frames >= m_capacity) {
        samples += std::size_t(frames - m_capacity) * 2;
        m_dropped += m_count + (frames - m_capacity);
        m_consumed += m_count + (frames - m_capacity);
        frames = m_capacity;
        m_head = 0;
        m_count = 0;
    }
    const int overflow = m_count + frames - m_capacity;
    if (overflow > 0)
        dropLocked(overflow);
    int tail = (m_head + m_count) % m_capacity;
    int left = frames;
    while (left > 0) {
        const int chunk = std::min(left, m_capacity - tail);
        if (samples)
            std::memcpy(&m_ring[std::size_t(tail) * 2], samples, std::size_t(chunk) * 4);
        else
            std::memset(&m_ring[std::size_t(tail) * 2], 0, std::size_t(chunk) * 4);
        if (samples)
            samples += std::size_t(chunk) * 2;
        left -= chunk;
        tail = (tail + chunk) % m_capacity;
    }
    m_count += frames;
}

void TimedSampleQueue::dropLocked(int frames)
{
    frames = std::min(frames, m_count);
    m_head = (m_head + frames) % m_capacity;
    m_count -= frames;
    m_consumed += frames;
    m_dropped += frames;
}

int TimedSampleQueue::copyLocked(std::int16_t *out, int frames)
{
    const int n = std::min(frames, m_count);
    int copied = 0;
    while (copied < n) {
        const int chunk = std::min(n - copied, m_capacity - m_head);
        std::memcpy(out + std::size_t(copied) * 2, &m_ring[std::size_t(m_head) * 2],
                    std::size_t(chunk) * 4);
        copied += chunk;
        m_head = (m_head + chunk) % m_capacity;
    }
    m_count -= n;
    m_consumed += n;
    return n;
}

void TimedSampleQueue::push(const std::int16_t *samples, int frames, qint64 mediaUs,
                            quint64 timeline)
{
    if (frames <= 0)
        return;
    std::lock_guard lock(m_mutex);
    m_pushed = true;
    if (m_count == 0 || timeline != m_timeline) {
        m_dropped += m_count; // what is left of an earlier timeline never plays
        restartLocked(mediaUs);
        m_timeline = timeline;
        appendLocked(samples, frames);
        return;
    }
    const qint64 tailUs = m_baseUs + framesToUs(m_consumed + m_count);
    const qint64 gapUs = mediaUs - tailUs;
    if (gapUs > kJoinUs || gapUs < -kJoinUs) {
        // Too far apart to join: the queue starts again at this block.
        m_dropped += m_count;
        restartLocked(mediaUs);
        appendLocked(samples, frames);
        return;
    }
    // Timestamps rounded to the container's unit (a millisecond in FLV) leave a little jitter
    // between blocks that follow each other: within the tolerance, the block simply follows.
    const int gapFrames =
        gapUs > kToleranceUs || gapUs < -kToleranceUs ? int(usToFrames(gapUs)) : 0;
    if (gapFrames > 0) {
        m_filled += gapFrames;
        appendLocked(nullptr, gapFrames);
    } else if (gapFrames < 0) {
        const int cut = std::min(frames, -gapFrames);
        samples += std::size_t(cut) * 2;
        frames -= cut;
        m_dropped += cut;
    }
    appendLocked(samples, frames);
}

int TimedSampleQueue::takeAt(std::int16_t *out, int frames, qint64 wantedUs, quint64 timeline)
{
    std::lock_guard lock(m_mutex);
    if (m_count > 0 && m_timeline != timeline) {
        if (m_timeline < timeline) {
            m_dropped += m_count; // sound of an earlier timeline
            m_count = 0;
            m_head = 0;
        }
        std::memset(out, 0, std::size_t(frames) * 4);
        return 0;
    }
    if (m_count == 0) {
        std::memset(out, 0, std::size_t(frames) * 4);
        return 0;
    }
    const qint64 aheadUs = headUsLocked() - wantedUs;
    int written = 0;
    if (aheadUs > kToleranceUs) {
        // The queue starts later than wanted: silence until its first frame.
        const int silence = int(std::min<qint64>(frames, usToFrames(aheadUs)));
        std::memset(out, 0, std::size_t(silence) * 4);
        written = silence;
        m_filled += silence;
    } else if (aheadUs < -kToleranceUs) {
        dropLocked(int(std::min<qint64>(m_count, usToFrames(-aheadUs))));
    }
    const int real = copyLocked(out + std::size_t(written) * 2, frames - written);
    written += real;
    if (written < frames)
        std::memset(out + std::size_t(written) * 2, 0, std::size_t(frames - written) * 4);
    return real;
}

int TimedSampleQueue::takeOldest(std::int16_t *out, int frames)
{
    std::lock_guard lock(m_mutex);
    const int real = copyLocked(out, frames);
    if (real < frames)
        std::memset(out + std::size_t(real) * 2, 0, std::size_t(frames - real) * 4);
    return real;
}

void TimedSampleQueue::clear()
{
    std::lock_guard lock(m_mutex);
    m_head = 0;
    m_count = 0;
    m_pushed = false;
}

int TimedSampleQueue::queuedFrames() const
{
    std::lock_guard lock(m_mutex);
    return m_count;
}

bool TimedSampleQueue::head(qint64 *mediaUs, quint64 *timeline) const
{
    std::lock_guard lock(m_mutex);
    if (m_count == 0)
        return false;
    *mediaUs = headUsLocked();
    *timeline = m_timeline;
    return true;
}

bool TimedSampleQueue::end(qint64 *mediaUs, quint64 *timeline) const
{
    std::lock_guard lock(m_mutex);
    if (!m_pushed)
        return false;
    *mediaUs = m_baseUs + framesToUs(m_consumed + m_count);
    *timeline = m_timeline;
    return true;
}

qint64 TimedSampleQueue::droppedFrames() const
{
    std::lock_guard lock(m_mutex);
    return m_dropped;
}

qint64 TimedSampleQueue::filledFrames() const
{
    std::lock_guard lock(m_mutex);
    return m_filled;
}

} // namespace selvane
