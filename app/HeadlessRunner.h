#pragma once

// The headless face: runs the engine without a window for unattended playout, tests and
// benchmarks. Prints one progress line about once a second to stdout (never to the log file).
// Ctrl+C (SIGINT/SIGTERM) ends the run cleanly; a second one ends the process at once.
// GUI thread only.

#include "app/CommandLine.h"
#include "schedule/ProgramArrangement.h"

#include <QElapsedTimer>
#include <QObject>
#include <QStringList>

class EngineProgramControl;
class Engine;
class QSocketNotifier;
class QTemporaryDir;
class ScheduleRunner;
class QTimer;

class HeadlessRunner : public QObject
{
    Q_OBJECT

public:
    explicit HeadlessRunner(const selvane::HeadlessOptions &options, QObject *parent = nullptr);
    ~HeadlessRunner() override;

    // Runs until the duration has passed or an interrupt arrives; returns the exit code.
    int run();

private:
    void printProgress(bool final);
    void installInterruptHandler();
    void startOutputs();
    bool startSchedule();
    void finish();

    selvane::HeadlessOptions m_options;
    Engine *m_engine = nullptr;
    QTimer *m_progressTimer = nullptr;
    QSocketNotifier *m_interruptNotifier = nullptr;
    QElapsedTimer m_clock;
    qint64 m_programFrames = 0;
    qint64 m_framesAtLastLine = 0;
    qint64 m_msAtLastLine = 0;
    qint64 m_bytesAtLastLine = 0;
    bool m_outputsStarted = false;
    EngineProgramControl *m_control = nullptr;
    ScheduleRunner *m_schedule = nullptr;
    QTemporaryDir *m_demoFolder = nullptr;
    ProgramArrangement m_arrangement;
    bool m_finishing = false;
    QStringList m_targetStatus;
    int m_exitCode = 0;
};
