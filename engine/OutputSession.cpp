#include "engine/OutputSession.h"

#include "audio/PreviewAudioMixer.h"
#include "engine/MultiviewFeed.h"
#include "engine/ProgramSwitcher.h"
#include "media/AudioFormat.h"
#include "output/OutputRouter.h"
#include "output/StreamUrl.h"
#include "output/VideoEncoderChoice.h"

#include <QCoreApplication>
#include <QDateTime>
#include <QDebug>
#include <QFileInfo>
#include <QPointer>
#include <QStorageInfo>
#include <QThreadPool>
#include <QTime>
#include <QTimer>
#include <cmath>

namespace selvane {

namespace {

// Ticks are computed from a base with rounding, so a tick may fall a microsecond off the time
// worked out here: half a millisecond of slack keeps it.
constexpr qint64 kSlackUs = 500;

// The time of day to the second as a timecode, "HH:MM:SS:00" (a frame number would not be
// valid in a profile of a lower rate).
QString timecodeOf(const QTime &time)
{
    return QStringLiteral("%1:%2:%3:00")
        .arg(time.hour(), 2, 10, QLatin1Char('0'))
        .arg(time.minute(), 2, 10, QLatin1Char('0'))
        .arg(time.second(), 2, 10, QLatin1Char('0'));
}

using WeakRouters = std::vector<std::weak_ptr<OutputRouter>>;

} // namespace

OutputSession::OutputSession(ProgramSwitcher &switcher, QObject *parent)
    : QObject(parent), m_switcher(switcher)
{
    qRegisterMetaType<selvane::Problem>("selvane::Problem");
    m_forecastTimer = new QTimer(this);
    m_forecastTimer->setInterval(1000);
    connect(m_forecastTimer, &QTimer::timeout, this, &OutputSession::forecastDisks);
}

OutputSession::~OutputSession()
{
    *m_alive = false;
    disconnectSources();
    for (Encode &encode : m_encodes)
        encode.router->stop();
}

void OutputSession::setChannelLabels(const std::array<QString, kChannelCount> &labels)
{
    m_labels = labels;
    if (m_multiview)
        m_multiview->setLabels(labels);
}

void OutputSession::setPreviewChannel(int channel)
{
    m_previewChannel = channel;
    if (m_multiview)
        m_multiview->setPreviewChannel(channel);
}

const OutputSession::Encode *OutputSession::primary() const
{
    for (const Encode &encode : m_encodes)
        if (encode.plan.recording)
            return &encode;
    return m_encodes.empty() ? nullptr : &m_encodes.front();
}

void OutputSession::forecastDisks()
{
    const Encode *recording = primary();
    if (m_state != State::Running || !recording || !recording->plan.recording)
        return;
    const qint64 nowMs = m_elapsed.elapsed();
    for (const FfmpegEncoderSink::OutputStats &d : recording->router->destinationStats()) {
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

int OutputSession::queueDepth() const
{
    int depth = m_multiview ? MultiviewFeed::kQueueDepth : 0;
    for (const Encode &encode : m_encodes)
        depth += encode.router->queueDepth();
    return depth;
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
    // Every recording of the run carries the same origin: an editor lines them up by it.
    m_settings.timecode = timecodeOf(QTime::currentTime());
    m_size = size;
    m_status.clear();
    for (int i = 0; i < settings.streamTargets.size(); ++i)
        m_status << QStringLiteral("connecting");

    m_encodes.clear();
    const std::weak_ptr<bool> alive = m_alive;
    QPointer<OutputSession> self(this);
    for (PlannedEncode &plan : planEncodes(m_settings, size)) {
        if (plan.source == PlannedEncode::Source::Channel) {
            plan.settings.encodeName = QStringLiteral("channel %1").arg(plan.channel + 1);
            if (!plan.settings.segmentEnabled)
                plan.settings.filePath = unusedRecordingPath(plan.settings.filePath);
        }
        plan.settings.timecode = m_settings.timecode;
        auto router = std::make_shared<OutputRouter>();
        router->setSettings(plan.settings);
        router->setOutputSize(plan.size);
        router->setSourceFps(m_settings.fps);
        // Reports come from the routers' workers; they are handed to this thread, and dropped
        // once the session is gone. A target's number is its place in the operator's list.
        const std::vector<int> places = plan.targets;
        router->setStatusCallback([self, alive, places](int local, const QString &status) {
            if (local < 0 || std::size_t(local) >= places.size())
                return;
            const int index = places[std::size_t(local)];
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
        const std::size_t at = m_encodes.size();
        router->setFailureCallback([self, alive, at](OutputRouter::Failure, const QString &) {
            QMetaObject::invokeMethod(
                QCoreApplication::instance(),
                [self, alive, at] {
                    if (!alive.expired() && self)
                        self->onRouterFailure(at);
                },
                Qt::QueuedConnection);
        });
        m_encodes.push_back({std::move(plan), std::move(router), false});
    }
    std::vector<std::shared_ptr<OutputRouter>> routers;
    for (const Encode &encode : m_encodes)
        routers.push_back(encode.router);
    // The encoder probes and the folder checks take their time off this thread. One encode
    // that cannot start stops the whole start: the operator hears of it before anything runs.
    QThreadPool::globalInstance()->start([routers, self, alive] {
        bool ok = !routers.empty();
        for (const auto &router : routers)
            if (ok && !router->start())
                ok = false;
        if (!ok)
            for (const auto &router : routers)
                router->stop();
        QMetaObject::invokeMethod(
            QCoreApplication::instance(),
            [routers, self, alive, ok] {
                if (!alive.expired() && self)
                    self->onStarted(ok);
                else if (ok)
                    QThreadPool::globalInstance()->start([routers] {
                        for (const auto &router : routers)
                            router->stop();
                    });
            },
            Qt::QueuedConnection);
    });
    return true;
}

void OutputSession::onStarted(bool ok)
{
    if (!ok) {
        m_state = State::Idle;
        m_encodes.clear();
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
    m_state = State::Running;
    m_elapsed.start();
    m_fileForecast = {};
    m_twinForecast = {};
    m_forecastTimer->start();
    // The outputs' time zero is a tick of the program: every picture lands on a whole frame.
    const qint64 startUs = std::max(m_switcher.nextTickUs(), tickAtOrAfter(m_beginUs));
    if (m_beginUs >= 0 && startUs > m_beginUs + kSlackUs + 1000000 / std::max(1.0, m_settings.fps))
        qWarning().noquote() << "Outputs began" << (startUs - m_beginUs) / 1000
                             << "ms after their time: they took that long to open";
    m_span = std::make_shared<Span>();
    m_span->startUs.store(startUs);
    m_startedAtMs = QDateTime::currentMSecsSinceEpoch() + (startUs - m_switcher.nowUs()) / 1000;
    connectSources();
    emit started(m_size);
    if (m_stopAfterStart)
        stop();
}

void OutputSession::connectSources()
{
    WeakRouters program, multiview;
    std::array<WeakRouters, kChannelCount> channels;
    QSize multiviewSize;
    for (const Encode &encode : m_encodes) {
        switch (encode.plan.source) {
        case PlannedEncode::Source::Program:
            program.push_back(encode.router);
            break;
        case PlannedEncode::Source::Multiview:
            multiview.push_back(encode.router);
            if (!multiviewSize.isValid())
                multiviewSize = encode.plan.size;
            break;
        case PlannedEncode::Source::Channel:
            channels[std::size_t(encode.plan.channel)].push_back(encode.router);
            break;
        }
    }
    const std::shared_ptr<Span> span = m_span;
    const auto within = [span](qint64 programUs) {
        return programUs + kSlackUs >= span->startUs.load() &&
               programUs + kSlackUs < span->endUs.load();
    };
    if (!multiview.empty()) {
        m_multiview = std::make_shared<MultiviewFeed>(multiviewSize, multiview);
        m_multiview->setLabels(m_labels);
        m_multiview->setPreviewChannel(m_previewChannel);
    }
    const std::shared_ptr<MultiviewFeed> feed = m_multiview;
    ProgramSwitcher *switcher = &m_switcher;
    m_switcher.setOutputSink(
        [program, feed, span, within, switcher](const FrameTokenPtr &frame, qint64 programUs) {
            if (!within(programUs))
                return;
            const qint64 pts = std::max<qint64>(0, programUs - span->startUs.load());
            for (const auto &weak : program)
                if (auto router = weak.lock())
                    router->enqueueFrame(frame, pts);
            if (feed)
                feed->takeProgram(frame, pts, switcher->programChannel());
        });
    bool anyChannel = false;
    for (const WeakRouters &routers : channels)
        anyChannel = anyChannel || !routers.empty();
    if (anyChannel || feed) {
        // A channel that has shown nothing yet is recorded black, so that its file starts on
        // the same tick as every other.
        FrameWriter black;
        black = FrameWriter(std::make_shared<FrameToken>());
        black.prepareI420(16, 16);
        std::memset(black.plane(0), 16, std::size_t(black->planeStride(0)) * 16);
        std::memset(black.plane(1), 128, std::size_t(black->planeStride(1)) * 8);
        std::memset(black.plane(2), 128, std::size_t(black->planeStride(2)) * 8);
        const FrameTokenPtr none = std::move(black).publish();
        m_switcher.setChannelSink(
            [channels, feed, span, within,
             none](const std::array<FrameTokenPtr, SourceFeeds::kChannels> &pictures,
                   qint64 programUs) {
                if (!within(programUs))
                    return;
                const qint64 pts = std::max<qint64>(0, programUs - span->startUs.load());
                for (std::size_t c = 0; c < channels.size(); ++c)
                    for (const auto &weak : channels[c])
                        if (auto router = weak.lock())
                            router->enqueueFrame(pictures[c] ? pictures[c] : none, pts);
                if (feed)
                    feed->takeChannels(pictures);
            });
    }
    if (!m_mixer)
        return;
    // The sound is cut to the same span; the chunk that crosses the end gives what comes
    // before it.
    const auto cut = [span](int *frames, qint64 programUs) {
        const qint64 startUs = span->startUs.load();
        const qint64 endUs = span->endUs.load();
        if (programUs < startUs || programUs >= endUs)
            return qint64(-1);
        // Only a chunk within a second of a set end is shortened (an open end is the largest
        // time there is: its distance times the rate would overflow).
        const qint64 leftUs = endUs - programUs;
        if (leftUs < 1000000)
            *frames =
                int(std::min<qint64>(*frames, leftUs * selvane::audio::kSampleRate / 1000000));
        return *frames > 0 ? programUs - startUs : qint64(-1);
    };
    WeakRouters programSound = program;
    programSound.insert(programSound.end(), multiview.begin(), multiview.end());
    m_mixer->setProgramTap(
        [programSound, cut](const std::int16_t *samples, int frames, qint64 programUs) {
            const qint64 pts = cut(&frames, programUs);
            if (pts < 0)
                return;
            for (const auto &weak : programSound)
                if (auto router = weak.lock())
                    router->pushAudio(samples, frames, pts);
        });
    if (anyChannel)
        m_mixer->setChannelTap([channels, cut](int channel, const std::int16_t *samples, int frames,
                                               qint64 programUs) {
            if (channel < 0 || channel >= kChannelCount || channels[std::size_t(channel)].empty())
                return;
            const qint64 pts = cut(&frames, programUs);
            if (pts < 0)
                return;
            for (const auto &weak : channels[std::size_t(channel)])
                if (auto router = weak.lock())
                    router->pushAudio(samples, frames, pts);
        });
}

void OutputSession::disconnectSources()
{
    m_switcher.setOutputSink({});
    m_switcher.setChannelSink({});
    if (m_mixer) {
        m_mixer->setProgramTap(nullptr);
        m_mixer->setChannelTap(nullptr);
    }
    if (m_multiview)
        m_multiview->stop();
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

void OutputSession::onRouterFailure(std::size_t index)
{
    if (m_state != State::Running || index >= m_encodes.size() || m_encodes[index].failed)
        return;
    Encode &encode = m_encodes[index];
    encode.failed = true;
    bool anyLeft = false;
    for (const Encode &other : m_encodes)
        anyLeft = anyLeft || !other.failed;
    if (!anyLeft) {
        stop();
        emit failed(ProblemKind::OutputsNotOpened);
        return;
    }
    qWarning().noquote() << "Outputs: no output of the" << encode.plan.settings.encodeName
                         << "encode could be opened; the other outputs go on";
    for (const int target : encode.plan.targets)
        if (target < m_status.size()) {
            m_status[target] = QStringLiteral("stopped");
            emit streamStatusChanged(target, m_status[target]);
        }
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
    disconnectSources();
    std::vector<std::shared_ptr<OutputRouter>> routers;
    for (const Encode &encode : m_encodes)
        routers.push_back(encode.router);
    const std::weak_ptr<bool> alive = m_alive;
    QPointer<OutputSession> self(this);
    QThreadPool::globalInstance()->start([routers, self, alive] {
        // Each router writes its trailers; one slow file does not hold back the others' stop
        // for long, as each stop waits in slices.
        for (const auto &router : routers)
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
    m_multiview.reset();
    for (QString &status : m_status)
        status = QStringLiteral("stopped");
    emit stopped();
}

bool OutputSession::reconnectTargetNow(int index)
{
    if (m_state != State::Running)
        return false;
    for (const Encode &encode : m_encodes)
        for (std::size_t local = 0; local < encode.plan.targets.size(); ++local)
            if (encode.plan.targets[local] == index)
                return encode.router->reconnectTargetNow(int(local));
    return false;
}

} // namespace selvane
