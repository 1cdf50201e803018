#pragma once

// A bounded queue of demuxed packets between a reader (the decode loop reading ahead, or a
// packet-reader thread for a live camera with its own microphone) and the decode loop.
// Drop rule: a full queue discards its oldest packet (the newest data wins); every discarded
// packet is counted. Owns its lock; any thread. A reader that ends records its result, which
// take() returns once the queue is empty.

#include "media/FfmpegTypes.h"

#include <atomic>
#include <condition_variable>
#include <deque>
#include <functional>
#include <mutex>

namespace selvane {

class PacketQueue
{
public:
    explicit PacketQueue(int depth = 200) : m_depth(depth) {}
    ~PacketQueue() { clear(); }
    PacketQueue(const PacketQueue &) = delete;
    PacketQueue &operator=(const PacketQueue &) = delete;

    void setDepth(int depth);
    // Also counts every dropped packet here (the decoder's counter across runs).
    void setDropCounter(std::atomic<qint64> *counter) { m_dropCounter = counter; }
    int depth() const;

    // Takes the packet's reference (the packet is left blank).
    void push(AVPacket *packet);
    // Moves the front packet into `packet`: 0 when one was taken, AVERROR(EAGAIN) when the queue
    // is empty (and nothing has ended), the reader's end result once it has ended and the queue
    // is empty, AVERROR_EXIT when `stop` holds. With `wait`, blocks until one of these.
    int take(AVPacket *packet, bool wait, const std::function<bool()> &stop = {});
    // A reader that reached the end (or an error) records it and wakes the taker.
    void markEnded(int result);
    void clear();
    // Wakes every waiter (stop, flush).
    void wakeAll() { m_wake.notify_all(); }

    int size() const;
    qint64 droppedPackets() const;

private:
    mutable std::mutex m_mutex;
    std::condition_variable m_wake;
    std::deque<AVPacket *> m_packets;
    int m_depth = 200;
    bool m_ended = false;
    int m_endResult = 0;
    qint64 m_dropped = 0;
    std::atomic<qint64> *m_dropCounter = nullptr;
};

} // namespace selvane
