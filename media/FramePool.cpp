#include "media/FramePool.h"

#include "media/FrameSizes.h"

#include <algorithm>

using namespace selvane;

namespace {

void returnToPool(const std::shared_ptr<FramePool::State> &state, FrameToken *token)
{
    std::lock_guard lock(state->mutex);
    state->inUse = std::max(0, state->inUse - 1);
    if (state->idle || static_cast<qint32>(state->freeList.size()) >= state->keepCount) {
        --state->alive;
        delete token;
        return;
    }
    if (token->pixels.capacity() >= frames::kLargeBufferBytes) {
        const auto large =
            std::count_if(state->freeList.begin(), state->freeList.end(), [](const FrameToken *t) {
                return t && t->pixels.capacity() >= frames::kLargeBufferBytes;
            });
        if (large >= 2)
            token->pixels = QByteArray();
    }
    token->held.reset(); // a held picture goes back to its producer at once
    token->ptsUs = 0;
    token->timeline = 0;
    token->width = 0;
    token->height = 0;
    token->tag = 0;
    state->freeList.push_back(token);
}

// Hands out the control blocks of the tokens' shared pointers from the pool's state, so that a
// warm pool allocates nothing at all per picture.
template <class T> struct BlockAllocator
{
    using value_type = T;
    std::shared_ptr<FramePool::State> state;
    explicit BlockAllocator(std::shared_ptr<FramePool::State> s) : state(std::move(s)) {}
    template <class U> BlockAllocator(const BlockAllocator<U> &other) : state(other.state) {}
    T *allocate(std::size_t n) { return static_cast<T *>(state->takeBlock(n * sizeof(T))); }
    void deallocate(T *p, std::size_t n) { state->giveBlock(p, n * sizeof(T)); }
    template <class U> bool operator==(const BlockAllocator<U> &other) const
    {
        return state == other.state;
    }
};

constexpr std::size_t kBlocksKept = 64;

} // namespace

void *FramePool::State::takeBlock(std::size_t size)
{
    {
        std::lock_guard lock(mutex);
        if (size == blockSize && !blocks.empty()) {
            void *block = blocks.back();
            blocks.pop_back();
            return block;
        }
    }
    return ::operator new(size);
}

void FramePool::State::giveBlock(void *block, std::size_t size)
{
    {
        std::lock_guard lock(mutex);
        if (blockSize == 0)
            blockSize = size;
        if (size == blockSize && blocks.size() < kBlocksKept) {
            blocks.push_back(block);
            return;
        }
    }
    ::operator delete(block);
}

void FrameWriter::holdI420(qint32 width, qint32 height, std::shared_ptr<const void> owner,
                           const std::uint8_t *const planes[3], const int strides[3])
{
    FrameToken &token = *m_token;
    token.layout = FrameToken::Layout::I420;
    token.width = width;
    token.height = height;
    token.stride = strides[0];
    token.held = std::move(owner);
    for (int p = 0; p < 3; ++p) {
        token.heldPlanes[p] = planes[p];
        token.heldStrides[p] = strides[p];
    }
}

void FrameWriter::prepareI420(qint32 width, qint32 height)
{
    const qint64 stride = FrameToken::i420Stride(width);
    reserve(FrameToken::i420Bytes(stride, height));
    m_token->layout = FrameToken::Layout::I420;
    m_token->width = width;
    m_token->height = height;
    m_token->stride = stride;
}

void FrameWriter::prepare(qint32 width, qint32 height, qint64 stride)
{
    reserve(stride * height);
    FrameToken &token = *m_token;
    token.layout = FrameToken::Layout::Rgba;
    token.width = width;
    token.height = height;
    token.stride = stride;
}

void FrameWriter::reserve(qint64 needed)
{
    FrameToken &token = *m_token;
    token.held.reset();
    if (token.pixels.isDetached()) {
        if (token.pixels.size() < needed)
            token.pixels.resize(needed);
    } else {
        // Shared with another holder: take a private buffer first.
        token.pixels = QByteArray(std::max<qint64>(token.pixels.size(), needed), Qt::Uninitialized);
    }
}

