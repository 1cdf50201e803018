#pragma once

// Converts decoded audio frames to the mixer's format: 48000 Hz, two channels, interleaved
// signed 16-bit. The resampler is built from the first frame it sees (its layout, or the codec's,
// or plain stereo) and rebuilt when the input format changes; its output buffer is reused.
// One converter per thread.

#include "media/AudioFormat.h"
#include "media/FfmpegTypes.h"

#include <cstdint>
#include <functional>
#include <vector>

namespace selvane {

class AudioConverter
{
public:
    // `startUs`: the source time of the block's first frame.
    using Sink = std::function<void(const std::int16_t *samples, int frames, qint64 startUs)>;

    // Converts `frame`, whose first sample has the source time `frameUs`, and hands the result
    // to `sink` at once (its time accounts for what the resampler still holds). False when the
    // resampler could not be built or the conversion failed (the frame is skipped).
    bool convert(const AVFrame *frame, const AVCodecContext *codec, qint64 frameUs,
                 const Sink &sink);
    // Drops the resampler; the next frame builds a new one (after a seek).
    void reset();

private:
    bool ensureResampler(const AVFrame *frame, const AVCodecContext *codec);

    ffsupport::SwrPtr m_swr;
    int m_inRate = 0;
    int m_inFormat = -1;
    int m_inChannels = 0;
    std::vector<std::int16_t> m_buffer;
};

} // namespace selvane
