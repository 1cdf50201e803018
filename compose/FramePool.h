#pragma once

// Recycling allocator of FrameTokens. A FramePool is a value object; copies share one State, and
// every outstanding token's deleter holds that State too, so a token may come back after every
// pool object is gone. acquire()/tryAcquire()/resize() are safe from any thread (one mutex).
// An empty FrameTokenPtr means "cap reached": the producer drops that frame.

#include "compose/FrameToken.h"

#include <memory>
#include <mutex>
#include <vector>

class FramePool
{
public:
    struct State
    {
        qint32 keepCount = 0; // most free tokens kept
        std::mutex mutex;
        std::vector<FrameToken *> freeList; // a stack: last returned, first handed out
        qint32 created = 0;                 // tokens created within baseCount
        qint32 inUse = 0;
        qint32 maxInUse = 0;
        ~State();
    };

    FramePool(qint32 baseCount, qint32 width, qint32 height);

    FrameTokenPtr acquire();
    // Like acquire(), but never creates a token beyond baseCount.
    FrameTokenPtr tryAcquire();
    void resize(qint32 width, qint32 height);

    qint32 baseCount() const { return m_baseCount; }
    qint32 width() const { return m_width; }
    qint32 height() const { return m_height; }
    qint32 inUse() const;
    qint32 maxInUse() const;
    qint32 freeCount() const;

    // The in-flight cap for a frame size: the larger the frame, the fewer may be in flight.
    static qint32 maxInUseFor(qint32 baseCount, qint64 pixels);

    // 3840 x 2160 x 4 bytes: at most two buffers this large wait in the free list.
    static constexpr qint64 kLargeBufferBytes = 33177600;

private:
    FrameTokenPtr take(bool mayGrow);

    qint32 m_baseCount = 0;
    qint32 m_width = 1;
    qint32 m_height = 1;
    std::shared_ptr<State> m_state;
};

// Makes the token's pixel buffer private and at least stride x height bytes, keeping its
// capacity across uses, and sets the geometry fields.
void prepareTokenPixels(FrameToken &token, qint32 width, qint32 height, qint64 stride);
