#pragma once

// One picture travelling between decoder threads, the program thread and the encoder workers.
// Pictures are planar YUV 4:2:0 (BT.601, limited range), the form decoders give and encoders
// take, so a show without graphics never converts colours; RGBA 8:8:8:8 is accepted as well. A
// token is written by exactly one producer through a FrameWriter (move-only, never shared while
// written); publish() turns it into a FrameTokenPtr, which is read-only and may be shared by any
// number of threads. Pooled tokens go back to their pool when the last reference is released, from
// whatever thread releases it.

#include <QByteArray>
#include <QMetaType>
#include <cstdint>
#include <memory>

struct FrameToken
{
    enum class Layout : quint8
    {
        I420, // Y rows of `stride` bytes, then U and V rows of stride / 2 bytes, (height + 1) / 2
              // each
        Rgba, // rows of R, G, B, A bytes
    };

    qint64 ptsUs = 0;         // presentation time set by the producer, in microseconds
    quint64 timeline = 0;     // the producer's timeline the time belongs to (see SourceFeed)
    quint64 producerWord = 0; // owned by the producer, never touched by the pool
    qint32 width = 0;
    qint32 height = 0;
    Layout layout = Layout::I420;
    QByteArray pixels; // the planes, one after the other
    qint64 stride = 0; // bytes per row of the first plane
    quint64 tag = 0;   // owned by the producer, reset when returned to the pool
    // A picture held by reference (I420 only): the planes live in `held`, not in `pixels`.
    std::shared_ptr<const void> held;
    const uchar *heldPlanes[3] = {};
    qint64 heldStrides[3] = {};

    bool hasPicture() const { return held || !pixels.isEmpty(); }
    const uchar *bits() const { return reinterpret_cast<const uchar *>(pixels.constData()); }
    bool isI420() const { return layout == Layout::I420; }
    // Plane 0..2 of an I420 picture (plane 0 of an RGBA one).
    const uchar *plane(int index) const
    {
        return held ? heldPlanes[index] : bits() + planeOffset(index);
    }
    qint64 planeStride(int index) const
    {
        return held ? heldStrides[index] : index == 0 ? stride : stride / 2;
    }
    qint64 planeOffset(int index) const
    {
        const qint64 luma = stride * height;
        return index == 0 ? 0 : luma + (index - 1) * (stride / 2) * ((height + 1) / 2);
    }
    // Plane pointers and line sizes as FFmpeg's image functions take them.
    struct AvPlanes
    {
        const std::uint8_t *data[4] = {};
        int linesize[4] = {};
    };
    AvPlanes avPlanes() const
    {
        AvPlanes planes;
        for (int p = 0; p < (isI420() ? 3 : 1); ++p) {
            planes.data[p] = plane(p);
            planes.linesize[p] = int(planeStride(p));
        }
        return planes;
    }
    // Bytes of an I420 picture with this luma stride.
    static qint64 i420Bytes(qint64 stride, qint32 height)
    {
        return stride * height + 2 * (stride / 2) * ((height + 1) / 2);
    }
    // Rows aligned for vector loads.
    static qint64 i420Stride(qint32 width) { return (qint64(width) + 63) & ~qint64(63); }
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
    // The same for an I420 picture: aligned rows, the three planes in one buffer.
    void prepareI420(qint32 width, qint32 height);
    // An I420 picture that stays where it is: `owner` keeps the planes alive and readable for as
    // long as the token holds it. Nothing is copied; the token cannot be written afterwards.
    void holdI420(qint32 width, qint32 height, std::shared_ptr<const void> owner,
                  const std::uint8_t *const planes[3], const int strides[3]);
    uchar *bits() { return reinterpret_cast<uchar *>(m_token->pixels.data()); }
    uchar *plane(int index) { return bits() + m_token->planeOffset(index); }
    struct AvPlanes
    {
        std::uint8_t *data[4] = {};
        int linesize[4] = {};
    };
    AvPlanes avPlanes()
    {
        AvPlanes planes;
        for (int p = 0; p < (m_token->isI420() ? 3 : 1); ++p) {
            planes.data[p] = plane(p);
            planes.linesize[p] = int(m_token->planeStride(p));
        }
        return planes;
    }

    // Hands the picture out; the writer is empty afterwards.
    FrameTokenPtr publish() && { return std::move(m_token); }

private:
    void reserve(qint64 bytes);

    std::shared_ptr<FrameToken> m_token;
};

Q_DECLARE_METATYPE(FrameTokenPtr)
