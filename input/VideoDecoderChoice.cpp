#include "input/VideoDecoderChoice.h"

#include <QDebug>

extern "C" {
#include <libavutil/hwcontext.h>
}

namespace selvane {

namespace {

AVPixelFormat pickHardwareFormat(AVCodecContext *context, const AVPixelFormat *offered)
{
    const auto wanted = *static_cast<const AVPixelFormat *>(context->opaque);
    for (const AVPixelFormat *f = offered; *f != AV_PIX_FMT_NONE; ++f)
        if (*f == wanted)
            return *f;
    return offered[0];
}

bool tryHardwareAv1(const AVStream *stream, OpenedVideoDecoder *out)
{
    for (const char *name : {"av1_cuvid", "av1_qsv", "av1_amf"}) {
        const AVCodec *codec = avcodec_find_decoder_by_name(name);
        if (!codec || codec->id != AV_CODEC_ID_AV1)
            continue;
        for (int i = 0;; ++i) {
            const AVCodecHWConfig *config = avcodec_get_hw_config(codec, i);
            if (!config)
                break;
            if (!(config->methods & AV_CODEC_HW_CONFIG_METHOD_HW_DEVICE_CTX) ||
                config->device_type == AV_HWDEVICE_TYPE_NONE)
                continue;
            AVBufferRef *device = nullptr;
            if (av_hwdevice_ctx_create(&device, config->device_type, nullptr, nullptr, 0) < 0)
                continue;
            ffsupport::BufferRefPtr deviceRef(device);
            ffsupport::CodecContextPtr context(avcodec_alloc_context3(codec));
            if (!context || avcodec_parameters_to_context(context.get(), stream->codecpar) < 0)
                continue;
            *out->hardwareFormat = config->pix_fmt;
            context->opaque = out->hardwareFormat.get();
            context->get_format = pickHardwareFormat;
            context->hw_device_ctx = av_buffer_ref(deviceRef.get());
            context->pkt_timebase = stream->time_base;
            if (avcodec_open2(context.get(), codec, nullptr) < 0) {
                *out->hardwareFormat = AV_PIX_FMT_NONE;
                continue;
            }
            qInfo().noquote() << "FFmpegVideoDecoder: hardware decoder selected" << name
                              << av_hwdevice_get_type_name(config->device_type);
            out->context = std::move(context);
            out->device = std::move(deviceRef);
            return true;
        }
    }
    *out->hardwareFormat = AV_PIX_FMT_NONE;
    return false;
}

} // namespace

bool openVideoDecoder(const AVStream *stream, OpenedVideoDecoder *out)
{
    const AVCodecParameters *parameters = stream->codecpar;
    if (parameters->codec_id == AV_CODEC_ID_AV1) {
        if (tryHardwareAv1(stream, out))
            return true;
        qWarning("FFmpegVideoDecoder: AV1 hardware decode unavailable; using software decoder");
    }
    const AVCodec *codec = avcodec_find_decoder(parameters->codec_id);
    if (!codec)
        return false;
    ffsupport::CodecContextPtr context(avcodec_alloc_context3(codec));
    if (!context || avcodec_parameters_to_context(context.get(), parameters) < 0)
        return false;
    context->pkt_timebase = stream->time_base;
    if (avcodec_open2(context.get(), codec, nullptr) < 0)
        return false;
    out->context = std::move(context);
    return true;
}

} // namespace selvane
