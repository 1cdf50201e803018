#include "compose/VulkanCompositor.h"

#include <QPainter>
#include <QPen>
#include <QPolygonF>
#include <algorithm>
#include <cmath>
#include <cstring>

extern "C" {
#include <libavutil/imgutils.h>
}

using selvane::YuvLayer;
using selvane::YuvPlanes;

namespace {

// Fits a picture inside the rectangle keeping its shape, centred: pillar- or letter-boxed.
QRect fitInside(const QRectF &target, QSize picture)
{
    if (picture.width() < 1 || picture.height() < 1 || target.width() <= 0 || target.height() <= 0)
        return {};
    const double s = std::min(target.width() / picture.width(), target.height() / picture.height());
    const QRectF fitted(target.left() + (target.width() - s * picture.width()) * 0.5,
                        target.top() + (target.height() - s * picture.height()) * 0.5,
                        s * picture.width(), s * picture.height());
    return fitted.toRect();
}

QRectF scenePlace(const MediaOverlayRecord &record, const YuvPlanes &frame)
{
    const double sx = frame.width / VulkanCompositor::kSceneWidth;
    const double sy = frame.height / VulkanCompositor::kSceneHeight;
    return {record.rect.x() * sx, record.rect.y() * sy, record.rect.width() * sx,
            record.rect.height() * sy};
}

YuvPlanes planesOf(FrameWriter &out)
{
    YuvPlanes planes;
    for (int p = 0; p < 3; ++p) {
        planes.data[p] = out.plane(p);
        planes.stride[p] = out->planeStride(p);
    }
    planes.width = out->width;
    planes.height = out->height;
    return planes;
}

} // namespace

VulkanCompositor::VulkanCompositor(const FramePool &programPool) : m_pool(programPool) {}

VulkanCompositor::~VulkanCompositor() = default;

void VulkanCompositor::setVideoPicture(int mediaId, FrameTokenPtr picture)
{
    if (picture)
        m_videos[mediaId].picture = std::move(picture);
    else
        m_videos.remove(mediaId);
}

int VulkanCompositor::overlayCount(const OverlayScene &scene) const
{
    int count = scene.hasDoodle() ? 1 : 0;
    for (const TextOverlayData &data : scene.texts)
        if (data.isDrawable())
            ++count;
    for (const MediaOverlayRecord &record : scene.media) {
        if (!record.visible || record.filePath.isEmpty())
            continue;
        const bool hasPicture = record.kind == MediaOverlayRecord::OverlayVideo
                                    ? m_videos.contains(record.id)
                                    : !scene.images.value(record.id).isNull();
        if (hasPicture)
            ++count;
    }
    return count;
}

bool VulkanCompositor::copyBase(const FrameToken &base, FrameWriter &out)
{
    out.prepareI420(base.width, base.height);
    if (base.isI420()) {
        for (int p = 0; p < 3; ++p)
            av_image_copy_plane(out.plane(p), int(out->planeStride(p)), base.plane(p),
                                int(base.planeStride(p)),
                                p == 0 ? base.width : (base.width + 1) / 2,
                                p == 0 ? base.height : (base.height + 1) / 2);
        return true;
    }
    m_rgbaSws.reset(sws_getCachedContext(
        m_rgbaSws.release(), base.width, base.height, AV_PIX_FMT_RGBA, base.width, base.height,
        AV_PIX_FMT_YUV420P, SWS_BILINEAR, nullptr, nullptr, nullptr));
    if (!m_rgbaSws)
        return false;
    const uint8_t *const src[4] = {base.bits(), nullptr, nullptr, nullptr};
    const int srcStride[4] = {int(base.stride), 0, 0, 0};
    uint8_t *dst[4] = {out.plane(0), out.plane(1), out.plane(2), nullptr};
    const int dstStride[4] = {int(out->planeStride(0)), int(out->planeStride(1)),
                              int(out->planeStride(2)), 0};
    sws_scale(m_rgbaSws.get(), src, srcStride, 0, base.height, dst, dstStride);
    return true;
}

FrameTokenPtr VulkanCompositor::compose(const FrameTokenPtr &base, const OverlayScene *scene)
{
    if (!base || base->pixels.isEmpty() || !scene)
        return base;
    if (overlayCount(*scene) == 0)
        return base;
    FrameWriter out = m_pool.acquire();
    if (!out || !copyBase(*base, out))
        return base; // no overlays on this frame rather than no frame
    ++m_frameCount;
    const YuvPlanes frame = planesOf(out);

    drawMedia(frame, *scene);

    // Text overlays, lowest stacking key first; equal keys keep the manager's order.
    std::vector<const TextOverlayData *> &texts = m_drawOrder;
    texts.clear();
    for (const TextOverlayData &data : scene->texts)
        if (data.isDrawable())
            texts.push_back(&data);
    std::stable_sort(
        texts.begin(), texts.end(),
        [](const TextOverlayData *a, const TextOverlayData *b) { return a->zIndex < b->zIndex; });
    const qint64 nowUs = texts.empty() ? 0 : scene->nowUs();
    for (const TextOverlayData *data : texts)
        drawText(frame, *data, scene->scrollElapsedUs(data->id, nowUs));
    // Texts gone from the scene take their layers with them.
    for (auto it = m_texts.begin(); it != m_texts.end();) {
        if (it->second.lastUse != m_frameCount)
            it = m_texts.erase(it);
        else
            ++it;
    }

    drawDoodle(frame, *scene);

    out->ptsUs = base->ptsUs;
    out->timeline = base->timeline;
    return std::move(out).publish();
}

