#include "cli/ShowSetup.h"

#include "control/ControlServer.h"
#include "engine/Engine.h"

#include <QCoreApplication>
#include <QDebug>
#include <QFile>
#include <QHostAddress>
#include <QSettings>
#include <QSocketNotifier>
#include <atomic>
#include <cstdio>

#ifndef _WIN32
#include <csignal>
#include <fcntl.h>
#include <unistd.h>
#endif

namespace selvane {

namespace {

void (*g_hardInterruptHook)() = nullptr;

HeadlessOptions g_windowControl;

#ifndef _WIN32
int g_interruptPipe[2] = {-1, -1};
std::atomic<int> g_interruptCount{0};

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

bool readScheduleFile(const QString &path, ProgramArrangement *arrangement, QString *error,
                      QStringList *warnings)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) {
        *error = QCoreApplication::translate("selvane", "Unable to open the file. %1").arg(path);
        return false;
    }
    *arrangement = arrangement::fromJson(file.readAll(), error, warnings);
    if (!error->isEmpty())
        *error = path + ": " + *error; // where, then what
    return error->isEmpty();
}

void applyShowOptions(Engine &engine, const HeadlessOptions &options)
{
    for (auto it = options.channelVolumes.cbegin(); it != options.channelVolumes.cend(); ++it)
        engine.setChannelVolume(it.key(), float(it.value()));
    engine.setProgramVolume(float(options.programVolume));
    engine.setProgramGain(float(options.programGainPercent / 100.0));
    engine.setOutputSize({options.outputSize.isValid(), options.outputSize});
    for (const TextOverlayData &text : options.texts)
        engine.setTextOverlay(text);
    for (const MediaOverlayRecord &record : options.media)
        engine.setMediaOverlay(record);
    engine.cutTo(options.baseChannel);
    for (auto it = options.channels.cbegin(); it != options.channels.cend(); ++it) {
        engine.setChannelLoop(it.key(), true);
        engine.setChannelSource(it.key(), it.value(), options.microphones.value(it.key()));
    }
}

void setWindowControlOptions(const HeadlessOptions &show)
{
    g_windowControl.controlPort = show.controlPort;
    g_windowControl.controlBind = show.controlBind;
    g_windowControl.output = show.output;
    g_windowControl.outputSize = show.outputSize;
}

ControlServer *startWindowControl(Engine &engine, QObject *parent)
{
    const QSettings settings("Ostrel", "Selvane");
    int port = g_windowControl.controlPort;
    QString bind = g_windowControl.controlBind;
    if (port == 0) {
        port = settings.value("control/port", 0).toInt();
        if (bind.isEmpty())
            bind = settings.value("control/bind").toString().trimmed();
    }
    if (port <= 0 || port > 65535)
        return nullptr;
    const QHostAddress address(bind.isEmpty() ? QStringLiteral("127.0.0.1") : bind);
    auto *control = new ControlServer(&engine, parent);
    control->setOutputDefaults(
        {g_windowControl.output,
         {g_windowControl.outputSize.isValid(), g_windowControl.outputSize}});
    QString error;
    if (address.isNull() || !control->listen(address, quint16(port), &error)) {
        if (address.isNull())
            error = QStringLiteral("\"%1\" is not an IP address").arg(bind);
        std::fprintf(stderr, "selvane: control: %s\n", qPrintable(error));
        qWarning().noquote() << "ControlServer:" << error;
        delete control;
        return nullptr;
    }
    std::fprintf(stdout, "%s\n", qPrintable(control->startLine()));
    std::fflush(stdout);
    qInfo().noquote() << "ControlServer:" << control->startLine();
    return control;
}

InterruptSignals::InterruptSignals(QObject *parent) : QObject(parent)
{
#ifndef _WIN32
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