FramePool::State::~State()
{
    for (FrameToken *token : freeList)
        delete token;
    for (void *block : blocks)
        ::operator delete(block);
}

FramePool::FramePool(qint32 baseCount, qint32 width, qint32 height)
    : m_baseCount(baseCount), m_state(std::make_shared<State>()),
      m_size(std::make_shared<std::pair<qint32, qint32>>(std::max(1, width), std::max(1, height)))
{
    m_state->keepCount = baseCount;
    m_state->maxInUse = baseCount + 2;
    m_state->freeList.reserve(static_cast<std::size_t>(std::max(0, baseCount)));
    m_state->blocks.reserve(kBlocksKept);
}

qint32 FramePool::maxInUseFor(qint32 n, qint64 pixels)
{
    if (pixels <= frames::kPixels1080p)
        return n + 2;
    if (pixels < frames::kPixels4K)
        return std::min(n, 12);
    if (pixels < frames::kPixels8K)
        return n < 12 ? 4 : 10;
    return n < 12 ? 3 : 6;
}

void FramePool::updateCapLocked()
{
    m_state->maxInUse =
        maxInUseFor(m_baseCount, qint64(m_size->first) * m_size->second) + m_state->heldByConsumers;
}

void FramePool::resize(qint32 width, qint32 height)
{
    std::lock_guard lock(m_state->mutex);
    *m_size = {std::max(1, width), std::max(1, height)};
    updateCapLocked();
}

void FramePool::setHeldByConsumers(qint32 count)
{
    std::lock_guard lock(m_state->mutex);
    m_state->heldByConsumers = std::max(0, count);
    updateCapLocked();
}

FrameWriter FramePool::take(bool mayGrow)
{
    FrameToken *token = nullptr;
    {
        std::lock_guard lock(m_state->mutex);
        m_state->idle = false;
        if (m_state->inUse >= m_state->maxInUse) {
            ++m_state->refused;
            return {};
        }
        if (!m_state->freeList.empty()) {
            token = m_state->freeList.back();
            m_state->freeList.pop_back();
        } else {
            if (!mayGrow && m_state->alive >= m_baseCount)
                return {};
            token = new FrameToken;
            ++m_state->alive;
        }
        ++m_state->inUse;
    }
    std::shared_ptr<State> state = m_state;
    return FrameWriter(std::shared_ptr<FrameToken>(
        token, [state](FrameToken *t) { returnToPool(state, t); },
        BlockAllocator<FrameToken>(state)));
}

void FramePool::releaseFree()
{
    std::vector<FrameToken *> released;
    {
        std::lock_guard lock(m_state->mutex);
        m_state->idle = true;
        released.swap(m_state->freeList);
        m_state->alive -= static_cast<qint32>(released.size());
    }
    for (FrameToken *token : released)
        delete token;
}

FrameWriter FramePool::acquire()
{
    return take(true);
}
FrameWriter FramePool::tryAcquire()
{
    return take(false);
}

qint32 FramePool::width() const
{
    std::lock_guard lock(m_state->mutex);
    return m_size->first;
}

qint32 FramePool::height() const
{
    std::lock_guard lock(m_state->mutex);
    return m_size->second;
}

qint32 FramePool::inUse() const
{
    std::lock_guard lock(m_state->mutex);
    return m_state->inUse;
}

qint32 FramePool::maxInUse() const
{
    std::lock_guard lock(m_state->mutex);
    return m_state->maxInUse;
}

qint32 FramePool::freeCount() const
{
    std::lock_guard lock(m_state->mutex);
    return static_cast<qint32>(m_state->freeList.size());
}

qint64 FramePool::refusedCount() const
{
    std::lock_guard lock(m_state->mutex);
    return m_state->refused;
}
