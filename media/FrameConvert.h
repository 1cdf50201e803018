#pragma once

// Conversions between program pictures (FrameToken) and QImage, for the few places that need
// RGB: a still picture or an overlay drawn by Qt enters the program, and a picture leaves it for
// a preview or a snapshot. Both run swscale once per call; nothing here is meant for every frame
// of a show. Any thread; no state.

#include "media/FrameToken.h"

#include <QImage>

namespace selvane {

// The picture as RGBA 8:8:8:8 (a copy); a null image for an empty token.
QImage frameToImage(const FrameToken &frame);
// Writes the image into `out` as an I420 picture of the image's size (even sizes keep every
// pixel's colour; odd ones share chroma with the edge). False when the image is null.
bool imageToFrame(const QImage &image, FrameWriter &out);

} // namespace selvane
