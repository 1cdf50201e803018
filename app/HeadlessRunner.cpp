#include "app/HeadlessRunner.h"

#include "app/Engine.h"
#include "app/LogSink.h"
#include "compose/FramePipeline.h"
#include "input/FFmpegVideoDecoder.h"

#include <QCoreApplication>
#include <QDebug>
#include <QSocketNotifier>
#include <QTimer>

#include <atomic>
#include <cstdio>

#ifndef _WIN32
#include <csignal>
#include <fcntl.h>
#include <unistd.h>
#endif

namespace {

#ifndef _WIN32
int g_interruptPipe[2] = {-1, -1};
std::atomic<int> g_interruptCount{0};

extern "C" void onInterruptSignal(int signalNumber)
{
    if (g_interruptCount.fetch_add(1) > 0) {
        // The operator insists: end now, keeping what the log holds.
        selvane::emergencyFlush();
        std::signal(signalNumber, SIG_DFL);
        std::raise(signalNumber);
        return;
    }
    const char byte = 1;
    [[maybe_unused]] const ssize_t ignored = ::write(g_interruptPipe[1], &byte, 1);
}
#endif

QString clockText(qint64 ms)
{
    return QStringLiteral("%1:%2:%3.%4")
        .arg(ms / 3600000, 2, 10, QLatin1Char('0'))
        .arg(ms / 60000 % 60, 2, 10, QLatin1Char('0'))
        .arg(ms / 1000 % 60, 2, 10, QLatin1Char('0'))
        .arg(ms / 100 % 10);
}

} // namespace

HeadlessRunner::HeadlessRunner(const selvane::HeadlessOptions &options, QObject *parent)
    : QObject(parent), m_options(options)
{
}

HeadlessRunner::~HeadlessRunner() = default;

void HeadlessRunner::installInterruptHandler()
{
#ifndef _WIN32
    if (pipe2(g_interruptPipe, O_CLOEXEC | O_NONBLOCK) != 0)
        return;
    struct sigaction action {};
    action.sa_handler = onInterruptSignal;
    sigemptyset(&action.sa_mask);
    sigaction(SIGINT, &action, nullptr);
    sigaction(SIGTERM, &action, nullptr);
    m_interruptNotifier = new QSocketNotifier(g_interruptPipe[0], QSocketNotifier::Read, this);
    connect(m_interruptNotifier, &QSocketNotifier::activated, this, [this] {
        char buffer[16];
        while (::read(g_interruptPipe[0], buffer, sizeof buffer) > 0) {
        }
        std::fprintf(stdout, "interrupted: stopping\n");
        std::fflush(stdout);
        finish();
    });
#endif
}

int HeadlessRunner::run()
{
    installInterruptHandler();
    m_engine = new Engine(this);
    FramePipeline *pipeline = m_engine->pipeline();
    connect(pipeline, &FramePipeline::programFrameReady, this, [this] { ++m_programFrames; });
    pipeline->setBaseChannel(m_options.baseChannel);
    for (auto it = m_options.channels.cbegin(); it != m_options.channels.cend(); ++it) {
        pipeline->channelDecoder(it.key())->setLoop(true);
        pipeline->setChannelSource(it.key(), it.value());
    }
    m_clock.start();
    m_progressTimer = new QTimer(this);
    connect(m_progressTimer, &QTimer::timeout, this, [this] { printProgress(false); });
    m_progressTimer->start(1000);
    if (m_options.durationSeconds > 0)
        QTimer::singleShot(qint64(m_options.durationSeconds * 1000), this, [this] { finish(); });
    QCoreApplication::exec();
    return m_exitCode;
}

void HeadlessRunner::printProgress(bool final)
{
    const qint64 ms = m_clock.elapsed();
    const qint64 spanMs = std::max<qint64>(1, ms - m_msAtLastLine);
    const double fps = final ? (ms > 0 ? m_programFrames * 1000.0 / ms : 0.0)
                             : (m_programFrames - m_framesAtLastLine) * 1000.0 / spanMs;
    qint64 dropped = 0;
    for (int c = 0; c < FramePipeline::kChannelCount; ++c)
        dropped += m_engine->pipeline()->channelDecoder(c)->framesDropped();
    const QString line = QStringLiteral("%1elapsed %2  frames %3  fps %4  dropped %5")
                             .arg(final ? "done: " : "", clockText(ms))
                             .arg(m_programFrames)
                             .arg(fps, 0, 'f', 1)
                             .arg(dropped);
    std::fprintf(stdout, "%s\n", line.toUtf8().constData());
    std::fflush(stdout);
    m_framesAtLastLine = m_programFrames;
    m_msAtLastLine = ms;
}

void HeadlessRunner::finish()
{
    if (!m_engine)
        return;
    if (m_progressTimer)
        m_progressTimer->stop();
    printProgress(true);
    delete m_engine; // stops and joins every decoder
    m_engine = nullptr;
    QCoreApplication::exit(m_exitCode);
}
