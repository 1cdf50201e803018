#pragma once

// Overlays as the program shows them, painted for a window or a file, and program pictures as
// images: what the faces draw their previews and exports with. Pure functions; any thread.

#include "compose/OverlayScene.h"
#include "compose/TextOverlayData.h"
#include "media/FrameToken.h"

#include <QImage>
#include <QList>
#include <QSize>
#include <QSizeF>

namespace selvane {

class OverlayDrawing
{
public:
    // One text over a transparent picture of `size`, `scrollUs` into its scroll.
    static QImage text(const TextOverlayData &text, QSize size, qint64 scrollUs = 0);
    // The doodle's strokes over a transparent picture of `size`.
    static QImage doodle(const QList<DoodleStroke> &strokes, QSize size);
    // The scene overlays are placed in, whatever the output size.
    static QSizeF sceneSize();
    // A program (or channel) picture as an image fitted into `fit`, aspect kept: for stills and
    // snapshots.
    static QImage picture(const FrameTokenPtr &frame, QSize fit);
};

} // namespace selvane
