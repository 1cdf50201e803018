#pragma once

// Makes one program frame out of one base frame and the overlay scene, on the program thread.
// With nothing to draw, or no free token, the base frame itself is the program frame. Otherwise
// the base picture is copied into a token of the program pool and the overlay layers are painted
// over it: media overlays, text overlays, then the doodle layer. It keeps the latest picture of
// every overlay video (handed in on the program thread) and the doodle rendered once per change
// of strokes or size.
//
// Threads: constructed on the GUI thread (an OpenGL context needs it); every other method on
// the one thread that composes. The OpenGL context is moved to that thread by moveGlToThread().
//
// Despite its name no Vulkan is used. Painting runs on the CPU with QPainter; an optional OpenGL
// path (an offscreen framebuffer read back into the token) serves frames with more than two
// overlays when SELVANE_ENABLE_GL_READBACK_COMPOSITOR holds a non-zero integer. The OpenGL state
// is set up once, in the constructor, and any failure there keeps the whole run on the CPU; a
// failure while composing falls back to the CPU for that frame.

#include "compose/OverlayScene.h"
#include "media/FramePool.h"

#include <QHash>
#include <QImage>

#include <memory>

class QThread;
class QImage;
class QOffscreenSurface;
class QOpenGLContext;
class QOpenGLFramebufferObject;
class QPainter;

class VulkanCompositor
{
public:
    // Which way the last compose() produced its result.
    enum class Path
    {
        PassThrough, // the base frame itself
        Cpu,
        Gpu,
    };

    explicit VulkanCompositor(const FramePool &programPool);
    ~VulkanCompositor();
    VulkanCompositor(const VulkanCompositor &) = delete;
    VulkanCompositor &operator=(const VulkanCompositor &) = delete;

    // The result's time equals the base frame's.
    FrameTokenPtr compose(const FrameTokenPtr &base, const OverlayScene *scene);

    // The latest picture of an overlay video; null forgets it.
    void setVideoPicture(int mediaId, FrameTokenPtr picture);
    void forgetVideoPictures() { m_videoPictures.clear(); }
    bool hasVideoPicture(int mediaId) const { return m_videoPictures.contains(mediaId); }

    // Overlays that would be drawn on the next frame: the GPU threshold counts the work of a
    // frame, so hidden or picture-less overlays do not count.
    int overlayCount(const OverlayScene &scene) const;

    // Draws every overlay layer onto a painter whose device is width x height output pixels.
    void paintOverlays(QPainter &painter, int width, int height, const OverlayScene &scene);

    // Hands the OpenGL context to the thread that composes (call on the constructing thread).
    void moveGlToThread(QThread *thread);

    bool isGpuReady() const { return m_glReady; }
    Path lastPath() const { return m_lastPath; }

    // The fixed scene in which overlay rectangles are kept.
    static constexpr double kSceneWidth = 640.0;
    static constexpr double kSceneHeight = 360.0;
    // The GPU read-back only pays off for frames with more overlays than this.
    static constexpr int kGpuMinOverlaysExclusive = 2;

private:
    void initOpenGl();
    bool composeOnGpu(const FrameToken &base, FrameWriter &out, const OverlayScene &scene);
    QImage pictureOf(const MediaOverlayRecord &record, const OverlayScene &scene) const;
    QImage doodlePicture(const OverlayScene &scene, QSize size);

    FramePool m_pool;
    std::unique_ptr<QOpenGLContext> m_glContext;
    std::unique_ptr<QOffscreenSurface> m_glSurface;
    std::unique_ptr<QOpenGLFramebufferObject> m_glFbo;
    bool m_glReady = false;
    qint64 m_gpuFailures = 0;
    Path m_lastPath = Path::PassThrough;
    QHash<int, FrameTokenPtr> m_videoPictures;
    QImage m_doodle;
    quint64 m_doodleVersion = 0;
};
