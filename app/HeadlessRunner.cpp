#include "app/HeadlessRunner.h"

#include "app/DemoShow.h"
#include "app/Engine.h"
#include "schedule/EngineProgramControl.h"
#include "schedule/ScheduleRunner.h"
#include "app/LogSink.h"
#include "audio/PreviewAudioMixer.h"
#include "compose/FramePipeline.h"
#include "compose/OverlayManager.h"
#include "input/FFmpegVideoDecoder.h"
#include "output/OutputRouter.h"

#include <QCoreApplication>
#include <QDebug>
#include <QEventLoop>
#include <QFile>
#include <QSocketNotifier>
#include <QTemporaryDir>
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

HeadlessRunner::~HeadlessRunner() { delete m_demoFolder; }

bool HeadlessRunner::startSchedule()
{
    ProgramArrangement arrangement;
    if (m_options.demo) {
        m_demoFolder = new QTemporaryDir();
        selvane::DemoShow show;
        QString error;
        if (!m_demoFolder->isValid() || !selvane::buildDemoShow(m_demoFolder->path(), &show, &error)) {
            std::fprintf(stderr, "selvane: demo: %s\n", qPrintable(error));
            return false;
        }
        for (auto it = show.channels.cbegin(); it != show.channels.cend(); ++it)
            m_options.channels.insert(it.key(), it.value());
        arrangement = show.arrangement;
    } else {
        QFile file(m_options.scheduleFile);
        if (!file.open(QIODevice::ReadOnly)) {
            std::fprintf(stderr, "selvane: Unable to open the file. %s\n",
                         qPrintable(m_options.scheduleFile));
            return false;
        }
        QString error;
        arrangement = arrangement::fromJson(file.readAll(), &error);
        if (!error.isEmpty()) {
            std::fprintf(stderr, "selvane: %s\n", qPrintable(error));
            return false;
        }
        const arrangement::Validation check = arrangement::validate(arrangement);
        if (!check.ok) {
            std::fprintf(stderr, "selvane: %s: %s\n", qPrintable(check.title),
                         qPrintable(check.message));
            return false;
        }
    }
    m_arrangement = arrangement;
    m_control = new EngineProgramControl(m_engine, this);
    m_schedule = new ScheduleRunner(m_control, this);
    m_control->setRunner(m_schedule);
    connect(m_schedule, &ScheduleRunner::baseClipChanged, this, [this](const QString &id) {
        std::fprintf(stdout, "schedule: %s at %.3f s\n",
                     id.isEmpty() ? "(black)" : qPrintable(id), m_schedule->clock().ms() / 1000.0);
        std::fflush(stdout);
    });
    return true;
}

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
    PreviewAudioMixer *mixer = m_engine->mixer();
    for (auto it = m_options.channelVolumes.cbegin(); it != m_options.channelVolumes.cend(); ++it)
        mixer->setChannelVolume(it.key(), float(it.value()));
    mixer->setProgramVolume(float(m_options.programVolume));
    mixer->setProgramGain(float(m_options.programGainPercent / 100.0));
    m_engine->startAudio();
    const bool scheduled = m_options.demo || !m_options.scheduleFile.isEmpty();
    if (scheduled && !startSchedule()) {
        m_exitCode = 1;
        delete m_engine;
        m_engine = nullptr;
        return m_exitCode;
    }
    connect(pipeline, &FramePipeline::programFrameReady, this, [this] {
        ++m_programFrames;
        // Outputs start with the first program picture, once the program size is known.
        if (!m_outputsStarted && m_options.hasOutputs())
            startOutputs();
    });
    connect(pipeline, &FramePipeline::programStreamStatusChanged, this,
            [this](int index, const QString &status) {
                if (index >= 0 && index < m_targetStatus.size())
                    m_targetStatus[index] = status;
            });
    connect(pipeline, &FramePipeline::programOutputTransportFailed, this,
            [this](const QString &reason) {
                const bool neverOpened = m_engine->pipeline()->lastOutputFailureWasOpen();
                std::fprintf(stderr, "selvane: %s\n", qPrintable(reason));
                qWarning().noquote() << "programOutputTransportFailed:" << reason;
                m_exitCode = neverOpened ? 2 : 3;
                finish();
            });
    if (m_options.outputSize.isValid())
        pipeline->setOutputResolutionSelection(FramePipeline::kExplicitResolutionMode,
                                               m_options.outputSize.width(),
                                               m_options.outputSize.height());
    pipeline->setOutputSettings(m_options.output);
    for (const TextOverlayData &text : m_options.texts)
        m_engine->overlays()->setTextOverlay(text);
    for (const MediaOverlayRecord &record : m_options.media) {
        m_engine->overlays()->setMediaOverlay(record);
        if (record.kind == MediaOverlayRecord::OverlayVideo) {
            pipeline->registerOverlayVideo(record.id, record.filePath);
            if (FFmpegVideoDecoder *decoder =
                    pipeline->overlayDecoder(pipeline->overlaySlotOf(record.id)))
                decoder->setLoop(true);
        }
    }
    for (int i = 0; i < m_options.output.streamTargets.size(); ++i)
        m_targetStatus << "connecting";
    pipeline->setBaseChannel(m_options.baseChannel);
    for (auto it = m_options.channels.cbegin(); it != m_options.channels.cend(); ++it) {
        pipeline->channelDecoder(it.key())->setLoop(true);
        pipeline->setChannelSource(it.key(), it.value());
    }
    if (m_schedule) {
        QString error;
        if (!m_schedule->start(m_arrangement, &error)) {
            std::fprintf(stderr, "selvane: %s\n", qPrintable(error));
            m_exitCode = 1;
            delete m_engine;
            m_engine = nullptr;
            return m_exitCode;
        }
    }
    m_clock.start();
    m_progressTimer = new QTimer(this);
    connect(m_progressTimer, &QTimer::timeout, this, [this] { printProgress(false); });
    m_progressTimer->start(1000);
    if (m_options.durationSeconds > 0)
        QTimer::singleShot(qint64(m_options.durationSeconds * 1000), Qt::PreciseTimer, this,
                           [this] { finish(); });
    QCoreApplication::exec();
    return m_exitCode;
}

