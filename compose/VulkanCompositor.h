#pragma once

// Makes one program frame out of one base frame and the overlay scene, on the program thread.
// With nothing to draw, or no free token, the base frame itself is the program frame. Otherwise
// the base picture is copied into a token of the program pool and the overlay layers are blended
// into it in YUV: media overlays, text overlays, then the doodle layer.
//
// Every layer is drawn once and kept: an image overlay per change of picture, place, opacity or
// picture size; a text overlay per change of its record, in tiles of its line made when they
// first come into view (a scrolling text only moves); the doodle per change of strokes; an
// overlay video per new picture (scaled into its rectangle when its size differs). Per frame
// only the pixels the layers cover are blended.
//
// A frame is made in bands of rows: each band of the base picture is copied and every layer that
// crosses it is blended into it while the band is still in the processor's cache, so that the
// picture travels through memory once.
//
// Despite its name no Vulkan is used: composition runs on the CPU.
//
// Threads: constructed on any thread; every other method on the one thread that composes.

#include "compose/OverlayScene.h"
#include "compose/TextRender.h"
#include "compose/YuvLayer.h"
#include "media/FfmpegTypes.h"
#include "media/FramePool.h"

#include <QImage>
#include <map>
#include <memory>
#include <vector>

class VulkanCompositor
{
public:
    explicit VulkanCompositor(const FramePool &programPool);
    ~VulkanCompositor();
    VulkanCompositor(const VulkanCompositor &) = delete;
    VulkanCompositor &operator=(const VulkanCompositor &) = delete;

    // The result's time equals the base frame's.
    FrameTokenPtr compose(const FrameTokenPtr &base, const OverlayScene *scene);

    // The latest picture of an overlay video; null forgets it.
    void setVideoPicture(int mediaId, FrameTokenPtr picture);
    void forgetVideoPictures() { m_videos.clear(); }
    bool hasVideoPicture(int mediaId) const { return m_videos.count(mediaId) > 0; }

    // Overlays that would be drawn on the next frame: hidden or picture-less ones do not count.
    int overlayCount(const OverlayScene &scene) const;

    // The fixed scene in which overlay rectangles are kept.
    static constexpr double kSceneWidth = ::kSceneWidth;
    static constexpr double kSceneHeight = ::kSceneHeight;
    // Tiles of a text line: this wide, and at most this many kept per text.
    static constexpr int kTextTileWidth = 1024;
    static constexpr int kTextTilesKept = 8;

private:
    struct ImageLayer
    {
        qint64 imageKey = 0;
        QRect placed;
        double opacity = 1.0;
        selvane::YuvLayer layer;
    };
    struct TextLayer
    {
        std::unique_ptr<selvane::TextRender> render;
        std::map<int, selvane::YuvLayer> tiles; // by tile index along the line
        quint64 lastUse = 0;
    };
    struct VideoLayer
    {
        FrameTokenPtr picture;
        FrameTokenPtr scaledFrom; // the picture `scaled` was made of
        QRect placed;
        std::shared_ptr<FrameToken> scaled; // the picture at the place's size
    };

    // One blend of this frame, in drawing order; what it points at lives in the caches below,
    // which keep their elements in place until the frame is made.
    struct DrawStep
    {
        enum Kind : quint8
        {
            Layer,
            Fill,
            Picture
        } kind = Layer;
        const selvane::YuvLayer *layer = nullptr; // Layer
        const FrameToken *picture = nullptr;      // Picture
        QPoint at;                                // Layer, Picture
        QRect rect;                               // Fill: the box
        QRect clip;                               // where it may draw
        QColor color;                             // Fill
        double opacity = 1.0;                     // Fill, Picture
        int top = 0, bottom = 0;                  // the rows it may touch
    };

    // Each of these brings its layers up to date and lists the blends they need.
    void drawMedia(QSize frame, const OverlayScene &scene);
    void drawImage(QSize frame, const MediaOverlayRecord &record, const QImage &image);
    void drawVideo(QSize frame, const MediaOverlayRecord &record, VideoLayer &video);
    void drawText(QSize frame, const TextOverlayData &data, qint64 elapsedUs);
    void drawDoodle(QSize frame, const OverlayScene &scene);
    void addStep(DrawStep step, QRect covers);
    // Copies the base and runs the steps, band by band; false when the base cannot be read.
    bool paint(const FrameToken &base, FrameWriter &out);
    void trimTextTiles();

    FramePool m_pool;
    ffsupport::SwsPtr m_rgbaSws;
    ffsupport::SwsPtr m_videoSws;
    // Node-based maps: a step's pointer stays valid while other entries come and go.
    std::map<int, ImageLayer> m_images;
    std::map<int, TextLayer> m_texts;
    std::map<int, VideoLayer> m_videos;
    std::vector<DrawStep> m_steps;                                  // kept: no allocation per frame
    std::vector<std::pair<int, std::pair<int, int>>> m_tilesInView; // text id, first and last
    selvane::YuvLayer m_doodle;
    QPoint m_doodleAt;
    quint64 m_doodleVersion = 0;
    QSize m_doodleSize;
    quint64 m_frameCount = 0;
    std::vector<const TextOverlayData *> m_drawOrder; // kept: no allocation per frame
};
