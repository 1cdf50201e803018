#include "engine/PictureCadence.h"

#include <cmath>
#include <cstdlib>

namespace selvane {

qint64 PictureCadence::steadyUs(qint64 ptsUs) const
{
    if (!m_hasLast || m_intervalUs <= 0)
        return ptsUs;
    const double expected = double(m_lastSteadyUs) + m_intervalUs;
    const double error = double(ptsUs) - expected;
    if (std::abs(error) > m_intervalUs / 4)
        return ptsUs; // off the rhythm: taken as it comes
    // An eighth of the error is followed, so that the rhythm keeps to the source's clock while
    // each picture's rounding moves it by an eighth at most.
    return std::llround(expected + error / 8);
}

void PictureCadence::taken(qint64 ptsUs)
{
    const qint64 steady = steadyUs(ptsUs);
    if (m_hasLast) {
        const double interval = double(ptsUs - m_lastRawUs);
        if (interval > 0 && interval < double(kLongestIntervalUs)) {
            if (m_intervalUs <= 0) {
                m_intervalUs = interval;
            } else if (std::abs(interval - m_intervalUs) <= m_intervalUs / 4) {
                m_intervalUs += (interval - m_intervalUs) / 32;
                m_misses = 0;
            } else if (++m_misses >= kMissesForNewRate) {
                m_intervalUs = interval;
                m_misses = 0;
            }
        }
    }
    m_hasLast = true;
    m_lastRawUs = ptsUs;
    m_lastSteadyUs = steady;
}

} // namespace selvane
