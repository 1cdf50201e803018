// Overlays and program pictures painted for a window or a file, as the program shows them.

#include "engine/OverlayDrawing.h"

#include "compose/OverlayPainting.h"
#include "compose/VulkanCompositor.h"
#include "media/FrameConvert.h"

#include <QPainter>

namespace selvane {

QImage OverlayDrawing::picture(const FrameTokenPtr &frame, QSize fit)
{
    if (!frame || frame->width < 1 || frame->height < 1 || fit.isEmpty())
        return {};
    const QSize size = QSize(frame->width, frame->height).scaled(fit, Qt::KeepAspectRatio) / 2 * 2;
    ffsupport::SwsPtr sws;
    QImage image;
    if (size.isEmpty() || !scaleToImage(sws, *frame, size, image))
        return {};
    return image;
}

QImage OverlayDrawing::text(const TextOverlayData &text, QSize size, qint64 scrollUs)
{
    QImage picture(size, QImage::Format_ARGB32_Premultiplied);
    picture.fill(Qt::transparent);
    QPainter painter(&picture);
    paintText(painter, size, text, scrollUs);
    return picture;
}

QImage OverlayDrawing::doodle(const QList<DoodleStroke> &strokes, QSize size)
{
    return selvane::drawDoodle(strokes, size);
}

QSizeF OverlayDrawing::sceneSize()
{
    return {VulkanCompositor::kSceneWidth, VulkanCompositor::kSceneHeight};
}

} // namespace selvane
