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

QRectF scenePlace(const MediaOverlayRecord &record, QSize frame)
{
    const double sx = frame.width() / VulkanCompositor::kSceneWidth;
    const double sy = frame.height() / VulkanCompositor::kSceneHeight;
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

// Rows of a band: even, so that each band holds both luma rows of its chroma rows; small enough
// that a 1080p band of all three planes (about 46 KB) stays in the cache while it is blended.
constexpr int kBandRows = 16;

} // namespace

VulkanCompositor::VulkanCompositor(const FramePool &programPool) : m_pool(programPool) {}

VulkanCompositor::~VulkanCompositor() = default;

void VulkanCompositor::setVideoPicture(int mediaId, FrameTokenPtr picture)
{
    if (picture)
        m_videos[mediaId].picture = std::move(picture);
    else
        m_videos.erase(mediaId);
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
                                    ? m_videos.count(record.id) > 0
                                    : !scene.images.value(record.id).isNull();
        if (hasPicture)
            ++count;
    }
    return count;
}

FrameTokenPtr VulkanCompositor::compose(const FrameTokenPtr &base, const OverlayScene *scene)
{
    if (!base || !base->hasPicture() || !scene)
        return base;
    if (overlayCount(*scene) == 0)
        return base;
    FrameWriter out = m_pool.acquire();
    if (!out)
        return base; // no overlays on this frame rather than no frame
    ++m_frameCount;
    const QSize size(base->width, base->height);
    m_steps.clear();
    m_tilesInView.clear();

    drawMedia(size, *scene);

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
        drawText(size, *data, scene->scrollElapsedUs(data->id, nowUs));

    drawDoodle(size, *scene);

    if (!paint(*base, out))
        return base;

    // Texts gone from the scene take their layers with them; long lines keep a few tiles.
    for (auto it = m_texts.begin(); it != m_texts.end();) {
        if (it->second.lastUse != m_frameCount)
            it = m_texts.erase(it);
        else
            ++it;
    }
    trimTextTiles();

    out->ptsUs = base->ptsUs;
    out->timeline = base->timeline;
    return std::move(out).publish();
}

void VulkanCompositor::addStep(DrawStep step, QRect covers)
{
    covers &= step.clip;
    if (covers.isEmpty())
        return;
    step.top = covers.top();
    step.bottom = covers.bottom();
    m_steps.push_back(step);
}

bool VulkanCompositor::paint(const FrameToken &base, FrameWriter &out)
{
    const int width = base.width, height = base.height;
    YuvPlanes frame;
    int bandRows = kBandRows;
    if (base.isI420()) {
        out.prepareI420(width, height);
        frame = planesOf(out);
    } else {
        // An RGBA picture is converted whole first; the steps then run over it in one band.
        if (!selvane::scaleToI420(m_rgbaSws, base, QSize(width, height), out))
            return false;
        frame = planesOf(out);
        bandRows = height + (height & 1);
    }
    for (int top = 0; top < height; top += bandRows) {
        const int rows = std::min(bandRows, height - top);
        if (base.isI420()) {
            const int chromaTop = top / 2, chromaRows = (top + rows + 1) / 2 - chromaTop;
            for (int p = 0; p < 3; ++p) {
                const int y = p == 0 ? top : chromaTop, n = p == 0 ? rows : chromaRows;
                const int bytes = p == 0 ? width : (width + 1) / 2;
                av_image_copy_plane(frame.data[p] + y * frame.stride[p], int(frame.stride[p]),
                                    base.plane(p) + y * base.planeStride(p),
                                    int(base.planeStride(p)), bytes, n);
            }
        }
        const QRect band(0, top, width, rows);
        for (const DrawStep &step : m_steps) {
            if (step.bottom < top || step.top >= top + rows)
                continue;
            const QRect clip = step.clip & band;
            switch (step.kind) {
            case DrawStep::Layer:
                step.layer->blendInto(frame, step.at, clip);
                break;
            case DrawStep::Fill:
                YuvLayer::fillRect(frame, step.rect, step.color, step.opacity, clip);
                break;
            case DrawStep::Picture:
                YuvLayer::blendPicture(frame, *step.picture, step.at, step.opacity, clip);
                break;
            }
        }
    }
    return true;
}

