#include "engine/ProgramSwitcher.h"

#include "compose/TransitionPaint.h"
#include "media/FrameConvert.h"
#include "media/ProgramClock.h"

#include <QPainter>
#include <QThread>
#include <QTimer>
#include <cmath>
#include <cstring>
#include <utility>

namespace selvane {

ProgramSwitcher::ProgramSwitcher(SourceFeeds &feeds, const ProgramClock &clock,
                                 const FramePool &programPool)
    : m_feeds(feeds), m_clock(clock), m_pool(programPool), m_compositor(programPool)
{
    for (auto &media : m_slotMedia)
        media.store(-1);
    for (auto &state : m_channelStates)
        state.store(int(ChannelState::Idle));
}

ProgramSwitcher::~ProgramSwitcher() = default;

void ProgramSwitcher::moveToProgramThread(QThread *thread)
{
    moveToThread(thread);
}

void ProgramSwitcher::start()
{
    QMetaObject::invokeMethod(this, &ProgramSwitcher::startTicking, Qt::QueuedConnection);
}

void ProgramSwitcher::startTicking()
{
    if (!m_timer) {
        m_timer = new QTimer(this);
        m_timer->setSingleShot(true);
        m_timer->setTimerType(Qt::PreciseTimer);
        connect(m_timer, &QTimer::timeout, this, &ProgramSwitcher::onTimer);
    }
    m_tickBaseUs = m_clock.nowUs();
    m_tickIndex = 1;
    m_nextTickUs = tickTimeUs(m_tickIndex);
    m_nextTickPublished.store(m_nextTickUs);
    scheduleNext();
}

// ---- controls ----

int ProgramSwitcher::programChannel() const
{
    const int failed = m_failedChannel.load();
    if (failed >= 0)
        return failed;
    const int program = m_feeds.bus().program();
    return SourceFeeds::isChannel(program) ? program : -1;
}

void ProgramSwitcher::cutTo(int channel)
{
    operatorSwitched();
    m_feeds.bus().cut(SourceFeeds::isChannel(channel) ? channel : -1, nextTickUs());
    m_still.store(false);
}

void ProgramSwitcher::transitionTo(int channel, const Transition &transition)
{
    if (!transition.timed() || !SourceFeeds::isChannel(channel)) {
        cutTo(channel);
        return;
    }
    operatorSwitched();
    m_feeds.bus().begin(channel, transition, nextTickUs());
}

void ProgramSwitcher::holdTransition(int channel, const Transition &transition, double position)
{
    ProgramBus &bus = m_feeds.bus();
    operatorSwitched();
    if (position >= 1.0) {
        if (bus.isManual() && bus.target() == channel) {
            bus.settleManual(nextTickUs());
            m_still.store(false);
        } else {
            cutTo(channel);
        }
        emit transitionFinished(channel);
    } else if (position <= 0.0) {
        bus.cancelManual();
    } else if (SourceFeeds::isChannel(channel)) {
        bus.hold(channel, transition, position);
    }
}

void ProgramSwitcher::fadeToBlack(bool black, int durationMs)
{
    m_feeds.bus().fade(black, durationMs, nextTickUs());
}

void ProgramSwitcher::showStill(const QImage &image)
{
    {
        std::lock_guard lock(m_mutex);
        m_stillImage = image;
        ++m_stillVersion;
    }
    m_still.store(true);
    operatorSwitched();
    m_feeds.bus().cut(-1, nextTickUs());
}

void ProgramSwitcher::showStandby(const Transition &transition)
{
    operatorSwitched();
    m_still.store(false);
    if (transition.timed())
        m_feeds.bus().begin(SourceFeeds::kStandby, transition, nextTickUs());
    else
        m_feeds.bus().cut(SourceFeeds::kStandby, nextTickUs());
}

void ProgramSwitcher::setFailover(const FailoverConfig &config, const Transition &transition)
{
    std::lock_guard lock(m_mutex);
    m_failoverConfig = config;
    m_failoverTransition = transition;
    m_failoverChanged = true;
}

void ProgramSwitcher::setChannelState(int channel, ChannelState state)
{
    if (SourceFeeds::isChannel(channel))
        m_channelStates[std::size_t(channel)].store(int(state));
}

void ProgramSwitcher::setStandbyImage(const QImage &image)
{
    std::lock_guard lock(m_mutex);
    m_standbyImage = image;
    ++m_standbyVersion;
}

void ProgramSwitcher::setStandbyCaption(std::shared_ptr<const StingerPicture> caption)
{
    std::lock_guard lock(m_mutex);
    m_standbyCaption = std::move(caption);
}

void ProgramSwitcher::setScene(OverlayScenePtr scene)
{
    std::lock_guard lock(m_mutex);
    m_scene = std::move(scene);
}

void ProgramSwitcher::setOverlaySlotMedia(int slot, int mediaId)
{
    if (slot >= 0 && slot < SourceFeeds::kOverlaySlots)
        m_slotMedia[std::size_t(slot)].store(mediaId);
}

void ProgramSwitcher::setOutputSize(QSize size, double fps)
{
    std::lock_guard lock(m_mutex);
    m_outputSize = size;
    m_fps = fps > 0 ? fps : 30.0;
}

void ProgramSwitcher::setOutputSink(OutputSink sink)
{
    std::lock_guard lock(m_mutex);
    m_outputSink = std::move(sink);
}

void ProgramSwitcher::setChannelSink(ChannelSink sink)
{
    std::lock_guard lock(m_mutex);
    m_channelSink = std::move(sink);
}

void ProgramSwitcher::setPreviewDemand(bool program, bool channels, bool overlays)
{
    m_programWanted.store(program);
    m_channelsWanted.store(channels);
    m_overlaysWanted.store(overlays);
}

void ProgramSwitcher::setChannelPreviewRate(int perSecond)
{
    m_channelPreviewGapUs.store(perSecond > 0 ? 1000000 / perSecond : 0);
}

void ProgramSwitcher::setPictureTap(OutputSink tap)
{
    std::lock_guard lock(m_mutex);
    m_pictureTap = std::move(tap);
}

ProgramSwitcher::Counters ProgramSwitcher::counters() const
{
    std::lock_guard lock(m_mutex);
    return m_counters;
}

ProgramSwitcher::Preview ProgramSwitcher::takePreview()
{
    std::lock_guard lock(m_previewMutex);
    Preview preview = std::move(m_preview);
    m_preview = {};
    m_previewPosted.store(false);
    return preview;
}

std::array<FrameTokenPtr, SourceFeeds::kChannels> ProgramSwitcher::takeChannelPreviews()
{
    std::array<FrameTokenPtr, SourceFeeds::kChannels> previews;
    std::lock_guard lock(m_previewMutex);
    previews.swap(m_channelPreviews);
    m_channelPreviewsPosted.store(false);
    return previews;
}

std::array<std::pair<int, FrameTokenPtr>, SourceFeeds::kOverlaySlots>
ProgramSwitcher::takeOverlayPreviews()
{
    std::array<std::pair<int, FrameTokenPtr>, SourceFeeds::kOverlaySlots> previews;
    std::lock_guard lock(m_previewMutex);
    previews.swap(m_overlayPreviews);
    m_overlayPreviewsPosted.store(false);
    return previews;
}

// ---- program thread ----

void ProgramSwitcher::scheduleNext()
{
    const qint64 waitUs = m_nextTickUs - m_clock.nowUs();
    m_timer->start(int(std::max<qint64>(0, (waitUs + 999) / 1000)));
}

qint64 ProgramSwitcher::tickTimeUs(qint64 index) const
{
    return m_tickBaseUs + std::llround(double(index) * 1e6 / m_tickFps);
}

void ProgramSwitcher::onTimer()
{
    double fps = 30.0;
    {
        std::lock_guard lock(m_mutex);
        fps = m_fps;
    }
    if (fps != m_tickFps) {
        // Another output rate: the ticks start again from the last one.
        m_tickBaseUs = m_nextTickUs;
        m_tickIndex = 0;
        m_tickFps = fps;
    }
    const qint64 now = m_clock.nowUs();
    const qint64 periodUs = std::llround(1e6 / m_tickFps);
    if (now - m_nextTickUs > 2 * periodUs) {
        // Too late for these ticks (the machine stalled): they are skipped, not made in a burst.
        const qint64 missed = (now - m_nextTickUs) / periodUs;
        m_tickIndex += missed;
        m_nextTickUs = tickTimeUs(m_tickIndex);
        std::lock_guard lock(m_mutex);
        m_counters.skippedTicks += missed;
    }
    while (m_nextTickUs <= now) {
        tick(m_nextTickUs);
        m_nextTickUs = tickTimeUs(++m_tickIndex);
    }
    m_nextTickPublished.store(m_nextTickUs);
    scheduleNext();
}

FrameTokenPtr ProgramSwitcher::stillFrame(qint64 programUs)
{
    QImage image;
    quint64 version = 0;
    {
        std::lock_guard lock(m_mutex);
        image = m_stillImage;
        version = m_stillVersion;
    }
    return canvasFrame(image, version, m_stillCanvas, programUs);
}

FrameTokenPtr ProgramSwitcher::canvasFrame(const QImage &image, quint64 version, Canvas &canvas,
                                           qint64 programUs)
{
    QSize out;
    {
        std::lock_guard lock(m_mutex);
        out = m_outputSize;
    }
    if (out.width() < 1 || out.height() < 1)
        return {};
    // The picture is drawn once per change of picture or size, and then shown as it is.
    if (!canvas.token || canvas.size != out || canvas.version != version) {
        QImage drawn(out, QImage::Format_RGBA8888);
        drawn.fill(Qt::black);
        if (!image.isNull()) {
            const QSize scaled = image.size().scaled(out, Qt::KeepAspectRatio);
            QPainter painter(&drawn);
            painter.setRenderHint(QPainter::SmoothPixmapTransform, true);
            painter.drawImage(QRect((out.width() - scaled.width()) / 2,
                                    (out.height() - scaled.height()) / 2, scaled.width(),
                                    scaled.height()),
                              image);
        }
        FrameWriter token = m_pool.acquire();
        if (!token || !imageToFrame(drawn, token))
            return {}; // drawn again on the next tick, when the pool has a frame to spare
        canvas.version = version;
        canvas.size = out;
        token->ptsUs = programUs;
        canvas.token = std::move(token).publish();
    }
    return canvas.token;
}

FrameTokenPtr ProgramSwitcher::blackFrame(qint64 programUs)
{
    QSize out;
    {
        std::lock_guard lock(m_mutex);
        out = m_outputSize;
    }
    if (out.width() < 1 || out.height() < 1)
        return {};
    if (m_blackToken && m_blackToken->width == out.width() && m_blackToken->height == out.height())
        return m_blackToken;
    FrameWriter token = m_pool.acquire();
    if (!token)
        return m_blackToken; // made on the next tick, when the pool has a frame to spare
    token.prepareI420(out.width(), out.height());
    token->ptsUs = programUs;
    const qint64 luma = token->planeOffset(1);
    std::memset(token.bits(), 16, std::size_t(luma));
    std::memset(token.bits() + luma, 128, std::size_t(token->pixels.size() - luma));
    m_blackToken = std::move(token).publish();
    return m_blackToken;
}

FrameTokenPtr ProgramSwitcher::pictureOf(int source, qint64 programUs)
{
    if (source == SourceFeeds::kStandby)
        return standbyFrame(programUs);
    if (SourceFeeds::isChannel(source))
        return m_channels[std::size_t(source)].pacer.current();
    return {};
}

FrameTokenPtr ProgramSwitcher::standbyFrame(qint64 programUs)
{
    QImage image;
    quint64 version = 0;
    std::shared_ptr<const StingerPicture> caption;
    {
        std::lock_guard lock(m_mutex);
        image = m_standbyImage;
        version = m_standbyVersion;
        caption = m_standbyCaption;
    }
    if (!image.isNull())
        return canvasFrame(image, version, m_standbyCanvas, programUs);
    const FrameTokenPtr &picture = m_standby.pacer.current();
    if (!picture || !caption || caption->isClear())
        return picture;
    // The slate's words over its clip, blended once per picture of the clip.
    if (picture == m_captionedFrom && m_captioned)
        return m_captioned;
    FrameWriter out = m_pool.acquire();
    if (!out || !transition::stinger(*picture, *caption, out))
        return picture;
    out->ptsUs = programUs;
    m_captionedFrom = picture;
    m_captioned = std::move(out).publish();
    return m_captioned;
}

void ProgramSwitcher::runFailover(qint64 programUs)
{
    bool changed = false;
    Transition transition;
    {
        std::lock_guard lock(m_mutex);
        changed = std::exchange(m_failoverChanged, false);
        transition = m_failoverTransition;
        if (changed)
            m_failover.setConfig(m_failoverConfig);
    }
    if (m_forgetFailover.exchange(false))
        m_failover.forget();
    std::array<FailoverRule::Reading, kChannelCount> readings;
    for (int c = 0; c < kChannelCount; ++c) {
        SourceFeed &feed = m_feeds.channel(c);
        readings[std::size_t(c)] = {ChannelState(m_channelStates[std::size_t(c)].load()),
                                    feed.frames().pushedFrames(), feed.generation()};
    }
    ProgramBus &bus = m_feeds.bus();
    const bool busy = m_still.load() || bus.target() >= 0;
    const FailoverRule::Step step = m_failover.step(programUs, readings, bus.program(), busy);
    m_failedChannel.store(m_failover.failedChannel());
    if (step.kind == FailoverRule::Step::Stay)
        return;
    if (transition.timed())
        bus.begin(step.backup, transition, programUs);
    else
        bus.cut(step.backup, programUs);
    if (step.kind == FailoverRule::Step::Fail)
        emit failedOver(step.channel, step.backup);
    else
        emit returned(step.channel);
}

FrameTokenPtr ProgramSwitcher::transitionFrame(const ProgramBus::Moment &moment, qint64 programUs)
{
    FrameTokenPtr from = pictureOf(moment.from, programUs);
    if (!from)
        from = m_settledBase; // a still, black, or a channel with nothing yet: what was shown
    FrameTokenPtr to = pictureOf(moment.to, programUs);
    if (moment.transition.kind == TransitionKind::Stinger)
        return stingerFrame(moment, from, to, programUs);
    if (!from || !to)
        return to ? to : from;
    FrameWriter out = m_pool.acquire();
    if (!out || !transition::paint(*from, *to, moment.position, moment.transition, out))
        return {};
    out->ptsUs = programUs;
    return std::move(out).publish();
}

FrameTokenPtr ProgramSwitcher::stingerFrame(const ProgramBus::Moment &moment,
                                            const FrameTokenPtr &from, const FrameTokenPtr &to,
                                            qint64 programUs)
{
    // Underneath, the program switches at the clip's cut point; the clip plays over it.
    const StingerClip *clip = moment.transition.stinger.get();
    const bool switched = !clip || moment.elapsedUs >= clip->cutUs;
    const FrameTokenPtr &under = switched ? (to ? to : from) : (from ? from : to);
    if (!clip || !under)
        return under;
    const StingerPicture *picture = clip->at(moment.elapsedUs);
    if (!picture || picture->isClear() || clip->size != QSize(under->width, under->height))
        return under;
    FrameWriter out = m_pool.acquire();
    if (!out || !transition::stinger(*under, *picture, out))
        return under;
    out->ptsUs = programUs;
    return std::move(out).publish();
}

FrameTokenPtr ProgramSwitcher::fadedFrame(const FrameTokenPtr &program, double black)
{
    if (!program)
        return program;
    FrameWriter out = m_pool.acquire();
    if (!out || !transition::fade(*program, {16, 128, 128}, black, out))
        return program; // no frame to spare: this one goes out as it is
    return std::move(out).publish();
}

void ProgramSwitcher::tick(qint64 programUs)
{
    m_periodUs = std::llround(1e6 / m_tickFps);
    bool channelsChanged = false, fullRateChanged = false;
    const bool channelsWanted = m_channelsWanted.load();
    const int fullRate = m_fullRateChannel.load();
    for (int c = 0; c < SourceFeeds::kChannels; ++c) {
        SourceState &state = m_channels[std::size_t(c)];
        state.pacer.advance(m_feeds.channel(c), programUs, m_periodUs);
        const FrameTokenPtr &current = state.pacer.current();
        if (channelsWanted && current && current != state.previewed) {
            state.previewed = current;
            std::lock_guard lock(m_previewMutex);
            m_channelPreviews[std::size_t(c)] = current;
            channelsChanged = true;
            fullRateChanged = fullRateChanged || c == fullRate;
        }
    }
    m_standby.pacer.advance(m_feeds.standby(), programUs, m_periodUs);
    bool slotsChanged = false;
    for (int s = 0; s < SourceFeeds::kOverlaySlots; ++s) {
        SourceState &state = m_slots[std::size_t(s)];
        const int media = m_slotMedia[std::size_t(s)].load();
        if (media != m_slotShownMedia[std::size_t(s)]) {
            // The slot serves another overlay (or none): its old picture goes with it.
            if (m_slotShownMedia[std::size_t(s)] >= 0)
                m_compositor.setVideoPicture(m_slotShownMedia[std::size_t(s)], nullptr);
            m_slotShownMedia[std::size_t(s)] = media;
            state = {};
        }
        state.pacer.advance(m_feeds.overlaySlot(s), programUs, m_periodUs);
        const FrameTokenPtr &current = state.pacer.current();
        if (media >= 0 && current && current != state.previewed) {
            state.previewed = current;
            m_compositor.setVideoPicture(media, current);
            if (m_overlaysWanted.load()) {
                std::lock_guard lock(m_previewMutex);
                m_overlayPreviews[std::size_t(s)] = {media, current};
                slotsChanged = true;
            }
        }
    }
    // A picture that comes sooner than the rate allows waits, never gets lost: it is announced
    // with the next one, or on its own once the gap has passed.
    m_channelPreviewsPending = m_channelPreviewsPending || channelsChanged;
    if (m_channelPreviewsPending &&
        (fullRateChanged ||
         programUs - m_channelPreviewsPostedUs >= m_channelPreviewGapUs.load()) &&
        !m_channelPreviewsPosted.exchange(true)) {
        m_channelPreviewsPending = false;
        m_channelPreviewsPostedUs = programUs;
        emit channelPreviewsReady();
    }
    if (slotsChanged && !m_overlayPreviewsPosted.exchange(true))
        emit overlayPreviewsReady();

    runFailover(programUs);
    const int finished = m_feeds.bus().settle(programUs);
    if (finished >= 0) {
        m_still.store(false);
        emit transitionFinished(finished);
    }
    const ProgramBus::Moment moment = m_feeds.bus().at(programUs);
    const bool still = m_still.load() && moment.from < 0;
    const int channel = still ? -1 : moment.from;
    // The channel whose picture this is; -1 while the last one holds, and for the standby.
    int onAir = SourceFeeds::isChannel(channel) ? channel : -1;
    FrameTokenPtr base;
    // A stinger's first picture shows on the tick it starts; the others begin from the
    // picture on air.
    const bool painting =
        moment.transitioning() &&
        (moment.position > 0.0 || moment.transition.kind == TransitionKind::Stinger);
    if (painting) {
        base = transitionFrame(moment, programUs);
        if (!base)
            base = m_lastBase;
    } else if (still) {
        base = stillFrame(programUs);
        if (!base)
            base = m_lastBase; // no frame to draw it into yet: the picture holds
    } else if (SourceFeeds::isOnAirSource(channel)) {
        base = pictureOf(channel, programUs);
        if (!base) {
            base = m_lastBase; // nothing from the new channel yet: the picture holds
            onAir = -1;
        }
    } else {
        base = m_lastBase; // a still left, its switch not due yet: the picture holds
    }
    if (!base || base == m_blackToken) {
        // Nothing has been on air yet: the program is black, and runs at its rate all the same.
        base = blackFrame(programUs);
        onAir = -1;
        if (!base)
            return;
    }
    const bool repeated = base == m_lastBase;
    m_lastBase = base;
    if (!painting)
        m_settledBase = base;

    OverlayScenePtr scene;
    OutputSink sink, tap;
    ChannelSink channelSink;
    {
        std::lock_guard lock(m_mutex);
        scene = m_scene;
        sink = m_outputSink;
        tap = m_pictureTap;
        channelSink = m_channelSink;
    }
    if (channelSink) {
        std::array<FrameTokenPtr, SourceFeeds::kChannels> pictures;
        for (int c = 0; c < SourceFeeds::kChannels; ++c)
            pictures[std::size_t(c)] = m_channels[std::size_t(c)].pacer.current();
        channelSink(pictures, programUs);
    }
    FrameTokenPtr program = m_compositor.compose(base, scene.get());
    if (moment.black > 0.0)
        program = fadedFrame(program, moment.black);
    const bool bare = program == base && scene && m_compositor.overlayCount(*scene) > 0;
    {
        std::lock_guard lock(m_mutex);
        ++m_counters.frames;
        m_counters.repeated += repeated ? 1 : 0;
        m_counters.withoutOverlays += bare ? 1 : 0;
        for (int c = 0; c < SourceFeeds::kChannels; ++c) {
            const SourcePacer &pacer = m_channels[std::size_t(c)].pacer;
            m_counters.skippedPictures[std::size_t(c)] = pacer.skipped();
            m_counters.repeatedTicks[std::size_t(c)] = pacer.repeated();
            m_counters.reanchors[std::size_t(c)] = pacer.reanchors();
        }
    }
    if (sink)
        sink(program, programUs);
    if (tap)
        tap(program, programUs);
    if (!m_programWanted.load())
        return;
    {
        std::lock_guard lock(m_previewMutex);
        m_preview = {program, onAir};
    }
    if (!m_previewPosted.exchange(true))
        emit previewReady();
}

qint64 ProgramSwitcher::nowUs() const
{
    return m_clock.nowUs();
}

} // namespace selvane