void HeadlessRunner::startOutputs()
{
    m_outputsStarted = true;
    if (!m_engine->pipeline()->startOutputs()) {
        std::fprintf(stderr, "selvane: outputs could not start (see the log for the reason)\n");
        m_exitCode = 2;
        QTimer::singleShot(0, this, [this] { finish(); });
        return;
    }
    // The schedule's time zero is the recording's: switches land where the schedule says.
    if (m_schedule)
        m_schedule->restartClock(0);
    const QSize size = m_engine->pipeline()->effectiveOutputSize();
    std::fprintf(stdout, "outputs started: %dx%d@%g%s%s\n", size.width(), size.height(),
                 m_options.output.fps,
                 m_options.output.fileEnabled ? "  recording " : "",
                 m_options.output.fileEnabled ? qPrintable(m_options.output.filePath) : "");
    std::fflush(stdout);
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
    QString line = QStringLiteral("%1elapsed %2  frames %3  fps %4  dropped %5")
                       .arg(final ? "done: " : "", clockText(ms))
                       .arg(m_programFrames)
                       .arg(fps, 0, 'f', 1)
                       .arg(dropped);
    if (const OutputRouter *router = m_engine->pipeline()->outputRouter()) {
        const qint64 bytes = router->bytesEncoded();
        const double kbps = final ? (ms > 0 ? bytes * 8.0 / ms : 0.0)
                                  : (bytes - m_bytesAtLastLine) * 8.0 / spanMs;
        m_bytesAtLastLine = bytes;
        line += QStringLiteral("  out %1 kbps  encoder-drops %2").arg(kbps, 0, 'f', 0).arg(router->droppedFrames());
        if (!m_targetStatus.isEmpty())
            line += "  targets " + m_targetStatus.join(',');
    }
    std::fprintf(stdout, "%s\n", line.toUtf8().constData());
    std::fflush(stdout);
    m_framesAtLastLine = m_programFrames;
    m_msAtLastLine = ms;
}

void HeadlessRunner::finish()
{
    if (!m_engine || m_finishing)
        return;
    m_finishing = true;
    if (m_progressTimer)
        m_progressTimer->stop();
    FramePipeline *pipeline = m_engine->pipeline();
    if (pipeline->outputsRunning() || pipeline->outputsStopping()) {
        // Every output is closed cleanly: trailers written, files playable.
        QEventLoop wait;
        connect(pipeline, &FramePipeline::programOutputStopped, &wait, &QEventLoop::quit);
        pipeline->stopOutputsAsync();
        if (pipeline->outputsStopping())
            wait.exec();
    }
    printProgress(true);
    delete m_engine; // stops and joins every decoder
    m_engine = nullptr;
    QCoreApplication::exit(m_exitCode);
}