void VulkanCompositor::drawMedia(QSize frame, const OverlayScene &scene)
{
    // Media overlays (images and videos) in the manager's order: first drawn is lowest.
    for (const MediaOverlayRecord &record : scene.media) {
        if (!record.visible || record.filePath.isEmpty())
            continue;
        if (record.kind == MediaOverlayRecord::OverlayVideo) {
            auto video = m_videos.find(record.id);
            if (video != m_videos.end())
                drawVideo(frame, record, video->second);
            continue;
        }
        const QImage image = scene.images.value(record.id);
        if (!image.isNull())
            drawImage(frame, record, image);
    }
    for (auto it = m_images.begin(); it != m_images.end();) {
        if (scene.images.contains(it->first))
            ++it;
        else
            it = m_images.erase(it);
    }
}

void VulkanCompositor::drawImage(QSize frame, const MediaOverlayRecord &record, const QImage &image)
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
    DrawStep step;
    step.layer = &cached.layer;
    step.at = placed.topLeft();
    step.clip = QRect(QPoint(0, 0), frame);
    addStep(step, placed);
}

void VulkanCompositor::drawVideo(QSize frame, const MediaOverlayRecord &record, VideoLayer &video)
{
    const FrameToken &picture = *video.picture;
    if (!picture.hasPicture())
        return;
    const QRect placed = fitInside(scenePlace(record, frame), QSize(picture.width, picture.height));
    if (placed.width() < 2 || placed.height() < 2)
        return;
    const QSize size(placed.width() & ~1, placed.height() & ~1);
    DrawStep step;
    step.kind = DrawStep::Picture;
    step.picture = &picture;
    step.at = placed.topLeft();
    step.opacity = std::clamp(record.opacity, 0.0, 1.0);
    step.clip = QRect(QPoint(0, 0), frame);
    if (!picture.isI420() || QSize(picture.width, picture.height) != size) {
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
        step.picture = video.scaled.get();
    }
    addStep(step, QRect(QPoint(placed.x() & ~1, placed.y() & ~1), size));
}

void VulkanCompositor::drawText(QSize frame, const TextOverlayData &data, qint64 elapsedUs)
{
    TextLayer &text = m_texts[data.id];
    text.lastUse = m_frameCount;
    if (!text.render || !(text.render->data() == data) || text.render->picture() != frame) {
        text.render = std::make_unique<selvane::TextRender>(data, frame);
        text.tiles.clear();
    }
    const selvane::TextRender &render = *text.render;
    const selvane::TextRender::Placement at = render.placement(elapsedUs);
    if (!at.visible)
        return;
    if (!at.box.isEmpty()) {
        DrawStep fill;
        fill.kind = DrawStep::Fill;
        fill.rect = at.box;
        fill.color = data.backgroundColor;
        fill.opacity = render.opacity();
        fill.clip = QRect(QPoint(0, 0), frame);
        addStep(fill, at.box);
    }

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
        DrawStep step;
        step.layer = &tile->second;
        step.at = at.topLeft + tileRect.topLeft();
        step.clip = at.clip;
        addStep(step, QRect(step.at, tileRect.size()));
    }
    m_tilesInView.push_back({data.id, {first, last}});
}

void VulkanCompositor::trimTextTiles()
{
    // A long line keeps only the tiles around the ones in view.
    for (const auto &[id, view] : m_tilesInView) {
        auto text = m_texts.find(id);
        if (text == m_texts.end())
            continue;
        auto &tiles = text->second.tiles;
        const auto [first, last] = view;
        while (int(tiles.size()) > std::max(kTextTilesKept, last - first + 1)) {
            const auto front = tiles.begin();
            const auto back = std::prev(tiles.end());
            if (first - front->first >= back->first - last)
                tiles.erase(front);
            else
                tiles.erase(back);
        }
    }
}

void VulkanCompositor::drawDoodle(QSize size, const OverlayScene &scene)
{
    if (!scene.hasDoodle())
        return;
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
    if (m_doodle.isNull())
        return;
    DrawStep step;
    step.layer = &m_doodle;
    step.at = m_doodleAt;
    step.clip = QRect(QPoint(0, 0), size);
    addStep(step, QRect(m_doodleAt, m_doodle.size()));
}
