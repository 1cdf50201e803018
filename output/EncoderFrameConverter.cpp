#include "output/EncoderFrameConverter.h"

#include "media/FrameSizes.h"
#include "output/EncoderSettings.h"

#include <QDebug>
#include <algorithm>

extern "C" {
#include <libavutil/imgutils.h>
#include <libavutil/opt.h>
#include <libavutil/pixdesc.h>
}

namespace selvane {

namespace {

int swsFlagsFor(int preset)
{
    switch (preset) {
    case EncoderSettings::Performance:
        return SWS_FAST_BILINEAR;
    case EncoderSettings::Quality:
        return SWS_BICUBIC;
    default:
        return SWS_BILINEAR;
    }
}

int swsThreadsFor(qint64 pixels)
{
    if (pixels >= frames::kPixels8K)
        return 6;
    if (pixels >= frames::kPixels4K)
        return 4;
    return 2;
}

int even(double value)
{
    return std::max(2, int(value) & ~1);
}

} // namespace

void EncoderFrameConverter::reset()
{
    m_sws.reset();
    m_copy = false;
    m_sourceWidth = 0;
    m_sourceHeight = 0;
}

bool EncoderFrameConverter::prepare(const FrameToken &picture, const AVFrame &out,
                                    int qualityPreset)
{
    const AVPixelFormat sourceFormat = picture.isI420() ? AV_PIX_FMT_YUV420P : AV_PIX_FMT_RGBA;
    if (picture.width == m_sourceWidth && picture.height == m_sourceHeight &&
        sourceFormat == m_sourceFormat && (m_sws || m_copy))
        return true;
    m_sws.reset();
    m_sourceFormat = sourceFormat;
    m_copy =
        sourceFormat == out.format && picture.width == out.width && picture.height == out.height;
    if (m_copy) {
        // The program's own pictures need no conversion at all.
        m_sourceWidth = picture.width;
        m_sourceHeight = picture.height;
        m_fitSize = QSize(out.width, out.height);
        return true;
    }
    const int outW = out.width;
    const int outH = out.height;
    int fitW = outW;
    int fitH = outH;
    if (picture.width != outW || picture.height != outH) {
        // A picture of another size is fitted into the encoded size, keeping its shape.
        const double scale = std::min(double(outW) / picture.width, double(outH) / picture.height);
        fitW = std::min(outW, even(picture.width * scale + 0.5));
        fitH = std::min(outH, even(picture.height * scale + 0.5));
    }
    ffsupport::SwsPtr context(sws_alloc_context());
    if (!context)
        return false;
    av_opt_set_int(context.get(), "srcw", picture.width, 0);
    av_opt_set_int(context.get(), "srch", picture.height, 0);
    av_opt_set_int(context.get(), "src_format", sourceFormat, 0);
    av_opt_set_int(context.get(), "dstw", fitW, 0);
    av_opt_set_int(context.get(), "dsth", fitH, 0);
    av_opt_set_int(context.get(), "dst_format", out.format, 0);
    av_opt_set_int(context.get(), "sws_flags", swsFlagsFor(qualityPreset), 0);
    const int threadsErr =
        av_opt_set_int(context.get(), "threads", swsThreadsFor(qint64(outW) * outH), 0);
    if (threadsErr < 0)
        qWarning().noquote() << "FfmpegEncoderSink: swscale threads option unavailable;"
                             << "color conversion will use the FFmpeg default:"
                             << ffsupport::errorText("av_opt_set_int", threadsErr);
    if (sws_init_context(context.get(), nullptr, nullptr) < 0)
        return false;
    m_sws = std::move(context);
    m_fitSize = QSize(fitW, fitH);
    m_sourceWidth = picture.width;
    m_sourceHeight = picture.height;
    return true;
}

void EncoderFrameConverter::convert(const FrameToken &picture, AVFrame *out)
{
    FrameToken::AvPlanes source = picture.avPlanes();
    if (m_copy) {
        av_image_copy(out->data, out->linesize, source.data, source.linesize, AV_PIX_FMT_YUV420P,
                      picture.width, picture.height);
        return;
    }
    const int fitW = m_fitSize.width();
    const int fitH = m_fitSize.height();
    uint8_t *planes[4] = {out->data[0], out->data[1], out->data[2], out->data[3]};
    if (fitW != out->width || fitH != out->height) {
        ptrdiff_t linesizes[4] = {out->linesize[0], out->linesize[1], out->linesize[2],
                                  out->linesize[3]};
        av_image_fill_black(out->data, linesizes, AVPixelFormat(out->format), AVCOL_RANGE_MPEG,
                            out->width, out->height);
        const int x = ((out->width - fitW) / 2) & ~1;
        const int y = ((out->height - fitH) / 2) & ~1;
        const AVPixFmtDescriptor *desc = av_pix_fmt_desc_get(AVPixelFormat(out->format));
        for (int c = 0; c < desc->nb_components; ++c) {
            const AVComponentDescriptor &comp = desc->comp[c];
            const bool chroma = c == 1 || c == 2;
            planes[comp.plane] =
                out->data[comp.plane] +
                (y >> (chroma ? desc->log2_chroma_h : 0)) * out->linesize[comp.plane] +
                (x >> (chroma ? desc->log2_chroma_w : 0)) * comp.step;
        }
    }
    sws_scale(m_sws.get(), source.data, source.linesize, 0, picture.height, planes, out->linesize);
}

} // namespace selvane
