#include "show/InterruptSignals.h"

#include <QMetaObject>
#include <QPointer>
#include <QSocketNotifier>
#include <atomic>

#ifdef _WIN32
#include <windows.h>
#else
#include <csignal>
#include <fcntl.h>
#include <unistd.h>
#endif

namespace selvane {

namespace {

void (*g_hardInterruptHook)() = nullptr;
std::atomic<int> g_interruptCount{0};

#ifdef _WIN32
QPointer<InterruptSignals> g_instance;
std::atomic<bool> g_finished{false};

// Windows runs console control handlers on a thread of their own: the first event is posted to
// the GUI thread; closing the console ends the process when the handler returns, so the handler
// gives the clean stop a few seconds first.
BOOL WINAPI onConsoleControl(DWORD event)
{
    if (g_interruptCount.fetch_add(1) > 0) {
        if (g_hardInterruptHook)
            g_hardInterruptHook();
        ExitProcess(130);
    }
    if (InterruptSignals *receiver = g_instance.data())
        QMetaObject::invokeMethod(receiver, &InterruptSignals::interrupted, Qt::QueuedConnection);
    if (event == CTRL_CLOSE_EVENT || event == CTRL_LOGOFF_EVENT || event == CTRL_SHUTDOWN_EVENT) {
        for (int waited = 0; waited < 4500 && !g_finished.load(); waited += 50)
            Sleep(50);
        if (g_hardInterruptHook)
            g_hardInterruptHook();
    }
    return TRUE;
}
#else
int g_interruptPipe[2] = {-1, -1};

extern "C" void onInterruptSignal(int signalNumber)
{
    if (g_interruptCount.fetch_add(1) > 0) {
        // The operator insists: end now, keeping what the log holds.
        if (g_hardInterruptHook)
            g_hardInterruptHook();
        std::signal(signalNumber, SIG_DFL);
        std::raise(signalNumber);
        return;
    }
    const char byte = 1;
    [[maybe_unused]] const ssize_t ignored = ::write(g_interruptPipe[1], &byte, 1);
}
#endif

} // namespace

InterruptSignals::InterruptSignals(QObject *parent) : QObject(parent)
{
#ifdef _WIN32
    g_instance = this;
    SetConsoleCtrlHandler(onConsoleControl, TRUE);
    connect(this, &QObject::destroyed, [] { g_finished.store(true); });
#else
    if (g_interruptPipe[0] < 0 && pipe2(g_interruptPipe, O_CLOEXEC | O_NONBLOCK) != 0)
        return;
    struct sigaction action
    {
    };
    action.sa_handler = onInterruptSignal;
    sigemptyset(&action.sa_mask);
    sigaction(SIGINT, &action, nullptr);
    sigaction(SIGTERM, &action, nullptr);
    m_notifier = new QSocketNotifier(g_interruptPipe[0], QSocketNotifier::Read, this);
    connect(m_notifier, &QSocketNotifier::activated, this, [this] {
        char buffer[16];
        while (::read(g_interruptPipe[0], buffer, sizeof buffer) > 0) {
        }
        emit interrupted();
    });
#endif
}

void InterruptSignals::setHardInterruptHook(void (*hook)())
{
    g_hardInterruptHook = hook;
}

} // namespace selvane