void VulkanCompositor::drawMedia(const YuvPlanes &frame, const OverlayScene &scene)
{
    // Media overlays (images and videos) in the manager's order: first drawn is lowest.
    for (const MediaOverlayRecord &record : scene.media) {
        if (!record.visible || record.filePath.isEmpty())
            continue;
        if (record.kind == MediaOverlayRecord::OverlayVideo) {
            auto video = m_videos.find(record.id);
            if (video != m_videos.end())
                drawVideo(frame, record, *video);
            continue;
        }
        const QImage image = scene.images.value(record.id);
        if (!image.isNull())
            drawImage(frame, record, image);
    }
    for (auto it = m_images.begin(); it != m_images.end();) {
        if (scene.images.contains(it.key()))
            ++it;
        else
            it = m_images.erase(it);
    }
}

void VulkanCompositor::drawImage(const YuvPlanes &frame, const MediaOverlayRecord &record,
                                 const QImage &image)
{
    const QRect placed = fitInside(scenePlace(record, frame), image.size());
    if (placed.isEmpty())
        return;
    const double opacity = std::clamp(record.opacity, 0.0, 1.0);
    ImageLayer &cached = m_images[record.id];
    if (cached.layer.isNull() || cached.imageKey != image.cacheKey() || cached.placed != placed ||
        cached.opacity != opacity) {
        QImage picture(placed.size(), QImage::Format_ARGB32_Premultiplied);
        picture.fill(Qt::transparent);
        {
            QPainter painter(&picture);
            painter.setRenderHint(QPainter::SmoothPixmapTransform, true);
            painter.setOpacity(opacity);
            painter.drawImage(QRect(QPoint(0, 0), placed.size()), image);
        }
        cached = {image.cacheKey(), placed, opacity, YuvLayer(picture)};
    }
    cached.layer.blendInto(frame, placed.topLeft(), QRect(0, 0, frame.width, frame.height));
}

void VulkanCompositor::drawVideo(const YuvPlanes &frame, const MediaOverlayRecord &record,
                                 VideoLayer &video)
{
    const FrameToken &picture = *video.picture;
    if (picture.pixels.isEmpty())
        return;
    const QRect placed = fitInside(scenePlace(record, frame), QSize(picture.width, picture.height));
    if (placed.width() < 2 || placed.height() < 2)
        return;
    const QSize size(placed.width() & ~1, placed.height() & ~1);
    const qint64 stride = FrameToken::i420Stride(size.width());
    const qint64 chromaOffset = stride * size.height();
    const qint64 chromaBytes = (stride / 2) * (size.height() / 2);
    const bool asItIs =
        picture.isI420() && picture.width == size.width() && picture.height == size.height();
    if (!asItIs && (video.scaledFrom != video.picture || video.placed != placed)) {
        // A new picture or another place: scaled once, then blended on every frame it shows.
        m_videoSws.reset(sws_getCachedContext(
            m_videoSws.release(), picture.width, picture.height,
            picture.isI420() ? AV_PIX_FMT_YUV420P : AV_PIX_FMT_RGBA, size.width(), size.height(),
            AV_PIX_FMT_YUV420P, SWS_BILINEAR, nullptr, nullptr, nullptr));
        if (!m_videoSws)
            return;
        video.scaled.resize(std::size_t(FrameToken::i420Bytes(stride, size.height())));
        const bool planar = picture.isI420();
        const uint8_t *const src[4] = {picture.plane(0), planar ? picture.plane(1) : nullptr,
                                       planar ? picture.plane(2) : nullptr, nullptr};
        const int srcStride[4] = {int(picture.planeStride(0)),
                                  planar ? int(picture.planeStride(1)) : 0,
                                  planar ? int(picture.planeStride(2)) : 0, 0};
        uint8_t *dst[4] = {video.scaled.data(), video.scaled.data() + chromaOffset,
                           video.scaled.data() + chromaOffset + chromaBytes, nullptr};
        const int dstStride[4] = {int(stride), int(stride / 2), int(stride / 2), 0};
        sws_scale(m_videoSws.get(), src, srcStride, 0, picture.height, dst, dstStride);
        video.scaledFrom = video.picture;
        video.placed = placed;
    }
    const double opacity = std::clamp(record.opacity, 0.0, 1.0);
    if (asItIs) {
        const std::uint8_t *const planes[3] = {picture.plane(0), picture.plane(1),
                                               picture.plane(2)};
        const qint64 strides[3] = {picture.planeStride(0), picture.planeStride(1),
                                   picture.planeStride(2)};
        YuvLayer::blendPicture(frame, planes, strides, size, placed.topLeft(), opacity);
        return;
    }
    const std::uint8_t *const planes[3] = {video.scaled.data(), video.scaled.data() + chromaOffset,
                                           video.scaled.data() + chromaOffset + chromaBytes};
    const qint64 strides[3] = {stride, stride / 2, stride / 2};
    YuvLayer::blendPicture(frame, planes, strides, size, placed.topLeft(), opacity);
}

