#pragma once

// A stinger as the program plays it: every picture of the clip decoded once, at the program's
// size, as I420 with a full-resolution alpha plane and a 2 x 2-averaged one for chroma, and its
// sound as 48 kHz stereo s16. The program thread blends a picture over the switch at each tick;
// the mixer adds the sound to the program. Kept whole in memory so that a take starts on the
// tick it is asked for, and every frame is where it belongs however busy the machine is.
//
// Only the rows that anything covers are kept: a picture records its first covered row and, for
// each kept row, the first and last covered column, so that blending costs nothing where the
// stinger is clear and transparent pictures cost no memory.
//
// Immutable once made (by the loader); shared read-only by any thread.

#include "media/FrameToken.h"

#include <QSize>
#include <QString>
#include <cstdint>
#include <memory>
#include <vector>

namespace selvane {

struct StingerPicture
{
    qint64 ptsUs = 0; // from the clip's start
    int top = 0;      // first kept row (even)
    int rows = 0;     // kept rows (even, or up to the bottom)
    // Planes of the kept rows, premultiplied by their alpha: luma `width` wide, chroma
    // `(width + 1) / 2`.
    std::vector<std::uint8_t> y, u, v, alpha, chromaAlpha;
    // Per kept luma row, and per kept chroma row: [first, last) covered columns (first == last:
    // clear).
    std::vector<std::pair<int, int>> spans, chromaSpans;
    bool opaque = false; // covers the whole picture: nothing of the switch shows

    bool isClear() const { return rows == 0; }
};

struct StingerClip
{
    // Longest clip and most memory one clip may take.
    static constexpr int kMaxMs = 10'000;
    static constexpr qint64 kMaxBytes = qint64(1536) << 20;

    QString path;
    QSize size; // the program's, which every picture has
    qint64 durationUs = 0;
    qint64 cutUs = 0;                     // where the program switches underneath
    bool hasAlpha = false;                // false: the clip's pictures cover everything
    std::vector<StingerPicture> pictures; // by time
    std::vector<std::int16_t> sound;      // interleaved stereo, from the clip's start
    qint64 bytes = 0;

    int durationMs() const { return int((durationUs + 999) / 1000); }
    // The picture on show `elapsedUs` into the clip (the last one from before), or null.
    const StingerPicture *at(qint64 elapsedUs) const;
};

using StingerClipPtr = std::shared_ptr<const StingerClip>;

} // namespace selvane
