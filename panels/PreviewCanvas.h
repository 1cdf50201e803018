#pragma once

// A transparent sheet over the program preview on which the operator works with the mouse in
// scene coordinates (640 x 360, mapped onto the picture however the preview is sized): the
// frames of the media overlays, which are dragged to move and pulled at a corner or an edge to
// resize; and the pen and the eraser of the drawing tools. It keeps no overlay state of its own:
// the panels hand it the frames and hear the results.
//
// Owns nothing but what is being dragged or drawn at the moment. GUI thread only. Off, it lets
// every mouse event through to the preview and paints nothing.
//
// Emits: frameSelected(id) on a press inside a frame; frameChanged(id, rect, finished) while a
// frame is dragged (finished on release); strokeDrawn(stroke) when a pen stroke ends;
// erased(point, radius) along the eraser's path.

#include "engine/EngineTypes.h"

#include <QList>
#include <QRectF>
#include <QWidget>

namespace selvane {

class ProgramPreview;

class PreviewCanvas : public QWidget
{
    Q_OBJECT

public:
    enum class Mode
    {
        Off,
        Frames,
        Pen,
        Eraser,
    };
    struct Frame
    {
        int id = -1;
        QRectF rect; // scene units
        QString label;
    };

    explicit PreviewCanvas(ProgramPreview *preview);

    void setMode(Mode mode);
    Mode mode() const { return m_mode; }
    void setFrames(const QList<Frame> &frames, int selectedId);
    void setPen(const QColor &colour, double width);
    void setEraserWidth(double width) { m_eraserWidth = width; }

    // Between widget pixels and the scene, through the picture's place in the preview.
    QPointF toScene(QPointF widgetPoint) const;
    QPointF toWidget(QPointF scenePoint) const;
    QRectF toWidget(const QRectF &sceneRect) const;

signals:
    void frameSelected(int id);
    void frameChanged(int id, QRectF rect, bool finished);
    void strokeDrawn(DoodleStroke stroke);
    void erased(QPointF point, double radius);

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;
    void paintEvent(QPaintEvent *event) override;
    void mousePressEvent(QMouseEvent *event) override;
    void mouseMoveEvent(QMouseEvent *event) override;
    void mouseReleaseEvent(QMouseEvent *event) override;

private:
    // Which part of a frame is under a point: its inside or one of its edges and corners.
    enum Grip : int
    {
        None = 0,
        Left = 1,
        Right = 2,
        Top = 4,
        Bottom = 8,
        Inside = 16,
    };
    int gripAt(const Frame &frame, QPointF widgetPoint) const;
    void updateCursor(QPointF widgetPoint);
    QRectF dragged(QPointF scenePoint) const;

    ProgramPreview *m_preview = nullptr;
    Mode m_mode = Mode::Off;
    QList<Frame> m_frames;
    int m_selected = -1;

    // A frame being dragged: which, by what part, from where.
    int m_dragId = -1;
    int m_grip = None;
    QPointF m_dragStart;
    QRectF m_dragRect;

    QColor m_penColour = QColor(255, 0, 0);
    double m_penWidth = 4.0;
    double m_eraserWidth = 16.0;
    bool m_drawing = false;
    DoodleStroke m_stroke; // the stroke under the pen, until it is handed over
};

} // namespace selvane
