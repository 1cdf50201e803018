#include "compose/FramePipeline.h"

#include "compose/OverlayManager.h"
#include "input/FFmpegVideoDecoder.h"
#include "audio/PreviewAudioMixer.h"
#include "audio/SampleQueue.h"
#include "output/OutputRouter.h"

#include <QCoreApplication>
#include <QDebug>
#include <QPainter>
#include <QPointer>
#include <QThreadPool>

#include <cmath>
#include <cstring>

namespace {

int evenAtLeastTwo(int value) { return std::max(2, value - (value % 2)); }

QSize evenSize(QSize size) { return {evenAtLeastTwo(size.width()), evenAtLeastTwo(size.height())}; }

// Rounds half away from zero, at least 1.
int pixelsAtLeastOne(double value) { return std::max(1, int(std::lround(value))); }

} // namespace

FramePipeline::FramePipeline(QObject *parent) : QObject(parent)
{
    for (auto &queue : m_channelAudio)
        queue = std::make_unique<selvane::SampleQueue>();
    for (auto &queue : m_overlayAudio)
        queue = std::make_unique<selvane::SampleQueue>();
    for (int c = 0; c < kChannelCount; ++c) {
        Channel &channel = m_channels[c];
        channel.decoder = std::make_unique<FFmpegVideoDecoder>();
        FFmpegVideoDecoder *decoder = channel.decoder.get();
        decoder->setFramePool(m_programPool);
        decoder->setFrameSink([this, c](FrameTokenPtr frame) { submitChannelFrame(c, std::move(frame)); });
        decoder->setAudioSink([this, c](const std::int16_t *samples, int frames) {
            m_channelAudio[c]->push(samples, frames);
        });
        connect(decoder, &FFmpegVideoDecoder::decodeError, this, [this, c](const QString &message) {
            qWarning().noquote() << "Channel" << c << "decoder:" << message;
            emit errorOccurred(message);
        });
        connect(decoder, &FFmpegVideoDecoder::sourceVideoInfoChanged, this,
                [this, c](int cw, int ch, int dw, int dh, quint64 generation) {
                    onChannelSourceVideoInfoChanged(c, cw, ch, dw, dh, generation);
                });
        connect(decoder, &FFmpegVideoDecoder::playbackEndedNaturally, this,
                [this, c] { emit channelPlaybackEnded(c); });
    }
    for (int s = 0; s < kOverlaySlotCount; ++s) {
        OverlaySlot &slot = m_overlaySlots[s];
        slot.decoder = std::make_shared<FFmpegVideoDecoder>();
        FFmpegVideoDecoder *decoder = slot.decoder.get();
        decoder->setFramePool(m_overlayPool);
        decoder->setAudioSink([this, s](const std::int16_t *samples, int frames) {
            m_overlayAudio[s]->push(samples, frames);
        });
        connect(decoder, &FFmpegVideoDecoder::decodeError, this, [this, s](const QString &message) {
            qWarning().noquote() << "Overlay slot" << s << "decoder:" << message;
            emit errorOccurred(message);
        });
        connect(decoder, &FFmpegVideoDecoder::playbackEndedNaturally, this, [this, s] {
            const int mediaId = m_overlaySlots[s].mediaId.load();
            if (mediaId >= 0)
                emit overlayPlaybackFinished(mediaId);
        });
    }
    selectOutputResolution();
}

FramePipeline::~FramePipeline()
{
    if (m_mixer)
        m_mixer->setProgramTap(nullptr);
    if (m_router)
        m_router->stop();
    for (Channel &channel : m_channels) {
        channel.decoder->setFrameSink(nullptr);
        channel.decoder->requestStop();
    }
    for (OverlaySlot &slot : m_overlaySlots) {
        slot.decoder->setFrameSink(nullptr);
        slot.decoder->requestStop();
    }
    for (Channel &channel : m_channels)
        channel.decoder->stop();
    for (OverlaySlot &slot : m_overlaySlots)
        slot.decoder->stop();
}

