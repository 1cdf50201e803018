#pragma once

// The steady rhythm of one source's pictures. Timestamps come rounded (FLV keeps milliseconds,
// so 30 fps arrives as 0, 33, 67, 100 ms) or jittered by the sender's clock; a picture that
// lands within a quarter of a frame of where the source's own rhythm puts it is scheduled at the
// rhythm's time, so that rounding never moves it from one program tick to the next. The rhythm
// follows the source: its interval is averaged over the pictures taken, and a time that does
// not fit (a gap, a jump, another rate) starts it again from that picture.
//
// Value type, program thread only.

#include <QtGlobal>

namespace selvane {

class PictureCadence
{
public:
    // Forget the rhythm (a new source or timeline).
    void reset() { *this = PictureCadence(); }
    // Where the rhythm puts a picture of source time `ptsUs` that follows the last one taken.
    // The same answer however often it is asked, until the next taken().
    qint64 steadyUs(qint64 ptsUs) const;
    // The picture of source time `ptsUs` was taken: the rhythm moves on to it.
    void taken(qint64 ptsUs);
    // The averaged interval between pictures; 0 until two pictures were taken.
    qint64 intervalUs() const { return m_intervalUs > 0 ? qint64(m_intervalUs + 0.5) : 0; }
    // The rhythm time of the last picture taken (valid once one was taken).
    qint64 lastSteadyUs() const { return m_lastSteadyUs; }
    bool hasLast() const { return m_hasLast; }

private:
    // An interval this long is a gap in the source, not its rhythm.
    static constexpr qint64 kLongestIntervalUs = 250'000;
    // Intervals that disagree with the average this many times in a row are a new rate.
    static constexpr int kMissesForNewRate = 3;

    bool m_hasLast = false;
    qint64 m_lastRawUs = 0;
    qint64 m_lastSteadyUs = 0;
    double m_intervalUs = 0.0;
    int m_misses = 0;
};

} // namespace selvane