void VulkanCompositor::drawText(const YuvPlanes &frame, const TextOverlayData &data,
                                qint64 elapsedUs)
{
    TextLayer &text = m_texts[data.id];
    text.lastUse = m_frameCount;
    const QSize picture(frame.width, frame.height);
    if (!text.render || !(text.render->data() == data) || text.render->picture() != picture) {
        text.render = std::make_unique<selvane::TextRender>(data, picture);
        text.tiles.clear();
    }
    const selvane::TextRender &render = *text.render;
    const selvane::TextRender::Placement at = render.placement(elapsedUs);
    if (!at.visible)
        return;
    if (!at.box.isEmpty())
        YuvLayer::fillRect(frame, at.box, data.backgroundColor, render.opacity());

    // The tiles of the line that the clip shows at this moment.
    const QRect ink = render.inkRect();
    const QRect shown = at.clip & ink.translated(at.topLeft);
    if (shown.isEmpty())
        return;
    const int first = (shown.left() - at.topLeft.x() - ink.left()) / kTextTileWidth;
    const int last = (shown.right() - at.topLeft.x() - ink.left()) / kTextTileWidth;
    for (int index = first; index <= last; ++index) {
        const QRect tileRect(
            ink.left() + index * kTextTileWidth, ink.top(),
            std::min(kTextTileWidth, ink.right() + 1 - (ink.left() + index * kTextTileWidth)),
            ink.height());
        auto tile = text.tiles.find(index);
        if (tile == text.tiles.end()) {
            QImage image(tileRect.size(), QImage::Format_ARGB32_Premultiplied);
            image.fill(Qt::transparent);
            {
                QPainter painter(&image);
                painter.setOpacity(render.opacity());
                render.paintLetters(painter, -tileRect.topLeft(),
                                    QRect(QPoint(0, 0), tileRect.size()));
            }
            tile = text.tiles.emplace(index, YuvLayer(image)).first;
        }
        tile->second.blendInto(frame, at.topLeft + tileRect.topLeft(), at.clip);
    }
    // A long line keeps only the tiles around the ones in view.
    while (int(text.tiles.size()) > kTextTilesKept) {
        const auto front = text.tiles.begin();
        const auto back = std::prev(text.tiles.end());
        if (first - front->first >= back->first - last)
            text.tiles.erase(front);
        else
            text.tiles.erase(back);
    }
}

void VulkanCompositor::drawDoodle(const YuvPlanes &frame, const OverlayScene &scene)
{
    if (!scene.hasDoodle())
        return;
    const QSize size(frame.width, frame.height);
    if (m_doodle.isNull() || m_doodleSize != size || m_doodleVersion != scene.doodleVersion) {
        // Drawn once per change of strokes or size; only the part with ink is kept.
        QImage picture(size, QImage::Format_ARGB32_Premultiplied);
        picture.fill(Qt::transparent);
        const double sx = size.width() / kSceneWidth;
        const double sy = size.height() / kSceneHeight;
        {
            QPainter painter(&picture);
            painter.setRenderHint(QPainter::Antialiasing, true);
            for (const DoodleStroke &stroke : scene.doodle) {
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
        }
        QRect ink;
        for (int y = 0; y < picture.height(); ++y) {
            const auto *row = reinterpret_cast<const quint32 *>(picture.constScanLine(y));
            int left = -1, right = -1;
            for (int x = 0; x < picture.width(); ++x)
                if (row[x] >> 24) {
                    if (left < 0)
                        left = x;
                    right = x;
                }
            if (left >= 0)
                ink |= QRect(QPoint(left, y), QPoint(right, y));
        }
        m_doodle = ink.isEmpty() ? YuvLayer() : YuvLayer(picture.copy(ink));
        m_doodleAt = ink.topLeft();
        m_doodleSize = size;
        m_doodleVersion = scene.doodleVersion;
    }
    m_doodle.blendInto(frame, m_doodleAt, QRect(0, 0, frame.width, frame.height));
}
