#pragma once

// The time base of program pictures and program sound: microseconds since the outputs started.
// Pictures are stamped on the program thread and sound on the mixer thread from this one clock,
// so they stay together however long a show runs. start()/stop() on the owner's thread; nowUs()
// from any thread (one atomic).

#include "media/SteadyClock.h"

#include <QtGlobal>
#include <algorithm>
#include <atomic>

namespace selvane {

class ProgramClock
{
public:
    explicit ProgramClock(SteadyNow now = {}) : m_now(std::move(now)) {}

    void start() { m_startNs.store(nowNs() | 1); }
    void stop() { m_startNs.store(0); }
    bool isRunning() const { return m_startNs.load() != 0; }
    // 0 while stopped.
    qint64 nowUs() const
    {
        const qint64 start = m_startNs.load();
        return start == 0 ? 0 : std::max<qint64>(0, (nowNs() - start) / 1000);
    }

private:
    qint64 nowNs() const
    {
        return std::chrono::duration_cast<std::chrono::nanoseconds>(
                   steadyNow(m_now).time_since_epoch())
            .count();
    }

    SteadyNow m_now;
    std::atomic<qint64> m_startNs{0};
};

} // namespace selvane
