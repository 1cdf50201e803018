#pragma once

// A coalescing hand-over of pictures from producer threads to one consumer thread: one slot per
// index, and the newest picture replaces an older one that was not taken yet (drop rule: newest
// wins; replaced pictures are counted). store() tells the producer whether it must post the
// consumer's flush: at most one flush is ever pending (an atomic flag), however fast pictures
// arrive. Any thread; one mutex, never held while a picture is used.

#include "media/FrameToken.h"

#include <array>
#include <atomic>
#include <mutex>

namespace selvane {

template <int N> class FrameMailbox
{
public:
    using Frames = std::array<FrameTokenPtr, N>;

    // True when the caller must post a flush (none is pending).
    bool store(int index, FrameTokenPtr frame)
    {
        {
            std::lock_guard lock(m_mutex);
            FrameTokenPtr &slot = m_frames[std::size_t(index)];
            if (slot)
                ++m_replaced;
            slot = std::move(frame);
        }
        return !m_posted.exchange(true);
    }

    // Empties every slot; pictures stored from now on post a new flush.
    Frames take()
    {
        Frames frames;
        std::lock_guard lock(m_mutex);
        frames.swap(m_frames);
        m_posted.store(false);
        return frames;
    }

    // Drops a slot's waiting picture (a source that went away).
    void clear(int index)
    {
        std::lock_guard lock(m_mutex);
        m_frames[std::size_t(index)].reset();
    }

    qint64 replacedCount() const
    {
        std::lock_guard lock(m_mutex);
        return m_replaced;
    }

private:
    mutable std::mutex m_mutex;
    Frames m_frames;
    qint64 m_replaced = 0;
    std::atomic<bool> m_posted{false};
};

} // namespace selvane
