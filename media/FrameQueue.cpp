#include "media/FrameQueue.h"

#include <chrono>

namespace selvane {

void FrameQueue::setDepth(int depth)
{
    {
        std::lock_guard lock(m_mutex);
        m_depth = std::max(1, depth);
    }
    m_room.notify_all();
}

bool FrameQueue::push(FrameTokenPtr frame, bool live, const std::function<bool()> &giveUp)
{
    std::unique_lock lock(m_mutex);
    if (live) {
        while (int(m_frames.size()) >= m_depth) {
            m_frames.pop_front();
            ++m_dropped;
        }
    } else {
        while (int(m_frames.size()) >= m_depth) {
            if (giveUp && giveUp())
                return false;
            // Bounded waits, so that giving up is noticed even without a wake-up.
            m_room.wait_for(lock, std::chrono::milliseconds(10));
        }
    }
    m_frames.push_back(std::move(frame));
    ++m_pushed;
    return true;
}

bool FrameQueue::tryPush(FrameTokenPtr &frame)
{
    std::lock_guard lock(m_mutex);
    if (int(m_frames.size()) >= m_depth)
        return false;
    m_frames.push_back(std::move(frame));
    ++m_pushed;
    return true;
}

void FrameQueue::waitForRoom(int ms)
{
    std::unique_lock lock(m_mutex);
    if (int(m_frames.size()) >= m_depth)
        m_room.wait_for(lock, std::chrono::milliseconds(ms));
}

void FrameQueue::clear()
{
    std::deque<FrameTokenPtr> frames;
    {
        std::lock_guard lock(m_mutex);
        frames.swap(m_frames);
    }
    m_room.notify_all();
}

FrameTokenPtr FrameQueue::front() const
{
    std::lock_guard lock(m_mutex);
    return m_frames.empty() ? FrameTokenPtr() : m_frames.front();
}

FrameTokenPtr FrameQueue::back() const
{
    std::lock_guard lock(m_mutex);
    return m_frames.empty() ? FrameTokenPtr() : m_frames.back();
}

FrameTokenPtr FrameQueue::pop()
{
    FrameTokenPtr frame;
    {
        std::lock_guard lock(m_mutex);
        if (m_frames.empty())
            return {};
        frame = std::move(m_frames.front());
        m_frames.pop_front();
    }
    m_room.notify_all();
    return frame;
}

int FrameQueue::size() const
{
    std::lock_guard lock(m_mutex);
    return int(m_frames.size());
}

qint64 FrameQueue::droppedFrames() const
{
    std::lock_guard lock(m_mutex);
    return m_dropped;
}

} // namespace selvane

namespace selvane {

quint64 FrameQueue::pushedFrames() const
{
    std::lock_guard lock(m_mutex);
    return m_pushed;
}

} // namespace selvane
