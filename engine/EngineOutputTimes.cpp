// The engine's outputs starting and stopping by themselves: the timetable wired to the outputs,
// the program clock and the schedule.

#include "engine/Engine.h"
#include "engine/OutputSession.h"
#include "engine/OutputTimetable.h"
#include "schedule/ScheduleRunner.h"

#include <QDebug>

namespace selvane {

void Engine::setUpOutputTimes()
{
    OutputTimetable::Hooks hooks;
    hooks.scheduleNowMs = [this] {
        return m_schedule->isRunning() ? m_schedule->clock().msNow() : qint64(-1);
    };
    hooks.scheduleEndMs = [this] {
        return m_schedule->endMs();
    };
    hooks.programNowUs = [this] {
        return m_programClock.nowUs();
    };
    hooks.start = [this](qint64 beginUs) {
        const Problem problem = startOutputs(m_preparedOutputs);
        if (!problem)
            m_pendingBeginUs = beginUs;
        return problem;
    };
    hooks.endAt = [this](qint64 endUs) {
        m_output->endAt(endUs);
    };
    hooks.stop = [this] {
        stopOutputs();
    };
    hooks.opening = [this] {
        const bool starting =
            m_output->isActive() && !m_output->isRunning() && !m_output->isStopping();
        return m_pendingOutputs.has_value() || starting;
    };
    hooks.running = [this] {
        return m_output->isRunning();
    };
    hooks.stopping = [this] {
        return m_output->isStopping();
    };
    m_timetable = new OutputTimetable(std::move(hooks), this);
    connect(m_timetable, &OutputTimetable::startFailed, this, [this](const Problem &problem) {
        qWarning().noquote() << "Outputs could not start at their time:" << problemText(problem);
        emit outputsFailed(problem);
    });
    connect(this, &Engine::outputsStopped, m_timetable, &OutputTimetable::outputsStopped);
    connect(m_schedule, &ScheduleRunner::programArrangementRunningChanged, this,
            [this](bool running) {
                if (running)
                    m_timetable->scheduleStarted(m_arrangement.outputs);
                else
                    m_timetable->scheduleStopped();
            });
}

Problem Engine::setOutputTimes(const OutputTimes &times)
{
    return m_timetable->setTimes(times);
}

OutputTimes Engine::outputTimes() const
{
    return m_timetable->times();
}

bool Engine::outputTimesPlanned() const
{
    return m_timetable->isPlanned();
}

} // namespace selvane
