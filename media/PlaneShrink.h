#pragma once

// Shrinks I420 planes by a whole factor: each output pixel is the mean of a factor x factor block
// (to a half size 8 output pixels a step with SSE2). For previews: a picture shown at a half or
// a third of its size needs no scaler at all, and its colours are then converted as they are, the
// cheapest conversion swscale has. Plain functions, any thread.

#include "media/FrameToken.h"

#include <cstdint>
#include <vector>

namespace selvane {

// `from`'s planes shrunk by `factor` into `planes` (three planes one after the other, rows of
// the returned strides); the shrunk size, even, is returned through `size`. False when the
// picture is not I420 or too small for the factor.
struct ShrunkPlanes
{
    std::vector<std::uint8_t> bytes;
    const std::uint8_t *data[4] = {};
    int linesize[4] = {};
    int width = 0;
    int height = 0;
};
bool shrinkI420(const FrameToken &from, int factor, ShrunkPlanes &out);

// One plane: `rows` x `width` output bytes from `factor` times as many input rows and columns.
void shrinkPlane(const std::uint8_t *src, qint64 srcStride, std::uint8_t *dst, qint64 dstStride,
                 int width, int rows, int factor);

} // namespace selvane
