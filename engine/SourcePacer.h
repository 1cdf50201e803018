#pragma once

// One source on the program's ticks: which of its pictures is on air at each tick, and where its
// times sit on the program clock (the mapping that the mixer reads for the source's sound).
//
// A picture is on air from the tick nearest to its time. A source's times are put on the clock
// so that its pictures fall midway between two decisions, never on the edge between two ticks:
// a source as fast as the program then shows each picture for exactly one tick however its
// timestamps are rounded, and a slower or faster one repeats or skips in an even pattern. A
// faster source shows the picture nearest each tick. Times are read through the source's
// cadence (PictureCadence), so that rounding and jitter never flip a picture between ticks.
//
// Mapping: a source's first picture of a timeline goes on the tick it is taken at (a live
// source a jitter margin later, on a tick); a source that falls too far behind is put on again
// where it is, and a live source whose delivered edge runs too far ahead, or too close, is moved.
//
// Program thread only (value type owned by the ProgramSwitcher); reads and pops the feed's
// pictures and publishes its mapping.

#include "engine/PictureCadence.h"
#include "media/SourceFeeds.h"

namespace selvane {

class SourcePacer
{
public:
    // A live source's pictures go on air this long after they arrive (jitter margin) at first;
    // each time the source runs dry the margin doubles, up to its limit, so that a source that
    // arrives steadily adds little delay and one that comes in bursts gets what it needs.
    static constexpr qint64 kLiveLatencyUs = 50'000;
    static constexpr qint64 kLiveMaxLatencyUs = 800'000;
    static_assert(kLiveMaxLatencyUs < SourceFeed::kLiveQueueSpanUs,
                  "a live source's queue holds its longest margin");
    // A live source whose delivered edge (the newest instant with both sound and picture)
    // comes this close to the program time gets more margin; one this far ahead is brought
    // closer.
    static constexpr qint64 kLiveStarvingUs = 20'000;
    static constexpr qint64 kLiveAheadLimitUs = 1'000'000;
    // Sound that ended this long before the newest picture no longer counts for the edge.
    static constexpr qint64 kSoundGoneUs = 2'000'000;
    // A picture this late puts its source on the program clock again.
    static constexpr qint64 kLateLimitUs = 250'000;

    // Takes what is due at the tick at `programUs` (ticks `periodUs` apart).
    void advance(SourceFeed &feed, qint64 programUs, qint64 periodUs);
    // Forget the source (the slot serves another overlay).
    void reset() { *this = SourcePacer(); }

    // The picture on air after the last advance(); empty before the first.
    const FrameTokenPtr &current() const { return m_current; }
    qint64 skipped() const { return m_skipped; }     // pictures never shown: a newer one was due
    qint64 repeated() const { return m_repeated; }   // ticks with no newer picture due
    qint64 reanchors() const { return m_reanchors; } // times put on the program clock again

private:
    static qint64 liveEdgeUs(SourceFeed &feed, quint64 timeline, qint64 videoEdgeUs);
    // `offsetUs` moved later (by less than a period) so that a picture of source time
    // `referenceUs` lands on a tick.
    static qint64 onTick(qint64 offsetUs, qint64 referenceUs, qint64 programUs, qint64 periodUs);

    SourceMapping m_mapping;
    FrameTokenPtr m_current;
    PictureCadence m_cadence;
    quint64 m_generation = 0; // the feed's source the state belongs to
    qint64 m_marginUs = kLiveLatencyUs;
    qint64 m_skipped = 0;
    qint64 m_repeated = 0;
    qint64 m_reanchors = 0;
};

} // namespace selvane
