#include "compose/TransitionPaint.h"

#include "compose/BlendRows.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <vector>

namespace selvane::transition {

namespace {

bool sameI420(const FrameToken &a, const FrameToken &b)
{
    return a.isI420() && b.isI420() && a.hasPicture() && b.hasPicture() && a.width == b.width &&
           a.height == b.height && a.width > 0 && a.height > 0;
}

int planeWidth(const FrameToken &frame, int plane)
{
    return plane == 0 ? frame.width : (frame.width + 1) / 2;
}

int planeHeight(const FrameToken &frame, int plane)
{
    return plane == 0 ? frame.height : (frame.height + 1) / 2;
}

unsigned toByte(double amount)
{
    return unsigned(std::lround(std::clamp(amount, 0.0, 1.0) * 255.0));
}

// How much of the new picture shows at each of `length` places along a wipe (0 .. 255): the edge
// runs from before the first place to past the last, so 0 and 1 show one picture alone.
void wipeRamp(std::vector<std::uint8_t> &ramp, int length, int fullLength, double position,
              bool fromStart)
{
    ramp.resize(std::size_t(length));
    const double scale = double(fullLength) / double(length); // chroma places are twice as wide
    const double edge = softEdge(fullLength);
    const double boundary = -edge / 2 + position * (fullLength + edge);
    for (int i = 0; i < length; ++i) {
        const double at = (i + 0.5) * scale;
        const double along = fromStart ? at : fullLength - at;
        ramp[std::size_t(i)] = std::uint8_t(toByte((boundary - along) / edge + 0.5));
    }
}

// Stretches of a wipe's line: all the old picture, all the new one, or the soft edge between.
struct Stretch
{
    int from = 0, to = 0;   // [from, to)
    std::uint8_t share = 0; // 0 or 255 for one picture alone; else the edge (per place)
};

std::vector<Stretch> stretchesOf(const std::vector<std::uint8_t> &ramp)
{
    std::vector<Stretch> stretches;
    const int n = int(ramp.size());
    for (int i = 0; i < n;) {
        const bool whole = ramp[std::size_t(i)] == 0 || ramp[std::size_t(i)] == 255;
        int j = i + 1;
        while (j < n && (whole ? ramp[std::size_t(j)] == ramp[std::size_t(i)]
                               : ramp[std::size_t(j)] != 0 && ramp[std::size_t(j)] != 255))
            ++j;
        stretches.push_back({i, j, whole ? ramp[std::size_t(i)] : std::uint8_t(1)});
        i = j;
    }
    return stretches;
}

// A row of the new picture's share over the old one: the stretches that are all one picture are
// copied, the soft edge between them is mixed pixel by pixel.
void wipeRow(std::uint8_t *dst, const std::uint8_t *from, const std::uint8_t *to,
             const std::uint8_t *ramp, const std::vector<Stretch> &stretches)
{
    for (const Stretch &s : stretches) {
        if (s.share == 0 || s.share == 255) {
            std::memcpy(dst + s.from, s.share == 0 ? from + s.from : to + s.from,
                        std::size_t(s.to - s.from));
            continue;
        }
        for (int j = s.from; j < s.to; ++j)
            dst[j] = std::uint8_t(
                blend::div255(unsigned(to[j]) * ramp[j] + unsigned(from[j]) * (255u - ramp[j])));
    }
}

} // namespace

std::array<std::uint8_t, 3> yuvOf(quint32 argb)
{
    const double r = (argb >> 16) & 0xff, g = (argb >> 8) & 0xff, b = argb & 0xff;
    const auto clampByte = [](double v) {
        return std::uint8_t(std::clamp<long>(std::lround(v), 0, 255));
    };
    return {clampByte(16 + (65.481 * r + 128.553 * g + 24.966 * b) / 255.0),
            clampByte(128 + (-37.797 * r - 74.203 * g + 112.0 * b) / 255.0),
            clampByte(128 + (112.0 * r - 93.786 * g - 18.214 * b) / 255.0)};
}

int softEdge(int length)
{
    return std::max(2, length / 40);
}

bool paint(const FrameToken &from, const FrameToken &to, double position,
           const Transition &transition, FrameWriter &out)
{
    if (!sameI420(from, to))
        return false;
    if (transition.kind == TransitionKind::Dip) {
        // Out to the colour over the first half, in from it over the second.
        const auto colour = yuvOf(transition.dipColour);
        return position < 0.5 ? fade(from, colour, position * 2, out)
                              : fade(to, colour, (1.0 - position) * 2, out);
    }
    out.prepareI420(from.width, from.height);
    out->ptsUs = to.ptsUs;
    const unsigned share = toByte(position);
    const bool across = transition.direction == WipeDirection::LeftToRight ||
                        transition.direction == WipeDirection::RightToLeft;
    const bool fromStart = transition.direction == WipeDirection::LeftToRight ||
                           transition.direction == WipeDirection::TopDown;
    std::vector<std::uint8_t> ramp;
    std::vector<Stretch> stretches;
    for (int p = 0; p < 3; ++p) {
        const int width = planeWidth(from, p), height = planeHeight(from, p);
        const std::uint8_t *a = from.plane(p), *b = to.plane(p);
        std::uint8_t *d = out.plane(p);
        const qint64 as = from.planeStride(p), bs = to.planeStride(p), ds = out->planeStride(p);
        if (transition.kind == TransitionKind::Wipe) {
            wipeRamp(ramp, across ? width : height, across ? from.width : from.height, position,
                     fromStart);
            stretches = stretchesOf(ramp);
        }
        for (int y = 0; y < height; ++y) {
            const std::uint8_t *ra = a + y * as, *rb = b + y * bs;
            std::uint8_t *rd = d + y * ds;
            if (transition.kind != TransitionKind::Wipe) { // a mix
                std::memcpy(rd, ra, std::size_t(width));
                blend::mix(rd, rb, share, width);
            } else if (across) {
                wipeRow(rd, ra, rb, ramp.data(), stretches);
            } else {
                const unsigned rowShare = ramp[std::size_t(y)];
                std::memcpy(rd, rowShare == 255 ? rb : ra, std::size_t(width));
                if (rowShare != 0 && rowShare != 255)
                    blend::mix(rd, rb, rowShare, width);
            }
        }
    }
    return true;
}

bool fade(const FrameToken &picture, std::array<std::uint8_t, 3> colour, double amount,
          FrameWriter &out)
{
    if (!picture.isI420() || !picture.hasPicture() || picture.width < 1 || picture.height < 1)
        return false;
    out.prepareI420(picture.width, picture.height);
    out->ptsUs = picture.ptsUs;
    const unsigned alpha = toByte(amount);
    for (int p = 0; p < 3; ++p) {
        const int width = planeWidth(picture, p), height = planeHeight(picture, p);
        const std::uint8_t value = std::uint8_t(blend::div255(colour[std::size_t(p)] * alpha));
        for (int y = 0; y < height; ++y) {
            std::uint8_t *row = out.plane(p) + y * out->planeStride(p);
            std::memcpy(row, picture.plane(p) + y * picture.planeStride(p), std::size_t(width));
            if (alpha > 0)
                blend::overConstant(row, value, std::uint8_t(alpha), width);
        }
    }
    return true;
}

bool stinger(const FrameToken &base, const StingerPicture &picture, FrameWriter &out)
{
    if (!base.isI420() || !base.hasPicture() || base.width < 1 || base.height < 1 ||
        picture.top + picture.rows > base.height)
        return false;
    out.prepareI420(base.width, base.height);
    out->ptsUs = base.ptsUs;
    for (int p = 0; p < 3; ++p) {
        const int width = planeWidth(base, p), height = planeHeight(base, p);
        const int top = p == 0 ? picture.top : picture.top / 2;
        const int rows = p == 0 ? picture.rows : (picture.rows + 1) / 2;
        const std::vector<std::uint8_t> &src = p == 0 ? picture.y : p == 1 ? picture.u : picture.v;
        const std::vector<std::uint8_t> &alpha = p == 0 ? picture.alpha : picture.chromaAlpha;
        const auto &spans = p == 0 ? picture.spans : picture.chromaSpans;
        for (int y = 0; y < height; ++y) {
            std::uint8_t *row = out.plane(p) + y * out->planeStride(p);
            const int r = y - top;
            if (r < 0 || r >= rows) {
                std::memcpy(row, base.plane(p) + y * base.planeStride(p), std::size_t(width));
                continue;
            }
            const std::size_t at = std::size_t(r) * std::size_t(width);
            if (picture.opaque) {
                std::memcpy(row, &src[at], std::size_t(width));
                continue;
            }
            std::memcpy(row, base.plane(p) + y * base.planeStride(p), std::size_t(width));
            const auto [from, to] = spans[std::size_t(r)];
            if (to > from)
                blend::over(row + from, &src[at + std::size_t(from)],
                            &alpha[at + std::size_t(from)], to - from);
        }
    }
    return true;
}

} // namespace selvane::transition
