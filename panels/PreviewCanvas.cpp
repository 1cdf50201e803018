#include "panels/PreviewCanvas.h"

#include "engine/Engine.h"
#include "engine/OverlayDrawing.h"
#include "panels/ProgramPreview.h"

#include <QEvent>
#include <QMouseEvent>
#include <QPainter>
#include <QPainterPath>
#include <algorithm>
#include <cmath>

namespace selvane {

namespace {

constexpr double kGripPixels = 7.0;   // how near an edge counts as holding it
constexpr double kSmallestSide = 8.0; // scene units: a frame never shrinks below this

} // namespace

PreviewCanvas::PreviewCanvas(ProgramPreview *preview) : QWidget(preview), m_preview(preview)
{
    setObjectName("previewCanvas");
    setAttribute(Qt::WA_NoSystemBackground);
    setAttribute(Qt::WA_TranslucentBackground);
    setMouseTracking(true);
    setGeometry(preview->rect());
    preview->installEventFilter(this);
    setAttribute(Qt::WA_TransparentForMouseEvents, true);
}

bool PreviewCanvas::eventFilter(QObject *watched, QEvent *event)
{
    if (watched == m_preview && event->type() == QEvent::Resize) {
        setGeometry(m_preview->rect());
        raise(); // above the graphics card's surface, which the preview places on resizes
    }
    return QWidget::eventFilter(watched, event);
}

void PreviewCanvas::setMode(Mode mode)
{
    if (mode == m_mode)
        return;
    if (m_drawing || m_dragId >= 0) {
        m_drawing = false;
        m_dragId = -1;
        m_stroke.points.clear();
    }
    m_mode = mode;
    setAttribute(Qt::WA_TransparentForMouseEvents, mode == Mode::Off);
    switch (mode) {
    case Mode::Off:
    case Mode::Frames:
        unsetCursor();
        break;
    case Mode::Pen:
        setCursor(Qt::CrossCursor);
        break;
    case Mode::Eraser:
        setCursor(Qt::PointingHandCursor);
        break;
    }
    raise();
    update();
}

void PreviewCanvas::setFrames(const QList<Frame> &frames, int selectedId)
{
    m_frames = frames;
    m_selected = selectedId;
    update();
}

void PreviewCanvas::setPen(const QColor &colour, double width)
{
    m_penColour = colour;
    m_penWidth = width;
}

QPointF PreviewCanvas::toScene(QPointF p) const
{
    const QRect picture = m_preview->pictureRect();
    const QSizeF scene = OverlayDrawing::sceneSize();
    if (picture.width() < 1 || picture.height() < 1)
        return {};
    return {(p.x() - picture.left()) * scene.width() / picture.width(),
            (p.y() - picture.top()) * scene.height() / picture.height()};
}

QPointF PreviewCanvas::toWidget(QPointF p) const
{
    const QRect picture = m_preview->pictureRect();
    const QSizeF scene = OverlayDrawing::sceneSize();
    return {picture.left() + p.x() * picture.width() / scene.width(),
            picture.top() + p.y() * picture.height() / scene.height()};
}

QRectF PreviewCanvas::toWidget(const QRectF &r) const
{
    return QRectF(toWidget(r.topLeft()), toWidget(r.bottomRight()));
}

int PreviewCanvas::gripAt(const Frame &frame, QPointF p) const
{
    const QRectF r = toWidget(frame.rect);
    const QRectF reach = r.adjusted(-kGripPixels, -kGripPixels, kGripPixels, kGripPixels);
    if (!reach.contains(p))
        return None;
    int grip = None;
    if (std::abs(p.x() - r.left()) <= kGripPixels)
        grip |= Left;
    else if (std::abs(p.x() - r.right()) <= kGripPixels)
        grip |= Right;
    if (std::abs(p.y() - r.top()) <= kGripPixels)
        grip |= Top;
    else if (std::abs(p.y() - r.bottom()) <= kGripPixels)
        grip |= Bottom;
    if (grip == None && r.contains(p))
        grip = Inside;
    return grip;
}

void PreviewCanvas::updateCursor(QPointF p)
{
    int grip = None;
    for (const Frame &frame : m_frames)
        if (frame.id == m_selected)
            grip = gripAt(frame, p);
    if (grip == None)
        for (const Frame &frame : m_frames)
            if (gripAt(frame, p) == Inside)
                grip = Inside;
    switch (grip) {
    case Left | Top:
    case Right | Bottom:
        setCursor(Qt::SizeFDiagCursor);
        break;
    case Right | Top:
    case Left | Bottom:
        setCursor(Qt::SizeBDiagCursor);
        break;
    case Left:
    case Right:
        setCursor(Qt::SizeHorCursor);
        break;
    case Top:
    case Bottom:
        setCursor(Qt::SizeVerCursor);
        break;
    case Inside:
        setCursor(Qt::SizeAllCursor);
        break;
    default:
        unsetCursor();
    }
}

QRectF PreviewCanvas::dragged(QPointF scenePoint) const
{
    const QPointF d = scenePoint - m_dragStart;
    QRectF r = m_dragRect;
    if (m_grip == Inside) {
        r.translate(d);
        return r;
    }
    if (m_grip & Left)
        r.setLeft(std::min(r.left() + d.x(), r.right() - kSmallestSide));
    if (m_grip & Right)
        r.setRight(std::max(r.right() + d.x(), r.left() + kSmallestSide));
    if (m_grip & Top)
        r.setTop(std::min(r.top() + d.y(), r.bottom() - kSmallestSide));
    if (m_grip & Bottom)
        r.setBottom(std::max(r.bottom() + d.y(), r.top() + kSmallestSide));
    return r;
}

void PreviewCanvas::mousePressEvent(QMouseEvent *event)
{
    if (event->button() != Qt::LeftButton)
        return;
    const QPointF p = event->position();
    const QPointF scene = toScene(p);
    switch (m_mode) {
    case Mode::Off:
        return;
    case Mode::Frames: {
        // The selected frame first (its edges reach outside it), then the topmost under the
        // pointer.
        int id = -1;
        int grip = None;
        for (const Frame &frame : m_frames)
            if (frame.id == m_selected && (grip = gripAt(frame, p)) != None)
                id = frame.id;
        for (auto it = m_frames.crbegin(); id < 0 && it != m_frames.crend(); ++it)
            if (gripAt(*it, p) == Inside) {
                id = it->id;
                grip = Inside;
            }
        if (id < 0)
            return;
        if (id != m_selected) {
            m_selected = id;
            emit frameSelected(id);
        }
        for (const Frame &frame : m_frames)
            if (frame.id == id)
                m_dragRect = frame.rect;
        m_dragId = id;
        m_grip = grip;
        m_dragStart = scene;
        update();
        return;
    }
    case Mode::Pen:
        m_drawing = true;
        m_stroke = DoodleStroke{m_penColour, m_penWidth, {scene}};
        update();
        return;
    case Mode::Eraser:
        m_drawing = true;
        emit erased(scene, m_eraserWidth / 2);
        return;
    }
}

void PreviewCanvas::mouseMoveEvent(QMouseEvent *event)
{
    const QPointF p = event->position();
    if (m_mode == Mode::Frames && m_dragId < 0) {
        updateCursor(p);
        return;
    }
    const QPointF scene = toScene(p);
    if (m_dragId >= 0) {
        const QRectF r = dragged(scene);
        for (Frame &frame : m_frames)
            if (frame.id == m_dragId)
                frame.rect = r;
        emit frameChanged(m_dragId, r, false);
        update();
    } else if (m_drawing && m_mode == Mode::Pen) {
        m_stroke.points.append(scene);
        update();
    } else if (m_drawing && m_mode == Mode::Eraser) {
        emit erased(scene, m_eraserWidth / 2);
    }
}

void PreviewCanvas::mouseReleaseEvent(QMouseEvent *event)
{
    if (event->button() != Qt::LeftButton)
        return;
    if (m_dragId >= 0) {
        const int id = m_dragId;
        const QRectF r = dragged(toScene(event->position()));
        m_dragId = -1;
        emit frameChanged(id, r, true);
    } else if (m_drawing && m_mode == Mode::Pen) {
        m_drawing = false;
        const DoodleStroke stroke = m_stroke;
        m_stroke.points.clear();
        emit strokeDrawn(stroke);
    }
    m_drawing = false;
    update();
}

void PreviewCanvas::paintEvent(QPaintEvent *)
{
    if (m_mode == Mode::Off)
        return;
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing, true);
    if (m_mode == Mode::Frames) {
        for (const Frame &frame : m_frames) {
            const QRectF r = toWidget(frame.rect);
            const bool selected = frame.id == m_selected;
            painter.setPen(QPen(selected ? QColor(255, 200, 0) : QColor(200, 200, 200, 180),
                                selected ? 2 : 1, Qt::DashLine));
            painter.setBrush(Qt::NoBrush);
            painter.drawRect(r);
            painter.drawText(r.adjusted(4, 2, -4, -2), Qt::AlignLeft | Qt::AlignTop, frame.label);
            if (!selected)
                continue;
            // Grips at the corners and the middles of the edges.
            painter.setPen(QPen(Qt::black, 1));
            painter.setBrush(QColor(255, 200, 0));
            for (const QPointF &at :
                 {r.topLeft(), r.topRight(), r.bottomLeft(), r.bottomRight(),
                  QPointF(r.center().x(), r.top()), QPointF(r.center().x(), r.bottom()),
                  QPointF(r.left(), r.center().y()), QPointF(r.right(), r.center().y())})
                painter.drawRect(QRectF(at - QPointF(4, 4), QSizeF(8, 8)));
        }
        return;
    }
    // The stroke under the pen, until the program shows it.
    if (m_drawing && m_mode == Mode::Pen && !m_stroke.points.isEmpty()) {
        const double scale =
            m_preview->pictureRect().height() / OverlayDrawing::sceneSize().height();
        painter.setPen(QPen(m_penColour, std::max(1.0, m_penWidth * scale), Qt::SolidLine,
                            Qt::RoundCap, Qt::RoundJoin));
        QPainterPath path(toWidget(m_stroke.points.first()));
        for (const QPointF &point : m_stroke.points)
            path.lineTo(toWidget(point));
        painter.drawPath(path);
    }
}

} // namespace selvane
