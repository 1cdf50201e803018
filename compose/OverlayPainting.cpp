#include "compose/OverlayPainting.h"

#include "compose/TextRender.h"

#include <QPolygonF>
#include <algorithm>

namespace selvane {

void paintDoodle(QPainter &painter, QSize size, const QList<DoodleStroke> &strokes)
{
    const double sx = size.width() / kSceneWidth;
    const double sy = size.height() / kSceneHeight;
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing, true);
    painter.setCompositionMode(QPainter::CompositionMode_SourceOver);
    for (const DoodleStroke &stroke : strokes) {
        if (stroke.points.isEmpty())
            continue;
        // Line weight follows the vertical factor, as text does.
        painter.setPen(QPen(stroke.color, std::max(1.0, stroke.width * sy), Qt::SolidLine,
                            Qt::RoundCap, Qt::RoundJoin));
        QPolygonF line;
        line.reserve(stroke.points.size());
        for (const QPointF &p : stroke.points)
            line.append(QPointF(p.x() * sx, p.y() * sy));
        if (line.size() == 1)
            painter.drawPoint(line.first()); // a tap leaves a dot
        else
            painter.drawPolyline(line);
    }
    painter.restore();
}

QImage drawDoodle(const QList<DoodleStroke> &strokes, QSize size)
{
    QImage picture(size, QImage::Format_ARGB32_Premultiplied);
    picture.fill(Qt::transparent);
    QPainter painter(&picture);
    paintDoodle(painter, size, strokes);
    return picture;
}

void paintText(QPainter &painter, QSize size, const TextOverlayData &text, qint64 elapsedUs)
{
    if (!text.isDrawable() || size.isEmpty())
        return;
    const TextRender render(text, size);
    const TextRender::Placement at = render.placement(elapsedUs);
    if (!at.visible)
        return;
    painter.save();
    painter.setOpacity(render.opacity());
    if (!at.box.isEmpty())
        painter.fillRect(at.box, text.backgroundColor);
    painter.setClipRect(at.clip);
    render.paintLetters(painter, at.topLeft, at.clip);
    painter.restore();
}

} // namespace selvane
