#pragma once

// The schedule runner's hands on the engine: it switches the program base between channels,
// an image slideshow (pushed as still images), a video clip and black, and shows and removes
// overlays by clip id. Video clips play on input channel 4 (index 3), which the schedule owns
// while such a clip is the base. Reports media progress back to the runner (slides, video
// position). GUI thread only.

#include "schedule/ScheduleRunner.h"

#include <QHash>
#include <QImage>
#include <QObject>

class Engine;
class QTimer;

class EngineProgramControl : public QObject, public ProgramControl
{
    Q_OBJECT

public:
    static constexpr int kSceneVideoChannel = 3;
    static constexpr int kStillPushMs = 33;

    explicit EngineProgramControl(Engine *engine, QObject *parent = nullptr);
    ~EngineProgramControl() override;
    void setRunner(ScheduleRunner *runner) { m_runner = runner; }

    void showChannel(int channel) override;
    void playImages(const QStringList &paths, int intervalMs, bool loop) override;
    void playVideo(const QString &path, bool loop) override;
    void showBlack() override;
    void showTextOverlay(const QString &clipId, const TextOverlayData &text) override;
    void showMediaOverlay(const QString &clipId, int kind, const QString &path,
                          const QRectF &normalisedRect, double opacity) override;
    void removeOverlay(const QString &clipId) override;

private:
    void stopStills();
    void stopVideo();
    void showStill(const QImage &image);
    void nextSlide();
    int overlayIdFor(const QString &clipId, bool text);

    Engine *m_engine = nullptr;
    ScheduleRunner *m_runner = nullptr;
    QTimer *m_pushTimer = nullptr;  // re-pushes the still picture at the program rate
    QTimer *m_slideTimer = nullptr; // moves to the next image
    QImage m_still;
    QStringList m_slides;
    int m_slideIndex = 0;
    int m_slidesShown = 0;
    bool m_slideLoop = true;
    int m_slideIntervalMs = 2000;
    bool m_videoActive = false;
    qint64 m_videoFirstPtsUs = -1;
    qint64 m_videoLastPtsUs = -1;
    qint64 m_videoLoopOffsetUs = 0;
    QMetaObject::Connection m_videoConnection;
    qint64 m_stillPts = 0;
    QHash<QString, int> m_textIds;
    QHash<QString, int> m_mediaIds;
    int m_nextTextId = 1000;
    int m_nextMediaId = 1000;
};