void FramePipeline::setOverlayManager(OverlayManager *manager)
{
    m_overlayManager = manager;
    if (m_overlayManager && m_effectiveSize.isValid())
        m_overlayManager->setOutputSize(m_effectiveSize);
}

// ---- channels ----

void FramePipeline::setChannelSource(int channel, const QString &source, const QString &audioSource)
{
    if (channel < 0 || channel >= kChannelCount)
        return;
    Channel &ch = m_channels[channel];
    ch.decoder->setAudioSource(audioSource);
    if (source.isEmpty()) {
        ch.decoder->stop();
        m_channelAudio[channel]->clear();
        ch.displaySize = {};
        ch.codedSize = {};
        ch.generation = ch.decoder->generation();
        return;
    }
    ch.decoder->setSource(source);
    m_channelAudio[channel]->clear(); // the old source's sound ended with it
    ch.generation = ch.decoder->generation();
}

FFmpegVideoDecoder *FramePipeline::channelDecoder(int channel) const
{
    return channel >= 0 && channel < kChannelCount ? m_channels[channel].decoder.get() : nullptr;
}

QSize FramePipeline::channelDisplaySize(int channel) const
{
    return channel >= 0 && channel < kChannelCount ? m_channels[channel].displaySize : QSize();
}

void FramePipeline::setBaseChannel(int channel)
{
    m_baseChannel.store(channel);
    if (!m_resolutionLocked)
        selectOutputResolution();
}

void FramePipeline::setProgramSourceMode(int mode)
{
    m_programMode.store(mode);
    if (!m_resolutionLocked)
        selectOutputResolution();
}

void FramePipeline::submitChannelFrame(int channel, FrameTokenPtr frame)
{
    if (!frame)
        return;
    if (channel == m_baseChannel.load() && m_programMode.load() != kStillImageMode) {
        // The newest frame replaces one that is still waiting: composition never builds a backlog.
        std::unique_lock lock(m_decodedMutex);
        m_decodedFrame = frame;
        lock.unlock();
        if (!m_decodedPosted.exchange(true))
            QMetaObject::invokeMethod(this, "flushDecodedFrameQueue", Qt::QueuedConnection);
    }
    storeInPreviewMailbox(m_channelPreviews, channel, std::move(frame), "flushChannelPreviewQueue");
}

void FramePipeline::storeInPreviewMailbox(PreviewMailbox &mailbox, int index, FrameTokenPtr frame,
                                          const char *flushSlot)
{
    {
        std::lock_guard lock(mailbox.mutex);
        mailbox.frames[index] = std::move(frame);
    }
    if (!mailbox.posted.exchange(true))
        QMetaObject::invokeMethod(this, flushSlot, Qt::QueuedConnection);
}

void FramePipeline::flushDecodedFrameQueue()
{
    FrameTokenPtr frame;
    {
        std::lock_guard lock(m_decodedMutex);
        frame = std::move(m_decodedFrame);
        m_decodedFrame.reset();
        if (!frame) {
            m_decodedPosted.store(false);
            return;
        }
    }
    onBaseFrameDecoded(frame);
    std::lock_guard lock(m_decodedMutex);
    if (m_decodedFrame)
        QMetaObject::invokeMethod(this, "flushDecodedFrameQueue", Qt::QueuedConnection);
    else
        m_decodedPosted.store(false);
}

void FramePipeline::onBaseFrameDecoded(FrameTokenPtr frame)
{
    emit baseFrameReady(frame);
    composeAndPublish(frame);
}

void FramePipeline::composeAndPublish(const FrameTokenPtr &base)
{
    FrameTokenPtr program = m_compositor.compose(base, m_overlayManager);
    if (m_outputsRunning && m_router)
        m_router->enqueueFrame(program, programClockUs());
    emit programFrameReady(program);
}

