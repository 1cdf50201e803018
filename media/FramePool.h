#pragma once

// Recycling allocator of FrameTokens. A FramePool is a value object; copies share one State, and
// every outstanding token's deleter holds that State too, so a token may come back after every
// pool object is gone. All methods are safe from any thread (one mutex, never held while pixels
// are touched). An empty FrameWriter means "cap reached": the producer drops that frame.
//
// The cap on tokens in flight shrinks with the picture size (maxInUseFor). Consumers that hold
// pictures for longer (the recording's encode queue) raise it by what they may hold with
// setHeldByConsumers(), so that a full encode queue never starves the producers.
//
// A producer that goes idle (a channel cleared) calls releaseFree(): the free tokens are deleted
// with their buffers, and so is every token that comes back before the next acquisition, so that
// an unused pool holds no memory however busy it once was.

#include "media/FrameToken.h"

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
        qint32 alive = 0;                   // tokens in existence: in use or free
        bool idle = false;                  // released: tokens that come back are deleted
        qint32 inUse = 0;
        qint32 maxInUse = 0;
        qint32 heldByConsumers = 0;
        qint64 refused = 0; // acquisitions refused at the cap
        // Memory for the shared pointers' control blocks, reused like the tokens themselves.
        std::vector<void *> blocks;
        std::size_t blockSize = 0;
        void *takeBlock(std::size_t size);
        void giveBlock(void *block, std::size_t size);
        ~State();
    };

    FramePool(qint32 baseCount, qint32 width, qint32 height);

    FrameWriter acquire();
    // Like acquire(), but never creates a token beyond baseCount.
    FrameWriter tryAcquire();
    void resize(qint32 width, qint32 height);
    // Deletes the free tokens, and those that come back until the next acquire().
    void releaseFree();
    // Tokens that downstream queues may hold on top of the size's cap.
    void setHeldByConsumers(qint32 count);

    qint32 baseCount() const { return m_baseCount; }
    qint32 width() const;
    qint32 height() const;
    qint32 inUse() const;
    qint32 maxInUse() const;
    qint32 freeCount() const;
    qint64 refusedCount() const;

    // The in-flight cap for a frame size: the larger the frame, the fewer may be in flight.
    static qint32 maxInUseFor(qint32 baseCount, qint64 pixels);

private:
    FrameWriter take(bool mayGrow);
    void updateCapLocked();

    qint32 m_baseCount = 0;
    std::shared_ptr<State> m_state;
    std::shared_ptr<std::pair<qint32, qint32>> m_size; // shared by copies, guarded by the state
};
