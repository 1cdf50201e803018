#include "input/Deinterlacer.h"

#include "media/FfmpegCompat.h"

#include <QDebug>

extern "C" {
#include <libavfilter/buffersink.h>
#include <libavfilter/buffersrc.h>
}

namespace selvane {

Deinterlacer::Deinterlacer() = default;
Deinterlacer::~Deinterlacer() = default;

void Deinterlacer::reset()
{
    m_graph.reset();
    m_source = nullptr;
    m_sink = nullptr;
}

bool Deinterlacer::build(const AVFrame *frame, AVRational timeBase)
{
    reset();
    m_graph.reset(avfilter_graph_alloc());
    if (!m_graph)
        return false;
    const QByteArray args = QStringLiteral("video_size=%1x%2:pix_fmt=%3:time_base=%4/%5:"
                                           "pixel_aspect=1/1")
                                .arg(frame->width)
                                .arg(frame->height)
                                .arg(frame->format)
                                .arg(timeBase.num)
                                .arg(std::max(1, timeBase.den))
                                .toLatin1();
    // Each interlaced picture becomes one progressive picture; progressive ones pass.
    if (avfilter_graph_create_filter(&m_source, avfilter_get_by_name("buffer"), "in",
                                     args.constData(), nullptr, m_graph.get()) < 0 ||
        avfilter_graph_create_filter(&m_sink, avfilter_get_by_name("buffersink"), "out", nullptr,
                                     nullptr, m_graph.get()) < 0) {
        reset();
        return false;
    }
    AVFilterContext *bwdif = nullptr;
    if (avfilter_graph_create_filter(&bwdif, avfilter_get_by_name("bwdif"), "deinterlace",
                                     "mode=send_frame:parity=auto:deint=interlaced", nullptr,
                                     m_graph.get()) < 0 ||
        avfilter_link(m_source, 0, bwdif, 0) < 0 || avfilter_link(bwdif, 0, m_sink, 0) < 0 ||
        avfilter_graph_config(m_graph.get(), nullptr) < 0) {
        qWarning("FFmpegVideoDecoder: deinterlacer could not be set up; pictures stay interlaced");
        reset();
        return false;
    }
    m_width = frame->width;
    m_height = frame->height;
    m_format = frame->format;
    qInfo().noquote() << "FFmpegVideoDecoder: interlaced source, deinterlacing with bwdif";
    return true;
}

Deinterlacer::Result Deinterlacer::filter(const AVFrame *frame, AVFrame *out, AVRational timeBase)
{
    if (!m_graph && !ffcompat::isInterlaced(frame))
        return Result::Pass;
    if (!m_graph || frame->width != m_width || frame->height != m_height ||
        frame->format != m_format) {
        if (!build(frame, timeBase))
            return Result::Pass;
    }
    // The filter takes its own reference; the caller keeps `frame`.
    if (av_buffersrc_write_frame(m_source, frame) < 0)
        return Result::Pass;
    av_frame_unref(out);
    return av_buffersink_get_frame(m_sink, out) >= 0 ? Result::Out : Result::Held;
}

} // namespace selvane