void FramePipeline::flushChannelPreviewQueue()
{
    std::array<FrameTokenPtr, 4> frames;
    {
        std::lock_guard lock(m_channelPreviews.mutex);
        frames.swap(m_channelPreviews.frames);
        m_channelPreviews.posted.store(false);
    }
    for (int c = 0; c < kChannelCount; ++c)
        if (frames[c])
            emit channelFrameReady(c, frames[c]);
}

void FramePipeline::onChannelSourceVideoInfoChanged(int channel, int codedWidth, int codedHeight,
                                                    int displayWidth, int displayHeight,
                                                    quint64 generation)
{
    if (channel < 0 || channel >= kChannelCount)
        return;
    Channel &ch = m_channels[channel];
    if (ch.generation != 0 && ch.generation != generation)
        return; // a late report about an earlier source
    ch.codedSize = QSize(codedWidth, codedHeight);
    ch.displaySize = QSize(displayWidth, displayHeight);
    if (!m_resolutionLocked && channel == m_baseChannel.load())
        selectOutputResolution();
}

// ---- still images ----

void FramePipeline::pushStillImage(const QImage &image, qint64 pts)
{
    if (image.isNull())
        return;
    if (m_programMode.load() == kStillImageMode && image.size() != m_stillImageSize) {
        m_stillImageSize = image.size();
        if (!m_resolutionLocked)
            selectOutputResolution();
    }
    const QSize out = m_effectiveSize;
    if (out.width() < 1 || out.height() < 1)
        return;
    if (m_stillCanvas.size() != out || m_stillCanvas.format() != QImage::Format_RGBA8888 ||
        m_stillCanvasKey != image.cacheKey()) {
        m_stillCanvas = QImage(out, QImage::Format_RGBA8888);
        m_stillCanvas.fill(Qt::black);
        const QSize scaled = image.size().scaled(out, Qt::KeepAspectRatio);
        QPainter painter(&m_stillCanvas);
        painter.setRenderHint(QPainter::SmoothPixmapTransform, true);
        painter.drawImage(QRect((out.width() - scaled.width()) / 2,
                                (out.height() - scaled.height()) / 2, scaled.width(),
                                scaled.height()),
                          image);
        painter.end();
        m_stillCanvasKey = image.cacheKey();
    }
    FrameTokenPtr token = m_programPool.acquire();
    if (!token)
        return;
    const qint64 stride = m_stillCanvas.bytesPerLine();
    prepareTokenPixels(*token, out.width(), out.height(), stride);
    token->flag = true;
    token->pts = pts;
    std::memcpy(token->pixels.data(), m_stillCanvas.constBits(), std::size_t(stride * out.height()));
    composeAndPublish(token);
}

// ---- output resolution ----

QSize FramePipeline::sourceSize() const
{
    if (m_programMode.load() == kStillImageMode)
        return m_stillImageSize;
    const int base = m_baseChannel.load();
    if (base >= 0 && base < kChannelCount)
        return m_channels[base].displaySize;
    return {};
}

void FramePipeline::setOutputResolutionSelection(int mode, int width, int height)
{
    m_selectionMode = mode;
    m_selectionSize = QSize(width, height);
    if (!m_resolutionLocked)
        selectOutputResolution();
}

void FramePipeline::selectOutputResolution()
{
    QSize result;
    bool fallback = false;
    if (m_selectionMode == kExplicitResolutionMode) {
        if (m_selectionSize.width() < 1 || m_selectionSize.height() < 1) {
            qWarning() << "FramePipeline: invalid output resolution selection" << m_selectionSize;
            return;
        }
        result = evenSize(m_selectionSize);
    } else {
        const QSize source = sourceSize();
        if (source.width() >= 1 && source.height() >= 1) {
            result = evenSize(source);
        } else {
            result = evenSize(kFallbackOutputSize);
            fallback = true;
        }
    }
    m_effectiveSize = result;
    m_usedFallback = fallback;
    if (result != QSize(m_programPool.width(), m_programPool.height())) {
        m_programPool.resize(result.width(), result.height());
        m_overlayPool.resize(result.width(), result.height());
        if (m_overlayManager)
            m_overlayManager->setOutputSize(result);
        m_stillCanvas = QImage();
        m_stillCanvasKey = 0;
    }
    if (!m_haveResult || result != m_lastEmittedSize || fallback != m_lastEmittedFallback ||
        m_outputFrameRate != m_lastEmittedRate) {
        m_haveResult = true;
        m_lastEmittedSize = result;
        m_lastEmittedFallback = fallback;
        m_lastEmittedRate = m_outputFrameRate;
        emit effectiveOutputResolutionChanged(result, fallback);
    }
}

