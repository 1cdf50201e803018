#pragma once

// The pictures of one source waiting for the program clock: a short queue in time order between
// the source's decoder thread (push) and the program thread (pop by time).
//
// A file's decoder waits for room (the queue's depth is how far it may run ahead); a live
// source never waits: drop rule, a full queue gives up its oldest picture. Every dropped picture
// is counted. Any thread (one mutex); a waiting push wakes for room, clear() and wakeAll().

#include "media/FrameToken.h"

#include <condition_variable>
#include <deque>
#include <functional>
#include <mutex>

namespace selvane {

class FrameQueue
{
public:
    explicit FrameQueue(int depth = 4) : m_depth(depth) {}

    void setDepth(int depth);
    // False when the picture was not queued (waiting was given up: `giveUp` held).
    bool push(FrameTokenPtr frame, bool live, const std::function<bool()> &giveUp = {});
    // Never waits: false (the picture stays with the caller) when the queue is full.
    bool tryPush(FrameTokenPtr &frame);
    // Waits up to `ms` for room (or a wake-up).
    void waitForRoom(int ms);
    void clear();
    void wakeAll() { m_room.notify_all(); }

    // The program thread's side.
    FrameTokenPtr front() const;
    FrameTokenPtr back() const;
    FrameTokenPtr pop();
    int size() const;
    qint64 droppedFrames() const;
    // Pictures queued since the start: whoever watches a source for a stall compares readings.
    quint64 pushedFrames() const;

private:
    mutable std::mutex m_mutex;
    std::condition_variable m_room;
    std::deque<FrameTokenPtr> m_frames;
    int m_depth = 4;
    qint64 m_dropped = 0;
    quint64 m_pushed = 0;
};

} // namespace selvane
