#pragma once

// One RGBA 8:8:8:8 picture travelling between decoder threads, the program thread and the
// encoder workers. A token is written by exactly one producer through a FrameWriter (move-only,
// never shared while written); publish() turns it into a FrameTokenPtr, which is read-only and
// may be shared by any number of threads. Pooled tokens go back to their pool when the last
// reference is released, from whatever thread releases it.

#include <QByteArray>
#include <QMetaType>
#include <memory>

struct FrameToken
{
    qint64 ptsUs = 0;         // presentation time set by the producer, in microseconds
    quint64 timeline = 0;     // the producer's timeline the time belongs to (see SourceFeed)
    quint64 producerWord = 0; // owned by the producer, never touched by the pool
    qint32 width = 0;
    qint32 height = 0;
    bool flag = true;  // set when created and when a producer fills it from an image
    QByteArray pixels; // rows of R, G, B, A bytes
    qint64 stride = 0; // bytes per row in pixels
    quint64 tag = 0;   // owned by the producer, reset when returned to the pool

    const uchar *bits() const { return reinterpret_cast<const uchar *>(pixels.constData()); }
};

// A published picture: read-only from here on.
using FrameTokenPtr = std::shared_ptr<const FrameToken>;

// A picture while its producer writes it.
class FrameWriter
{
public:
    FrameWriter() = default;
    explicit FrameWriter(std::shared_ptr<FrameToken> token) : m_token(std::move(token)) {}
    FrameWriter(FrameWriter &&) = default;
    FrameWriter &operator=(FrameWriter &&) = default;
    FrameWriter(const FrameWriter &) = delete;
    FrameWriter &operator=(const FrameWriter &) = delete;

    explicit operator bool() const { return bool(m_token); }
    FrameToken *operator->() const { return m_token.get(); }
    FrameToken &operator*() const { return *m_token; }

    // Sets the geometry and makes the buffer private and at least stride x height bytes; the
    // buffer keeps its capacity across uses, so a warm pool allocates nothing.
    void prepare(qint32 width, qint32 height, qint64 stride);
    uchar *bits() { return reinterpret_cast<uchar *>(m_token->pixels.data()); }

    // Hands the picture out; the writer is empty afterwards.
    FrameTokenPtr publish() && { return std::move(m_token); }

private:
    std::shared_ptr<FrameToken> m_token;
};

Q_DECLARE_METATYPE(FrameTokenPtr)
