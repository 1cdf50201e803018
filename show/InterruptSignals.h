#pragma once

// SIGINT and SIGTERM (Ctrl+C and the console's close on Windows) as a Qt signal: the first one
// is delivered as interrupted() on the GUI thread (through a pipe, so the handler does nothing a
// signal handler may not); a second one ends the process at once after the hard-interrupt hook
// (the log's emergency flush). Both faces end their outputs cleanly on interrupted().
// Construct on the GUI thread.

#include <QObject>

class QSocketNotifier;

namespace selvane {

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
