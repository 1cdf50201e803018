#pragma once

// What is drawn over the program picture, as one immutable value: the media overlay records
// with their decoded images, the text overlays with the times their scrolling began, and the
// doodle strokes. The overlay manager publishes a new scene after every change; the compositor
// on the program thread draws whichever scene it was handed last. Pictures of overlay videos
// are not part of the scene: they change with every frame and reach the compositor directly.

#include "compose/TextOverlayData.h"

#include <QColor>
#include <QHash>
#include <QImage>
#include <QList>
#include <QPointF>
#include <QRectF>
#include <QString>
#include <functional>
#include <memory>

// The fixed scene in which overlay rectangles and drawing strokes are kept, whatever the
// program's size.
inline constexpr double kSceneWidth = 640.0;
inline constexpr double kSceneHeight = 360.0;

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
    bool loop = true;     // overlay videos start again at their end
};

// One stroke of the drawing canvas. Points and width are in scene units (640 x 360), so a drawing
// keeps its place and weight at every output size.
struct DoodleStroke
{
    QColor color = QColor(255, 0, 0);
    double width = 4.0;
    QList<QPointF> points;
};

struct OverlayScene
{
    static constexpr int kMaxTextOverlays = 10;
    static constexpr int kMaxMediaOverlays = 4;

    // A monotonic clock in microseconds; scroll times are measured on it.
    using ClockUs = std::function<qint64()>;

    QList<MediaOverlayRecord> media; // drawing order: first is lowest
    QHash<int, QImage> images;       // decoded pictures of image overlays, by id
    QList<TextOverlayData> texts;
    QHash<int, qint64> scrollStartUs; // by text id, on `clock`
    QList<DoodleStroke> doodle;
    bool doodleVisible = true;
    quint64 doodleVersion = 0; // changes whenever the strokes do
    ClockUs clock;

    bool hasDoodle() const { return doodleVisible && !doodle.isEmpty(); }
    qint64 nowUs() const;
    // Microseconds since the text began to scroll (0 for an unknown id).
    qint64 scrollElapsedUs(int textId, qint64 nowUs) const;
};

using OverlayScenePtr = std::shared_ptr<const OverlayScene>;

Q_DECLARE_METATYPE(OverlayScenePtr)
