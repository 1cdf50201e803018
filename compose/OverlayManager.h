#pragma once

// The registry of everything drawn over the base picture. This part holds the media overlays
// (still images and overlay videos: rectangles in the 640 x 360 scene, visibility, opacity), the
// latest picture of each overlay video (fed by the pipeline's overlay slots), and the current
// output size. GUI thread only.

#include <QHash>
#include <QImage>
#include <QList>
#include <QObject>
#include <QRectF>
#include <QSize>
#include <QString>

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
    double opacity = 1.0;
};

class OverlayManager : public QObject
{
    Q_OBJECT

public:
    static constexpr int kMaxMediaOverlays = 4;

    explicit OverlayManager(QObject *parent = nullptr);

    void setMediaOverlay(const MediaOverlayRecord &record);
    void removeMediaOverlay(int id);
    void clearMediaOverlays();
    const QList<MediaOverlayRecord> &mediaOverlays() const { return m_media; }
    const MediaOverlayRecord *mediaOverlay(int id) const;

    void setOverlayVideoPicture(int id, const QImage &picture);
    void forgetOverlayVideo(int id);
    QImage overlayVideoPicture(int id) const { return m_videoPictures.value(id); }

    void setOutputSize(QSize size) { m_outputSize = size; }
    QSize outputSize() const { return m_outputSize; }

    bool hasAnythingToDraw() const;
    int overlayCount() const;

signals:
    void textOverlaysChanged();
    void mediaOverlaysChanged();
    void doodleOverlayChanged();
    void overlayLayoutChanged();
    void overlayChanged();

private:
    QList<MediaOverlayRecord> m_media;
    QHash<int, QImage> m_videoPictures;
    QHash<int, QImage> m_imageCache;
    QSize m_outputSize{1920, 1080};
};
