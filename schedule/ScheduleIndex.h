#pragma once

// Finds the clips of a schedule that are due at a moment without walking every clip, so that a
// tick of a schedule of a week costs what a tick of two clips does. Both indexes are built once
// from the clips sorted by start (a clip's place is its position in that order). The base
// clips' answers in logarithmic time, and at once when time moved on by a tick; the overlays'
// costs what lies between the moment before and the next. Any thread; not shared.

#include "schedule/ProgramArrangement.h"

#include <cstddef>
#include <vector>

namespace selvane::schedule {

// The base clip due at every moment: among the clips that have started and not ended (an end
// below 1 never comes) the latest start wins, the later place among equal starts. The winner
// only changes where a clip starts or ends, so the whole timeline is worked out beforehand as a
// list of spans.
class BaseTimeline
{
public:
    void build(const QList<SceneClip> &sortedByStart);

    // The place of the clip due at `t`, or -1 for none. `cursor` keeps the span found last, for
    // the next question.
    int at(qint64 t, std::size_t &cursor) const;
    // The first moment after `t` where the clip due changes, or -1 when it never does again.
    qint64 nextChangeAfter(qint64 t) const;
    // Where the last clip ends and nothing is due any more, or -1 when the last one never ends.
    qint64 end() const;

private:
    struct Span
    {
        qint64 from = 0; // until the next span's start
        int clip = -1;
    };
    std::vector<Span> m_spans; // by start, each with a clip other than the one before it
};

// Which overlay clips may come on or go off when the schedule moves from one moment to another,
// in either direction: those that start or end in between. It keeps its place in the clips'
// starts and ends, so that a move costs what lies between the two moments.
class OverlayTimeline
{
public:
    // At a moment before every clip.
    void build(const QList<OverlayClip> &sortedByStart);

    // Moves to `t`, appending the places of the clips that start or end after the earlier of
    // the two moments and no later than the other, in order and each once.
    void moveTo(qint64 t, std::vector<int> &places);

    static bool isOn(const OverlayClip &clip, qint64 t)
    {
        return clip.startMs <= t && (clip.endMs < 1 || t < clip.endMs);
    }

private:
    struct End
    {
        qint64 at = 0;
        int clip = -1;
    };
    std::vector<qint64> m_starts; // by place
    std::vector<End> m_ends;      // the clips that end, by end
    // How many starts and ends there are up to the moment reached.
    std::size_t m_startsPassed = 0;
    std::size_t m_endsPassed = 0;
};

} // namespace selvane::schedule
