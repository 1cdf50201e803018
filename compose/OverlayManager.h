#pragma once

// The registry of everything drawn over the base picture: up to 10 text overlays, up to 4 media
// overlays (still images and overlay videos, rectangles in the 640 x 360 scene), the latest
// picture of each overlay video (fed by the pipeline's overlay slots), the decoded picture of
// each image overlay, the doodle layer and the current output size.
//
// Threads: everything runs on the GUI thread. Image files are decoded on the global thread pool;
// the result comes back as a queued call of tryCommitImageOverlayCache(), and a per-id load
// generation (not a lock) decides whether it still applies.
//
// Emits textOverlaysChanged / mediaOverlaysChanged / doodleOverlayChanged / overlayLayoutChanged
// for the kind of change, then overlayChanged after every change.

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

struct MediaOverlayRecord
{
    enum Kind : qint32
    {
        StillImage = 0,
        OverlayVideo = 1,
    };
    qint32 id = -1;
    qint32 kind = StillImage;
    QString filePath;
    QRectF rect; // scene units (640 x 360)
    bool visible = true;
    double opacity = 1.0; // drawn clamped to 0..1
};

// One stroke of the drawing canvas. Points and width are in scene units (640 x 360), so a drawing
// keeps its place and weight at every output size.
struct DoodleStroke
{
    QColor color = QColor(255, 0, 0);
    double width = 4.0;
    QList<QPointF> points;
};

class OverlayManager : public QObject
{
    Q_OBJECT

public:
    static constexpr int kMaxTextOverlays = 10;
    static constexpr int kMaxMediaOverlays = 4;

    // A monotonic clock in microseconds; scroll times are measured on it.
    using ClockUs = std::function<qint64()>;

    explicit OverlayManager(QObject *parent = nullptr);
    ~OverlayManager() override;

    // Text overlays: insert or replace by id; the list order is the drawing order.
    void setTextOverlay(const TextOverlayData &data);
    void removeTextOverlay(int id);
    void clearTextOverlays();
    const QList<TextOverlayData> &textOverlays() const { return m_texts; }
    const TextOverlayData *textOverlay(int id) const;

    // Media overlays: insert or replace by id; an image record starts loading its file.
    void setMediaOverlay(const MediaOverlayRecord &record);
    void removeMediaOverlay(int id);
    void clearMediaOverlays();
    const QList<MediaOverlayRecord> &mediaOverlays() const { return m_media; }
    const MediaOverlayRecord *mediaOverlay(int id) const;

    void setOverlayVideoPicture(int id, const QImage &picture);
    void forgetOverlayVideo(int id);
    QImage overlayVideoPicture(int id) const { return m_videoPictures.value(id); }
    // The decoded picture of an image overlay; null while it loads or when loading failed.
    QImage overlayImage(int id) const { return m_imageCache.value(id); }
    // The generation of the latest load started for an image overlay (0: none yet).
    int imageLoadGeneration(int id) const { return m_imageGenerations.value(id, 0); }

    // The doodle layer is drawn when it is visible and has at least one stroke.
    void setDoodleLayer(const QList<DoodleStroke> &strokes);
    void setDoodleVisible(bool visible);
    void clearDoodleLayer();
    const QList<DoodleStroke> &doodleStrokes() const { return m_doodleStrokes; }
    bool isDoodleVisible() const { return m_doodleVisible; }
    bool hasDoodle() const { return m_doodleVisible && !m_doodleStrokes.isEmpty(); }
    // The strokes rendered on a transparent picture of the output size; null without a doodle.
    // Rendered once per change of strokes or output size.
    QImage doodlePicture() const;

    void setOutputSize(QSize size);
    QSize outputSize() const { return m_outputSize; }

    bool hasAnythingToDraw() const;
    // Overlays that would be drawn on the next frame: the compositor's GPU threshold counts the
    // work of a frame, so hidden or picture-less overlays do not count.
    int overlayCount() const;

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
    void overlayChanged();

private:
    struct LoadGuard;

    void startImageLoad(int mediaId, const QString &path);
    qint64 nowUs() const;

    QList<TextOverlayData> m_texts;
    QHash<int, qint64> m_scrollStartUs;
    QList<MediaOverlayRecord> m_media;
    QHash<int, QImage> m_videoPictures;
    QHash<int, QImage> m_imageCache;
    QHash<int, int> m_imageGenerations;
    QList<DoodleStroke> m_doodleStrokes;
    bool m_doodleVisible = true;
    mutable QImage m_doodleCache;
    mutable bool m_doodleCacheValid = false;
    QSize m_outputSize{1920, 1080};
    QElapsedTimer m_monotonic;
    ClockUs m_clock;
    // Shared with every load in flight; cleared in the destructor so a late load posts nothing.
    std::shared_ptr<LoadGuard> m_loadGuard;
};
