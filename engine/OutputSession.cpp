#include "engine/OutputSession.h"

#include "audio/PreviewAudioMixer.h"
#include "engine/ProgramSwitcher.h"
#include "media/AudioFormat.h"
#include "output/OutputRouter.h"
#include "output/VideoEncoderChoice.h"

#include <QCoreApplication>
#include <QDebug>
#include <QFileInfo>
#include <QPointer>
#include <QStorageInfo>
#include <QThreadPool>
#include <QTimer>
#include <cmath>

namespace selvane {

OutputSession::OutputSession(ProgramSwitcher &switcher, QObject *parent)
    : QObject(parent), m_switcher(switcher)
{
    qRegisterMetaType<selvane::Problem>("selvane::Problem");
    m_forecastTimer = new QTimer(this);
    m_forecastTimer->setInterval(1000);
    connect(m_forecastTimer, &QTimer::timeout, this, &OutputSession::forecastDisks);
}

void OutputSession::forecastDisks()
{
    if (m_state != State::Running || !m_router)
        return;
    const qint64 nowMs = m_elapsed.elapsed();
    for (const FfmpegEncoderSink::OutputStats &d : m_router->destinationStats()) {
        const bool twin = d.targetIndex == FfmpegEncoderSink::OutputStats::kTwin;
        if ((d.targetIndex != FfmpegEncoderSink::OutputStats::kRecording && !twin) ||
            d.path.isEmpty())
            continue;
        QStorageInfo disk(QFileInfo(d.path).absolutePath());
        DiskForecast &forecast = twin ? m_twinForecast : m_fileForecast;
        if (!forecast.update(nowMs, d.bytesWritten, disk.isValid() ? disk.bytesAvailable() : -1))
            continue;
        const qint64 left = forecast.secondsLeft();
        if (forecast.level() == DiskForecast::Room)
            qInfo().noquote() << (twin ? "Twin recording" : "Recording") << "disk: room again,"
                              << left / 60 << "minutes left (" << d.path << ")";
        else
            qWarning().noquote() << (twin ? "Twin recording" : "Recording") << "disk: about"
                                 << (left + 59) / 60 << "minutes left at the current bitrate ("
                                 << d.path << ")";
        emit diskForecastChanged(twin, forecast.level(), left, d.path);
    }
}

OutputSession::~OutputSession()
{
    *m_alive = false;
    m_switcher.setOutputSink({});
    if (m_mixer)
        m_mixer->setProgramTap(nullptr);
    if (m_router)
        m_router->stop();
}

int OutputSession::queueDepth() const
{
    return m_router ? m_router->queueDepth() : 0;
}

bool OutputSession::start(const EncoderSettings &settings, QSize size, qint64 beginUs)
{
    if (m_state != State::Idle)
        return false;
    m_state = State::Starting;
    m_beginUs = beginUs;
    m_stopAfterStart = false;
    m_settings = settings;
    // An earlier take of the same name is never replaced: the file gets a free name beside it
    // (segments are named by their time and number, and checked again as each one opens).
    if (m_settings.fileEnabled && !m_settings.segmentEnabled)
        m_settings.filePath = unusedRecordingPath(m_settings.filePath.trimmed());
    m_size = size;
    m_status.clear();
    for (int i = 0; i < settings.streamTargets.size(); ++i)
        m_status << QStringLiteral("connecting");

    auto router = std::make_shared<OutputRouter>();
    router->setSettings(m_settings);
    router->setOutputSize(size);
    // Reports come from the router's workers; they are handed to this thread, and dropped once
    // the session is gone.
    const std::weak_ptr<bool> alive = m_alive;
    QPointer<OutputSession> self(this);
    router->setStatusCallback([self, alive](int index, const QString &status) {
        QMetaObject::invokeMethod(
            QCoreApplication::instance(),
            [self, alive, index, status] {
                if (alive.expired() || !self)
                    return;
                if (index >= 0 && index < self->m_status.size())
                    self->m_status[index] = status;
                emit self->streamStatusChanged(index, status);
            },
            Qt::QueuedConnection);
    });
    router->setFailureCallback([self, alive](OutputRouter::Failure, const QString &) {
        QMetaObject::invokeMethod(
            QCoreApplication::instance(),
            [self, alive] {
                if (!alive.expired() && self)
                    self->onRouterFailure();
            },
            Qt::QueuedConnection);
    });
    // The encoder probe and the folder check take their time off this thread.
    QThreadPool::globalInstance()->start([router, self, alive] {
        const bool ok = router->start();
        QMetaObject::invokeMethod(
            QCoreApplication::instance(),
            [router, self, alive, ok] {
                if (!alive.expired() && self)
                    self->onStarted(router, ok);
                else if (ok)
                    QThreadPool::globalInstance()->start([router] { router->stop(); });
            },
            Qt::QueuedConnection);
    });
    return true;
}

void OutputSession::onStarted(std::shared_ptr<OutputRouter> router, bool ok)
{
    if (!ok) {
        m_state = State::Idle;
        // At 8K the encoder is hardware HEVC or nothing: that is what did not open.
        if (encoder::isEightK(m_size.width(), m_size.height()))
            emit failed({ProblemKind::EightKNoHardwareEncoder,
                         {},
                         0,
                         QStringLiteral("no hardware HEVC encoder (NVENC, QSV, AMF, VAAPI) opens "
                                        "at %1 x %2 on this machine")
                             .arg(m_size.width())
                             .arg(m_size.height())});
        else
            emit failed(ProblemKind::OutputsNotOpened);
        return;
    }
    m_router = std::move(router);
    m_state = State::Running;
    m_elapsed.start();
    m_fileForecast = {};
    m_twinForecast = {};
    m_forecastTimer->start();
    // The outputs' time zero is a tick of the program: every picture lands on a whole frame.
    // Ticks are computed from a base with rounding, so a tick may fall a microsecond off the
    // time worked out here: half a millisecond of slack keeps it.
    constexpr qint64 kSlackUs = 500;
    const qint64 startUs = std::max(m_switcher.nextTickUs(), tickAtOrAfter(m_beginUs));
    if (m_beginUs >= 0 && startUs > m_beginUs + kSlackUs + 1000000 / std::max(1.0, m_settings.fps))
        qWarning().noquote() << "Outputs began" << (startUs - m_beginUs) / 1000
                             << "ms after their time: they took that long to open";
    m_span = std::make_shared<Span>();
    m_span->startUs.store(startUs);
    const std::shared_ptr<Span> span = m_span;
    const std::weak_ptr<OutputRouter> weakRouter = m_router;
    m_switcher.setOutputSink([weakRouter, span](const FrameTokenPtr &frame, qint64 programUs) {
        const qint64 startUs = span->startUs.load();
        if (programUs + kSlackUs < startUs || programUs + kSlackUs >= span->endUs.load())
            return;
        if (auto router = weakRouter.lock())
            router->enqueueFrame(frame, std::max<qint64>(0, programUs - startUs));
    });
    if (m_mixer)
        m_mixer->setProgramTap(
            [weakRouter, span](const std::int16_t *samples, int frames, qint64 programUs) {
                const qint64 startUs = span->startUs.load();
                if (programUs < startUs)
                    return;
                // The chunk that crosses the end gives what comes before it.
                const qint64 endUs = span->endUs.load();
                if (programUs >= endUs)
                    return;
                frames = int(std::min<qint64>(frames, (endUs - programUs) *
                                                          selvane::audio::kSampleRate / 1000000));
                if (frames <= 0)
                    return;
                if (auto router = weakRouter.lock())
                    router->pushAudio(samples, frames, programUs - startUs);
            });
    emit started(m_size);
    if (m_stopAfterStart)
        stop();
}

qint64 OutputSession::tickAtOrAfter(qint64 us) const
{
    const qint64 next = m_switcher.nextTickUs();
    if (us <= next)
        return next;
    const double periodUs = 1e6 / (m_settings.fps > 0 ? m_settings.fps : 30.0);
    const auto ticks = qint64(std::ceil(double(us - next) / periodUs - 1e-6));
    return next + std::llround(double(ticks) * periodUs);
}

void OutputSession::endAt(qint64 programUs)
{
    if (m_state == State::Running)
        m_span->endUs.store(std::max(m_span->startUs.load(), tickAtOrAfter(programUs)));
}

void OutputSession::onRouterFailure()
{
    if (m_state != State::Running)
        return;
    stop();
    emit failed(ProblemKind::OutputsNotOpened);
}

void OutputSession::stop()
{
    if (m_state == State::Starting) {
        m_stopAfterStart = true;
        return;
    }
    if (m_state != State::Running)
        return;
    m_state = State::Stopping;
    m_switcher.setOutputSink({});
    if (m_mixer)
        m_mixer->setProgramTap(nullptr);
    std::shared_ptr<OutputRouter> router = m_router;
    const std::weak_ptr<bool> alive = m_alive;
    QPointer<OutputSession> self(this);
    QThreadPool::globalInstance()->start([router, self, alive] {
        router->stop();
        QMetaObject::invokeMethod(
            QCoreApplication::instance(),
            [self, alive] {
                if (!alive.expired() && self)
                    self->finishStop();
            },
            Qt::QueuedConnection);
    });
}

void OutputSession::waitForStop()
{
    if (m_state == State::Starting) {
        m_stopAfterStart = true;
        while (m_state == State::Starting)
            QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents, 50);
    }
    if (m_state == State::Running)
        stop();
    while (m_state == State::Stopping)
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents, 50);
}

