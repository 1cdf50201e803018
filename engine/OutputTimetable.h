#pragma once

// When the outputs start and stop by themselves: the operator's times (a date-time, or the
// schedule's start and end), or the stretches a running schedule names for them, which stand in
// for the operator's times while it runs. It looks at the time every 20 ms while something is
// due, opens the outputs two seconds ahead of their start so that they begin on the frame of
// their time (opening takes a while), and has them take their last frame at their stop.
//
// Outputs the operator starts by hand before a start are taken as that start's; outputs the
// operator stops by hand end the stretch they were in. A start that fails is reported and its
// stretch is given up; the next one is tried at its time.
//
// Threads: the GUI thread; every method and every hook is called there, startFailed is emitted
// there.

#include "engine/EngineTypes.h"
#include "engine/Problem.h"

#include <QList>
#include <QObject>
#include <functional>
#include <optional>

class QTimer;

namespace selvane {

class OutputTimetable : public QObject
{
    Q_OBJECT

public:
    // What it needs of the engine.
    struct Hooks
    {
        std::function<qint64()> scheduleNowMs; // the running schedule's time, -1 when none runs
        std::function<qint64()> scheduleEndMs; // where its last clip ends, -1 when never
        std::function<qint64()> programNowUs;
        // Opens the outputs to begin at `beginUs` in program time (at once when it has passed).
        std::function<Problem(qint64 beginUs)> start;
        // Their last frame comes before `endUs` in program time.
        std::function<void(qint64 endUs)> endAt;
        std::function<void()> stop;
        std::function<bool()> opening; // asked to start, not running yet
        std::function<bool()> running;
        std::function<bool()> stopping;
    };

    static constexpr qint64 kOpenAheadMs = 2000;
    static constexpr qint64 kEndAheadMs = 200;

    OutputTimetable(Hooks hooks, QObject *parent = nullptr);

    // The operator's times; a problem when they cannot work (a date-time that has passed, a
    // stop before the start) and the times stay as they were.
    Problem setTimes(const OutputTimes &times);
    OutputTimes times() const { return m_times; }
    // Whether any start or stop is set, the operator's or a schedule's.
    bool isPlanned() const;

    // A schedule started, with its stretches for the outputs (none: the operator's times hold,
    // those on the schedule counting from this start), or stopped.
    void scheduleStarted(const QList<OutputSpan> &spans);
    void scheduleStopped();
    // The outputs stopped, whoever stopped them.
    void outputsStopped();

    // Whether the outputs running now were started by a time other than the schedule's start
    // (then a running schedule keeps its clock: restarting it would play it again).
    bool keepsScheduleClock() const { return m_phase != Phase::Waiting && m_onSchedule; }

    // How long until the next start, or until the running stretch stops; -1 when none is due.
    qint64 msUntilStart() const;
    qint64 msUntilStop() const;

signals:
    void startFailed(selvane::Problem problem);

private:
    struct Stretch
    {
        OutputMoment start;
        OutputMoment stop;
    };
    enum class Phase
    {
        Waiting, // for the stretch's start
        Opening, // asked the outputs to start
        Running, // until the stretch's stop
        Ending,  // its last frame is set; stop once it has passed
    };

    // How far away `moment` is, or none when it cannot be told (by hand, no schedule).
    std::optional<qint64> msUntil(const OutputMoment &moment) const;
    void check();
    void nextStretch();
    void rearm();

    Hooks m_hooks;
    OutputTimes m_times;
    QList<Stretch> m_stretches;  // the operator's times, or the running schedule's
    bool m_fromSchedule = false; // the stretches are the schedule's
    int m_index = 0;
    Phase m_phase = Phase::Waiting;
    bool m_onSchedule = false; // opened by a time other than the schedule's start
    bool m_stopAsked = false; // the timetable stopped the outputs; they are closing
    qint64 m_endUs = 0;
    QTimer *m_timer = nullptr;
};

} // namespace selvane
