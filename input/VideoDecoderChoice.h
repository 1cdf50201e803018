#pragma once

// Opens the video decoder of a stream. Only AV1 tries hardware decoding first, with the named
// decoders "av1_cuvid", "av1_qsv", "av1_amf" and each of their device-context configurations;
// every other codec, and AV1 when none of them opens, uses the software decoder. Any thread.

#include "media/FfmpegTypes.h"

#include <memory>

namespace selvane {

struct OpenedVideoDecoder
{
    ffsupport::CodecContextPtr context;
    ffsupport::BufferRefPtr device;
    // The hardware picture format asked for; AV_PIX_FMT_NONE for software decoding. Held on
    // the heap: the decoder's format callback reads it through its opaque pointer.
    std::unique_ptr<AVPixelFormat> hardwareFormat =
        std::make_unique<AVPixelFormat>(AV_PIX_FMT_NONE);
};

bool openVideoDecoder(const AVStream *stream, OpenedVideoDecoder *out);

} // namespace selvane
