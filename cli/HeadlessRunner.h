#pragma once

// The headless face: runs the engine without a window for unattended playout, tests and
// benchmarks, through the Engine API alone. Prints one progress line about once a second to
// stdout (never to the log file). Ctrl+C (SIGINT/SIGTERM) ends the run cleanly; a second one
// ends the process at once, after the hook given to setHardInterruptHook (the log's emergency
// flush). With --control-port the remote control drives the same engine; outputs it starts
// may fail without ending the run. GUI thread only.

#include "cli/CommandLine.h"

#include <QElapsedTimer>
#include <QMap>
#include <QObject>

class QTemporaryDir;
class QTimer;

namespace selvane {
class ControlServer;
class Engine;
} // namespace selvane

class HeadlessRunner : public QObject
{
    Q_OBJECT

public:
    explicit HeadlessRunner(const selvane::ShowOptions &options, QObject *parent = nullptr);
    ~HeadlessRunner() override;

    // Runs until the duration has passed or an interrupt arrives; returns the exit code.
    int run();

private:
    void printProgress(bool final);
    bool loadSchedule();
    bool startControl();
    void finish();

    selvane::ShowOptions m_options;
    selvane::Engine *m_engine = nullptr;
    selvane::ControlServer *m_control = nullptr; // --control-port
    bool m_scheduleTimesOutputs = false;         // the schedule says when the outputs run
    bool m_timedOutputs = false;                 // the outputs wait for a start time
    bool m_commandLineOutputsPending = false;    // the outputs of the command line, not yet open
    QTimer *m_progressTimer = nullptr;
    QElapsedTimer m_clock;
    qint64 m_framesAtLastLine = 0;
    qint64 m_msAtLastLine = 0;
    qint64 m_bytesAtLastLine = 0;
    QTemporaryDir *m_demoFolder = nullptr;
    bool m_scheduled = false;
    bool m_finishing = false;
    int m_exitCode = 0;
    // The recording's and its twin's failures: at some point of the run, why, how often a new
    // file was begun, whether it was failing at the end, and the file written last.
    struct FileFailure
    {
        bool failed = false;
        QString reason;
        int resumes = 0;
        bool failedAtEnd = false;
        QString path;
    };
    FileFailure m_recordingFailure;
    FileFailure m_twinFailure;
    QMap<int, QString> m_unopened; // channel number: why its source never opened
};