void FramePipeline::lockResolution()
{
    if (!m_resolutionLocked)
        selectOutputResolution();
    m_resolutionLocked = true;
}

void FramePipeline::unlockResolution()
{
    m_resolutionLocked = false;
    selectOutputResolution();
}

// ---- overlay video slots ----

int FramePipeline::overlaySlotOf(int mediaId) const
{
    for (int s = 0; s < kOverlaySlotCount; ++s)
        if (m_overlaySlots[s].mediaId.load() == mediaId)
            return s;
    return -1;
}

FFmpegVideoDecoder *FramePipeline::overlayDecoder(int slot) const
{
    return slot >= 0 && slot < kOverlaySlotCount ? m_overlaySlots[slot].decoder.get() : nullptr;
}

QSize FramePipeline::overlayTargetSize(int mediaId) const
{
    if (!m_overlayManager)
        return {};
    const MediaOverlayRecord *record = m_overlayManager->mediaOverlay(mediaId);
    if (!record || record->kind != MediaOverlayRecord::OverlayVideo)
        return {};
    const QSize out = m_effectiveSize;
    return {pixelsAtLeastOne(record->rect.width() * out.width() / VulkanCompositor::kSceneWidth),
            pixelsAtLeastOne(record->rect.height() * out.height() / VulkanCompositor::kSceneHeight)};
}

void FramePipeline::registerOverlayVideo(int mediaId, const QString &path)
{
    if (mediaId < 0 || path.isEmpty())
        return;
    int slot = overlaySlotOf(mediaId);
    if (slot < 0) {
        for (int s = 0; s < kOverlaySlotCount && slot < 0; ++s)
            if (m_overlaySlots[s].mediaId.load() == -1)
                slot = s;
    }
    if (slot < 0) {
        // A slot on its way out takes the request once it is free.
        for (OverlaySlot &candidate : m_overlaySlots) {
            if (candidate.unregistering.load()) {
                candidate.pendingRequest = true;
                candidate.pendingMediaId = mediaId;
                candidate.pendingPath = path;
                return;
            }
        }
        qWarning("FramePipeline: overlay video slots full (max 4)");
        return;
    }
    startOverlaySlot(slot, mediaId, path);
}

void FramePipeline::startOverlaySlot(int slot, int mediaId, const QString &path)
{
    OverlaySlot &s = m_overlaySlots[slot];
    disconnectOverlaySlot(slot);
    s.decoder->stop();
    s.mediaId.store(mediaId);
    s.path = path;
    s.decoder->setTargetSize(overlayTargetSize(mediaId));
    s.decoder->setSource(path);
    m_overlayAudio[slot]->clear();
    connectOverlaySlot(slot);
}

void FramePipeline::connectOverlaySlot(int slot)
{
    m_overlaySlots[slot].decoder->setFrameSink(
        [this, slot](FrameTokenPtr frame) { onOverlayFrame(slot, std::move(frame)); });
    m_overlaySlots[slot].connected = true;
}

void FramePipeline::disconnectOverlaySlot(int slot)
{
    m_overlaySlots[slot].decoder->setFrameSink(nullptr);
    m_overlaySlots[slot].connected = false;
}

