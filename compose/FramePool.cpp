#include "compose/FramePool.h"

#include <algorithm>

namespace {

void returnToPool(const std::shared_ptr<FramePool::State> &state, FrameToken *token)
{
    std::lock_guard lock(state->mutex);
    state->inUse = std::max(0, state->inUse - 1);
    if (static_cast<qint32>(state->freeList.size()) >= state->keepCount) {
        delete token;
        return;
    }
    if (token->pixels.capacity() >= FramePool::kLargeBufferBytes) {
        const auto large = std::count_if(state->freeList.begin(), state->freeList.end(),
                                          [](const FrameToken *t) {
                                              return t && t->pixels.capacity() >=
                                                              FramePool::kLargeBufferBytes;
                                          });
        if (large >= 2)
            token->pixels = QByteArray();
    }
    token->pts = 0;
    token->width = 0;
    token->height = 0;
    token->tag = 0;
    state->freeList.push_back(token);
}

} // namespace

FramePool::State::~State()
{
    for (FrameToken *token : freeList)
        delete token;
}

FramePool::FramePool(qint32 baseCount, qint32 width, qint32 height)
    : m_baseCount(baseCount), m_width(std::max(1, width)), m_height(std::max(1, height)),
      m_state(std::make_shared<State>())
{
    m_state->keepCount = baseCount;
    m_state->maxInUse = baseCount + 2;
    m_state->freeList.reserve(static_cast<std::size_t>(std::max(0, baseCount)));
}

qint32 FramePool::maxInUseFor(qint32 n, qint64 pixels)
{
    if (pixels <= 2073600)
        return n + 2;
    if (pixels < 8294400)
        return std::min(n, 12);
    if (pixels < 33177600)
        return n < 12 ? 4 : 10;
    return n < 12 ? 3 : 6;
}

void FramePool::resize(qint32 width, qint32 height)
{
    m_width = std::max(1, width);
    m_height = std::max(1, height);
    const qint32 cap = maxInUseFor(m_baseCount, qint64(m_width) * m_height);
    std::lock_guard lock(m_state->mutex);
    m_state->maxInUse = cap;
}

FrameTokenPtr FramePool::take(bool mayGrow)
{
    FrameToken *token = nullptr;
    {
        std::lock_guard lock(m_state->mutex);
        if (m_state->inUse >= m_state->maxInUse)
            return {};
        if (!m_state->freeList.empty()) {
            token = m_state->freeList.back();
            m_state->freeList.pop_back();
            if (!token && !mayGrow)
                return {};
            if (!token)
                token = new FrameToken;
        } else {
            if (!mayGrow && m_state->created >= m_baseCount)
                return {};
            token = new FrameToken;
            if (m_state->created < m_baseCount)
                ++m_state->created;
        }
        ++m_state->inUse;
    }
    std::shared_ptr<State> state = m_state;
    return FrameTokenPtr(token, [state](FrameToken *t) { returnToPool(state, t); });
}

FrameTokenPtr FramePool::acquire() { return take(true); }
FrameTokenPtr FramePool::tryAcquire() { return take(false); }

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

void prepareTokenPixels(FrameToken &token, qint32 width, qint32 height, qint64 stride)
{
    const qint64 needed = stride * height;
    if (token.pixels.isDetached()) {
        if (token.pixels.size() < needed)
            token.pixels.resize(needed);
    } else {
        // Shared with another holder: take a private copy of the current size first.
        QByteArray own(std::max<qint64>(token.pixels.size(), needed), Qt::Uninitialized);
        token.pixels = own;
    }
    token.width = width;
    token.height = height;
    token.stride = stride;
}
