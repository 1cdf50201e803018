#pragma once

// A test signal's filter graph ("lavfi://GRAPH"), read as a source: each open output of the
// graph (out0, out1, ...: pictures or sound) becomes a stream of the input context it is opened
// into, and read() hands out raw-video and PCM packets in time order, as a demuxer would, so
// that the decoding run treats a test signal like any other source.
//
// Owns: the graph, and the one frame of each output that waits while another output's earlier
// frame goes first. Nothing is held inside the graph's sinks between reads (libavdevice's own
// lavfi input peeks at every sink on each read and FFmpeg 5.1 frees no peeked frame with the
// graph, so every close of a test signal lost one frame); every frame is owned here and goes
// with this object. restart() builds the graph again: a generator starts over from its first
// frame (the loop and seeks of a test signal).
//
// Threads: the decoder's worker thread only.

#include "media/FfmpegTypes.h"

#include <QByteArray>
#include <QString>
#include <memory>
#include <vector>

struct AVFilterContext;
struct AVFilterGraph;

namespace selvane {

class TestSignalGraph
{
public:
    ~TestSignalGraph();
    // Builds the graph and adds one stream per output to `input` (a context of no format of
    // its own, from avformat_alloc_context). Null, with the reason, when the graph does not
    // build.
    static std::unique_ptr<TestSignalGraph> open(const QByteArray &graph, AVFormatContext *input,
                                                 QString *error);
    // The next packet of the output whose next frame comes first; AVERROR_EOF when every output
    // has ended.
    int read(AVPacket *packet);
    // Starts the generators again from their first frame. False when the graph no longer builds.
    bool restart();

private:
    struct GraphDeleter
    {
        void operator()(AVFilterGraph *graph) const;
    };
    struct Output
    {
        AVFilterContext *sink = nullptr; // owned by the graph
        int streamIndex = 0;
        ffsupport::FramePtr waiting; // taken from the sink, not yet handed out
        bool ended = false;
    };

    TestSignalGraph() = default;
    // Parses and configures the graph; with `input`, adds its streams.
    int build(AVFormatContext *input, QString *error);
    int packetOf(Output &output, AVPacket *packet);

    QByteArray m_text;
    AVFormatContext *m_input = nullptr; // not owned: the context the streams belong to
    std::unique_ptr<AVFilterGraph, GraphDeleter> m_graph;
    std::vector<Output> m_outputs;
};

} // namespace selvane
