#include "compose/BlendRows.h"

#include <algorithm>
#include <atomic>

#if defined(__GNUC__) && (defined(__x86_64__) || defined(__i386__))
#include <immintrin.h>
#define SELVANE_BLEND_X86 1
#endif

namespace selvane::blend {

namespace {

// One pixel at a time: the tails of rows, and processors without the vector paths.
void overScalar(std::uint8_t *dst, const std::uint8_t *src, const std::uint8_t *alpha, int i, int n)
{
    for (; i < n; ++i)
        dst[i] = std::uint8_t(src[i] + div255(unsigned(dst[i]) * (255u - alpha[i])));
}

void overConstantScalar(std::uint8_t *dst, std::uint8_t value, unsigned keep, int i, int n)
{
    for (; i < n; ++i)
        dst[i] = std::uint8_t(value + div255(unsigned(dst[i]) * keep));
}

void mixScalar(std::uint8_t *dst, const std::uint8_t *src, unsigned alpha, int i, int n)
{
    const unsigned keep = 255u - alpha;
    for (; i < n; ++i)
        dst[i] = std::uint8_t(div255(unsigned(src[i]) * alpha + unsigned(dst[i]) * keep));
}

#ifdef SELVANE_BLEND_X86

// --- SSE2: 16 pixels a step (every x86-64 processor) ---

// Rounded x / 255 of eight 16-bit values (each at most 255 * 255): the scalar div255 per lane.
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

int overSse2(std::uint8_t *dst, const std::uint8_t *src, const std::uint8_t *alpha, int n)
{
    const __m128i zero = _mm_setzero_si128();
    const __m128i full = _mm_set1_epi16(255);
    int i = 0;
    for (; i + 16 <= n; i += 16) {
        const __m128i a = _mm_loadu_si128(reinterpret_cast<const __m128i *>(alpha + i));
        if (_mm_movemask_epi8(_mm_cmpeq_epi8(a, zero)) == 0xffff)
            continue; // clear: the picture stays (most of a line of letters is)
        const __m128i d = _mm_loadu_si128(reinterpret_cast<const __m128i *>(dst + i));
        const __m128i s = _mm_loadu_si128(reinterpret_cast<const __m128i *>(src + i));
        const __m128i kept = scale16(d, _mm_sub_epi16(full, _mm_unpacklo_epi8(a, zero)),
                                     _mm_sub_epi16(full, _mm_unpackhi_epi8(a, zero)));
        _mm_storeu_si128(reinterpret_cast<__m128i *>(dst + i), _mm_add_epi8(kept, s));
    }
    return i;
}

int overConstantSse2(std::uint8_t *dst, std::uint8_t value, unsigned keep, int n)
{
    const __m128i keep16 = _mm_set1_epi16(short(keep));
    const __m128i value8 = _mm_set1_epi8(char(value));
    int i = 0;
    for (; i + 16 <= n; i += 16) {
        const __m128i d = _mm_loadu_si128(reinterpret_cast<const __m128i *>(dst + i));
        _mm_storeu_si128(reinterpret_cast<__m128i *>(dst + i),
                         _mm_add_epi8(scale16(d, keep16, keep16), value8));
    }
    return i;
}

int mixSse2(std::uint8_t *dst, const std::uint8_t *src, unsigned alpha, int n)
{
    const __m128i zero = _mm_setzero_si128();
    const __m128i alpha16 = _mm_set1_epi16(short(alpha));
    const __m128i keep16 = _mm_set1_epi16(short(255u - alpha));
    int i = 0;
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
    return i;
}

// --- AVX2: 32 pixels a step, where the processor has it. Unpacking and packing both work
// within each 128-bit half, so the pixels come back in their order. ---

#define SELVANE_AVX2 __attribute__((target("avx2")))

SELVANE_AVX2 inline __m256i div255x16(__m256i x)
{
    x = _mm256_add_epi16(x, _mm256_set1_epi16(128));
    return _mm256_srli_epi16(_mm256_add_epi16(x, _mm256_srli_epi16(x, 8)), 8);
}

SELVANE_AVX2 inline __m256i scale32(__m256i dst, __m256i keepLo, __m256i keepHi)
{
    const __m256i zero = _mm256_setzero_si256();
    const __m256i lo = div255x16(_mm256_mullo_epi16(_mm256_unpacklo_epi8(dst, zero), keepLo));
    const __m256i hi = div255x16(_mm256_mullo_epi16(_mm256_unpackhi_epi8(dst, zero), keepHi));
    return _mm256_packus_epi16(lo, hi);
}

SELVANE_AVX2 int overAvx2(std::uint8_t *dst, const std::uint8_t *src, const std::uint8_t *alpha,
                          int n)
{
    const __m256i zero = _mm256_setzero_si256();
    const __m256i full = _mm256_set1_epi16(255);
    int i = 0;
    for (; i + 32 <= n; i += 32) {
        const __m256i a = _mm256_loadu_si256(reinterpret_cast<const __m256i *>(alpha + i));
        if (_mm256_testz_si256(a, a))
            continue;
        const __m256i d = _mm256_loadu_si256(reinterpret_cast<const __m256i *>(dst + i));
        const __m256i s = _mm256_loadu_si256(reinterpret_cast<const __m256i *>(src + i));
        const __m256i kept = scale32(d, _mm256_sub_epi16(full, _mm256_unpacklo_epi8(a, zero)),
                                     _mm256_sub_epi16(full, _mm256_unpackhi_epi8(a, zero)));
        _mm256_storeu_si256(reinterpret_cast<__m256i *>(dst + i), _mm256_add_epi8(kept, s));
    }
    return i;
}

SELVANE_AVX2 int overConstantAvx2(std::uint8_t *dst, std::uint8_t value, unsigned keep, int n)
{
    const __m256i keep16 = _mm256_set1_epi16(short(keep));
    const __m256i value8 = _mm256_set1_epi8(char(value));
    int i = 0;
    for (; i + 32 <= n; i += 32) {
        const __m256i d = _mm256_loadu_si256(reinterpret_cast<const __m256i *>(dst + i));
        _mm256_storeu_si256(reinterpret_cast<__m256i *>(dst + i),
                            _mm256_add_epi8(scale32(d, keep16, keep16), value8));
    }
    return i;
}

SELVANE_AVX2 int mixAvx2(std::uint8_t *dst, const std::uint8_t *src, unsigned alpha, int n)
{
    const __m256i zero = _mm256_setzero_si256();
    const __m256i alpha16 = _mm256_set1_epi16(short(alpha));
    const __m256i keep16 = _mm256_set1_epi16(short(255u - alpha));
    int i = 0;
    for (; i + 32 <= n; i += 32) {
        const __m256i d = _mm256_loadu_si256(reinterpret_cast<const __m256i *>(dst + i));
        const __m256i s = _mm256_loadu_si256(reinterpret_cast<const __m256i *>(src + i));
        const __m256i lo =
            _mm256_add_epi16(_mm256_mullo_epi16(_mm256_unpacklo_epi8(s, zero), alpha16),
                             _mm256_mullo_epi16(_mm256_unpacklo_epi8(d, zero), keep16));
        const __m256i hi =
            _mm256_add_epi16(_mm256_mullo_epi16(_mm256_unpackhi_epi8(s, zero), alpha16),
                             _mm256_mullo_epi16(_mm256_unpackhi_epi8(d, zero), keep16));
        _mm256_storeu_si256(reinterpret_cast<__m256i *>(dst + i),
                            _mm256_packus_epi16(div255x16(lo), div255x16(hi)));
    }
    return i;
}

#undef SELVANE_AVX2

std::atomic<int> g_narrowest{2}; // the widest path allowed (narrowTo)

// The widest path this processor has, checked once, within what narrowTo() allows.
int widest()
{
    static const int available = [] {
        __builtin_cpu_init();
        return __builtin_cpu_supports("avx2") ? 2 : 1;
    }();
    return std::min(available, g_narrowest.load(std::memory_order_relaxed));
}

#endif

} // namespace

Path path()
{
#ifdef SELVANE_BLEND_X86
    return Path(widest());
#else
    return Path::Scalar;
#endif
}

void narrowTo(Path widest)
{
#ifdef SELVANE_BLEND_X86
    g_narrowest.store(int(widest));
#else
    (void)widest;
#endif
}

void over(std::uint8_t *dst, const std::uint8_t *src, const std::uint8_t *alpha, int n)
{
    int i = 0;
#ifdef SELVANE_BLEND_X86
    const int level = widest();
    if (level == 2)
        i = overAvx2(dst, src, alpha, n);
    if (level >= 1)
        i += overSse2(dst + i, src + i, alpha + i, n - i);
#endif
    overScalar(dst, src, alpha, i, n);
}

void overConstant(std::uint8_t *dst, std::uint8_t value, std::uint8_t alpha, int n)
{
    const unsigned keep = 255u - alpha;
    int i = 0;
#ifdef SELVANE_BLEND_X86
    const int level = widest();
    if (level == 2)
        i = overConstantAvx2(dst, value, keep, n);
    if (level >= 1)
        i += overConstantSse2(dst + i, value, keep, n - i);
#endif
    overConstantScalar(dst, value, keep, i, n);
}

void mix(std::uint8_t *dst, const std::uint8_t *src, unsigned alpha, int n)
{
    int i = 0;
#ifdef SELVANE_BLEND_X86
    const int level = widest();
    if (level == 2)
        i = mixAvx2(dst, src, alpha, n);
    if (level >= 1)
        i += mixSse2(dst + i, src + i, alpha, n - i);
#endif
    mixScalar(dst, src, alpha, i, n);
}

} // namespace selvane::blend
