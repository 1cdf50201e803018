#include "compose/VulkanCompositor.h"

#include "compose/OverlayManager.h"

#include <QImage>
#include <QPainter>

#include <algorithm>
#include <cstring>

VulkanCompositor::VulkanCompositor(const FramePool &programPool) : m_pool(programPool) {}

FrameTokenPtr VulkanCompositor::compose(const FrameTokenPtr &base, const OverlayManager *overlays)
{
    if (!base || base->pixels.isEmpty() || !overlays)
        return base;
    if (!overlays->hasAnythingToDraw())
        return base;
    FrameTokenPtr out = m_pool.acquire();
    if (!out)
        return base; // no overlays on this frame rather than no frame

    prepareTokenPixels(*out, base->width, base->height, base->stride);
    out->flag = true;
    std::memcpy(out->pixels.data(), base->pixels.constData(),
                std::size_t(base->stride * base->height));
    {
        QImage canvas(reinterpret_cast<uchar *>(out->pixels.data()), out->width, out->height,
                      out->stride, QImage::Format_RGBA8888);
        QPainter painter(&canvas);
        paintOverlays(painter, canvas.width(), canvas.height(), *overlays);
    }
    out->pts = base->pts;
    return out;
}

void VulkanCompositor::paintOverlays(QPainter &painter, int width, int height,
                                     const OverlayManager &overlays)
{
    painter.setRenderHint(QPainter::Antialiasing, false);
    painter.setRenderHint(QPainter::SmoothPixmapTransform, false);
    const double sx = width < 1 || height < 1 ? 0.0 : width / kSceneWidth;
    const double sy = width < 1 || height < 1 ? 0.0 : height / kSceneHeight;

    for (const MediaOverlayRecord &record : overlays.mediaOverlays()) {
        if (!record.visible)
            continue;
        const QImage picture = record.kind == MediaOverlayRecord::OverlayVideo
                                   ? overlays.overlayVideoPicture(record.id)
                                   : QImage();
        if (picture.isNull())
            continue;
        painter.setOpacity(std::clamp(record.opacity, 0.0, 1.0));
        const QRectF target(record.rect.x() * sx, record.rect.y() * sy, record.rect.width() * sx,
                            record.rect.height() * sy);
        if (picture.width() < 1 || picture.height() < 1 || target.width() <= 0 ||
            target.height() <= 0) {
            painter.drawImage(target, picture);
            continue;
        }
        const double s = std::min(target.width() / picture.width(),
                                  target.height() / picture.height());
        const QRectF fitted(target.left() + (target.width() - s * picture.width()) * 0.5,
                            target.top() + (target.height() - s * picture.height()) * 0.5,
                            s * picture.width(), s * picture.height());
        painter.drawImage(fitted, picture, QRectF(picture.rect()));
    }
    painter.setOpacity(1.0);
}
