#pragma once

// RAII owners for every FFmpeg object the program holds, an option dictionary, and the text of
// an FFmpeg error. Input and output format contexts close differently: an input with
// avformat_close_input, an output by closing its I/O and freeing the context. Any thread; an
// object belongs to one thread at a time.

#include <QString>
#include <memory>

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavformat/avformat.h>
#include <libavutil/buffer.h>
#include <libavutil/dict.h>
#include <libavutil/frame.h>
#include <libswresample/swresample.h>
#include <libswscale/swscale.h>
}

namespace ffsupport {

struct InputContextDeleter
{
    void operator()(AVFormatContext *ctx) const { avformat_close_input(&ctx); }
};
struct OutputContextDeleter
{
    void operator()(AVFormatContext *ctx) const
    {
        if (ctx && ctx->oformat && !(ctx->oformat->flags & AVFMT_NOFILE))
            avio_closep(&ctx->pb);
        avformat_free_context(ctx);
    }
};
struct CodecContextDeleter
{
    void operator()(AVCodecContext *ctx) const { avcodec_free_context(&ctx); }
};
struct CodecParametersDeleter
{
    void operator()(AVCodecParameters *par) const { avcodec_parameters_free(&par); }
};
struct FrameDeleter
{
    void operator()(AVFrame *frame) const { av_frame_free(&frame); }
};
struct PacketDeleter
{
    void operator()(AVPacket *packet) const { av_packet_free(&packet); }
};
struct SwsDeleter
{
    void operator()(SwsContext *ctx) const { sws_freeContext(ctx); }
};
struct SwrDeleter
{
    void operator()(SwrContext *ctx) const { swr_free(&ctx); }
};
struct BufferRefDeleter
{
    void operator()(AVBufferRef *ref) const { av_buffer_unref(&ref); }
};

using InputContextPtr = std::unique_ptr<AVFormatContext, InputContextDeleter>;
using OutputContextPtr = std::unique_ptr<AVFormatContext, OutputContextDeleter>;
using CodecContextPtr = std::unique_ptr<AVCodecContext, CodecContextDeleter>;
using CodecParametersPtr = std::unique_ptr<AVCodecParameters, CodecParametersDeleter>;
using FramePtr = std::unique_ptr<AVFrame, FrameDeleter>;
using PacketPtr = std::unique_ptr<AVPacket, PacketDeleter>;
using SwsPtr = std::unique_ptr<SwsContext, SwsDeleter>;
using SwrPtr = std::unique_ptr<SwrContext, SwrDeleter>;
using BufferRefPtr = std::unique_ptr<AVBufferRef, BufferRefDeleter>;

// An option dictionary that is freed when it goes out of scope.
class Dictionary
{
public:
    Dictionary() = default;
    ~Dictionary() { av_dict_free(&m_dict); }
    Dictionary(const Dictionary &) = delete;
    Dictionary &operator=(const Dictionary &) = delete;
    AVDictionary **address() { return &m_dict; }
    AVDictionary *get() const { return m_dict; }
    void set(const char *key, const char *value) { av_dict_set(&m_dict, key, value, 0); }
    QString value(const char *key) const;
    void reset() { av_dict_free(&m_dict); }

private:
    AVDictionary *m_dict = nullptr;
};

// "<call>: <FFmpeg's text for err>".
QString errorText(const char *call, int err);

// Network and device registration, once per process (idempotent, any thread).
void ensureMediaLibrariesReady();

} // namespace ffsupport
