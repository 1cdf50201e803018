#pragma once

// Paces the pictures of a source that is not live against a steady clock: the first picture
// after a start, a seek or a resume anchors the clock (its time and the wall time now); every
// later picture is due at anchor + (its time - the anchor's time). A picture more than 150 ms
// late is dropped; a wait is capped at 2 s. Pure decisions: the decode loop does the waiting.
// One run's thread only; the clock can be replaced (tests).

#include "media/SteadyClock.h"

#include <QtGlobal>

namespace selvane {

class Pacer
{
public:
    static constexpr qint64 kMaxWaitUs = 2'000'000;
    static constexpr qint64 kLateDropUs = 150'000;
    static constexpr qint64 kNoTime = INT64_MIN;

    enum class Action
    {
        Deliver, // now
        Wait,    // until `due`, then deliver
        Drop,    // too late to be worth showing
    };
    struct Decision
    {
        Action action = Action::Deliver;
        SteadyClock::time_point due{};
    };

    explicit Pacer(SteadyNow now = {}) : m_now(std::move(now)) {}

    // `ptsUs` is the picture's time; kNoTime is delivered at once.
    Decision onPicture(qint64 ptsUs);
    // The next picture anchors the clock again.
    void reset() { m_anchored = false; }
    SteadyClock::time_point now() const { return steadyNow(m_now); }

private:
    SteadyNow m_now;
    bool m_anchored = false;
    qint64 m_anchorPtsUs = 0;
    SteadyClock::time_point m_anchorWall{};
};

} // namespace selvane
