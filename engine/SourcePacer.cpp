#include "engine/SourcePacer.h"

#include <algorithm>

namespace selvane {

qint64 SourcePacer::liveEdgeUs(SourceFeed &feed, quint64 timeline, qint64 videoEdgeUs)
{
    // Everything up to the edge has arrived, sound and picture alike; sound that stopped
    // coming long ago (a source without sound from here on) no longer holds the edge back.
    qint64 audioEndUs = 0;
    quint64 audioTimeline = 0;
    if (feed.sound().end(&audioEndUs, &audioTimeline) && audioTimeline == timeline &&
        audioEndUs > videoEdgeUs - kSoundGoneUs)
        return std::min(videoEdgeUs, audioEndUs);
    return videoEdgeUs;
}

qint64 SourcePacer::onTick(qint64 offsetUs, qint64 referenceUs, qint64 programUs, qint64 periodUs)
{
    if (periodUs <= 0)
        return offsetUs;
    const qint64 past = (referenceUs + offsetUs - programUs) % periodUs;
    return past == 0 ? offsetUs : offsetUs + (past > 0 ? periodUs - past : -past);
}

void SourcePacer::advance(SourceFeed &feed, qint64 programUs, qint64 periodUs)
{
    if (feed.generation() != m_generation) {
        // Another source: its predecessor's picture and mapping no longer belong to it.
        m_generation = feed.generation();
        m_mapping = {};
        m_current = {};
        m_marginUs = kLiveLatencyUs;
        m_cadence.reset();
    }
    FrameQueue &frames = feed.frames();
    const bool live = feed.isLive();
    // A file goes on air at this tick. A live source goes on air a jitter margin after the
    // newest instant it has delivered in full (what was queued before came in a burst and is
    // passed over), on a tick.
    const auto joinOffset = [&](const FrameTokenPtr &front) {
        const qint64 frontUs = m_cadence.steadyUs(front->ptsUs);
        if (!live)
            return programUs - frontUs;
        const FrameTokenPtr back = frames.back();
        const qint64 newest =
            back && back->timeline == front->timeline ? back->ptsUs : front->ptsUs;
        return onTick(programUs + m_marginUs - liveEdgeUs(feed, front->timeline, newest), frontUs,
                      programUs, periodUs);
    };
    // A picture is on air from the tick nearest to its time; of a faster source, the picture
    // nearest to the tick.
    const qint64 intervalUs = m_cadence.intervalUs();
    const qint64 windowUs = intervalUs > 0 ? std::min(periodUs, intervalUs) / 2 : periodUs / 2;
    bool moved = false;
    bool joining = false;
    int taken = 0;
    for (;;) {
        const FrameTokenPtr front = frames.front();
        if (!front)
            break;
        if (m_mapping.anchored && front->timeline < m_mapping.timeline) {
            frames.pop(); // a picture of an earlier timeline (before a seek or a new source)
            continue;
        }
        if (!m_mapping.anchored || front->timeline > m_mapping.timeline) {
            // A new timeline starts with this picture: it goes on air now.
            m_cadence.reset();
            m_mapping = {true, front->timeline, joinOffset(front)};
            moved = joining = true;
        }
        const qint64 due = m_cadence.steadyUs(front->ptsUs) + m_mapping.offsetUs;
        if (due > programUs + windowUs)
            break;
        if (!joining && programUs - due > kLateLimitUs) {
            // The source fell behind: it goes on from here, sound and picture alike.
            m_mapping.offsetUs = joinOffset(front);
            ++m_reanchors;
            moved = joining = true;
            continue;
        }
        if (taken > 0)
            ++m_skipped; // a newer picture is due as well: the older one is never shown
        m_cadence.taken(front->ptsUs);
        m_current = frames.pop();
        ++taken;
    }
    if (taken == 0 && m_current)
        ++m_repeated;
    // The newest picture delivered: the queue's last, or the one on air when the queue ran
    // empty (a picture that comes late leaves it so, and the margin must grow for it).
    FrameTokenPtr back = frames.back();
    if (!back)
        back = m_current;
    if (live && !joining && m_mapping.anchored && back && back->timeline == m_mapping.timeline) {
        // A live source's edge stays between "just in time" and its ahead limit: sound that
        // comes later than its pictures (transport streams mux it in bursts) makes room for
        // itself, and a burst after a stall is caught up. Its pictures stay on their ticks.
        const qint64 edgeUs = liveEdgeUs(feed, back->timeline, back->ptsUs);
        const qint64 aheadUs = edgeUs + m_mapping.offsetUs - programUs;
        if (aheadUs < kLiveStarvingUs || aheadUs > kLiveAheadLimitUs) {
            if (aheadUs < kLiveStarvingUs)
                m_marginUs = std::min(2 * m_marginUs, kLiveMaxLatencyUs);
            const qint64 referenceUs = m_cadence.hasLast() ? m_cadence.lastSteadyUs() : back->ptsUs;
            m_mapping.offsetUs =
                onTick(programUs + m_marginUs - edgeUs, referenceUs, programUs, periodUs);
            ++m_reanchors;
            moved = true;
        }
    }
    if (moved)
        feed.setMapping(m_mapping);
}

} // namespace selvane
