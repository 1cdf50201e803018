#pragma once

// The schedule runner's hands on the engine: it puts a channel, a slideshow, a video clip or
// black on air, and shows and removes overlays by clip id, through the engine operations it is
// given. Video clips play on input channel 4 (index 3), which the schedule owns while such a
// clip is the base (and from its preroll on). Reports media progress back to the runner (slides
// shown, video position), as the engine tells it. GUI thread only. The hands outlive it.

#include "compose/OverlayScene.h"
#include "media/FrameToken.h"
#include "schedule/ScheduleRunner.h"

#include <QHash>
#include <QObject>

namespace selvane {

// What the schedule may do to the program: a few of the engine's own operations, and no more.
class ScheduleHands
{
public:
    virtual ~ScheduleHands() = default;
    virtual void cutTo(int channel) = 0;
    virtual void transitionTo(int channel, const Transition &transition) = 0;
    virtual void showImages(const QStringList &paths, int intervalMs, bool loop) = 0;
    virtual void showBlack() = 0;
    // An empty address clears the channel.
    virtual void playOnChannel(int channel, const QString &address, bool loop) = 0;
    // Holds a channel's player at its current picture, and lets it play on.
    virtual void hold(int channel) = 0;
    virtual void release(int channel) = 0;
    virtual void setTextOverlay(const TextOverlayData &text) = 0;
    virtual void removeTextOverlay(int id) = 0;
    virtual void setMediaOverlay(const MediaOverlayRecord &record) = 0;
    virtual void removeMediaOverlay(int id) = 0;
};

class ScheduleControl : public QObject, public ProgramControl
{
    Q_OBJECT

public:
    static constexpr int kSceneVideoChannel = 3;

    explicit ScheduleControl(ScheduleHands &hands, QObject *parent = nullptr);
    void setRunner(ScheduleRunner *runner) { m_runner = runner; }

    // What the engine reports: a slide went on air; a program picture left the switcher.
    void onSlideShown(int shown);
    void onProgramFrame(const FrameTokenPtr &frame, int channel);

    void showChannel(int channel, const Transition &transition) override;
    void playImages(const QStringList &paths, int intervalMs, bool loop) override;
    void playVideo(const QString &path, bool loop) override;
    void prepareVideo(const QString &path, bool loop) override;
    void showBlack() override;
    void showTextOverlay(const QString &clipId, const TextOverlayData &text) override;
    void showMediaOverlay(const QString &clipId, int kind, const QString &path,
                          const QRectF &normalisedRect, double opacity) override;
    void removeOverlay(const QString &clipId) override;

    // Everything the schedule put on air comes off (the overlays the runner removes itself).
    void release();

private:
    void stopVideo();
    int overlayIdFor(const QString &clipId, bool text);

    ScheduleHands &m_do;
    ScheduleRunner *m_runner = nullptr;
    bool m_slides = false;
    int m_slideIntervalMs = 2000;
    bool m_videoActive = false;
    QString m_preparedPath; // opened and held on the video channel, not yet on air
    qint64 m_videoFirstPtsUs = -1;
    qint64 m_videoLastPtsUs = -1;
    static constexpr qint64 kLongestFrameUs = 200000;
    // Pictures of the clip's channel carry their source's timeline: the clip's pictures are the
    // ones from the first timeline after the last one seen before it started.
    quint64 m_seenTimeline = 0;
    quint64 m_videoTimeline = 0;
    QHash<QString, int> m_textIds;
    QHash<QString, int> m_mediaIds;
    int m_nextTextId = 1000;
    int m_nextMediaId = 1000;
};

} // namespace selvane
