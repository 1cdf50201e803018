#include "engine/ScheduleControl.h"

#include "compose/VulkanCompositor.h"

#include <algorithm>

namespace selvane {

ScheduleControl::ScheduleControl(ScheduleHands &hands, QObject *parent)
    : QObject(parent), m_do(hands)
{
}

void ScheduleControl::onSlideShown(int shown)
{
    if (m_slides && m_runner && shown > 0)
        m_runner->advanceBySlide(shown, m_slideIntervalMs);
}

void ScheduleControl::stopVideo()
{
    if (!m_videoActive)
        return;
    m_videoActive = false;
    m_do.playOnChannel(kSceneVideoChannel, QString(), false);
}

void ScheduleControl::release()
{
    m_slides = false;
    stopVideo();
    if (!m_preparedPath.isEmpty()) {
        m_preparedPath.clear();
        m_do.playOnChannel(kSceneVideoChannel, QString(), false);
        m_do.release(kSceneVideoChannel);
    }
}

void ScheduleControl::showChannel(int channel, const Transition &transition)
{
    m_slides = false;
    if (channel != kSceneVideoChannel)
        stopVideo();
    if (transition.timed())
        m_do.transitionTo(channel, transition);
    else
        m_do.cutTo(channel);
}

void ScheduleControl::showBlack()
{
    m_slides = false;
    stopVideo();
    m_do.showBlack();
}

void ScheduleControl::playImages(const QStringList &paths, int intervalMs, bool loop)
{
    stopVideo();
    m_slides = true;
    m_slideIntervalMs = std::max(1, intervalMs);
    m_do.showImages(paths, intervalMs, loop);
}

void ScheduleControl::playVideo(const QString &path, bool loop)
{
    m_slides = false;
    stopVideo();
    m_videoActive = true;
    m_videoFirstPtsUs = -1;
    m_videoTimeline = m_seenTimeline + 1;
    if (m_preparedPath != path) {
        m_do.playOnChannel(kSceneVideoChannel, path, loop);
    }
    m_preparedPath.clear();
    m_do.release(kSceneVideoChannel);
    m_do.cutTo(kSceneVideoChannel);
}

void ScheduleControl::prepareVideo(const QString &path, bool loop)
{
    // The player is held before the file opens, so that it waits at the first picture.
    if (m_videoActive)
        return;
    m_preparedPath = path;
    m_do.hold(kSceneVideoChannel);
    m_do.playOnChannel(kSceneVideoChannel, path, loop);
}

void ScheduleControl::onProgramFrame(const FrameTokenPtr &frame, int channel)
{
    // The clip's playback position keeps the schedule in step with the video. Its times run on
    // across loops.
    if (!frame || channel != kSceneVideoChannel)
        return;
    m_seenTimeline = std::max(m_seenTimeline, frame->timeline);
    if (!m_videoActive || !m_runner || frame->timeline < m_videoTimeline)
        return;
    if (m_videoFirstPtsUs < 0)
        m_videoFirstPtsUs = m_videoLastPtsUs = frame->ptsUs;
    // What the runner decides now shows from the next picture on: the schedule stands where
    // that picture belongs, one frame on.
    const qint64 frameUs = frame->ptsUs - m_videoLastPtsUs;
    m_videoLastPtsUs = frame->ptsUs;
    const qint64 aheadUs = frameUs > 0 && frameUs <= kLongestFrameUs ? frameUs : 0;
    m_runner->resyncToBasePosition(frame->ptsUs - m_videoFirstPtsUs + aheadUs);
}

int ScheduleControl::overlayIdFor(const QString &clipId, bool text)
{
    QHash<QString, int> &ids = text ? m_textIds : m_mediaIds;
    auto it = ids.find(clipId);
    if (it == ids.end())
        it = ids.insert(clipId, text ? m_nextTextId++ : m_nextMediaId++);
    return it.value();
}

void ScheduleControl::showTextOverlay(const QString &clipId, const TextOverlayData &text)
{
    TextOverlayData data = text;
    data.id = overlayIdFor(clipId, true);
    m_do.setTextOverlay(data);
}

void ScheduleControl::showMediaOverlay(const QString &clipId, int kind, const QString &path,
                                       const QRectF &rect, double opacity)
{
    MediaOverlayRecord record;
    record.id = overlayIdFor(clipId, false);
    record.kind = kind == OverlayClip::Video ? MediaOverlayRecord::OverlayVideo
                                             : MediaOverlayRecord::StillImage;
    record.filePath = path;
    record.rect =
        QRectF(rect.x() * VulkanCompositor::kSceneWidth, rect.y() * VulkanCompositor::kSceneHeight,
               rect.width() * VulkanCompositor::kSceneWidth,
               rect.height() * VulkanCompositor::kSceneHeight);
    record.opacity = opacity;
    record.loop = true;
    m_do.setMediaOverlay(record);
}

void ScheduleControl::removeOverlay(const QString &clipId)
{
    if (m_textIds.contains(clipId))
        m_do.removeTextOverlay(m_textIds.value(clipId));
    else if (m_mediaIds.contains(clipId))
        m_do.removeMediaOverlay(m_mediaIds.value(clipId));
}

} // namespace selvane