void FramePipeline::onOverlayFrame(int slot, FrameTokenPtr frame)
{
    if (frame)
        storeInPreviewMailbox(m_overlayPreviews, slot, std::move(frame), "flushOverlayPreviewQueue");
}

void FramePipeline::flushOverlayPreviewQueue()
{
    std::array<FrameTokenPtr, 4> frames;
    {
        std::lock_guard lock(m_overlayPreviews.mutex);
        frames.swap(m_overlayPreviews.frames);
        m_overlayPreviews.posted.store(false);
    }
    for (int s = 0; s < kOverlaySlotCount; ++s) {
        FrameTokenPtr frame = frames[s];
        const int mediaId = m_overlaySlots[s].mediaId.load();
        if (!frame || mediaId < 0 || m_overlaySlots[s].unregistering.load())
            continue;
        // The picture keeps its token alive for as long as the image is held.
        auto *holder = new FrameTokenPtr(frame);
        const QImage picture(reinterpret_cast<const uchar *>(frame->pixels.constData()),
                             frame->width, frame->height, frame->stride, QImage::Format_RGBA8888,
                             [](void *p) { delete static_cast<FrameTokenPtr *>(p); }, holder);
        if (m_overlayManager)
            m_overlayManager->setOverlayVideoPicture(mediaId, picture);
        emit overlayFrameReady(mediaId, frame->pts / 1000,
                               picture.scaled(kOverlayPreviewSize, Qt::KeepAspectRatio,
                                              Qt::FastTransformation));
    }
}

void FramePipeline::runUnregisterOverlayVideoAsync(int mediaId)
{
    const int slot = overlaySlotOf(mediaId);
    if (slot < 0)
        return;
    OverlaySlot &s = m_overlaySlots[slot];
    disconnectOverlaySlot(slot);
    s.unregistering.store(true);
    const quint64 genAtCancel = s.decoder->generation();
    s.decoder->requestStop();
    std::weak_ptr<FFmpegVideoDecoder> weakDecoder = s.decoder;
    QPointer<FramePipeline> guard(this);
    QThreadPool::globalInstance()->start([weakDecoder, guard, slot, mediaId, genAtCancel] {
        if (auto decoder = weakDecoder.lock())
            decoder->stopGeneration(genAtCancel);
        // Checked on the GUI thread: the pipeline may be gone by the time this arrives.
        QMetaObject::invokeMethod(
            QCoreApplication::instance(),
            [guard, slot, mediaId, genAtCancel] {
                if (guard)
                    guard->finishOverlayAsyncUnregisterSlot(slot, mediaId, genAtCancel);
            },
            Qt::QueuedConnection);
    });
}

void FramePipeline::finishOverlayAsyncUnregisterSlot(int slot, int mediaId, quint64 genAtCancel)
{
    if (slot < 0 || slot >= kOverlaySlotCount)
        return;
    OverlaySlot &s = m_overlaySlots[slot];
    if (s.decoder && s.mediaId.load() == mediaId && s.decoder->generation() == genAtCancel) {
        s.mediaId.store(-1);
        s.path.clear();
        s.unregistering.store(false);
        if (m_overlayManager)
            m_overlayManager->forgetOverlayVideo(mediaId);
        if (s.pendingRequest) {
            s.pendingRequest = false;
            const int pendingId = s.pendingMediaId;
            const QString pendingPath = s.pendingPath;
            s.pendingPath.clear();
            registerOverlayVideo(pendingId, pendingPath);
        }
        return;
    }
    // The slot serves a newer registration now; leave it alone.
    s.unregistering.store(false);
    s.pendingRequest = false;
    s.pendingPath.clear();
}

// ---- outputs ----

namespace {
qint64 steadyNowNs()
{
    return std::chrono::duration_cast<std::chrono::nanoseconds>(
               std::chrono::steady_clock::now().time_since_epoch())
        .count();
}
} // namespace

qint64 FramePipeline::programClockUs() const
{
    const qint64 start = m_programClockStartNs.load();
    return start == 0 ? 0 : (steadyNowNs() - start) / 1000;
}

