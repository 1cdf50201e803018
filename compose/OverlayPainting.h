#pragma once

// Overlays painted with a QPainter exactly as the compositor lays them over the program: the
// doodle strokes at a picture size, and one text overlay (box, shadow, outline, letters) at a
// moment of its scroll. The compositor blends the same pixels into its YUV frames; the window's
// text preview and the drawing export paint them into images. Any thread.

#include "compose/OverlayScene.h"
#include "compose/TextOverlayData.h"

#include <QImage>
#include <QPainter>
#include <QSize>

namespace selvane {

// The strokes over a transparent picture of `size` (scene units scaled to it).
void paintDoodle(QPainter &painter, QSize size, const QList<DoodleStroke> &strokes);
QImage drawDoodle(const QList<DoodleStroke> &strokes, QSize size);

// The text over a picture of `size`, `elapsedUs` after its scroll began.
void paintText(QPainter &painter, QSize size, const TextOverlayData &text, qint64 elapsedUs);

} // namespace selvane
