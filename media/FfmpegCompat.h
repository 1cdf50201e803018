#pragma once

// The few calls whose API differs between FFmpeg 5.1 and the newest release, behind version
// checks here and nowhere else. Plain functions, any thread.

#include <cstdint>

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavformat/avformat.h>
}

namespace ffcompat {

// The stream's display matrix (nine 32-bit values), or null when it has none.
const std::int32_t *streamDisplayMatrix(const AVStream *stream);

// The first sample format the encoder accepts, or `fallback` when it names none.
AVSampleFormat preferredSampleFormat(const AVCodec *codec, AVSampleFormat fallback);

// The decoded picture is interlaced (two fields).
bool isInterlaced(const AVFrame *frame);
// How long the frame lasts in its stream's time base; 0 when unknown.
std::int64_t frameDuration(const AVFrame *frame);

} // namespace ffcompat
