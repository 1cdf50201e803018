#include "compose/YuvLayer.h"

#include "compose/BlendRows.h"

#include <algorithm>
#include <cmath>
#include <cstring>

namespace selvane {

namespace {

using blend::div255;

// BT.601, limited range, of premultiplied R, G, B under alpha a: Y, U and V times a / 255.
inline std::uint8_t lumaOf(int r, int g, int b, int a)
{
    const int y = ((66 * r + 129 * g + 25 * b + 128) >> 8) + (16 * a + 127) / 255;
    return std::uint8_t(std::clamp(y, 0, a));
}
inline std::uint8_t blueDiffOf(int r, int g, int b, int a)
{
    const int u = ((-38 * r - 74 * g + 112 * b + 128) >> 8) + (128 * a + 127) / 255;
    return std::uint8_t(std::clamp(u, 0, a));
}
inline std::uint8_t redDiffOf(int r, int g, int b, int a)
{
    const int v = ((112 * r - 94 * g - 18 * b + 128) >> 8) + (128 * a + 127) / 255;
    return std::uint8_t(std::clamp(v, 0, a));
}

int alphaOf(double opacity)
{
    return int(std::lround(std::clamp(opacity, 0.0, 1.0) * 255.0));
}

QRect frameRect(const YuvPlanes &frame)
{
    return {0, 0, frame.width, frame.height};
}

} // namespace

YuvLayer::YuvLayer(const QImage &image)
{
    if (image.isNull())
        return;
    const QImage argb = image.format() == QImage::Format_ARGB32_Premultiplied
                            ? image
                            : image.convertToFormat(QImage::Format_ARGB32_Premultiplied);
    m_width = argb.width();
    m_height = argb.height();
    const std::size_t count = std::size_t(m_width) * std::size_t(m_height);
    m_y.resize(count);
    m_u.resize(count);
    m_v.resize(count);
    m_a.resize(count);
    for (int y = 0; y < m_height; ++y) {
        const auto *row = reinterpret_cast<const quint32 *>(argb.constScanLine(y));
        const std::size_t at = std::size_t(y) * std::size_t(m_width);
        for (int x = 0; x < m_width; ++x) {
            const quint32 p = row[x];
            const int a = int(p >> 24), r = int((p >> 16) & 0xff), g = int((p >> 8) & 0xff),
                      b = int(p & 0xff);
            m_a[at + x] = std::uint8_t(a);
            m_y[at + x] = lumaOf(r, g, b, a);
            m_u[at + x] = blueDiffOf(r, g, b, a);
            m_v[at + x] = redDiffOf(r, g, b, a);
        }
    }
}

const YuvLayer::Chroma &YuvLayer::chroma(int parityX, int parityY) const
{
    Chroma &c = m_chroma[std::size_t(parityY * 2 + parityX)];
    if (!c.a.empty())
        return c;
    // Cell (i, j) covers the layer's pixels 2i - parityX .. 2i + 1 - parityX and likewise down.
    c.width = (m_width + parityX + 1) / 2;
    c.height = (m_height + parityY + 1) / 2;
    const std::size_t count = std::size_t(c.width) * std::size_t(c.height);
    c.u.assign(count, 0);
    c.v.assign(count, 0);
    c.a.assign(count, 0);
    for (int j = 0; j < c.height; ++j) {
        for (int i = 0; i < c.width; ++i) {
            int su = 0, sv = 0, sa = 0;
            for (int dy = 0; dy < 2; ++dy) {
                const int y = 2 * j + dy - parityY;
                if (y < 0 || y >= m_height)
                    continue;
                for (int dx = 0; dx < 2; ++dx) {
                    const int x = 2 * i + dx - parityX;
                    if (x < 0 || x >= m_width)
                        continue;
                    const std::size_t at = std::size_t(y) * std::size_t(m_width) + std::size_t(x);
                    su += m_u[at];
                    sv += m_v[at];
                    sa += m_a[at];
                }
            }
            const std::size_t at = std::size_t(j) * std::size_t(c.width) + std::size_t(i);
            c.a[at] = std::uint8_t((sa + 2) >> 2);
            c.u[at] = std::uint8_t(std::min((su + 2) >> 2, int(c.a[at])));
            c.v[at] = std::uint8_t(std::min((sv + 2) >> 2, int(c.a[at])));
        }
    }
    return c;
}

void YuvLayer::blendInto(const YuvPlanes &frame, QPoint at, QRect clip) const
{
    if (isNull())
        return;
    const QRect r = QRect(at, size()) & clip & frameRect(frame);
    if (r.isEmpty())
        return;
    for (int y = r.top(); y <= r.bottom(); ++y) {
        const std::size_t from =
            std::size_t(y - at.y()) * std::size_t(m_width) + std::size_t(r.left() - at.x());
        blend::over(frame.data[0] + y * frame.stride[0] + r.left(), &m_y[from], &m_a[from],
                    r.width());
    }
    const int parityX = at.x() & 1;
    const int parityY = at.y() & 1;
    const Chroma &c = chroma(parityX, parityY);
    const int originX = (at.x() - parityX) / 2;
    const int originY = (at.y() - parityY) / 2;
    const int i0 = std::max(r.left() / 2, originX);
    const int i1 = std::min({r.right() / 2, originX + c.width - 1, (frame.width + 1) / 2 - 1});
    const int j0 = std::max(r.top() / 2, originY);
    const int j1 = std::min({r.bottom() / 2, originY + c.height - 1, (frame.height + 1) / 2 - 1});
    for (int j = j0; j <= j1 && i0 <= i1; ++j) {
        const std::size_t from =
            std::size_t(j - originY) * std::size_t(c.width) + std::size_t(i0 - originX);
        blend::over(frame.data[1] + j * frame.stride[1] + i0, &c.u[from], &c.a[from], i1 - i0 + 1);
        blend::over(frame.data[2] + j * frame.stride[2] + i0, &c.v[from], &c.a[from], i1 - i0 + 1);
    }
}

std::array<std::uint8_t, 4> YuvLayer::premultiplied(QColor color, double opacity)
{
    const int a = div255(unsigned(color.alpha()) * unsigned(alphaOf(opacity)));
    const int r = int(div255(unsigned(color.red()) * unsigned(a)));
    const int g = int(div255(unsigned(color.green()) * unsigned(a)));
    const int b = int(div255(unsigned(color.blue()) * unsigned(a)));
    return {lumaOf(r, g, b, a), blueDiffOf(r, g, b, a), redDiffOf(r, g, b, a), std::uint8_t(a)};
}

void YuvLayer::fillRect(const YuvPlanes &frame, QRect rect, QColor color, double opacity,
                        QRect clip)
{
    const QRect r = rect & clip & frameRect(frame);
    const auto c = premultiplied(color, opacity);
    if (r.isEmpty() || c[3] == 0)
        return;
    for (int y = r.top(); y <= r.bottom(); ++y)
        blend::overConstant(frame.data[0] + y * frame.stride[0] + r.left(), c[0], c[3], r.width());
    const int i0 = r.left() / 2, i1 = r.right() / 2;
    for (int j = r.top() / 2; j <= r.bottom() / 2; ++j) {
        blend::overConstant(frame.data[1] + j * frame.stride[1] + i0, c[1], c[3], i1 - i0 + 1);
        blend::overConstant(frame.data[2] + j * frame.stride[2] + i0, c[2], c[3], i1 - i0 + 1);
    }
}

void YuvLayer::blendPicture(const YuvPlanes &frame, const FrameToken &picture, QPoint at,
                            double opacity, QRect clip)
{
    const QSize size(picture.width, picture.height);
    const int alpha = alphaOf(opacity);
    const QPoint even(at.x() & ~1, at.y() & ~1);
    const QRect r = QRect(even, size) & clip & frameRect(frame);
    if (r.isEmpty() || alpha == 0)
        return;
    for (int p = 0; p < 3; ++p) {
        const int shift = p == 0 ? 0 : 1;
        const int x0 = r.left() >> shift, x1 = (r.right() >> shift);
        const int y0 = r.top() >> shift, y1 = (r.bottom() >> shift);
        const int fromX = x0 - (even.x() >> shift), fromY = y0 - (even.y() >> shift);
        const int lastX = std::min(x1, (even.x() >> shift) + ((size.width() + shift) >> shift) - 1);
        const int lastY =
            std::min(y1, (even.y() >> shift) + ((size.height() + shift) >> shift) - 1);
        for (int y = y0; y <= lastY; ++y) {
            std::uint8_t *dst = frame.data[p] + y * frame.stride[p] + x0;
            const std::uint8_t *src =
                picture.plane(p) + (fromY + y - y0) * picture.planeStride(p) + fromX;
            if (alpha == 255)
                std::memcpy(dst, src, std::size_t(lastX - x0 + 1));
            else
                blend::mix(dst, src, unsigned(alpha), lastX - x0 + 1);
        }
    }
}

} // namespace selvane
