#include "cli/HeadlessRunner.h"

#include "cli/DemoShow.h"
#include "control/ControlServer.h"
#include "engine/Engine.h"
#include "show/InterruptSignals.h"
#include "show/ShowLoader.h"

#include <QCoreApplication>
#include <QDebug>
#include <QEventLoop>
#include <QFile>
#include <QFileInfo>
#include <QHostAddress>
#include <QSocketNotifier>
#include <QTemporaryDir>
#include <QTimer>
#include <atomic>
#include <cstdio>
#include <tuple>
#include <utility>

#ifndef _WIN32
#include <csignal>
#include <fcntl.h>
#include <unistd.h>
#endif

using namespace selvane;

namespace {

QString clockText(qint64 ms)
{
    return QStringLiteral("%1:%2:%3.%4")
        .arg(ms / 3600000, 2, 10, QLatin1Char('0'))
        .arg(ms / 60000 % 60, 2, 10, QLatin1Char('0'))
        .arg(ms / 1000 % 60, 2, 10, QLatin1Char('0'))
        .arg(ms / 100 % 10);
}

} // namespace

HeadlessRunner::HeadlessRunner(const ShowOptions &options, QObject *parent)
    : QObject(parent), m_options(options)
{
}

HeadlessRunner::~HeadlessRunner()
{
    delete m_demoFolder;
}

bool HeadlessRunner::loadSchedule()
{
    ProgramArrangement arrangement;
    if (m_options.demo) {
        m_demoFolder = new QTemporaryDir();
        DemoShow show;
        QString error;
        if (!m_demoFolder->isValid() || !buildDemoShow(m_demoFolder->path(), &show, &error)) {
            std::fprintf(stderr, "selvane: demo: %s\n", qPrintable(error));
            return false;
        }
        for (auto it = show.channels.cbegin(); it != show.channels.cend(); ++it)
            m_options.channels.insert(it.key(), it.value());
        arrangement = show.arrangement;
    } else {
        QString error;
        QStringList warnings;
        if (!readScheduleFile(m_options.scheduleFile, &arrangement, &error, &warnings)) {
            std::fprintf(stderr, "selvane: %s\n", qPrintable(error));
            return false;
        }
        for (const QString &warning : warnings)
            std::fprintf(stderr, "selvane: warning: %s\n", qPrintable(warning));
    }
    m_scheduleTimesOutputs = !arrangement.outputs.isEmpty();
    const arrangement::Validation check = m_engine->loadSchedule(arrangement);
    if (!check.ok) {
        const QString where =
            m_options.scheduleFile.isEmpty() ? QStringLiteral("--demo") : m_options.scheduleFile;
        std::fprintf(stderr, "selvane: %s: %s: %s\n", qPrintable(where), qPrintable(check.title),
                     qPrintable(check.message));
        return false;
    }
    connect(m_engine, &Engine::scheduleBaseClipChanged, this, [](const QString &id, qint64 atMs) {
        std::fprintf(stdout, "schedule: %s at %.3f s\n", id.isEmpty() ? "(black)" : qPrintable(id),
                     atMs / 1000.0);
        std::fflush(stdout);
    });
    return true;
}

bool HeadlessRunner::startControl()
{
    m_control = new ControlServer(m_engine, this);
    const QHostAddress address(m_options.controlBind.isEmpty() ? QStringLiteral("127.0.0.1")
                                                               : m_options.controlBind);
    QString error;
    if (!m_control->listen(address, m_options.controlPort, &error)) {
        std::fprintf(stderr, "selvane: control: %s\n", qPrintable(error));
        delete m_control;
        m_control = nullptr;
        return false;
    }
    std::fprintf(stdout, "%s\n", qPrintable(m_control->startLine()));
    std::fflush(stdout);
    return true;
}

