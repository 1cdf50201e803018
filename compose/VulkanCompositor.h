#pragma once

// Makes one program frame out of one base frame and the overlay state, on the pipeline's (GUI)
// thread. With nothing to draw, or no free token, the base frame itself is the program frame.
// Otherwise the base picture is copied into a token of the program pool and the overlay layers
// are painted over it: media overlays, text overlays, then the doodle layer.
//
// Despite its name no Vulkan is used. Painting runs on the CPU with QPainter; an optional OpenGL
// path (an offscreen framebuffer read back into the token) serves frames with more than two
// overlays when SELVANE_ENABLE_GL_READBACK_COMPOSITOR holds a non-zero integer. The OpenGL state
// is set up once, in the constructor, and any failure there keeps the whole run on the CPU; a
// failure while composing falls back to the CPU for that frame.

#include "compose/FramePool.h"

#include <memory>

class OverlayManager;
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

    // The result's pts equals the base frame's.
    FrameTokenPtr compose(const FrameTokenPtr &base, const OverlayManager *overlays);

    // Draws every overlay layer onto a painter whose device is width x height output pixels.
    static void paintOverlays(QPainter &painter, int width, int height,
                              const OverlayManager &overlays);

    bool isGpuReady() const { return m_glReady; }
    Path lastPath() const { return m_lastPath; }

    // The fixed scene in which overlay rectangles are kept.
    static constexpr double kSceneWidth = 640.0;
    static constexpr double kSceneHeight = 360.0;
    // The GPU read-back only pays off for frames with more overlays than this.
    static constexpr int kGpuMinOverlaysExclusive = 2;

private:
    void initOpenGl();
    bool composeOnGpu(const FrameToken &base, FrameToken &out, const OverlayManager &overlays);

    FramePool m_pool;
    std::unique_ptr<QOpenGLContext> m_glContext;
    std::unique_ptr<QOffscreenSurface> m_glSurface;
    std::unique_ptr<QOpenGLFramebufferObject> m_glFbo;
    bool m_glReady = false;
    qint64 m_gpuFailures = 0;
    Path m_lastPath = Path::PassThrough;
};
