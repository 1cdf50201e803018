#include "input/PacketQueue.h"

#include <algorithm>
#include <chrono>

namespace selvane {

void PacketQueue::setDepth(int depth)
{
    std::lock_guard lock(m_mutex);
    m_depth = std::max(1, depth);
}

int PacketQueue::depth() const
{
    std::lock_guard lock(m_mutex);
    return m_depth;
}

void PacketQueue::push(AVPacket *packet)
{
    AVPacket *copy = av_packet_alloc();
    if (!copy) {
        av_packet_unref(packet);
        std::lock_guard lock(m_mutex);
        ++m_dropped;
        if (m_dropCounter)
            m_dropCounter->fetch_add(1);
        return;
    }
    av_packet_move_ref(copy, packet);
    {
        std::lock_guard lock(m_mutex);
        while (m_packets.size() >= static_cast<std::size_t>(m_depth)) {
            AVPacket *oldest = m_packets.front();
            m_packets.pop_front();
            av_packet_free(&oldest);
            ++m_dropped;
            if (m_dropCounter)
                m_dropCounter->fetch_add(1);
        }
        m_packets.push_back(copy);
    }
    m_wake.notify_all();
}

int PacketQueue::take(AVPacket *packet, bool wait, const std::function<bool()> &stop)
{
    std::unique_lock lock(m_mutex);
    for (;;) {
        if (stop && stop())
            return AVERROR_EXIT;
        if (!m_packets.empty()) {
            AVPacket *front = m_packets.front();
            m_packets.pop_front();
            lock.unlock();
            m_wake.notify_all(); // a reader waiting for room
            av_packet_move_ref(packet, front);
            av_packet_free(&front);
            return 0;
        }
        if (m_ended)
            return m_endResult;
        if (!wait)
            return AVERROR(EAGAIN);
        // Bounded waits: the stop predicate is polled even if nobody wakes us.
        m_wake.wait_for(lock, std::chrono::milliseconds(50));
    }
}

void PacketQueue::markEnded(int result)
{
    {
        std::lock_guard lock(m_mutex);
        m_ended = true;
        m_endResult = result;
    }
    m_wake.notify_all();
}

void PacketQueue::clear()
{
    std::deque<AVPacket *> packets;
    {
        std::lock_guard lock(m_mutex);
        packets.swap(m_packets);
    }
    for (AVPacket *packet : packets)
        av_packet_free(&packet);
    m_wake.notify_all();
}

int PacketQueue::size() const
{
    std::lock_guard lock(m_mutex);
    return int(m_packets.size());
}

qint64 PacketQueue::droppedPackets() const
{
    std::lock_guard lock(m_mutex);
    return m_dropped;
}

} // namespace selvane
