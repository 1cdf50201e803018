#include "media/PlaneShrink.h"

#if defined(__SSE2__) || defined(_M_X64)
#include <emmintrin.h>
#define SELVANE_SHRINK_SSE2 1
#endif

namespace selvane {

namespace {

void halveRow(const std::uint8_t *a, const std::uint8_t *b, std::uint8_t *out, int width)
{
    int x = 0;
#ifdef SELVANE_SHRINK_SSE2
    const __m128i low = _mm_set1_epi16(0x00ff);
    const __m128i two = _mm_set1_epi16(2);
    for (; x + 8 <= width; x += 8) {
        const __m128i ra = _mm_loadu_si128(reinterpret_cast<const __m128i *>(a + 2 * x));
        const __m128i rb = _mm_loadu_si128(reinterpret_cast<const __m128i *>(b + 2 * x));
        // Even and odd columns of both rows as 16-bit sums, then (sum + 2) / 4.
        const __m128i sum =
            _mm_add_epi16(_mm_add_epi16(_mm_and_si128(ra, low), _mm_srli_epi16(ra, 8)),
                          _mm_add_epi16(_mm_and_si128(rb, low), _mm_srli_epi16(rb, 8)));
        const __m128i mean = _mm_srli_epi16(_mm_add_epi16(sum, two), 2);
        _mm_storel_epi64(reinterpret_cast<__m128i *>(out + x), _mm_packus_epi16(mean, mean));
    }
#endif
    for (; x < width; ++x)
        out[x] = std::uint8_t((a[2 * x] + a[2 * x + 1] + b[2 * x] + b[2 * x + 1] + 2) >> 2);
}

} // namespace

void shrinkPlane(const std::uint8_t *src, qint64 srcStride, std::uint8_t *dst, qint64 dstStride,
                 int width, int rows, int factor)
{
    for (int y = 0; y < rows; ++y) {
        const std::uint8_t *top = src + qint64(y) * factor * srcStride;
        std::uint8_t *out = dst + y * dstStride;
        if (factor == 2) {
            halveRow(top, top + srcStride, out, width);
            continue;
        }
        const int area = factor * factor;
        for (int x = 0; x < width; ++x) {
            int sum = 0;
            for (int dy = 0; dy < factor; ++dy) {
                const std::uint8_t *row = top + dy * srcStride + qint64(x) * factor;
                for (int dx = 0; dx < factor; ++dx)
                    sum += row[dx];
            }
            out[x] = std::uint8_t((sum + area / 2) / area);
        }
    }
}

bool shrinkI420(const FrameToken &from, int factor, ShrunkPlanes &out)
{
    if (!from.isI420() || !from.hasPicture() || factor < 1)
        return false;
    const int width = (from.width / factor) & ~1, height = (from.height / factor) & ~1;
    if (width < 2 || height < 2)
        return false;
    const int strides[3] = {int(FrameToken::i420Stride(width)),
                            int(FrameToken::i420Stride(width / 2)),
                            int(FrameToken::i420Stride(width / 2))};
    const int rows[3] = {height, height / 2, height / 2};
    out.bytes.resize(std::size_t(strides[0]) * rows[0] + 2 * std::size_t(strides[1]) * rows[1]);
    std::uint8_t *at = out.bytes.data();
    for (int p = 0; p < 3; ++p) {
        shrinkPlane(from.plane(p), from.planeStride(p), at, strides[p], p == 0 ? width : width / 2,
                    rows[p], factor);
        out.data[p] = at;
        out.linesize[p] = strides[p];
        at += std::size_t(strides[p]) * rows[p];
    }
    out.width = width;
    out.height = height;
    return true;
}

} // namespace selvane
