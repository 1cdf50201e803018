#include "schedule/ScheduleIndex.h"

#include <algorithm>
#include <queue>

namespace selvane::schedule {

void BaseTimeline::build(const QList<SceneClip> &clips)
{
    m_spans.clear();
    const auto ended = [&](int place, qint64 t) {
        const qint64 end = clips[place].endMs;
        return end >= 1 && end <= t;
    };
    std::vector<qint64> edges; // where the winner may change
    edges.reserve(std::size_t(clips.size()) * 2);
    for (const SceneClip &clip : clips) {
        edges.push_back(clip.startMs);
        if (clip.endMs >= 1)
            edges.push_back(clip.endMs);
    }
    std::sort(edges.begin(), edges.end());
    edges.erase(std::unique(edges.begin(), edges.end()), edges.end());
    // Sweeping the edges in order: the clips started so far by place, the latest on top. One
    // that has ended leaves when it comes to the top (it never becomes due again).
    std::priority_queue<int> started;
    qsizetype next = 0;
    for (const qint64 edge : edges) {
        while (next < clips.size() && clips[next].startMs <= edge)
            started.push(int(next++));
        while (!started.empty() && ended(started.top(), edge))
            started.pop();
        const int winner = started.empty() ? -1 : started.top();
        if (m_spans.empty() ? winner >= 0 : m_spans.back().clip != winner)
            m_spans.push_back({edge, winner});
    }
}

int BaseTimeline::at(qint64 t, std::size_t &cursor) const
{
    const auto holds = [&](std::size_t span) {
        return m_spans[span].from <= t &&
               (span + 1 == m_spans.size() || t < m_spans[span + 1].from);
    };
    // Time mostly stays in the span found last or moves on to the next one.
    if (cursor < m_spans.size() && holds(cursor))
        return m_spans[cursor].clip;
    if (cursor + 1 < m_spans.size() && holds(cursor + 1))
        return m_spans[++cursor].clip;
    const auto after =
        std::upper_bound(m_spans.begin(), m_spans.end(), t,
                         [](qint64 time, const Span &span) { return time < span.from; });
    if (after == m_spans.begin())
        return -1; // before the first clip starts
    cursor = std::size_t(after - m_spans.begin()) - 1;
    return m_spans[cursor].clip;
}

qint64 BaseTimeline::nextChangeAfter(qint64 t) const
{
    const auto after =
        std::upper_bound(m_spans.begin(), m_spans.end(), t,
                         [](qint64 time, const Span &span) { return time < span.from; });
    return after == m_spans.end() ? -1 : after->from;
}

qint64 BaseTimeline::end() const
{
    return !m_spans.empty() && m_spans.back().clip < 0 ? m_spans.back().from : -1;
}

void OverlayTimeline::build(const QList<OverlayClip> &clips)
{
    m_starts.clear();
    m_ends.clear();
    m_startsPassed = m_endsPassed = 0;
    m_starts.reserve(std::size_t(clips.size()));
    for (qsizetype place = 0; place < clips.size(); ++place) {
        m_starts.push_back(clips[place].startMs);
        if (clips[place].endMs >= 1)
            m_ends.push_back({clips[place].endMs, int(place)});
    }
    std::stable_sort(m_ends.begin(), m_ends.end(),
                     [](const End &a, const End &b) { return a.at < b.at; });
}

void OverlayTimeline::moveTo(qint64 t, std::vector<int> &places)
{
    // A clip is on at a moment by whether it has started and whether it has ended: between two
    // moments that changes only for a clip that starts or ends in between.
    const std::size_t startsBefore = m_startsPassed, endsBefore = m_endsPassed;
    while (m_startsPassed < m_starts.size() && m_starts[m_startsPassed] <= t)
        ++m_startsPassed;
    while (m_startsPassed > 0 && m_starts[m_startsPassed - 1] > t)
        --m_startsPassed;
    while (m_endsPassed < m_ends.size() && m_ends[m_endsPassed].at <= t)
        ++m_endsPassed;
    while (m_endsPassed > 0 && m_ends[m_endsPassed - 1].at > t)
        --m_endsPassed;
    const int firstStart = int(std::min(startsBefore, m_startsPassed));
    const int pastStarts = int(std::max(startsBefore, m_startsPassed));
    // The clips that end in between and did not start in between started earlier: they come
    // first, in order of place (a clip that ends before it starts is never on and is left out).
    const auto mark = places.end() - places.begin();
    for (std::size_t end = std::min(endsBefore, m_endsPassed);
         end < std::max(endsBefore, m_endsPassed); ++end) {
        if (m_ends[end].clip < firstStart)
            places.push_back(m_ends[end].clip);
    }
    std::sort(places.begin() + mark, places.end());
    for (int place = firstStart; place < pastStarts; ++place)
        places.push_back(place);
}

} // namespace selvane::schedule
