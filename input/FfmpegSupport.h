#pragma once

// RAII owners for FFmpeg objects, error text, and the few calls whose API differs between
// FFmpeg 5.1 and FFmpeg 8 (kept here, behind version checks, and nowhere else).

#include <QString>

#include <cstdint>
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
struct CodecContextDeleter
{
    void operator()(AVCodecContext *ctx) const { avcodec_free_context(&ctx); }
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
using CodecContextPtr = std::unique_ptr<AVCodecContext, CodecContextDeleter>;
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

// Rotation, in degrees clockwise (0, 90, 180 or 270), that makes the stream's pictures upright:
// from the stream's "rotate" metadata entry, or else from its display matrix.
int uprightRotationDegrees(const AVStream *stream);

} // namespace ffsupport
