#pragma once

// Deinterlaces pictures that say they are interlaced (libavfilter's bwdif, one picture out for
// one picture in, progressive pictures passed as they are), so that 1080i never goes on air
// combed. Built on the first interlaced picture and rebuilt when the size or format changes.
// One run's thread only.

#include "media/FfmpegTypes.h"

extern "C" {
#include <libavfilter/avfilter.h>
}

#include <memory>

namespace selvane {

class Deinterlacer
{
public:
    Deinterlacer();
    ~Deinterlacer();
    Deinterlacer(const Deinterlacer &) = delete;
    Deinterlacer &operator=(const Deinterlacer &) = delete;

    enum class Result
    {
        Pass, // not interlaced (and none was before): use the picture as it is
        Out,  // the deinterlaced picture is in `out`
        Held, // the filter holds the picture back for now: nothing to show yet
    };
    // Feeds one decoded picture in system memory.
    Result filter(const AVFrame *frame, AVFrame *out, AVRational timeBase);
    // True once interlaced pictures have been seen in this run.
    bool isActive() const { return bool(m_graph); }
    void reset();

private:
    bool build(const AVFrame *frame, AVRational timeBase);

    struct GraphDeleter
    {
        void operator()(AVFilterGraph *graph) const { avfilter_graph_free(&graph); }
    };
    std::unique_ptr<AVFilterGraph, GraphDeleter> m_graph;
    AVFilterContext *m_source = nullptr; // owned by the graph
    AVFilterContext *m_sink = nullptr;   // owned by the graph
    int m_width = 0;
    int m_height = 0;
    int m_format = -1;
};

} // namespace selvane
