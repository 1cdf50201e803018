#include "compose/VulkanCompositor.h"

#include "compose/OverlayPainting.h"
#include "media/FrameConvert.h"

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
    if (!base.isI420())
        return selvane::scaleToI420(m_rgbaSws, base, QSize(base.width, base.height), out);
    out.prepareI420(base.width, base.height);
    FrameToken::AvPlanes src = base.avPlanes();
    FrameWriter::AvPlanes dst = out.avPlanes();
    av_image_copy(dst.data, dst.linesize, src.data, src.linesize, AV_PIX_FMT_YUV420P, base.width,
                  base.height);
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
    const double opacity = std::clamp(record.opacity, 0.0, 1.0);
    if (picture.isI420() && QSize(picture.width, picture.height) == size) {
        YuvLayer::blendPicture(frame, picture, placed.topLeft(), opacity);
        return;
    }
    if (!video.scaled || video.scaledFrom != video.picture || video.placed != placed) {
        // A new picture or another place: scaled once, then blended on every frame it shows.
        if (!video.scaled)
            video.scaled = std::make_shared<FrameToken>();
        FrameWriter writer(video.scaled);
        if (!selvane::scaleToI420(m_videoSws, picture, size, writer))
            return;
        video.scaledFrom = video.picture;
        video.placed = placed;
    }
    YuvLayer::blendPicture(frame, *video.scaled, placed.topLeft(), opacity);
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
        const QImage picture = selvane::drawDoodle(scene.doodle, size);
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
