#include "cli/ShowSetup.h"

#include "engine/Engine.h"

#include <QCoreApplication>
#include <QFile>
#include <QSocketNotifier>
#include <atomic>

#ifndef _WIN32
#include <csignal>
#include <fcntl.h>
#include <unistd.h>
#endif

namespace selvane {

namespace {

void (*g_hardInterruptHook)() = nullptr;

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
