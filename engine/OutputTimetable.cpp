#include "engine/OutputTimetable.h"

#include <QDebug>
#include <QTimer>

namespace selvane {

OutputTimetable::OutputTimetable(Hooks hooks, QObject *parent)
    : QObject(parent), m_hooks(std::move(hooks))
{
    m_timer = new QTimer(this);
    m_timer->setTimerType(Qt::PreciseTimer);
    m_timer->setInterval(20);
    connect(m_timer, &QTimer::timeout, this, &OutputTimetable::check);
}

Problem OutputTimetable::setTimes(const OutputTimes &times)
{
    const QDateTime now = QDateTime::currentDateTime();
    for (const OutputMoment *moment : {&times.start, &times.stop})
        if (moment->kind == OutputMoment::Kind::Clock &&
            (!moment->at.isValid() || moment->at.msecsTo(now) > 1000))
            return {ProblemKind::OutputTimePassed, moment->at.toString(Qt::ISODate)};
    if (times.start.kind == OutputMoment::Kind::Clock &&
        times.stop.kind == OutputMoment::Kind::Clock && times.stop.at <= times.start.at)
        return ProblemKind::OutputStopBeforeStart;
    if (times.start.kind == OutputMoment::Kind::ScheduleEnd ||
        times.stop.kind == OutputMoment::Kind::Schedule)
        return ProblemKind::OutputStopBeforeStart; // the schedule's end is for stopping only
    m_times = times;
    if (!m_fromSchedule) {
        m_stretches.clear();
        if (times.start.kind != OutputMoment::Kind::ByHand ||
            times.stop.kind != OutputMoment::Kind::ByHand)
            m_stretches << Stretch{times.start, times.stop};
        m_index = 0;
        if (m_phase == Phase::Opening || m_phase == Phase::Ending)
            qInfo() << "Output times changed while the outputs open or close: the new times"
                    << "apply from the next start";
        m_phase = Phase::Waiting;
        rearm();
        check();
    }
    return {};
}

bool OutputTimetable::isPlanned() const
{
    return m_index < m_stretches.size();
}

void OutputTimetable::scheduleStarted(const QList<OutputSpan> &spans)
{
    if (!spans.isEmpty()) {
        m_stretches.clear();
        for (const OutputSpan &span : spans) {
            Stretch stretch;
            stretch.start = {OutputMoment::Kind::Schedule, span.startMs, {}};
            stretch.stop = span.endMs > 0
                               ? OutputMoment{OutputMoment::Kind::Schedule, span.endMs, {}}
                               : OutputMoment{OutputMoment::Kind::ScheduleEnd, 0, {}};
            m_stretches << stretch;
        }
        m_fromSchedule = true;
        m_index = 0;
        m_phase = Phase::Waiting;
    } else if (m_index >= m_stretches.size() && !m_stretches.isEmpty() &&
               (m_times.start.kind == OutputMoment::Kind::Schedule ||
                m_times.stop.kind == OutputMoment::Kind::ScheduleEnd)) {
        // The operator's times on the schedule hold for every run of it.
        m_index = 0;
        m_phase = Phase::Waiting;
    }
    rearm();
    check();
}

void OutputTimetable::scheduleStopped()
{
    const bool running = m_phase != Phase::Waiting && m_index < m_stretches.size();
    const bool endsWithSchedule =
        running &&
        (m_fromSchedule || m_stretches[m_index].stop.kind == OutputMoment::Kind::ScheduleEnd);
    if (endsWithSchedule && !m_stopAsked) {
        qInfo() << "The schedule stopped: so do the outputs it started";
        m_stopAsked = true;
        m_hooks.stop();
    }
    if (m_fromSchedule) {
        // Back to the operator's times.
        m_fromSchedule = false;
        m_stretches.clear();
        if (m_times.start.kind != OutputMoment::Kind::ByHand ||
            m_times.stop.kind != OutputMoment::Kind::ByHand)
            m_stretches << Stretch{m_times.start, m_times.stop};
        m_index = 0;
        m_phase = Phase::Waiting;
    } else if (endsWithSchedule) {
        nextStretch();
    }
    rearm();
}

void OutputTimetable::outputsStopped()
{
    m_stopAsked = false;
    if (m_phase != Phase::Waiting && m_index < m_stretches.size()) {
        if (m_phase != Phase::Ending)
            qInfo() << "The outputs stopped before their time: their stretch is over";
        nextStretch();
    }
    rearm();
}

void OutputTimetable::nextStretch()
{
    ++m_index;
    m_phase = Phase::Waiting;
    m_onSchedule = false;
}

void OutputTimetable::rearm()
{
    if (isPlanned())
        m_timer->start();
    else
        m_timer->stop();
}

std::optional<qint64> OutputTimetable::msUntil(const OutputMoment &moment) const
{
    switch (moment.kind) {
    case OutputMoment::Kind::ByHand:
        return std::nullopt;
    case OutputMoment::Kind::Schedule: {
        const qint64 now = m_hooks.scheduleNowMs();
        return now < 0 ? std::nullopt : std::optional<qint64>(moment.scheduleMs - now);
    }
    case OutputMoment::Kind::ScheduleEnd: {
        const qint64 now = m_hooks.scheduleNowMs(), end = m_hooks.scheduleEndMs();
        return now < 0 || end < 0 ? std::nullopt : std::optional<qint64>(end - now);
    }
    case OutputMoment::Kind::Clock:
        return QDateTime::currentDateTime().msecsTo(moment.at);
    }
    return std::nullopt;
}

qint64 OutputTimetable::msUntilStart() const
{
    if (m_phase != Phase::Waiting || m_index >= m_stretches.size())
        return -1;
    return std::max<qint64>(0, msUntil(m_stretches[m_index].start).value_or(-1));
}

qint64 OutputTimetable::msUntilStop() const
{
    if (m_phase == Phase::Waiting || m_index >= m_stretches.size())
        return -1;
    const std::optional<qint64> until = msUntil(m_stretches[m_index].stop);
    return until ? std::max<qint64>(0, *until) : -1;
}

void OutputTimetable::check()
{
    if (m_index >= m_stretches.size()) {
        rearm();
        return;
    }
    const Stretch &stretch = m_stretches[m_index];
    const qint64 nowUs = m_hooks.programNowUs();
    switch (m_phase) {
    case Phase::Waiting: {
        const std::optional<qint64> stopIn = msUntil(stretch.stop);
        if (stopIn && *stopIn <= 0 && !m_hooks.running()) {
            qInfo() << "Outputs: a stretch whose stop has passed is left out";
            nextStretch();
            return;
        }
        if (m_stopAsked || m_hooks.stopping())
            return; // the outputs of the stretch before are still closing
        if (m_hooks.running() || m_hooks.opening()) {
            // Started by hand: this stretch's now, to stop at its time. A start by hand
            // before a start of the schedule's is as good as that start.
            if (stretch.start.kind == OutputMoment::Kind::ByHand ||
                msUntil(stretch.start).value_or(kOpenAheadMs + 1) <= kOpenAheadMs) {
                m_phase = m_hooks.running() ? Phase::Running : Phase::Opening;
                m_onSchedule = false;
            }
            return;
        }
        const std::optional<qint64> startIn = msUntil(stretch.start);
        if (!startIn || *startIn > kOpenAheadMs)
            return;
        if (*startIn < -1000)
            qWarning().noquote() << "Outputs start" << -*startIn / 1000
                                 << "s after their time: the time came while they could not";
        // Only a start at the schedule's own start makes the recording's zero the schedule's;
        // any other (late or not) leaves the running schedule's clock alone.
        m_onSchedule = stretch.start.kind != OutputMoment::Kind::Schedule ||
                       stretch.start.scheduleMs > 0;
        if (const Problem problem = m_hooks.start(nowUs + std::max<qint64>(0, *startIn) * 1000)) {
            nextStretch();
            emit startFailed(problem);
            return;
        }
        qInfo().noquote() << "Outputs open for their start in" << std::max<qint64>(0, *startIn)
                          << "ms";
        m_phase = Phase::Opening;
        return;
    }
    case Phase::Opening:
        if (m_hooks.running())
            m_phase = Phase::Running;
        else if (!m_hooks.opening())
            nextStretch(); // they failed to open, and said so
        return;
    case Phase::Running: {
        const std::optional<qint64> stopIn = msUntil(stretch.stop);
        if (!stopIn || *stopIn > kEndAheadMs)
            return;
        m_endUs = nowUs + std::max<qint64>(0, *stopIn) * 1000;
        m_hooks.endAt(m_endUs);
        m_phase = Phase::Ending;
        return;
    }
    case Phase::Ending:
        // The last frame is before m_endUs; a tick more and every picture up to it is out.
        if (nowUs >= m_endUs + 50000 && !m_stopAsked) {
            qInfo() << "Outputs stop at their time";
            m_stopAsked = true;
            m_hooks.stop();
        }
        return;
    }
}

} // namespace selvane
