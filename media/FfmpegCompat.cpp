#include "media/FfmpegCompat.h"

namespace ffcompat {

const std::int32_t *streamDisplayMatrix(const AVStream *stream)
{
    if (!stream)
        return nullptr;
#if LIBAVFORMAT_VERSION_INT >= AV_VERSION_INT(60, 15, 100)
    const AVPacketSideData *side =
        av_packet_side_data_get(stream->codecpar->coded_side_data,
                                stream->codecpar->nb_coded_side_data, AV_PKT_DATA_DISPLAYMATRIX);
    if (side && side->size >= 9 * sizeof(std::int32_t))
        return reinterpret_cast<const std::int32_t *>(side->data);
    return nullptr;
#else
    size_t size = 0;
    const uint8_t *data = av_stream_get_side_data(stream, AV_PKT_DATA_DISPLAYMATRIX, &size);
    if (data && size >= 9 * sizeof(std::int32_t))
        return reinterpret_cast<const std::int32_t *>(data);
    return nullptr;
#endif
}

AVSampleFormat preferredSampleFormat(const AVCodec *codec, AVSampleFormat fallback)
{
    if (!codec)
        return fallback;
#if LIBAVCODEC_VERSION_INT >= AV_VERSION_INT(61, 13, 100)
    const void *formats = nullptr;
    int count = 0;
    if (avcodec_get_supported_config(nullptr, codec, AV_CODEC_CONFIG_SAMPLE_FORMAT, 0, &formats,
                                     &count) >= 0 &&
        formats && count > 0)
        return static_cast<const AVSampleFormat *>(formats)[0];
    return fallback;
#else
    return codec->sample_fmts ? codec->sample_fmts[0] : fallback;
#endif
}

bool isInterlaced(const AVFrame *frame)
{
#ifdef AV_FRAME_FLAG_INTERLACED
    return frame && (frame->flags & AV_FRAME_FLAG_INTERLACED);
#else
    return frame && frame->interlaced_frame;
#endif
}

std::int64_t frameDuration(const AVFrame *frame)
{
    if (!frame)
        return 0;
#if LIBAVUTIL_VERSION_INT >= AV_VERSION_INT(57, 30, 100)
    return frame->duration > 0 ? frame->duration : 0;
#else
    return frame->pkt_duration > 0 ? frame->pkt_duration : 0;
#endif
}

} // namespace ffcompat
