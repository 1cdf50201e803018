#include "audio/AudioQueueIODevice.h"

#include <algorithm>
#include <cstring>

AudioQueueIODevice::AudioQueueIODevice(QObject *parent) : QIODevice(parent)
{
    m_buffer.reserve(kMaxUnreadBytes + 8192);
}

void AudioQueueIODevice::compactLocked()
{
    if (m_readOffset >= m_buffer.size()) {
        m_buffer.resize(0); // keeps the capacity
        m_readOffset = 0;
    } else if (m_readOffset > 16383 && m_readOffset >= m_buffer.size() / 2) {
        const qint64 left = m_buffer.size() - m_readOffset;
        std::memmove(m_buffer.data(), m_buffer.constData() + m_readOffset, std::size_t(left));
        m_buffer.resize(left);
        m_readOffset = 0;
    }
}

void AudioQueueIODevice::appendBlock(const char *data, qint64 size)
{
    {
        std::lock_guard lock(m_mutex);
        compactLocked();
        const qint64 unread = m_buffer.size() - m_readOffset;
        if (unread > kMaxUnreadBytes) {
            // Keep about two seconds: the oldest preview audio goes.
            const qint64 skip = ((unread - kKeepUnreadBytes) / 4) * 4;
            m_readOffset = std::min<qint64>(m_buffer.size(), m_readOffset + skip);
        }
        m_buffer.append(data, size);
        compactLocked();
    }
    emit readyRead();
}

qint64 AudioQueueIODevice::unreadBytes() const
{
    std::lock_guard lock(m_mutex);
    return m_buffer.size() - m_readOffset;
}

qint64 AudioQueueIODevice::bytesAvailable() const
{
    return unreadBytes() + QIODevice::bytesAvailable();
}

qint64 AudioQueueIODevice::readData(char *data, qint64 maxSize)
{
    std::lock_guard lock(m_mutex);
    const qint64 count = std::min(maxSize, m_buffer.size() - m_readOffset);
    if (count > 0) {
        std::memcpy(data, m_buffer.constData() + m_readOffset, std::size_t(count));
        m_readOffset += count;
    }
    return std::max<qint64>(0, count);
}
