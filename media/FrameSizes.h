#pragma once

// Picture-size thresholds shared by the pools, the encode queue, the encoder choice and the
// converters: the larger the picture, the fewer may be in flight and the more threads convert it.

#include <QtGlobal>

namespace selvane::frames {

inline constexpr qint64 kPixels1080p = 1920LL * 1080; // 2,073,600
inline constexpr qint64 kPixels4K = 3840LL * 2160;    // 8,294,400
inline constexpr qint64 kPixels8K = 7680LL * 4320;    // 33,177,600
// A 4K picture's buffer (3840 x 2160 at 4:2:0): at most two this large wait in a pool.
inline constexpr qint64 kLargeBufferBytes = kPixels4K * 3 / 2;
// Pictures with a side above this are encoded as HEVC ("8K" to the operator).
inline constexpr int kHevcAboveSide = 4096;

inline qint64 pixelsOf(int width, int height)
{
    return qint64(qMax(width, 1)) * qMax(height, 1);
}

} // namespace selvane::frames
