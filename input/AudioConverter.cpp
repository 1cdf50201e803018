#include "input/AudioConverter.h"

extern "C" {
#include <libavutil/channel_layout.h>
#include <libavutil/mathematics.h>
}

namespace selvane {

void AudioConverter::reset()
{
    m_swr.reset();
    m_inRate = 0;
    m_inFormat = -1;
    m_inChannels = 0;
}

bool AudioConverter::ensureResampler(const AVFrame *frame, const AVCodecContext *codec)
{
    const int channels = frame->ch_layout.nb_channels;
    if (m_swr && frame->sample_rate == m_inRate && frame->format == m_inFormat &&
        channels == m_inChannels)
        return true;
    m_swr.reset();
    AVChannelLayout inLayout{};
    if (frame->ch_layout.nb_channels > 0)
        av_channel_layout_copy(&inLayout, &frame->ch_layout);
    else if (codec && codec->ch_layout.nb_channels > 0)
        av_channel_layout_copy(&inLayout, &codec->ch_layout);
    else
        av_channel_layout_default(&inLayout, 2);
    AVChannelLayout outLayout{};
    av_channel_layout_default(&outLayout, audio::kChannels);
    SwrContext *raw = nullptr;
    int err = swr_alloc_set_opts2(&raw, &outLayout, AV_SAMPLE_FMT_S16, audio::kSampleRate,
                                  &inLayout, static_cast<AVSampleFormat>(frame->format),
                                  frame->sample_rate, 0, nullptr);
    const int inChannels = inLayout.nb_channels;
    av_channel_layout_uninit(&inLayout);
    av_channel_layout_uninit(&outLayout);
    if (err < 0 || !raw) {
        swr_free(&raw);
        return false;
    }
    m_swr.reset(raw);
    // A mono source (a microphone, a test tone) plays at full level on both sides rather than as
    // a centre channel 3 dB down.
    if (inChannels == 1) {
        const double unity[2] = {1.0, 1.0}; // each output channel takes the mono signal whole
        swr_set_matrix(m_swr.get(), unity, 1);
    }
    if (swr_init(m_swr.get()) < 0) {
        m_swr.reset();
        return false;
    }
    m_inRate = frame->sample_rate;
    m_inFormat = frame->format;
    m_inChannels = channels;
    return true;
}

bool AudioConverter::convert(const AVFrame *frame, const AVCodecContext *codec, qint64 frameUs,
                             const Sink &sink)
{
    if (!frame || frame->nb_samples <= 0 || frame->sample_rate <= 0)
        return false;
    if (!ensureResampler(frame, codec))
        return false;
    // What the resampler still holds comes out first: the block starts that much earlier.
    const qint64 heldUs = swr_get_delay(m_swr.get(), 1000000);
    const int64_t outCount =
        av_rescale_rnd(swr_get_delay(m_swr.get(), frame->sample_rate) + frame->nb_samples,
                       audio::kSampleRate, frame->sample_rate, AV_ROUND_UP);
    if (outCount <= 0)
        return true;
    const std::size_t needed = static_cast<std::size_t>(outCount) * audio::kChannels;
    if (m_buffer.size() < needed)
        m_buffer.resize(needed);
    uint8_t *out[1] = {reinterpret_cast<uint8_t *>(m_buffer.data())};
    const int got =
        swr_convert(m_swr.get(), out, static_cast<int>(outCount),
                    const_cast<const uint8_t **>(frame->extended_data), frame->nb_samples);
    if (got < 0)
        return false;
    if (got > 0 && sink)
        sink(m_buffer.data(), got, frameUs - heldUs);
    return true;
}

} // namespace selvane
