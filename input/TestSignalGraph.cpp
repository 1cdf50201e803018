#include "input/TestSignalGraph.h"

#include <cstring>
#include <limits>

extern "C" {
#include <libavfilter/avfilter.h>
#include <libavfilter/buffersink.h>
#include <libavutil/imgutils.h>
}

namespace selvane {

void TestSignalGraph::GraphDeleter::operator()(AVFilterGraph *graph) const
{
    avfilter_graph_free(&graph);
}

TestSignalGraph::~TestSignalGraph()
{
    // The waiting frames go first: they may share buffers with the graph's pools.
    m_outputs.clear();
    m_graph.reset();
}

std::unique_ptr<TestSignalGraph> TestSignalGraph::open(const QByteArray &graph,
                                                       AVFormatContext *input, QString *error)
{
    std::unique_ptr<TestSignalGraph> signal(new TestSignalGraph());
    signal->m_text = graph;
    signal->m_input = input;
    if (signal->build(input, error) < 0)
        return nullptr;
    return signal;
}

bool TestSignalGraph::restart()
{
    m_outputs.clear();
    m_graph.reset();
    QString error;
    return build(nullptr, &error) >= 0;
}

int TestSignalGraph::build(AVFormatContext *input, QString *error)
{
    struct InOutDeleter
    {
        void operator()(AVFilterInOut *links) const { avfilter_inout_free(&links); }
    };
    const auto failed = [&](const QString &why, int err) {
        *error = why;
        m_outputs.clear();
        m_graph.reset();
        return err;
    };
    m_graph.reset(avfilter_graph_alloc());
    if (!m_graph)
        return failed(QStringLiteral("out of memory"), AVERROR(ENOMEM));
    AVFilterInOut *rawInputs = nullptr;
    AVFilterInOut *rawOutputs = nullptr;
    int err = avfilter_graph_parse_ptr(m_graph.get(), m_text.constData(), &rawInputs, &rawOutputs,
                                       nullptr);
    const std::unique_ptr<AVFilterInOut, InOutDeleter> inputs(rawInputs);
    const std::unique_ptr<AVFilterInOut, InOutDeleter> outputs(rawOutputs);
    if (err < 0)
        return failed(ffsupport::errorText("avfilter_graph_parse_ptr", err), err);
    if (inputs)
        return failed(QStringLiteral("the graph has an open input"), AVERROR(EINVAL));

    // Outputs are named out0, out1, ...: the number is the stream's index. A graph of one
    // unnamed output has it named "out": stream 0.
    int count = 0;
    for (const AVFilterInOut *link = outputs.get(); link; link = link->next)
        ++count;
    std::vector<bool> taken(std::size_t(count), false);
    for (AVFilterInOut *link = outputs.get(); link; link = link->next) {
        const QByteArray name(link->name ? link->name : "");
        bool numbered = name == "out";
        const int index = numbered ? 0 : name.startsWith("out") ? name.mid(3).toInt(&numbered) : -1;
        if (!numbered || index < 0 || index >= count || taken[std::size_t(index)])
            return failed(QStringLiteral("output \"%1\" is not out0 to out%2, each once")
                              .arg(QString::fromUtf8(name))
                              .arg(count - 1),
                          AVERROR(EINVAL));
        taken[std::size_t(index)] = true;
        const AVMediaType type =
            avfilter_pad_get_type(link->filter_ctx->output_pads, link->pad_idx);
        AVFilterContext *sink = nullptr;
        AVFilterContext *target = nullptr;
        if (type == AVMEDIA_TYPE_VIDEO) {
            err = avfilter_graph_create_filter(&sink, avfilter_get_by_name("buffersink"),
                                               link->name, nullptr, nullptr, m_graph.get());
            target = sink;
        } else if (type == AVMEDIA_TYPE_AUDIO) {
            // Sound leaves as interleaved 16-bit samples: packets of plain PCM.
            AVFilterContext *format = nullptr;
            err = avfilter_graph_create_filter(&format, avfilter_get_by_name("aformat"), nullptr,
                                               "sample_fmts=s16", nullptr, m_graph.get());
            if (err >= 0)
                err = avfilter_graph_create_filter(&sink, avfilter_get_by_name("abuffersink"),
                                                   link->name, nullptr, nullptr, m_graph.get());
            if (err >= 0)
                err = avfilter_link(format, 0, sink, 0);
            target = format;
        } else {
            return failed(QStringLiteral("output \"%1\" is neither pictures nor sound")
                              .arg(QString::fromUtf8(name)),
                          AVERROR(EINVAL));
        }
        if (err >= 0)
            err = avfilter_link(link->filter_ctx, unsigned(link->pad_idx), target, 0);
        if (err < 0)
            return failed(ffsupport::errorText("avfilter_link", err), err);
        m_outputs.push_back(Output{sink, index, nullptr, false});
    }
    if (m_outputs.empty())
        return failed(QStringLiteral("the graph has no output"), AVERROR(EINVAL));
    err = avfilter_graph_config(m_graph.get(), nullptr);
    if (err < 0)
        return failed(ffsupport::errorText("avfilter_graph_config", err), err);
    if (!input)
        return 0;

    for (int i = 0; i < count; ++i)
        if (!avformat_new_stream(input, nullptr))
            return failed(QStringLiteral("out of memory"), AVERROR(ENOMEM));
    for (const Output &output : m_outputs) {
        AVStream *stream = input->streams[output.streamIndex];
        stream->time_base = av_buffersink_get_time_base(output.sink);
        AVCodecParameters *par = stream->codecpar;
        par->codec_type = av_buffersink_get_type(output.sink);
        if (par->codec_type == AVMEDIA_TYPE_VIDEO) {
            par->codec_id = AV_CODEC_ID_RAWVIDEO;
            par->format = av_buffersink_get_format(output.sink);
            par->width = av_buffersink_get_w(output.sink);
            par->height = av_buffersink_get_h(output.sink);
            par->sample_aspect_ratio = av_buffersink_get_sample_aspect_ratio(output.sink);
            stream->avg_frame_rate = stream->r_frame_rate =
                av_buffersink_get_frame_rate(output.sink);
        } else {
            par->codec_id = AV_NE(AV_CODEC_ID_PCM_S16BE, AV_CODEC_ID_PCM_S16LE);
            par->format = AV_SAMPLE_FMT_S16;
            par->sample_rate = av_buffersink_get_sample_rate(output.sink);
            err = av_buffersink_get_ch_layout(output.sink, &par->ch_layout);
            if (err < 0)
                return failed(ffsupport::errorText("av_buffersink_get_ch_layout", err), err);
            par->bits_per_coded_sample = 16;
            par->block_align = 2 * par->ch_layout.nb_channels;
            par->bit_rate = qint64(par->sample_rate) * par->block_align * 8;
        }
    }
    return 0;
}

int TestSignalGraph::read(AVPacket *packet)
{
    Output *first = nullptr;
    qint64 firstUs = std::numeric_limits<qint64>::max();
    for (Output &output : m_outputs) {
        if (output.ended)
            continue;
        if (!output.waiting) {
            ffsupport::FramePtr frame(av_frame_alloc());
            if (!frame)
                return AVERROR(ENOMEM);
            const int err = av_buffersink_get_frame(output.sink, frame.get());
            if (err == AVERROR_EOF) {
                output.ended = true;
                continue;
            }
            if (err < 0)
                return err;
            output.waiting = std::move(frame);
        }
        const qint64 us =
            output.waiting->pts == AV_NOPTS_VALUE
                ? 0
                : av_rescale_q(output.waiting->pts, av_buffersink_get_time_base(output.sink),
                               AV_TIME_BASE_Q);
        if (us < firstUs) {
            firstUs = us;
            first = &output;
        }
    }
    if (!first)
        return AVERROR_EOF;
    const int err = packetOf(*first, packet);
    first->waiting.reset();
    return err;
}

int TestSignalGraph::packetOf(Output &output, AVPacket *packet)
{
    const AVFrame *frame = output.waiting.get();
    int size = 0;
    int err = 0;
    if (av_buffersink_get_type(output.sink) == AVMEDIA_TYPE_VIDEO) {
        const auto format = static_cast<AVPixelFormat>(frame->format);
        size = av_image_get_buffer_size(format, frame->width, frame->height, 1);
        if (size < 0)
            return size;
        if ((err = av_new_packet(packet, size)) < 0)
            return err;
        err = av_image_copy_to_buffer(packet->data, size, frame->data, frame->linesize, format,
                                      frame->width, frame->height, 1);
        if (err < 0) {
            av_packet_unref(packet);
            return err;
        }
    } else {
        size = frame->nb_samples * 2 * frame->ch_layout.nb_channels;
        if ((err = av_new_packet(packet, size)) < 0)
            return err;
        std::memcpy(packet->data, frame->data[0], std::size_t(size));
    }
    packet->stream_index = output.streamIndex;
    packet->pts = packet->dts = frame->pts;
    packet->flags |= AV_PKT_FLAG_KEY;
    return size;
}

} // namespace selvane
