#pragma once

// The registry of everything drawn over the base picture: up to 10 text overlays, up to 4 media
// overlays (still images and overlay videos, rectangles in the 640 x 360 scene), the decoded
// picture of each image overlay, and the doodle layer. After every change it publishes the whole
// state as one immutable OverlayScene for the compositor.
//
// Threads: everything runs on the thread it lives on (the GUI thread). Image files are decoded
// on the global thread pool; the result comes back as a queued call of
// tryCommitImageOverlayCache(), and a per-id load generation (not a lock) decides whether it
// still applies.
//
// Emits textOverlaysChanged / mediaOverlaysChanged / doodleOverlayChanged / overlayLayoutChanged
// for the kind of change, then sceneChanged with the new scene and overlayChanged.

#include "compose/OverlayScene.h"
#include "compose/TextOverlayData.h"

#include <QColor>
#include <QElapsedTimer>
#include <QHash>
#include <QImage>
#include <QList>
#include <QObject>
#include <QPointF>
#include <QRectF>
#include <QSize>
#include <QString>
#include <functional>
#include <memory>

class OverlayManager : public QObject
{
    Q_OBJECT

public:
    static constexpr int kMaxTextOverlays = OverlayScene::kMaxTextOverlays;
    static constexpr int kMaxMediaOverlays = OverlayScene::kMaxMediaOverlays;

    using ClockUs = OverlayScene::ClockUs;

    explicit OverlayManager(QObject *parent = nullptr);
    ~OverlayManager() override;

    // Text overlays: insert or replace by id; the list order is the drawing order. False (and a
    // log line) for a text longer than TextOverlayData::kMaxTextLength or an eleventh overlay.
    bool setTextOverlay(const TextOverlayData &data);
    void removeTextOverlay(int id);
    void clearTextOverlays();
    const QList<TextOverlayData> &textOverlays() const { return m_scene->texts; }
    const TextOverlayData *textOverlay(int id) const;

    // Media overlays: insert or replace by id; an image record starts loading its file.
    void setMediaOverlay(const MediaOverlayRecord &record);
    void removeMediaOverlay(int id);
    void clearMediaOverlays();
    const QList<MediaOverlayRecord> &mediaOverlays() const { return m_scene->media; }
    const MediaOverlayRecord *mediaOverlay(int id) const;

    // The decoded picture of an image overlay; null while it loads or when loading failed.
    QImage overlayImage(int id) const { return m_scene->images.value(id); }
    // The generation of the latest load started for an image overlay (0: none yet).
    int imageLoadGeneration(int id) const { return m_imageGenerations.value(id, 0); }

    // The doodle layer is drawn when it is visible and has at least one stroke.
    void setDoodleLayer(const QList<DoodleStroke> &strokes);
    void setDoodleVisible(bool visible);
    void clearDoodleLayer();
    const QList<DoodleStroke> &doodleStrokes() const { return m_scene->doodle; }
    bool isDoodleVisible() const { return m_scene->doodleVisible; }

    // The state as the compositor draws it.
    OverlayScenePtr scene() const { return m_scene; }

    // Microseconds since the text overlay began to scroll (0 for an unknown id). The clock
    // restarts when the record is inserted or its words or scroll settings change.
    qint64 textScrollElapsedUs(int id) const;
    // Replaces the monotonic clock (tests use a clock they move by hand).
    void setClock(ClockUs clock);

public slots:
    // Completion of an asynchronous image load. Accepted only for a non-null image whose
    // generation is still the id's current one and whose record is an image with this path.
    void tryCommitImageOverlayCache(int mediaId, QString path, int generation, QImage image);

signals:
    void textOverlaysChanged();
    void mediaOverlaysChanged();
    void doodleOverlayChanged();
    void overlayLayoutChanged();
    void sceneChanged(OverlayScenePtr scene);
    void overlayChanged();

private:
    struct LoadGuard;

    void startImageLoad(int mediaId, const QString &path);
    qint64 nowUs() const;
    // Publishes the edited scene and emits the signals of the kinds of change made.
    void publish(std::shared_ptr<OverlayScene> scene, bool texts, bool media, bool doodle,
                 bool layout);
    std::shared_ptr<OverlayScene> editableCopy() const;

    OverlayScenePtr m_scene;
    QHash<int, int> m_imageGenerations;
    QElapsedTimer m_monotonic;
    ClockUs m_clock;
    // Shared with every load in flight; cleared in the destructor so a late load posts nothing.
    std::shared_ptr<LoadGuard> m_loadGuard;
};