void OutputSession::finishStop()
{
    m_state = State::Idle;
    m_forecastTimer->stop();
    for (QString &status : m_status)
        status = QStringLiteral("stopped");
    emit stopped();
}

bool OutputSession::reconnectTargetNow(int index)
{
    return m_router && m_state == State::Running && m_router->reconnectTargetNow(index);
}

namespace {
void showForecast(RecordingStats &file, const DiskForecast &forecast)
{
    file.freeBytes = forecast.freeBytes();
    file.secondsLeft = forecast.secondsLeft();
    file.diskWarning = int(forecast.level());
}
} // namespace

OutputStats OutputSession::stats() const
{
    OutputStats out;
    out.running = m_state == State::Running;
    out.stopping = m_state == State::Stopping;
    out.recording = m_settings.fileEnabled && !m_settings.filePath.trimmed().isEmpty();
    out.twinRecording = out.recording && !m_settings.twinFilePath.trimmed().isEmpty();
    if (out.recording && !m_settings.segmentEnabled) {
        out.file.path = m_settings.filePath; // until the file opens
        if (out.twinRecording)
            out.twin.path = m_settings.twinFilePath;
    }
    if (!m_router)
        return out;
    out.elapsedMs = out.running ? m_elapsed.elapsed() : 0;
    out.encoder = m_router->encoderName();
    out.bytesEncoded = m_router->bytesEncoded();
    out.framesWritten = m_router->framesEncoded();
    out.encoderDrops = m_router->droppedFrames();
    out.audioChunksDropped = m_router->droppedAudioChunks();
    for (int i = 0; i < m_status.size(); ++i) {
        TargetStats target;
        target.status = m_status[i];
        out.targets.append(target);
    }
    for (const FfmpegEncoderSink::OutputStats &d : m_router->destinationStats()) {
        if (d.targetIndex == FfmpegEncoderSink::OutputStats::kTwin) {
            out.twin = {d.path.isEmpty() ? out.twin.path : d.path,
                        d.bytesWritten,
                        d.failed,
                        d.failureReason,
                        d.failures,
                        d.resumes};
            showForecast(out.twin, m_twinForecast);
            continue;
        }
        if (d.targetIndex < 0) {
            out.file = {d.path.isEmpty() ? out.file.path : d.path,
                        d.bytesWritten,
                        d.failed,
                        d.failureReason,
                        d.failures,
                        d.resumes};
            showForecast(out.file, m_fileForecast);
            continue;
        }
        if (d.targetIndex >= out.targets.size())
            continue;
        TargetStats &target = out.targets[d.targetIndex];
        target.url = d.path;
        target.bytes = d.bytesWritten;
        target.reconnects = d.reconnects;
        target.queueResets = d.queueResets;
        target.packetsDropped = d.packetsDropped;
    }
    return out;
}

} // namespace selvane