int HeadlessRunner::run()
{
    auto *interrupts = new InterruptSignals(this);
    connect(interrupts, &InterruptSignals::interrupted, this, [this] {
        std::fprintf(stdout, "interrupted: stopping\n");
        std::fflush(stdout);
        finish();
    });
    m_engine = new Engine(this);
    m_engine->startAudio();
    m_scheduled = m_options.demo || !m_options.scheduleFile.isEmpty();
    if ((m_scheduled && !loadSchedule()) || (m_options.controlPort > 0 && !startControl())) {
        delete m_engine;
        m_engine = nullptr;
        return 1;
    }
    connect(m_engine, &Engine::outputsStarted, this, [this](QSize size) {
        m_commandLineOutputsPending = false;
        // The file really written: an earlier take of the same name is never replaced.
        const OutputStats output = m_engine->stats().output;
        QString file = output.file.path;
        if (file.isEmpty())
            file = m_options.output.filePath;
        std::fprintf(stdout, "outputs started: %dx%d@%g%s%s\n", size.width(), size.height(),
                     m_options.output.fps, output.recording ? "  recording " : "",
                     output.recording ? qPrintable(file) : "");
        // Each further encode and each channel's own recording on a line of its own.
        for (const EncodeStats &encode : output.encodes)
            if (encode.profile != QLatin1String("default") || encode.source != "program")
                std::fprintf(stdout, "  encode %s: %s %dx%d@%g%s\n", qPrintable(encode.profile),
                             qPrintable(encode.source), encode.size.width(), encode.size.height(),
                             encode.fps, encode.adaptive ? " adaptive bitrate" : "");
        for (const IsoStats &iso : output.isoRecordings)
            std::fprintf(stdout, "  channel %d recording %s\n", iso.channel,
                         qPrintable(iso.file.path));
        std::fflush(stdout);
    });
    connect(m_engine, &Engine::outputsFailed, this, [this](const Problem &problem) {
        std::fprintf(stderr, "selvane: %s\n", qPrintable(problemText(problem)));
        // Outputs the remote control started fail alone; the show goes on.
        if ((m_control || m_timedOutputs) && !std::exchange(m_commandLineOutputsPending, false))
            return;
        m_exitCode = 2;
        QTimer::singleShot(0, this, [this] { finish(); });
    });

    // What the command line gives is also what the remote control starts without settings,
    // and what starts at the outputs' times.
    m_engine->setPreparedOutputs(
        {m_options.output, {m_options.outputSize.isValid(), m_options.outputSize}});
    QString error;
    if (!applyShowOptions(*m_engine, m_options, &error) ||
        (m_scheduled && !m_engine->startSchedule(&error))) {
        std::fprintf(stderr, "selvane: %s\n", qPrintable(error));
        delete m_engine;
        m_engine = nullptr;
        return 1;
    }
    // Outputs with a start time of their own (the command line's, or the schedule's
    // stretches) wait for it; a start then that fails is told and the show goes on.
    m_timedOutputs =
        m_options.outputTimes.start.kind != OutputMoment::Kind::ByHand || m_scheduleTimesOutputs;
    if (m_options.hasOutputs() && !m_timedOutputs) {
        if (const Problem problem = m_engine->startOutputs()) {
            std::fprintf(stderr, "selvane: %s\n", qPrintable(problemText(problem)));
            m_exitCode = 2;
            QTimer::singleShot(0, this, [this] { finish(); });
        } else {
            m_commandLineOutputsPending = true;
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

void HeadlessRunner::printProgress(bool final)
{
    const EngineStats stats = m_engine->stats();
    const qint64 ms = m_clock.elapsed();
    const qint64 spanMs = std::max<qint64>(1, ms - m_msAtLastLine);
    const qint64 frames = stats.program.frames;
    const double fps = final ? (ms > 0 ? frames * 1000.0 / ms : 0.0)
                             : (frames - m_framesAtLastLine) * 1000.0 / spanMs;
    qint64 dropped = 0;
    for (const ChannelStats &channel : stats.channels)
        dropped += channel.framesDropped;
    // Program frames are made at the output rate; "repeated" had no newer picture of the
    // source on air, "skipped" are ticks a stalled machine missed.
    QString line =
        QStringLiteral("%1elapsed %2  frames %3  fps %4  repeated %5  skipped %6  dropped %7")
            .arg(final ? "done: " : "", clockText(ms))
            .arg(frames)
            .arg(fps, 0, 'f', 1)
            .arg(stats.program.repeated)
            .arg(stats.program.skippedTicks)
            .arg(dropped);
    if (stats.output.running || stats.output.stopping || stats.output.bytesEncoded > 0) {
        const qint64 bytes = stats.output.bytesEncoded;
        const double kbps =
            final ? (ms > 0 ? bytes * 8.0 / ms : 0.0) : (bytes - m_bytesAtLastLine) * 8.0 / spanMs;
        m_bytesAtLastLine = bytes;
        line += QStringLiteral("  written %1  out %2 kbps  encoder-drops %3")
                    .arg(stats.output.framesWritten)
                    .arg(kbps, 0, 'f', 0)
                    .arg(stats.output.encoderDrops);
        QStringList words;
        for (const TargetStats &target : stats.output.targets)
            words << target.status;
        if (!words.isEmpty())
            line += "  targets " + words.join(',');
        for (const auto &[file, word, failure] :
             {std::tuple{&stats.output.file, "recording", &m_recordingFailure},
              std::tuple{&stats.output.twin, "twin", &m_twinFailure}}) {
            if (!stats.output.recording ||
                (failure == &m_twinFailure && !stats.output.twinRecording))
                continue;
            line += file->failed
                        ? QStringLiteral("  %1 failed (%2)").arg(word, file->failureReason)
                        : QStringLiteral("  %1 ").arg(word) + QFileInfo(file->path).fileName();
            // The time its disk lasts at the current bitrate: seconds once it runs short.
            const qint64 left = file->secondsLeft;
            if (left >= 0)
                line += QStringLiteral(" (disk %1%2)")
                            .arg(left < 600     ? QStringLiteral("%1 s").arg(left)
                                 : left < 36000 ? QStringLiteral("%1 min").arg(left / 60)
                                                : QStringLiteral("%1 h").arg(left / 3600))
                            .arg(file->diskWarning > 0 ? QStringLiteral(" LOW") : QString());
            if (file->failures > 0)
                *failure = {true, file->failureReason, file->resumes, file->failed, file->path};
        }
    }
    if (stats.output.startsInMs >= 0)
        line += QStringLiteral("  outputs start in ") + clockText(stats.output.startsInMs);
    else if (stats.output.stopsInMs >= 0)
        line += QStringLiteral("  outputs stop in ") + clockText(stats.output.stopsInMs);
    // Each channel's state; a source that could not be opened (or a stream that never
    // connected) is remembered for the exit code.
    QStringList channels;
    for (std::size_t c = 0; c < stats.channels.size(); ++c) {
        const ChannelStats &channel = stats.channels[c];
        if (channel.source.isEmpty())
            continue;
        const int number = int(c) + 1;
        channels << QStringLiteral("%1:%2").arg(number).arg(
            channelStateWord(channel.state, channel.live));
        const bool neverOpened = channel.framesDelivered == 0 &&
                                 (channel.state == ChannelState::Failed ||
                                  (final && channel.state == ChannelState::Reconnecting));
        if (neverOpened && !m_unopened.contains(number))
            m_unopened.insert(number, sourceErrorLogText(channel.lastError));
    }
    if (!channels.isEmpty())
        line += "  channels " + channels.join(',');
    std::fprintf(stdout, "%s\n", line.toUtf8().constData());
    std::fflush(stdout);
    m_framesAtLastLine = frames;
    m_msAtLastLine = ms;
}

void HeadlessRunner::finish()
{
    if (!m_engine || m_finishing)
        return;
    m_finishing = true;
    if (m_progressTimer)
        m_progressTimer->stop();
    if (m_control)
        m_control->close(); // no request reaches the engine while it ends
    if (m_engine->outputsActive()) {
        // Every output is closed cleanly: trailers written, files playable.
        QEventLoop wait;
        connect(m_engine, &Engine::outputsStopped, &wait, &QEventLoop::quit);
        connect(m_engine, &Engine::outputsFailed, &wait, &QEventLoop::quit);
        m_engine->stopOutputs();
        if (m_engine->outputsActive())
            wait.exec();
    }
    printProgress(true);
    for (const auto &[failure, twin] :
         {std::pair{&m_recordingFailure, false}, std::pair{&m_twinFailure, true}}) {
        if (!failure->failed || (m_exitCode != 0 && m_exitCode != 3))
            continue;
        // Say which happened: no new file at all, a new file that is whole, or one that failed
        // again before the end.
        const QString which = twin ? tr("the twin recording") : tr("the recording");
        const QString said =
            failure->resumes == 0
                ? tr("%1 failed during the run (%2) and no new file could be begun after it; the "
                     "streams went on")
                      .arg(which, failure->reason)
            : failure->failedAtEnd
                ? tr("%1 failed during the run (%2); it went on in a new file %3 time(s), but was "
                     "failing again at the end; the streams went on")
                      .arg(which, failure->reason)
                      .arg(failure->resumes)
                : tr("%1 failed during the run (%2); the streams went on, and %1 went on in %3")
                      .arg(which, failure->reason, QDir::toNativeSeparators(failure->path));
        std::fprintf(stderr, "selvane: %s\n", qPrintable(said));
        m_exitCode = 3;
    }
    for (auto it = m_unopened.cbegin(); it != m_unopened.cend(); ++it)
        std::fprintf(
            stderr, "selvane: %s\n",
            qPrintable(
                tr("channel %1: the source never opened (%2)").arg(it.key()).arg(it.value())));
    if (!m_unopened.isEmpty() && m_exitCode == 0)
        m_exitCode = 4;
    delete m_control;
    m_control = nullptr;
    delete m_engine; // stops and joins every decoder
    m_engine = nullptr;
    QCoreApplication::exit(m_exitCode);
}
