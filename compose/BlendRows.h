#pragma once

// The row kernels of every blend in YUV: one row of one plane at a time, 32 pixels a step with
// AVX2 where the processor has it, 16 with SSE2 (every x86-64 has it), one at a time for the rest
// of the row and on other processors. Every way gives the same bytes: x / 255 is rounded the same
// way in each. Clear stretches of a layer (alpha 0, most of a line of letters) are passed over.
//
// All values are 0..255; premultiplied sources never exceed their alpha. Plain functions, safe
// from any thread on rows that no other thread writes.

#include <cstdint>

namespace selvane::blend {

// dst = src + dst * (255 - alpha) / 255: a premultiplied layer over the picture.
void over(std::uint8_t *dst, const std::uint8_t *src, const std::uint8_t *alpha, int n);
// The same with one premultiplied value and alpha for the whole row (a filled box).
void overConstant(std::uint8_t *dst, std::uint8_t value, std::uint8_t alpha, int n);
// dst = (src * alpha + dst * (255 - alpha)) / 255: a picture mixed in at one opacity.
void mix(std::uint8_t *dst, const std::uint8_t *src, unsigned alpha, int n);

// The widest way the kernels take now; narrowTo() limits it (tests compare the ways).
enum class Path
{
    Scalar,
    Sse2,
    Avx2
};
Path path();
void narrowTo(Path widest);

// Rounded x / 255 for x in 0 .. 255 * 255 + 255, without a division.
inline unsigned div255(unsigned x)
{
    x += 128;
    return (x + (x >> 8)) >> 8;
}

} // namespace selvane::blend
