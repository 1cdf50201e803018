#pragma once

// The schedule runner's hands on the engine: it puts a channel, a slideshow, a video clip or
// black on air, and shows and removes overlays by clip id, all through the engine's own
// operations. Video clips play on input channel 4 (index 3), which the schedule owns while such
// a clip is the base. Reports media progress back to the runner (slides shown, video position).
// GUI thread only.

#include "schedule/ScheduleRunner.h"

#include <QHash>
#include <QObject>

#include "media/FrameToken.h"

namespace selvane {

class Engine;

class ScheduleControl : public QObject, public ProgramControl
{
    Q_OBJECT

public:
    static constexpr int kSceneVideoChannel = 3;

    explicit ScheduleControl(Engine &engine, QObject *parent = nullptr);
    void setRunner(ScheduleRunner *runner) { m_runner = runner; }

    void showChannel(int channel) override;
    void playImages(const QStringList &paths, int intervalMs, bool loop) override;
    void playVideo(const QString &path, bool loop) override;
    void showBlack() override;
    void showTextOverlay(const QString &clipId, const TextOverlayData &text) override;
    void showMediaOverlay(const QString &clipId, int kind, const QString &path,
                          const QRectF &normalisedRect, double opacity) override;
    void removeOverlay(const QString &clipId) override;

    // Everything the schedule put on air comes off (the overlays the runner removes itself).
    void release();

private:
    void stopVideo();
    void onProgramFrame(const FrameTokenPtr &frame, int channel);
    int overlayIdFor(const QString &clipId, bool text);

    Engine &m_engine;
    ScheduleRunner *m_runner = nullptr;
    bool m_slides = false;
    int m_slideIntervalMs = 2000;
    bool m_videoActive = false;
    qint64 m_videoFirstPtsUs = -1;
    qint64 m_videoLastPtsUs = -1;
    qint64 m_videoLoopOffsetUs = 0;
    QHash<QString, int> m_textIds;
    QHash<QString, int> m_mediaIds;
    int m_nextTextId = 1000;
    int m_nextMediaId = 1000;
};

} // namespace selvane
