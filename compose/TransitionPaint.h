#pragma once

// The pictures of a transition between two program pictures of one size, in YUV 4:2:0: a mix,
// a wipe with a soft edge, a dip through a colour; and a fade of a whole picture towards a
// colour (fade to black). Each writes a new picture row by row from its sources, in one pass.
//
// Plain functions, called on the program thread; the sources are only read.

#include "media/FrameToken.h"
#include "media/ProgramBus.h"
#include "media/StingerClip.h"

#include <array>
#include <cstdint>

namespace selvane::transition {

// Y, U and V of an ARGB colour (BT.601, limited range, as the pictures are).
std::array<std::uint8_t, 3> yuvOf(quint32 argb);

// The picture `position` (0 .. 1) of the way from `from` to `to`; both I420 of out's size.
// False when the sources cannot be read or their sizes differ.
bool paint(const FrameToken &from, const FrameToken &to, double position,
           const Transition &transition, FrameWriter &out);

// `picture` with `amount` (0 .. 1) of the colour over it, into `out` (of the same size).
bool fade(const FrameToken &picture, std::array<std::uint8_t, 3> colour, double amount,
          FrameWriter &out);

// `picture` of a stinger over `base` (I420 of the clip's size), into `out`: the rows the
// stinger covers are blended, the others copied.
bool stinger(const FrameToken &base, const StingerPicture &picture, FrameWriter &out);

// The width of a wipe's soft edge, in pixels of a line `length` long.
int softEdge(int length);

} // namespace selvane::transition
