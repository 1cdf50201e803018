#include "input/Pacer.h"

#include <algorithm>

namespace selvane {

Pacer::Decision Pacer::onPicture(qint64 ptsUs)
{
    const SteadyClock::time_point wall = now();
    if (ptsUs == kNoTime)
        return {Action::Deliver, wall};
    if (!m_anchored) {
        m_anchored = true;
        m_anchorPtsUs = ptsUs;
        m_anchorWall = wall;
        return {Action::Deliver, wall};
    }
    const qint64 sinceAnchorUs =
        std::chrono::duration_cast<std::chrono::microseconds>(wall - m_anchorWall).count();
    const qint64 waitUs = (ptsUs - m_anchorPtsUs) - sinceAnchorUs;
    if (waitUs > 0)
        return {Action::Wait, wall + std::chrono::microseconds(std::min(waitUs, kMaxWaitUs))};
    if (-waitUs > kLateDropUs)
        return {Action::Drop, wall};
    return {Action::Deliver, wall};
}

} // namespace selvane
