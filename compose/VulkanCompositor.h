#pragma once

// Makes one program frame out of one base frame and the overlay state, on the pipeline's (GUI)
// thread. With nothing to draw, or no free token, the base frame itself is the program frame.
// Otherwise the base picture is copied into a token of the program pool and the overlay layers
// are painted over it. Despite its name it draws with QPainter on the CPU.

#include "compose/FramePool.h"

class OverlayManager;
class QPainter;

class VulkanCompositor
{
public:
    explicit VulkanCompositor(const FramePool &programPool);

    // The result's pts equals the base frame's.
    FrameTokenPtr compose(const FrameTokenPtr &base, const OverlayManager *overlays);

    // Draws every overlay layer onto a painter whose device is width x height output pixels.
    static void paintOverlays(QPainter &painter, int width, int height,
                              const OverlayManager &overlays);

    // The fixed scene in which overlay rectangles are kept.
    static constexpr double kSceneWidth = 640.0;
    static constexpr double kSceneHeight = 360.0;

private:
    FramePool m_pool;
};
