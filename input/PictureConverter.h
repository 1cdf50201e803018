#pragma once

// Turns decoded pictures into upright I420 pool tokens: a hardware picture is first copied to
// system memory, the stream's rotation is undone, and the picture is scaled (bilinear) and
// converted through a cached scaling context straight into the token's buffer. A 4:2:0 picture
// of the right size and upright is not converted at all: the token holds the decoded picture
// itself (a reference to the decoder's buffer), or a copy of its planes where it cannot be
// held. One run's thread only.

#include "media/FfmpegTypes.h"
#include "media/FrameToken.h"

#include <QSize>
#include <vector>

namespace selvane {

// Rotation, in degrees clockwise (0, 90, 180 or 270), that makes the stream's pictures upright:
// from the stream's "rotate" metadata entry, or else from its display matrix.
int uprightRotationDegrees(const AVStream *stream);

class PictureConverter
{
public:
    struct Sizes
    {
        QSize coded;   // the decoded picture
        QSize display; // after rotation
        bool operator==(const Sizes &) const = default;
    };

    PictureConverter(int rotationDegrees, AVPixelFormat hardwareFormat)
        : m_rotation(rotationDegrees), m_hardwareFormat(hardwareFormat)
    {
    }

    // The picture in system memory: `decoded` itself, or its copy out of the hardware; null when
    // the copy fails.
    const AVFrame *inSystemMemory(const AVFrame *decoded);
    Sizes sizesOf(const AVFrame *frame) const;
    // The delivered size: the display size, shrunk to fit `target` keeping its shape when given
    // and smaller.
    static QSize outputSize(QSize display, QSize target);
    // Converts into `out` at `size` (display orientation). False when scaling is impossible.
    bool convert(const AVFrame *frame, QSize size, FrameWriter &out);

private:
    bool holdDecoded(const AVFrame *frame, QSize size, FrameWriter &out);

    int m_rotation = 0;
    AVPixelFormat m_hardwareFormat = AV_PIX_FMT_NONE;
    ffsupport::FramePtr m_systemFrame;
    ffsupport::SwsPtr m_sws;
    std::vector<std::uint8_t> m_rotateScratch;
};

} // namespace selvane
