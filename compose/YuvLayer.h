#pragma once

// Blending of graphics into I420 program pictures without leaving YUV. A YuvLayer is made once
// from a premultiplied ARGB picture (a text, a logo, the drawing) and blended into any number of
// frames afterwards: per frame it costs one multiply-add per covered pixel and plane, nothing
// for the rest of the picture. Blending premultiplied Y, U and V is exact, since the RGB to YUV
// transform is affine; only chroma is shared by 2 x 2 pixels, as in the picture itself.
//
// A clip whose top and bottom are even (a band of rows) splits every blend exactly: the chroma rows
// of luma rows 2j and 2j + 1 are blended with the band that holds both.
//
// The colour matrix is BT.601 with limited range, the same that every conversion of the program
// uses. Threads: a layer is made on one thread and then only read (the chroma for each position
// parity is made on first use, so one layer is used by one thread at a time).

#include "media/FrameToken.h"

#include <QColor>
#include <QImage>
#include <QRect>
#include <array>
#include <cstdint>
#include <vector>

namespace selvane {

// The three planes of an I420 picture being written.
struct YuvPlanes
{
    std::uint8_t *data[3] = {};
    qint64 stride[3] = {};
    int width = 0;
    int height = 0;
};

class YuvLayer
{
public:
    YuvLayer() = default;
    // `image` in any format; it is converted to premultiplied ARGB first when it is not.
    explicit YuvLayer(const QImage &image);

    bool isNull() const { return m_width < 1 || m_height < 1; }
    QSize size() const { return {m_width, m_height}; }

    // Blends the layer with its top-left corner at `at` (luma pixels), only inside `clip` and
    // the picture.
    void blendInto(const YuvPlanes &frame, QPoint at, QRect clip) const;

    // A premultiplied colour as Y, U, V and alpha (0..255 each).
    static std::array<std::uint8_t, 4> premultiplied(QColor color, double opacity);
    // Fills a rectangle with a colour of any alpha, only inside `clip`.
    static void fillRect(const YuvPlanes &frame, QRect rect, QColor color, double opacity,
                         QRect clip);
    // Blends an I420 picture at `at` (rounded down to even) with one opacity for all of it, only
    // inside `clip`.
    static void blendPicture(const YuvPlanes &frame, const FrameToken &picture, QPoint at,
                             double opacity, QRect clip);

private:
    struct Chroma
    {
        int width = 0;
        int height = 0;
        std::vector<std::uint8_t> u, v, a;
    };
    const Chroma &chroma(int parityX, int parityY) const;

    int m_width = 0;
    int m_height = 0;
    std::vector<std::uint8_t> m_y, m_u, m_v, m_a; // premultiplied, full resolution
    mutable std::array<Chroma, 4> m_chroma;       // by (parityY * 2 + parityX), made on use
};

} // namespace selvane
