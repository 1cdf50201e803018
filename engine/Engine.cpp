#include "engine/Engine.h"

#include "audio/PreviewAudioMixer.h"
#include "compose/OverlayManager.h"
#include "compose/OverlayPainting.h"
#include "compose/VulkanCompositor.h"
#include "engine/ChannelSet.h"
#include "engine/FailoverControl.h"
#include "engine/FailoverSettingsJson.h"
#include "engine/OutputRules.h"
#include "engine/OutputSession.h"
#include "engine/OutputTimetable.h"
#include "engine/OverlaySlots.h"
#include "engine/ProgramSwitcher.h"
#include "engine/ResolutionPolicy.h"
#include "engine/ScheduleControl.h"
#include "engine/SlideShow.h"
#include "engine/SourceChecks.h"
#include "engine/StingerCache.h"
#include "media/FrameConvert.h"
#include "media/StoredSettings.h"
#include "net/ProxySettings.h"
#include "net/SecretMask.h"
#include "net/SocksTcpRelay.h"
#include "output/VideoEncoderChoice.h"
#include "schedule/ScheduleRunner.h"

#include <QDebug>
#include <QDir>
#include <QElapsedTimer>
#include <QFileInfo>
#include <QMetaMethod>
#include <QPainter>
#include <QSettings>
#include <QThread>
#include <QTimer>
#include <QUrl>
#include <cmath>

