#include "compose/BlendRows.h"

#if defined(__SSE2__) || defined(_M_X64)
#include <emmintrin.h>
#define SELVANE_BLEND_SSE2 1
#endif

namespace selvane::blend {

#ifdef SELVANE_BLEND_SSE2
namespace {

// Rounded x / 255 of eight 16-bit products (each at most 255 * 255): the scalar div255 per lane.
inline __m128i div255x8(__m128i x)
{
    x = _mm_add_epi16(x, _mm_set1_epi16(128));
    return _mm_srli_epi16(_mm_add_epi16(x, _mm_srli_epi16(x, 8)), 8);
}

// dst * keep / 255 for sixteen pixels, keep given as two halves of 16-bit lanes.
inline __m128i scale16(__m128i dst, __m128i keepLo, __m128i keepHi)
{
    const __m128i zero = _mm_setzero_si128();
    const __m128i lo = div255x8(_mm_mullo_epi16(_mm_unpacklo_epi8(dst, zero), keepLo));
    const __m128i hi = div255x8(_mm_mullo_epi16(_mm_unpackhi_epi8(dst, zero), keepHi));
    return _mm_packus_epi16(lo, hi);
}

} // namespace
#endif

void over(std::uint8_t *dst, const std::uint8_t *src, const std::uint8_t *alpha, int n)
{
    int i = 0;
#ifdef SELVANE_BLEND_SSE2
    const __m128i zero = _mm_setzero_si128();
    const __m128i full = _mm_set1_epi16(255);
    for (; i + 16 <= n; i += 16) {
        const __m128i a = _mm_loadu_si128(reinterpret_cast<const __m128i *>(alpha + i));
        const __m128i d = _mm_loadu_si128(reinterpret_cast<const __m128i *>(dst + i));
        const __m128i s = _mm_loadu_si128(reinterpret_cast<const __m128i *>(src + i));
        const __m128i kept = scale16(d, _mm_sub_epi16(full, _mm_unpacklo_epi8(a, zero)),
                                     _mm_sub_epi16(full, _mm_unpackhi_epi8(a, zero)));
        _mm_storeu_si128(reinterpret_cast<__m128i *>(dst + i), _mm_add_epi8(kept, s));
    }
#endif
    for (; i < n; ++i)
        dst[i] = std::uint8_t(src[i] + div255(unsigned(dst[i]) * (255u - alpha[i])));
}

void overConstant(std::uint8_t *dst, std::uint8_t value, std::uint8_t alpha, int n)
{
    const unsigned keep = 255u - alpha;
    int i = 0;
#ifdef SELVANE_BLEND_SSE2
    const __m128i keep16 = _mm_set1_epi16(short(keep));
    const __m128i value8 = _mm_set1_epi8(char(value));
    for (; i + 16 <= n; i += 16) {
        const __m128i d = _mm_loadu_si128(reinterpret_cast<const __m128i *>(dst + i));
        _mm_storeu_si128(reinterpret_cast<__m128i *>(dst + i),
                         _mm_add_epi8(scale16(d, keep16, keep16), value8));
    }
#endif
    for (; i < n; ++i)
        dst[i] = std::uint8_t(value + div255(unsigned(dst[i]) * keep));
}

void mix(std::uint8_t *dst, const std::uint8_t *src, unsigned alpha, int n)
{
    const unsigned keep = 255u - alpha;
    int i = 0;
#ifdef SELVANE_BLEND_SSE2
    const __m128i zero = _mm_setzero_si128();
    const __m128i alpha16 = _mm_set1_epi16(short(alpha));
    const __m128i keep16 = _mm_set1_epi16(short(keep));
    for (; i + 16 <= n; i += 16) {
        const __m128i d = _mm_loadu_si128(reinterpret_cast<const __m128i *>(dst + i));
        const __m128i s = _mm_loadu_si128(reinterpret_cast<const __m128i *>(src + i));
        // src * alpha + dst * keep is at most 255 * 255: it fits a 16-bit lane.
        const __m128i lo = _mm_add_epi16(_mm_mullo_epi16(_mm_unpacklo_epi8(s, zero), alpha16),
                                         _mm_mullo_epi16(_mm_unpacklo_epi8(d, zero), keep16));
        const __m128i hi = _mm_add_epi16(_mm_mullo_epi16(_mm_unpackhi_epi8(s, zero), alpha16),
                                         _mm_mullo_epi16(_mm_unpackhi_epi8(d, zero), keep16));
        _mm_storeu_si128(reinterpret_cast<__m128i *>(dst + i),
                         _mm_packus_epi16(div255x8(lo), div255x8(hi)));
    }
#endif
    for (; i < n; ++i)
        dst[i] = std::uint8_t(div255(unsigned(src[i]) * alpha + unsigned(dst[i]) * keep));
}

} // namespace selvane::blend
