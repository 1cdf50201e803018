#pragma once

// Conversions of program pictures (FrameToken): to and from QImage, for the few places that
// need RGB (a still picture or an overlay drawn by Qt enters the program, a picture leaves it
// for a preview or a snapshot; swscale set up once per call, never for every frame of a show),
// and scaling into I420 through a context the caller keeps. Any thread; no state of their own.

#include "media/FfmpegTypes.h"
#include "media/FrameToken.h"

#include <QImage>

namespace selvane {

// The picture as RGBA 8:8:8:8 (a copy); a null image for an empty token.
QImage frameToImage(const FrameToken &frame);
// Writes the image into `out` as an I420 picture of the image's size (even sizes keep every
// pixel's colour; odd ones share chroma with the edge). False when the image is null.
bool imageToFrame(const QImage &image, FrameWriter &out);
// Writes `from` (either layout) into `out` as an I420 picture of `size`, through `context`, which
// is set up again only when sizes or layout change. False when swscale cannot do it.
bool scaleToI420(ffsupport::SwsPtr &context, const FrameToken &from, QSize size, FrameWriter &out);
// Writes `from` into `out` as an RGB32 image of `size` for display (fast filtering: previews,
// not pictures on air). `out` is reused when it has that size and nobody else holds it.
bool scaleToImage(ffsupport::SwsPtr &context, const FrameToken &from, QSize size, QImage &out);
// Writes `from` into `out` as an RGB32 image of its size divided by `factor` (1, 2, 3 ...): the
// I420 planes are shrunk by averaging whole blocks (PlaneShrink.h), then only the colours are
// converted. `scratch` holds the shrunk planes between calls. False for a picture that is not I420.
struct ShrunkPlanes;
bool shrinkToImage(ffsupport::SwsPtr &context, ShrunkPlanes &scratch, const FrameToken &from,
                   int factor, QImage &out);

} // namespace selvane