int FramePipeline::programChannel() const
{
    const int base = m_baseChannel.load();
    if (m_programMode.load() == kStillImageMode || base < 0 || base >= kChannelCount)
        return -1;
    return base;
}

int FramePipeline::takeChannelAudio(int channel, std::int16_t *out, int frames)
{
    if (channel < 0 || channel >= kChannelCount)
        return 0;
    return m_channelAudio[channel]->take(out, frames);
}

int FramePipeline::takeOverlayAudio(int slot, std::int16_t *out, int frames)
{
    if (slot < 0 || slot >= kOverlaySlotCount)
        return 0;
    return m_overlayAudio[slot]->take(out, frames);
}

void FramePipeline::pushChannelAudio(int channel, const std::int16_t *samples, int frames)
{
    if (channel >= 0 && channel < kChannelCount)
        m_channelAudio[channel]->push(samples, frames);
}

void FramePipeline::pushOverlayAudio(int slot, const std::int16_t *samples, int frames)
{
    if (slot >= 0 && slot < kOverlaySlotCount)
        m_overlayAudio[slot]->push(samples, frames);
}

bool FramePipeline::startOutputs()
{
    if (m_outputsRunning)
        return true;
    if (m_outputsStopping)
        return false;
    lockResolution();
    auto router = std::make_shared<OutputRouter>();
    router->setSettings(m_outputSettings);
    router->setOutputSize(m_effectiveSize);
    router->setStatusCallback([this](int index, const QString &status) {
        QMetaObject::invokeMethod(
            this, [this, index, status] { emit programStreamStatusChanged(index, status); },
            Qt::QueuedConnection);
    });
    router->setFailureCallback([this](OutputRouter::Failure failure, const QString &) {
        QMetaObject::invokeMethod(
            this,
            [this, failure] {
                m_lastFailureWasOpen = failure == OutputRouter::Failure::OpenFailed;
                onEncodeTransportFailed();
            },
            Qt::QueuedConnection);
    });
    m_outputFrameRate = m_outputSettings.fps > 0 ? m_outputSettings.fps : 30.0;
    if (!router->start()) {
        m_outputFrameRate = 30.0;
        unlockResolution();
        return false;
    }
    m_router = std::move(router);
    m_lastFailureWasOpen = false;
    m_programClockStartNs.store(steadyNowNs());
    if (m_mixer) {
        std::weak_ptr<OutputRouter> weakRouter = m_router;
        m_mixer->setProgramTap([weakRouter](const std::int16_t *samples, int frames, qint64 ptsUs) {
            if (auto r = weakRouter.lock())
                r->pushAudio(samples, frames, ptsUs);
        });
    }
    m_outputsRunning = true;
    return true;
}

void FramePipeline::stopOutputsAsync()
{
    if (!m_router || m_outputsStopping || !m_outputsRunning)
        return;
    m_outputsRunning = false;
    m_outputsStopping = true;
    if (m_mixer)
        m_mixer->setProgramTap(nullptr);
    std::shared_ptr<OutputRouter> router = m_router;
    QPointer<FramePipeline> guard(this);
    QThreadPool::globalInstance()->start([router, guard] {
        router->stop();
        QMetaObject::invokeMethod(
            QCoreApplication::instance(),
            [guard] {
                if (guard)
                    guard->finishOutputStop();
            },
            Qt::QueuedConnection);
    });
}

void FramePipeline::finishOutputStop()
{
    m_outputsStopping = false;
    m_outputFrameRate = 30.0;
    unlockResolution();
    emit programOutputStopped();
}

void FramePipeline::onEncodeTransportFailed()
{
    if (!m_outputsRunning)
        return;
    stopOutputsAsync();
    emit programOutputTransportFailed(QString::fromUtf8(
        "输出已停止：本地录制写入失败，或 RTMP 在多次自动重连后仍无法恢复（服务器关闭、超时或网络中断）。"));
}
