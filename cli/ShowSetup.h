#pragma once

// What both faces do with the show options of the command line: read the schedule file, put the
// channels, overlays and volumes on the engine, and turn SIGINT/SIGTERM into a clean stop.
// GUI thread only.

#include "cli/CommandLine.h"

#include <QObject>
#include <QStringList>

class QSocketNotifier;

namespace selvane {

class ControlServer;
class Engine;

// Reads a schedule file; false with the operator's reason. Warnings are for the operator too.
bool readScheduleFile(const QString &path, ProgramArrangement *arrangement, QString *error,
                      QStringList *warnings);

// Volumes, the output size, overlays, the base channel and every channel's source (looping).
void applyShowOptions(Engine &engine, const HeadlessOptions &options);

// The window's remote control: --control-port and --control-bind of the command line (kept by
// setWindowControlOptions before the window is made), else the "control/port" (0: off) and
// "control/bind" settings. The start-up line goes to stdout and the log; a port that cannot be
// had is told there too and the window goes on without it. Null when off.
void setWindowControlOptions(const HeadlessOptions &show);
ControlServer *startWindowControl(Engine &engine, QObject *parent);

// The first SIGINT or SIGTERM is delivered as interrupted() on the GUI thread (through a pipe,
// so the handler does nothing a signal handler may not); a second one ends the process at once
// after the hard-interrupt hook (the log's emergency flush).
class InterruptSignals : public QObject
{
    Q_OBJECT

public:
    explicit InterruptSignals(QObject *parent = nullptr);
    // Must not wait on locks: it runs inside the signal handler.
    static void setHardInterruptHook(void (*hook)());

signals:
    void interrupted();

private:
    QSocketNotifier *m_notifier = nullptr;
};

} // namespace selvane