namespace selvane {

namespace {

constexpr qint32 kProgramPoolBase = 18;
constexpr int kRateIntervalMs = 1000;

// Rounds half away from zero, at least 1.
int pixelsAtLeastOne(double value)
{
    return std::max(1, int(std::lround(value)));
}

} // namespace

// The schedule's hands: the engine's own operations.
class Engine::Hands : public ScheduleHands
{
public:
    explicit Hands(Engine &engine) : m_engine(engine) {}
    void cutTo(int channel) override { m_engine.cutTo(channel); }
    void transitionTo(int channel, const Transition &transition) override
    {
        m_engine.transitionTo(channel, transition);
    }
    void showImages(const QStringList &paths, int intervalMs, bool loop) override
    {
        m_engine.showImages(paths, intervalMs, loop);
    }
    void showBlack() override { m_engine.showBlack(); }
    void playOnChannel(int channel, const QString &address, bool loop) override
    {
        m_engine.setChannelLoop(channel, loop);
        m_engine.setChannelSource(channel, address);
    }
    void hold(int channel) override { m_engine.pauseChannel(channel); }
    void release(int channel) override { m_engine.resumeChannel(channel); }
    void setTextOverlay(const TextOverlayData &text) override { m_engine.setTextOverlay(text); }
    void removeTextOverlay(int id) override { m_engine.removeTextOverlay(id); }
    void setMediaOverlay(const MediaOverlayRecord &record) override
    {
        m_engine.setMediaOverlay(record);
    }
    void removeMediaOverlay(int id) override { m_engine.removeMediaOverlay(id); }

private:
    Engine &m_engine;
};

Engine::Engine(QObject *parent) : QObject(parent), m_programPool(kProgramPoolBase, 1920, 1080)
{
    qRegisterMetaType<FrameTokenPtr>("FrameTokenPtr");
    qRegisterMetaType<QImage>("QImage");
    registerTextOverlayMetaType();

    // The program thread: composition and still pictures never run on this thread.
    // The program's clock runs from now on; the program thread ticks on it, composition and
    // still pictures never run on this thread.
    m_programClock.start();
    m_programThread = new QThread(this);
    m_programThread->setObjectName("Program");
    m_switcher = new ProgramSwitcher(m_feeds, m_programClock, m_programPool);
    m_switcher->moveToProgramThread(m_programThread);
    m_programThread->start();
    m_switcher->start();
    connect(m_switcher, &ProgramSwitcher::previewReady, this, &Engine::onPreviewReady,
            Qt::QueuedConnection);
    connect(m_switcher, &ProgramSwitcher::channelPreviewsReady, this,
            &Engine::onChannelPreviewsReady, Qt::QueuedConnection);
    connect(m_switcher, &ProgramSwitcher::overlayPreviewsReady, this,
            &Engine::onOverlayPreviewsReady, Qt::QueuedConnection);
    connect(m_switcher, &ProgramSwitcher::transitionFinished, this, &Engine::onTransitionFinished,
            Qt::QueuedConnection);

    m_overlays = new OverlayManager(this);
    m_switcher->setScene(m_overlays->scene());
    connect(m_overlays, &OverlayManager::sceneChanged, this,
            [this](const OverlayScenePtr &scene) { m_switcher->setScene(scene); });
    connect(m_overlays, &OverlayManager::overlayChanged, this, &Engine::overlaysChanged);

    m_channels = new ChannelSet(m_feeds, this);
    connect(m_channels, &ChannelSet::displaySizeChanged, this, &Engine::onChannelSizeChanged);
    connect(m_channels, &ChannelSet::stateChanged, this, &Engine::channelStateChanged);
    connect(m_channels, &ChannelSet::stateChanged, this, &Engine::openPendingOutputsOnceSized);
    connect(m_channels, &ChannelSet::error, this, &Engine::channelError);
    connect(m_channels, &ChannelSet::ended, this, &Engine::channelEnded);

    m_overlaySlots = new OverlaySlots(m_feeds, *m_switcher, this);
    connect(m_overlaySlots, &OverlaySlots::assigned, this,
            [this](int mediaId, int) { applyOverlayAudio(mediaId); });
    connect(m_overlaySlots, &OverlaySlots::error, this, &Engine::overlayError);
    connect(m_overlaySlots, &OverlaySlots::ended, this, &Engine::overlayEnded);

    setUpStingers();
    setUpFailover();
    m_slides = new SlideShow(this);
    connect(m_slides, &SlideShow::slide, this, [this](const QImage &image, int shown) {
        m_switcher->showStill(image);
        if (!image.isNull() && image.size() != m_stillSize) {
            m_stillSize = image.size();
            updateProgramSize();
        }
        noteProgramChannel();
        emit slideShown(shown);
    });

    m_output = new OutputSession(*m_switcher, this);
    connect(m_output, &OutputSession::streamStatusChanged, this, &Engine::streamStatusChanged);
    connect(m_output, &OutputSession::diskForecastChanged, this, &Engine::diskForecastChanged);
    connect(m_output, &OutputSession::started, this, [this](QSize size) {
        // The schedule's time zero is the recording's: switches land where the schedule says
        // (unless the outputs started at a time of their own: the schedule runs on).
        if (m_schedule->isRunning() && !m_timetable->keepsScheduleClock())
            m_schedule->restartClock(0);
        // The encode queue may hold this many pictures of the channels and of the compositor on
        // top of their pools' usual caps: a busy encoder never starves either.
        m_programPool.setHeldByConsumers(m_output->queueDepth());
        m_channels->setHeldByConsumers(m_output->queueDepth());
        emit outputsStarted(size);
    });
    connect(m_output, &OutputSession::failed, this, [this](const Problem &problem) {
        if (!m_output->isActive()) {
            m_sizeLocked = false;
            m_runningOutputs = {};
            updateProgramSize();
        }
        emit outputsFailed(problem);
    });
    connect(m_output, &OutputSession::stopped, this, [this] {
        m_runningOutputs = {};
        m_programPool.setHeldByConsumers(0);
        m_channels->setHeldByConsumers(0);
        m_sizeLocked = false;
        m_outputFps = 30.0;
        updateProgramSize();
        emit outputsStopped();
    });

    m_scheduleHands = std::make_unique<Hands>(*this);
    m_scheduleControl = new ScheduleControl(*m_scheduleHands, this);
    connect(this, &Engine::slideShown, m_scheduleControl, &ScheduleControl::onSlideShown);
    m_schedule = new ScheduleRunner(m_scheduleControl, this);
    m_scheduleControl->setRunner(m_schedule);
    connect(m_schedule, &ScheduleRunner::programArrangementRunningChanged, this,
            &Engine::scheduleRunningChanged);
    connect(m_schedule, &ScheduleRunner::programArrangementRunningChanged, this,
            &Engine::updatePreviewDemand);
    connect(m_schedule, &ScheduleRunner::baseClipChanged, this, [this](const QString &id) {
        emit scheduleBaseClipChanged(id, m_schedule->clock().ms());
    });
    setUpOutputTimes();

    // The mixer runs on a thread of its own once startAudio() is called.
    m_mixer = new PreviewAudioMixer(m_feeds, m_programClock);
    m_output->setMixer(m_mixer);
    m_audioThread = new QThread(this);
    m_audioThread->setObjectName("PreviewAudio");
    m_mixer->moveToThread(m_audioThread);
    connect(m_audioThread, &QThread::finished, m_mixer, &QObject::deleteLater);

    m_rateTimer = new QTimer(this);
    connect(m_rateTimer, &QTimer::timeout, this, &Engine::sampleRates);
    m_rateClock.start();
    m_rateTimer->start(kRateIntervalMs);
    // Until the faces have connected, every preview is made; then only those they take.
    QMetaObject::invokeMethod(this, &Engine::updatePreviewDemand, Qt::QueuedConnection);

    m_switcher->cutTo(0);
    updateProgramSize();
}

Engine::~Engine()
{
    if (m_schedule->isRunning())
        m_schedule->stop();
    // The runner and its hands go before the engine they act on.
    delete m_schedule;
    m_schedule = nullptr;
    delete m_scheduleControl;
    m_scheduleControl = nullptr;
    m_scheduleHands.reset();
    m_slides->stop();
    shutdownAudio();
    // Trailers are written before anything else goes.
    delete m_output;
    m_output = nullptr;
    // Every decoder is asked to end first, so the joins overlap instead of adding up.
    delete m_channels;
    m_channels = nullptr;
    delete m_overlaySlots;
    m_overlaySlots = nullptr;
    delete m_failover; // the standby's decoder, before the feeds and the switcher it serves
    m_failover = nullptr;
    QMetaObject::invokeMethod(
        m_switcher, [switcher = m_switcher] { delete switcher; }, Qt::BlockingQueuedConnection);
    m_switcher = nullptr;
    m_programThread->quit();
    m_programThread->wait();
}

// ---- channels ----

Problem Engine::setChannelSource(int channel, const QString &address, const QString &audioAddress)
{
    if (!ChannelSet::isChannel(channel))
        return {ProblemKind::ChannelOutOfRange, {}, channel + 1};
    // Parsed here once; the decoder, the demuxer and the capture code take it as it is.
    const SourceAddress source(address);
    for (const EncoderSettings *outputs : {&m_preparedOutputs.encoder, &m_runningOutputs})
        if (const Problem same = sourceIsOutput(source, *outputs))
            return same;
    m_channels->setSource(channel, source, SourceAddress(audioAddress));
    if (channel == programChannel())
        updateProgramSize();
    return {};
}

void Engine::pauseChannel(int channel)
{
    m_channels->pause(channel);
}
void Engine::resumeChannel(int channel)
{
    m_channels->resume(channel);
}
void Engine::seekChannel(int channel, qint64 positionMs)
{
    m_channels->seek(channel, positionMs);
}
void Engine::setChannelLoop(int channel, bool loop)
{
    m_channels->setLoop(channel, loop);
}

// ---- the program picture ----

int Engine::programChannel() const
{
    return m_switcher->isStill() ? -1 : m_switcher->programChannel();
}

void Engine::cutTo(int channel)
{
    if (m_directTakesUseTransition && m_transition.timed() && ChannelSet::isChannel(channel)) {
        transitionTo(channel, m_transition);
        return;
    }
    m_slides->stop();
    finishRunningTake();
    m_switcher->cutTo(channel);
    updateProgramSize();
    noteProgramChannel();
}

void Engine::noteProgramChannel()
{
    const int channel = programChannel();
    if (channel == m_announcedProgramChannel)
        return;
    m_announcedProgramChannel = channel;
    updateFailoverTransition(); // readies the standby for the channel now on air
    emit programChannelChanged(channel);
}

Problem Engine::showImages(const QStringList &paths, int intervalMs, bool loop)
{
    if (paths.isEmpty())
        return ProblemKind::NoImages;
    if (!m_slides->isPlaying())
        m_channelBeforeImages = programChannel();
    m_slides->play(paths, intervalMs, loop);
    return {};
}

void Engine::stopImages()
{
    if (!m_slides->isPlaying())
        return;
    // Back to what was on air before the slides.
    if (m_channelBeforeImages >= 0)
        cutTo(m_channelBeforeImages);
    else
        showBlack();
}

bool Engine::isShowingImages() const
{
    return m_slides->isPlaying();
}

void Engine::showStill(const QImage &image)
{
    m_slides->stop();
    finishRunningTake();
    m_switcher->showStill(image);
    if (!image.isNull())
        m_stillSize = image.size();
    updateProgramSize();
    noteProgramChannel();
}

void Engine::setOutputSize(const OutputSize &size)
{
    m_wantedSize = size;
    updateProgramSize();
}

void Engine::onChannelSizeChanged(int channel, QSize)
{
    if (channel != programChannel())
        return;
    updateProgramSize();
    openPendingOutputsOnceSized();
}

void Engine::updateProgramSize()
{
    if (m_sizeLocked)
        return;
    const int channel = programChannel();
    const QSize onAir = channel >= 0 ? m_channels->displaySize(channel) : m_stillSize;
    const OutputSizeChoice choice = chooseOutputSize(m_wantedSize, onAir);
    if (!choice.valid) {
        qWarning() << "FramePipeline: invalid output resolution selection" << m_wantedSize.size;
        return;
    }
    if (m_haveSize && choice.size == m_programSize && choice.usedFallback == m_usedFallback)
        return;
    m_haveSize = true;
    m_programSize = choice.size;
    m_usedFallback = choice.usedFallback;
    m_programPool.resize(choice.size.width(), choice.size.height());
    m_switcher->setOutputSize(choice.size, m_outputFps);
    m_channels->setTargetSize(choice.size);
    m_stingers->setSize(choice.size);
    for (const MediaOverlayRecord &record : m_overlays->mediaOverlays())
        if (record.kind == MediaOverlayRecord::OverlayVideo)
            m_overlaySlots->setTargetSize(record.id, overlayTargetSize(record));
    emit programSizeChanged(choice.size, choice.usedFallback);
}

void Engine::onChannelPreviewsReady()
{
    const auto previews = m_switcher->takeChannelPreviews();
    for (int c = 0; c < kChannelCount; ++c)
        if (previews[std::size_t(c)])
            emit channelPreview(c, previews[std::size_t(c)]);
}

void Engine::onOverlayPreviewsReady()
{
    for (const auto &[mediaId, frame] : m_switcher->takeOverlayPreviews())
        if (frame && mediaId >= 0)
            emit overlayPreview(mediaId, frame);
}

namespace {

bool isPreviewSignal(const QMetaMethod &signal)
{
    return signal == QMetaMethod::fromSignal(&Engine::programFrame) ||
           signal == QMetaMethod::fromSignal(&Engine::channelPreview) ||
           signal == QMetaMethod::fromSignal(&Engine::overlayPreview);
}

} // namespace

void Engine::connectNotify(const QMetaMethod &signal)
{
    // Called inside the connection: the demand is worked out afterwards, on this thread.
    if (isPreviewSignal(signal))
        QMetaObject::invokeMethod(this, &Engine::updatePreviewDemand, Qt::QueuedConnection);
}

void Engine::disconnectNotify(const QMetaMethod &signal)
{
    if (isPreviewSignal(signal))
        QMetaObject::invokeMethod(this, &Engine::updatePreviewDemand, Qt::QueuedConnection);
}

void Engine::setChannelPreviewRate(int perSecond)
{
    m_switcher->setChannelPreviewRate(perSecond);
}

void Engine::setProgramPictureTap(std::function<void(const FrameTokenPtr &frame)> tap)
{
    if (!tap) {
        m_switcher->setPictureTap({});
        return;
    }
    m_switcher->setPictureTap(
        [tap = std::move(tap)](const FrameTokenPtr &frame, qint64) { tap(frame); });
}

void Engine::updatePreviewDemand()
{
    m_switcher->setPreviewDemand(
        isSignalConnected(QMetaMethod::fromSignal(&Engine::programFrame)) ||
            m_schedule->isRunning(),
        isSignalConnected(QMetaMethod::fromSignal(&Engine::channelPreview)),
        isSignalConnected(QMetaMethod::fromSignal(&Engine::overlayPreview)));
}

void Engine::onPreviewReady()
{
    const ProgramSwitcher::Preview preview = m_switcher->takePreview();
    if (!preview.frame)
        return;
    // The schedule follows the clip it plays by the pictures that go out.
    m_scheduleControl->onProgramFrame(preview.frame, preview.channel);
    emit programFrame(preview.frame, preview.channel);
}

// ---- overlays ----

QSize Engine::overlayTargetSize(const MediaOverlayRecord &record) const
{
    return {pixelsAtLeastOne(record.rect.width() * m_programSize.width() /
                             VulkanCompositor::kSceneWidth),
            pixelsAtLeastOne(record.rect.height() * m_programSize.height() /
                             VulkanCompositor::kSceneHeight)};
}

Problem Engine::setTextOverlay(const TextOverlayData &text)
{
    if (text.text.trimmed().isEmpty())
        return ProblemKind::TextEmpty;
    if (text.text.size() > TextOverlayData::kMaxTextLength)
        return {ProblemKind::TextTooLong, {}, text.text.size()};
    if (!m_overlays->textOverlay(text.id))
        if (const Problem full = roomForTextOverlay())
            return full;
    m_overlays->setTextOverlay(text);
    return {};
}

Problem Engine::roomForTextOverlay() const
{
    if (m_overlays->textOverlays().size() >= OverlayScene::kMaxTextOverlays)
        return {ProblemKind::TooManyTexts, {}, OverlayScene::kMaxTextOverlays};
    return {};
}

Problem Engine::roomForMediaOverlay() const
{
    if (m_overlays->mediaOverlays().size() >= OverlayScene::kMaxMediaOverlays)
        return {ProblemKind::TooManyMedia, {}, OverlayScene::kMaxMediaOverlays};
    return {};
}

int Engine::addTextOverlay(TextOverlayData text, Problem *problem)
{
    const QList<TextOverlayData> texts = m_overlays->textOverlays();
    int id = 1;
    while (m_overlays->textOverlay(id))
        ++id;
    text.id = id;
    int top = 0;
    for (const TextOverlayData &other : texts)
        top = std::max(top, other.zIndex);
    text.zIndex = top + 1; // a new text lies over the others
    const Problem refused =
        id < kFirstScheduleOverlayId
            ? setTextOverlay(text)
            : Problem{ProblemKind::TooManyTexts, {}, OverlayScene::kMaxTextOverlays};
    if (problem)
        *problem = refused;
    return refused ? -1 : id;
}

int Engine::duplicateTextOverlay(int id, Problem *problem)
{
    const TextOverlayData *original = m_overlays->textOverlay(id);
    if (!original) {
        if (problem)
            *problem = {ProblemKind::NoSuchOverlay, {}, id};
        return -1;
    }
    // A step of 12 scene units, so that the copy is seen beside the original.
    constexpr double kStep = 12.0;
    TextOverlayData copy = *original;
    copy.posX = std::min(1.0, copy.posX + kStep / VulkanCompositor::kSceneWidth);
    copy.posY = std::min(1.0, copy.posY + kStep / VulkanCompositor::kSceneHeight);
    return addTextOverlay(copy, problem);
}

Problem Engine::removeTextOverlay(int id)
{
    if (!m_overlays->textOverlay(id))
        return {ProblemKind::NoSuchOverlay, {}, id};
    m_overlays->removeTextOverlay(id);
    return {};
}

int Engine::addMediaOverlay(MediaOverlayRecord::Kind kind, const QString &path, Problem *problem)
{
    const QList<MediaOverlayRecord> records = m_overlays->mediaOverlays();
    int id = 1;
    while (m_overlays->mediaOverlay(id))
        ++id;
    MediaOverlayRecord record;
    record.id = id;
    record.kind = kind;
    record.filePath = path;
    // A quarter of the scene's width in the top right corner, 16:9, clear of the edge; each
    // next one a step lower and to the left, so that none hides another.
    const double w = VulkanCompositor::kSceneWidth / 4.0;
    const double h = w * 9 / 16;
    const double step = 12.0 * double(records.size());
    record.rect = QRectF(VulkanCompositor::kSceneWidth - w - 16 - step, 16 + step, w, h);
    record.loop = true;
    const Problem refused = setMediaOverlay(record);
    if (problem)
        *problem = refused;
    return refused ? -1 : id;
}

Problem Engine::setMediaOverlay(const MediaOverlayRecord &record)
{
    // A picture is a file; a video may be any source a channel may have (a test signal too).
    const QFileInfo file(record.filePath);
    const SourceAddress video(record.kind == MediaOverlayRecord::OverlayVideo ? record.filePath
                                                                              : QString());
    if (record.kind == MediaOverlayRecord::OverlayVideo) {
        if (const Problem bad = checkSourceAddress(video))
            return bad.kind == ProblemKind::AddressFileMissing
                       ? Problem{ProblemKind::OverlayFileMissing, record.filePath}
                       : bad;
    } else if (!file.isFile() || !file.isReadable()) {
        return {ProblemKind::OverlayFileMissing, record.filePath};
    }
    const MediaOverlayRecord *before = m_overlays->mediaOverlay(record.id);
    if (!before)
        if (const Problem full = roomForMediaOverlay())
            return full;
    const bool wasVideo = before && before->kind == MediaOverlayRecord::OverlayVideo;
    const bool samePlayback =
        wasVideo && before->filePath == record.filePath && before->loop == record.loop;
    m_overlays->setMediaOverlay(record);
    if (record.kind == MediaOverlayRecord::OverlayVideo) {
        if (samePlayback)
            m_overlaySlots->setTargetSize(record.id, overlayTargetSize(record));
        else
            m_overlaySlots->play(record.id, video, overlayTargetSize(record), record.loop);
    } else if (wasVideo) {
        m_overlaySlots->stop(record.id);
    }
    return {};
}

Problem Engine::removeMediaOverlay(int id)
{
    if (!m_overlays->mediaOverlay(id))
        return {ProblemKind::NoSuchOverlay, {}, id};
    m_overlaySlots->stop(id);
    m_overlays->removeMediaOverlay(id);
    m_overlayAudio.remove(id);
    return {};
}

void Engine::setDoodle(const QList<DoodleStroke> &strokes)
{
    m_overlays->setDoodleLayer(strokes);
}
void Engine::setDoodleVisible(bool visible)
{
    m_overlays->setDoodleVisible(visible);
}
QList<TextOverlayData> Engine::textOverlays() const
{
    return m_overlays->textOverlays();
}
QList<MediaOverlayRecord> Engine::mediaOverlays() const
{
    return m_overlays->mediaOverlays();
}
QList<DoodleStroke> Engine::doodle() const
{
    return m_overlays->scene()->doodle;
}
bool Engine::doodleVisible() const
{
    return m_overlays->isDoodleVisible();
}

void Engine::setPreparedOutputs(const OutputSettings &settings)
{
    m_preparedOutputs = settings;
}

Problem Engine::startOutputs(const OutputSettings &requested)
{
    if (outputsActive())
        return ProblemKind::OutputsActive;
    OutputSettings settings = requested;
    EncoderSettings &encoder = settings.encoder;
    encoder.filePath = encoder.filePath.trimmed();
    encoder.fileEnabled = encoder.fileEnabled && !encoder.filePath.isEmpty();
    if (const Problem problem = OutputRules::check(settings, m_programSize))
        return problem;
    for (int c = 0; c < kChannelCount; ++c)
        if (const Problem same = sourceIsOutput(m_channels->source(c), encoder))
            return same;
    const OutputRules::EightKRules rules = OutputRules::eightKRules(settings, m_programSize);
    if (rules.hardwareForced)
        encoder.encoderMode = EncoderSettings::Hardware;
    if (rules.performanceForced)
        encoder.qualityPreset = EncoderSettings::Performance;
    if (settings.makeRecordingFolder && encoder.fileEnabled)
        QDir().mkpath(QFileInfo(encoder.filePath).absolutePath());
    m_runningOutputs = encoder;
    m_pendingOutputs = settings;
    // The program runs (black until a picture comes), so the outputs open at once when the
    // size is given, or as soon as the program's source shows its size; a source that has
    // shown nothing within a second gets the fallback size rather than a recording that
    // misses the start.
    QMetaObject::invokeMethod(this, &Engine::openPendingOutputsOnceSized, Qt::QueuedConnection);
    const quint64 request = ++m_outputRequests;
    QTimer::singleShot(kOutputSizeWaitMs, this, [this, request] {
        if (request == m_outputRequests)
            openPendingOutputs();
    });
    return {};
}

void Engine::openPendingOutputsOnceSized()
{
    if (!m_pendingOutputs)
        return;
    const int channel = programChannel();
    const ChannelState state = channel >= 0 ? m_channels->state(channel) : ChannelState::Idle;
    // A source that failed or is being reconnected will not show its size soon.
    const bool sized =
        m_pendingOutputs->size.explicitSize || state == ChannelState::Failed ||
        state == ChannelState::Reconnecting ||
        (channel >= 0 ? m_channels->displaySize(channel).isValid() : m_stillSize.isValid());
    if (sized)
        openPendingOutputs();
}

void Engine::openPendingOutputs()
{
    if (!m_pendingOutputs || m_output->isActive())
        return;
    const OutputSettings settings = *m_pendingOutputs;
    m_pendingOutputs.reset();
    m_wantedSize = settings.size;
    m_sizeLocked = false;
    m_outputFps = settings.encoder.fps > 0 ? settings.encoder.fps : 30.0;
    m_haveSize = false; // the frame rate may have changed
    updateProgramSize();
    m_sizeLocked = true;
    // What a multiview names under each channel: a file's name or a stream's host, never a
    // stream key.
    std::array<QString, kChannelCount> labels;
    for (int c = 0; c < kChannelCount; ++c) {
        const SourceAddress source = m_channels->source(c);
        const QString path = source.localPath();
        labels[std::size_t(c)] = !path.isEmpty() ? QFileInfo(path).fileName()
                                 : !source.host().isEmpty()
                                     ? source.scheme() + "://" + source.host()
                                     : source.text().left(40);
    }
    m_output->setChannelLabels(labels);
    m_output->setPreviewChannel(m_previewChannel);
    if (!m_output->start(settings.encoder, m_programSize, std::exchange(m_pendingBeginUs, -1))) {
        m_sizeLocked = false;
        updateProgramSize();
    }
}

void Engine::stopOutputs()
{
    m_pendingOutputs.reset();
    m_pendingBeginUs = -1;
    m_runningOutputs = {};
    m_output->stop();
}

bool Engine::reconnectTargetNow(int index)
{
    return m_output->reconnectTargetNow(index);
}

bool Engine::outputsActive() const
{
    return m_pendingOutputs.has_value() || m_output->isActive();
}

// ---- schedule ----

arrangement::Validation Engine::loadSchedule(const ProgramArrangement &arrangement)
{
    arrangement::Validation check = arrangement::validate(arrangement);
    QString why;
    if (check.ok && !arrangement.failover.isEmpty() &&
        !failoverFromJson(arrangement.failover, failover(), &why))
        check = {false, tr("Invalid Schedule"), tr("\"failover\": %1").arg(why)};
    m_arrangementValid = check.ok;
    m_arrangement = check.ok ? arrangement : ProgramArrangement{};
    prepareStingers(m_arrangement);
    return check;
}

bool Engine::startSchedule(QString *error)
{
    // The schedule's failover settings, over the show's own; on unless it says otherwise.
    if (!m_arrangement.failover.isEmpty()) {
        FailoverSettings settings = failover();
        settings.enabled = true;
        QString why;
        const auto read = failoverFromJson(m_arrangement.failover, settings, &why);
        const Problem problem = read ? setFailover(*read) : Problem{};
        if (!read || problem) {
            if (error)
                *error = read ? problemText(problem) : why;
            return false;
        }
    }
    return m_schedule->start(m_arrangement, error);
}

void Engine::stopSchedule()
{
    m_schedule->stop();
    m_scheduleControl->release();
}

bool Engine::isScheduleRunning() const
{
    return m_schedule->isRunning();
}

} // namespace selvane
