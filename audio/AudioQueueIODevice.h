#pragma once

// The read-only device the preview audio sink pulls from. The mixer appends converted blocks;
// the sink reads from the read offset. One mutex guards both sides; the queue is kept at about
// two seconds by dropping the oldest audio, never by blocking.

#include <QByteArray>
#include <QIODevice>

#include <mutex>

class AudioQueueIODevice : public QIODevice
{
    Q_OBJECT

public:
    // Above this many unread bytes the oldest preview audio is dropped before an append.
    static constexpr qint64 kMaxUnreadBytes = 382080;
    static constexpr qint64 kKeepUnreadBytes = 382077;

    explicit AudioQueueIODevice(QObject *parent = nullptr);

    // Appends one block (called by the mixer).
    void appendBlock(const char *data, qint64 size);
    qint64 unreadBytes() const;
    qint64 bytesAvailable() const override;
    bool isSequential() const override { return true; }

protected:
    qint64 readData(char *data, qint64 maxSize) override;
    qint64 writeData(const char *, qint64) override { return -1; }

private:
    void compactLocked();

    mutable std::mutex m_mutex;
    QByteArray m_buffer;
    qint64 m_readOffset = 0;
};
