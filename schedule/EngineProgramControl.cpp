#include "schedule/EngineProgramControl.h"

#include "app/Engine.h"
#include "compose/FramePipeline.h"
#include "compose/OverlayManager.h"
#include "compose/VulkanCompositor.h"
#include "input/FFmpegVideoDecoder.h"

#include <QDebug>
#include <QImageReader>
#include <QTimer>

EngineProgramControl::EngineProgramControl(Engine *engine, QObject *parent)
    : QObject(parent), m_engine(engine)
{
    m_pushTimer = new QTimer(this);
    m_pushTimer->setTimerType(Qt::PreciseTimer);
    connect(m_pushTimer, &QTimer::timeout, this, [this] {
        m_stillPts += kStillPushMs * 1000;
        m_engine->pipeline()->pushStillImage(m_still, m_stillPts);
    });
    m_slideTimer = new QTimer(this);
    m_slideTimer->setTimerType(Qt::PreciseTimer);
    connect(m_slideTimer, &QTimer::timeout, this, &EngineProgramControl::nextSlide);
}

EngineProgramControl::~EngineProgramControl() = default;

void EngineProgramControl::stopStills()
{
    m_pushTimer->stop();
    m_slideTimer->stop();
    m_slides.clear();
}

void EngineProgramControl::stopVideo()
{
    if (!m_videoActive)
        return;
    disconnect(m_videoConnection);
    m_videoActive = false;
    m_engine->pipeline()->setChannelSource(kSceneVideoChannel, QString());
}

void EngineProgramControl::showChannel(int channel)
{
    stopStills();
    if (channel != kSceneVideoChannel)
        stopVideo();
    FramePipeline *pipeline = m_engine->pipeline();
    pipeline->setProgramSourceMode(0);
    pipeline->setBaseChannel(channel);
}

void EngineProgramControl::showStill(const QImage &image)
{
    FramePipeline *pipeline = m_engine->pipeline();
    m_still = image;
    pipeline->setBaseChannel(-1);
    pipeline->setProgramSourceMode(FramePipeline::kStillImageMode);
    pipeline->pushStillImage(m_still, m_stillPts);
    m_pushTimer->start(kStillPushMs);
}

void EngineProgramControl::showBlack()
{
    stopStills();
    stopVideo();
    // Black at the current output size; a 16:9 frame when nothing has set one yet.
    QSize size = m_engine->pipeline()->effectiveOutputSize();
    if (!size.isValid())
        size = FramePipeline::kFallbackOutputSize;
    QImage black(size, QImage::Format_RGBA8888);
    black.fill(Qt::black);
    showStill(black);
}

void EngineProgramControl::playImages(const QStringList &paths, int intervalMs, bool loop)
{
    stopStills();
    stopVideo();
    m_slides = paths;
    m_slideIndex = 0;
    m_slidesShown = 0;
    m_slideLoop = loop;
    m_slideIntervalMs = std::max(1, intervalMs);
    QImage first;
    if (!m_slides.isEmpty()) {
        first = QImageReader(m_slides.first()).read();
        if (first.isNull())
            qWarning().noquote() << "EngineProgramControl: cannot read image" << m_slides.first();
    }
    if (first.isNull()) {
        first = QImage(FramePipeline::kFallbackOutputSize, QImage::Format_RGBA8888);
        first.fill(Qt::black);
    }
    showStill(first);
    m_slideTimer->start(m_slideIntervalMs);
}

void EngineProgramControl::nextSlide()
{
    if (m_slides.isEmpty())
        return;
    int next = m_slideIndex + 1;
    if (next >= m_slides.size()) {
        if (!m_slideLoop) {
            m_slideTimer->stop(); // the last picture stays; the schedule clock runs on its own
            return;
        }
        next = 0;
    }
    m_slideIndex = next;
    ++m_slidesShown;
    const QImage image = QImageReader(m_slides[next]).read();
    if (!image.isNull())
        m_still = image;
    m_engine->pipeline()->pushStillImage(m_still, m_stillPts);
    if (m_runner)
        m_runner->advanceBySlide(m_slidesShown, m_slideIntervalMs);
}

void EngineProgramControl::playVideo(const QString &path, bool loop)
{
    stopStills();
    stopVideo();
    FramePipeline *pipeline = m_engine->pipeline();
    m_videoActive = true;
    m_videoFirstPtsUs = -1;
    m_videoLastPtsUs = -1;
    m_videoLoopOffsetUs = 0;
    pipeline->channelDecoder(kSceneVideoChannel)->setLoop(loop);
    pipeline->setChannelSource(kSceneVideoChannel, path);
    pipeline->setProgramSourceMode(0);
    pipeline->setBaseChannel(kSceneVideoChannel);
    // The clip's playback position keeps the schedule in step with the video.
    m_videoConnection = connect(pipeline, &FramePipeline::baseFrameReady, this,
                                [this](const FrameTokenPtr &frame) {
                                    if (!m_videoActive || !frame || !m_runner)
                                        return;
                                    if (m_videoFirstPtsUs < 0)
                                        m_videoFirstPtsUs = frame->pts;
                                    if (m_videoLastPtsUs >= 0 && frame->pts < m_videoLastPtsUs)
                                        m_videoLoopOffsetUs += m_videoLastPtsUs - m_videoFirstPtsUs + 33333;
                                    m_videoLastPtsUs = frame->pts;
                                    m_runner->resyncToBasePosition(m_videoLoopOffsetUs + frame->pts -
                                                                   m_videoFirstPtsUs);
                                });
}

int EngineProgramControl::overlayIdFor(const QString &clipId, bool text)
{
    QHash<QString, int> &ids = text ? m_textIds : m_mediaIds;
    auto it = ids.find(clipId);
    if (it == ids.end())
        it = ids.insert(clipId, text ? m_nextTextId++ : m_nextMediaId++);
    return it.value();
}

void EngineProgramControl::showTextOverlay(const QString &clipId, const TextOverlayData &text)
{
    TextOverlayData data = text;
    data.id = overlayIdFor(clipId, true);
    m_engine->overlays()->setTextOverlay(data);
}

void EngineProgramControl::showMediaOverlay(const QString &clipId, int kind, const QString &path,
                                            const QRectF &rect, double opacity)
{
    MediaOverlayRecord record;
    record.id = overlayIdFor(clipId, false);
    record.kind = kind == 1 ? MediaOverlayRecord::OverlayVideo : MediaOverlayRecord::StillImage;
    record.filePath = path;
    record.rect = QRectF(rect.x() * VulkanCompositor::kSceneWidth,
                         rect.y() * VulkanCompositor::kSceneHeight,
                         rect.width() * VulkanCompositor::kSceneWidth,
                         rect.height() * VulkanCompositor::kSceneHeight);
    record.opacity = opacity;
    m_engine->overlays()->setMediaOverlay(record);
    if (record.kind == MediaOverlayRecord::OverlayVideo) {
        FramePipeline *pipeline = m_engine->pipeline();
        pipeline->registerOverlayVideo(record.id, path);
        if (FFmpegVideoDecoder *decoder = pipeline->overlayDecoder(pipeline->overlaySlotOf(record.id)))
            decoder->setLoop(true);
    }
}

void EngineProgramControl::removeOverlay(const QString &clipId)
{
    if (m_textIds.contains(clipId)) {
        m_engine->overlays()->removeTextOverlay(m_textIds.value(clipId));
        return;
    }
    if (m_mediaIds.contains(clipId)) {
        const int id = m_mediaIds.value(clipId);
        m_engine->pipeline()->unregisterOverlayVideo(id);
        m_engine->overlays()->removeMediaOverlay(id);
    }
}
