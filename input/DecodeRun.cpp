#include "input/DecodeRun.h"

#include "input/FFmpegVideoDecoder.h"

#include <QDebug>

#include <algorithm>
#include <cstring>

extern "C" {
#include <libavutil/hwcontext.h>
#include <libavutil/pixdesc.h>
}

using namespace std::chrono_literals;
using ffsupport::errorText;

namespace {

// Live sources keep their latency bounded; a file may read ahead.
constexpr int kFilePacketDepth = 200;
constexpr int kLivePacketDepth = 8;
// Pacing.
constexpr qint64 kMaxWaitUs = 2'000'000;
constexpr auto kWaitSlice = 10ms;
constexpr qint64 kLateDropUs = 150'000;
constexpr auto kTryAgainSleep = 1ms;
constexpr auto kEndOfFilePoll = 20ms;
constexpr auto kPausePoll = 25ms;
// While a paced frame waits, reading continues (audio keeps flowing) until this many video
// packets are queued; the picture and the sound therefore stay close together in the queues.
constexpr std::size_t kPacedReadAheadPackets = 2;

AVPixelFormat pickHardwareFormat(AVCodecContext *context, const AVPixelFormat *offered)
{
    const auto wanted = *static_cast<const AVPixelFormat *>(context->opaque);
    for (const AVPixelFormat *f = offered; *f != AV_PIX_FMT_NONE; ++f)
        if (*f == wanted)
            return *f;
    return offered[0];
}

void rotateRgba(const std::uint8_t *src, int srcW, int srcH, qint64 srcStride, std::uint8_t *dst,
                qint64 dstStride, int rotation)
{
    const auto pixelAt = [&](int x, int y) {
        std::uint32_t p;
        std::memcpy(&p, src + y * srcStride + qint64(x) * 4, 4);
        return p;
    };
    const int dstW = rotation == 180 ? srcW : srcH;
    const int dstH = rotation == 180 ? srcH : srcW;
    for (int y = 0; y < dstH; ++y) {
        auto *row = reinterpret_cast<std::uint32_t *>(dst + y * dstStride);
        for (int x = 0; x < dstW; ++x) {
            std::uint32_t p = 0;
            if (rotation == 90)
                p = pixelAt(y, srcH - 1 - x);
            else if (rotation == 180)
                p = pixelAt(srcW - 1 - x, srcH - 1 - y);
            else
                p = pixelAt(srcW - 1 - y, x);
            row[x] = p;
        }
    }
}

} // namespace

DecodeRun::DecodeRun(FFmpegVideoDecoder &decoder, quint64 generation)
    : m_decoder(decoder), m_generation(generation)
{
}

DecodeRun::~DecodeRun()
{
    stopReader();
    clearQueue();
}

bool DecodeRun::open(const QString &source, bool separateAudio)
{
    const AVIOInterruptCB interrupt{[](void *opaque) -> int {
                                        return static_cast<std::atomic<bool> *>(opaque)->load();
                                    },
                                    &m_decoder.m_stop};
    m_input = selvane::openMainInput(source, separateAudio, interrupt);
    if (!m_input.error.isEmpty()) {
        if (!m_decoder.m_stop.load())
            m_decoder.reportError(m_input.error);
        return false;
    }
    m_decoder.m_durationMs.store(m_input.durationMs);
    m_decoder.m_live.store(m_input.live);
    m_queueDepth = m_input.live ? kLivePacketDepth : kFilePacketDepth;

    AVFormatContext *format = m_input.context.get();
    const int videoIndex = av_find_best_stream(format, AVMEDIA_TYPE_VIDEO, -1, -1, nullptr, 0);
    if (videoIndex < 0) {
        m_input.context.reset();
        m_decoder.reportError("no video stream");
        return false;
    }
    m_videoStream = format->streams[videoIndex];
    if (!openVideoDecoder()) {
        m_videoCodec.reset();
        m_hwDevice.reset();
        m_input.context.reset();
        m_decoder.reportError("decoder open failed");
        return false;
    }
    m_rotation = ffsupport::uprightRotationDegrees(m_videoStream);
    openAudioDecoder();

    m_frame.reset(av_frame_alloc());
    m_swFrame.reset(av_frame_alloc());
    m_keptFrame.reset(av_frame_alloc());
    m_audioFrame.reset(av_frame_alloc());
    m_packet.reset(av_packet_alloc());
    m_readAheadPacket.reset(av_packet_alloc());
    if (!m_frame || !m_swFrame || !m_keptFrame || !m_audioFrame || !m_packet || !m_readAheadPacket) {
        m_audioCodec.reset();
        m_videoCodec.reset();
        m_input.context.reset();
        m_decoder.reportError("alloc frame/packet failed");
        return false;
    }

    // A live camera whose microphone shares its input has a reader of its own, so that the
    // device is drained while pictures are converted.
    m_useReader = m_input.live && m_input.captureDevice && m_audioStream;
    if (m_useReader)
        m_reader = std::thread([this] { readerLoop(); });
    return true;
}

bool DecodeRun::openVideoDecoder()
{
    const AVCodecParameters *parameters = m_videoStream->codecpar;
    if (parameters->codec_id == AV_CODEC_ID_AV1) {
        if (tryHardwareAv1(parameters))
            return true;
        qWarning("FFmpegVideoDecoder: AV1 hardware decode unavailable; using software decoder");
    }
    const AVCodec *codec = avcodec_find_decoder(parameters->codec_id);
    if (!codec)
        return false;
    m_videoCodec.reset(avcodec_alloc_context3(codec));
    if (!m_videoCodec || avcodec_parameters_to_context(m_videoCodec.get(), parameters) < 0)
        return false;
    m_videoCodec->pkt_timebase = m_videoStream->time_base;
    return avcodec_open2(m_videoCodec.get(), codec, nullptr) >= 0;
}

bool DecodeRun::tryHardwareAv1(const AVCodecParameters *parameters)
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
            if (!context || avcodec_parameters_to_context(context.get(), parameters) < 0)
                continue;
            m_hwFormat = config->pix_fmt;
            context->opaque = &m_hwFormat;
            context->get_format = pickHardwareFormat;
            context->hw_device_ctx = av_buffer_ref(deviceRef.get());
            context->pkt_timebase = m_videoStream->time_base;
            if (avcodec_open2(context.get(), codec, nullptr) < 0) {
                m_hwFormat = AV_PIX_FMT_NONE;
                continue;
            }
            qInfo().noquote() << "FFmpegVideoDecoder: hardware decoder selected" << name
                              << av_hwdevice_get_type_name(config->device_type);
            m_videoCodec = std::move(context);
            m_hwDevice = std::move(deviceRef);
            return true;
        }
    }
    m_hwFormat = AV_PIX_FMT_NONE;
    return false;
}

void DecodeRun::openAudioDecoder()
{
    AVFormatContext *format = m_input.context.get();
    const int index = av_find_best_stream(format, AVMEDIA_TYPE_AUDIO, -1, -1, nullptr, 0);
    if (index < 0)
        return;
    AVStream *stream = format->streams[index];
    const AVCodec *codec = avcodec_find_decoder(stream->codecpar->codec_id);
    if (!codec)
        return;
    ffsupport::CodecContextPtr context(avcodec_alloc_context3(codec));
    if (!context || avcodec_parameters_to_context(context.get(), stream->codecpar) < 0)
        return;
    context->pkt_timebase = stream->time_base;
    if (avcodec_open2(context.get(), codec, nullptr) < 0)
        return; // the source plays silent
    m_audioStream = stream;
    m_audioCodec = std::move(context);
}

// ---- packets ----

int DecodeRun::nextPacket(AVPacket *packet)
{
    if (m_useReader) {
        std::unique_lock lock(m_decoder.m_queueMutex);
        m_decoder.m_queueCv.wait(lock, [this] {
            return m_decoder.m_stop.load() || !m_queue.empty() || m_readerDone;
        });
        if (m_decoder.m_stop.load())
            return AVERROR_EXIT;
        if (m_queue.empty())
            return m_readerResult;
        AVPacket *front = m_queue.front();
        m_queue.pop_front();
        lock.unlock();
        m_decoder.m_queueCv.notify_all();
        av_packet_move_ref(packet, front);
        av_packet_free(&front);
        return 0;
    }
    if (!m_queue.empty()) {
        AVPacket *front = m_queue.front();
        m_queue.pop_front();
        av_packet_move_ref(packet, front);
        av_packet_free(&front);
        return 0;
    }
    return av_read_frame(m_input.context.get(), packet);
}

void DecodeRun::pushPacket(AVPacket *packet)
{
    AVPacket *copy = av_packet_alloc();
    if (!copy) {
        av_packet_unref(packet);
        return;
    }
    av_packet_move_ref(copy, packet);
    // A full queue discards its oldest packet: the newest data wins.
    while (m_queue.size() >= static_cast<std::size_t>(m_queueDepth)) {
        AVPacket *oldest = m_queue.front();
        m_queue.pop_front();
        av_packet_free(&oldest);
    }
    m_queue.push_back(copy);
}

void DecodeRun::clearQueue()
{
    std::unique_lock lock(m_decoder.m_queueMutex, std::defer_lock);
    if (m_useReader)
        lock.lock();
    for (AVPacket *packet : m_queue)
        av_packet_free(&packet);
    m_queue.clear();
}

void DecodeRun::readerLoop()
{
    ffsupport::PacketPtr packet(av_packet_alloc());
    while (!m_decoder.m_stop.load()) {
        const int err = av_read_frame(m_input.context.get(), packet.get());
        if (err == AVERROR(EAGAIN)) {
            std::this_thread::sleep_for(kTryAgainSleep);
            continue;
        }
        std::unique_lock lock(m_decoder.m_queueMutex);
        if (err < 0) {
            m_readerDone = true;
            m_readerResult = err;
            lock.unlock();
            m_decoder.m_queueCv.notify_all();
            return;
        }
        pushPacket(packet.get());
        lock.unlock();
        m_decoder.m_queueCv.notify_all();
    }
}

void DecodeRun::stopReader()
{
    if (m_reader.joinable()) {
        m_decoder.m_queueCv.notify_all();
        m_reader.join();
    }
}

// ---- decoding ----

qint64 DecodeRun::frameTimeUs(const AVFrame *frame, const AVStream *stream) const
{
    const int64_t ts = frame->best_effort_timestamp;
    if (ts == AV_NOPTS_VALUE)
        return AV_NOPTS_VALUE;
    return av_rescale_q(ts, stream->time_base, AV_TIME_BASE_Q);
}

bool DecodeRun::beforeSeekTarget(const AVFrame *frame, const AVStream *stream) const
{
    if (m_seekTargetUs < 0)
        return false;
    const qint64 t = frameTimeUs(frame, stream);
    return t != AV_NOPTS_VALUE && t < m_seekTargetUs;
}

void DecodeRun::processPacket(AVPacket *packet)
{
    if (m_audioStream && packet->stream_index == m_audioStream->index) {
        decodeAudioPacket(packet);
    } else if (packet->stream_index == m_videoStream->index) {
        avcodec_send_packet(m_videoCodec.get(), packet);
        av_packet_unref(packet);
        receiveVideoFrames();
    } else {
        av_packet_unref(packet);
    }
}

void DecodeRun::decodeAudioPacket(AVPacket *packet)
{
    avcodec_send_packet(m_audioCodec.get(), packet);
    av_packet_unref(packet);
    receiveAudioFrames();
}

void DecodeRun::receiveAudioFrames()
{
    AVFrame *audioFrame = m_audioFrame.get();
    while (avcodec_receive_frame(m_audioCodec.get(), audioFrame) >= 0) {
        if (!beforeSeekTarget(audioFrame, m_audioStream))
            m_audio.convert(audioFrame, m_audioCodec.get(),
                            [this](const std::int16_t *samples, int frames) {
                                m_decoder.deliverAudio(samples, frames);
                            });
        av_frame_unref(audioFrame);
    }
}

void DecodeRun::receiveVideoFrames()
{
    if (m_input.live) {
        // Not paced: of all the pictures this packet yields, only the newest is shown.
        while (avcodec_receive_frame(m_videoCodec.get(), m_frame.get()) >= 0) {
            if (m_haveKeptFrame)
                m_decoder.m_framesDropped.fetch_add(1);
            av_frame_unref(m_keptFrame.get());
            av_frame_move_ref(m_keptFrame.get(), m_frame.get());
            m_haveKeptFrame = true;
        }
        if (m_haveKeptFrame) {
            convertAndDeliver(m_keptFrame.get());
            av_frame_unref(m_keptFrame.get());
            m_haveKeptFrame = false;
        }
        return;
    }
    while (!m_decoder.m_stop.load() &&
           avcodec_receive_frame(m_videoCodec.get(), m_frame.get()) >= 0) {
        if (beforeSeekTarget(m_frame.get(), m_videoStream)) {
            av_frame_unref(m_frame.get());
            continue;
        }
        m_seekTargetUs = -1;
        paceAndDeliver(m_frame.get());
        av_frame_unref(m_frame.get());
    }
}

void DecodeRun::paceAndDeliver(AVFrame *frame)
{
    const qint64 ptsUs = frameTimeUs(frame, m_videoStream);
    const Clock::time_point now = Clock::now();
    if (ptsUs == AV_NOPTS_VALUE) {
        convertAndDeliver(frame);
        return;
    }
    if (!m_anchorSet) {
        m_anchorSet = true;
        m_anchorPtsUs = ptsUs;
        m_anchorWall = now;
        convertAndDeliver(frame);
        return;
    }
    const qint64 sinceAnchorUs =
        std::chrono::duration_cast<std::chrono::microseconds>(now - m_anchorWall).count();
    const qint64 waitUs = (ptsUs - m_anchorPtsUs) - sinceAnchorUs;
    if (waitUs > 0) {
        const auto deadline = now + std::chrono::microseconds(std::min(waitUs, kMaxWaitUs));
        if (!waitUntil(deadline))
            return; // stopped or a seek arrived: this picture is stale
    } else if (-waitUs > kLateDropUs) {
        m_decoder.m_framesDropped.fetch_add(1);
        return;
    }
    convertAndDeliver(frame);
}

bool DecodeRun::waitUntil(Clock::time_point deadline)
{
    for (;;) {
        if (m_decoder.m_stop.load() || m_decoder.m_seekFlag.load())
            return false;
        if (!m_decoder.m_playing.load())
            return true;
        readAheadWhileWaiting();
        const Clock::time_point now = Clock::now();
        if (now >= deadline)
            return true;
        std::this_thread::sleep_for(std::min<Clock::duration>(kWaitSlice, deadline - now));
    }
}

void DecodeRun::readAheadWhileWaiting()
{
    while (!m_readAheadEnded && m_queue.size() < kPacedReadAheadPackets &&
           !m_decoder.m_stop.load()) {
        AVPacket *packet = m_readAheadPacket.get();
        const int err = av_read_frame(m_input.context.get(), packet);
        if (err == AVERROR(EAGAIN))
            return;
        if (err < 0) {
            // The loop's own read reports the end (or the error) again when the queue is empty.
            m_readAheadEnded = true;
            return;
        }
        if (m_audioStream && packet->stream_index == m_audioStream->index)
            decodeAudioPacket(packet);
        else if (packet->stream_index == m_videoStream->index)
            pushPacket(packet);
        else
            av_packet_unref(packet);
    }
}

void DecodeRun::convertAndDeliver(AVFrame *decoded)
{
    AVFrame *frame = decoded;
    if (m_hwFormat != AV_PIX_FMT_NONE && decoded->format == m_hwFormat) {
        av_frame_unref(m_swFrame.get());
        if (av_hwframe_transfer_data(m_swFrame.get(), decoded, 0) < 0)
            return;
        av_frame_copy_props(m_swFrame.get(), decoded);
        frame = m_swFrame.get();
    }
    const int codedW = frame->width;
    const int codedH = frame->height;
    if (codedW < 1 || codedH < 1)
        return;
    const bool quarterTurn = m_rotation == 90 || m_rotation == 270;
    const int displayW = quarterTurn ? codedH : codedW;
    const int displayH = quarterTurn ? codedW : codedH;
    if (codedW != m_lastCodedW || codedH != m_lastCodedH || displayW != m_lastDisplayW ||
        displayH != m_lastDisplayH) {
        m_lastCodedW = codedW;
        m_lastCodedH = codedH;
        m_lastDisplayW = displayW;
        m_lastDisplayH = displayH;
        emit m_decoder.sourceVideoInfoChanged(codedW, codedH, displayW, displayH, m_generation);
    }

    int outW = displayW;
    int outH = displayH;
    const int targetW = m_decoder.m_targetWidth.load();
    const int targetH = m_decoder.m_targetHeight.load();
    if (targetW > 0 && targetH > 0) {
        const double scale = std::min(double(targetW) / displayW, double(targetH) / displayH);
        outW = std::max(1, int(displayW * scale + 0.5));
        outH = std::max(1, int(displayH * scale + 0.5));
    }

    FrameTokenPtr token = m_decoder.m_pool.acquire();
    if (!token) {
        m_decoder.m_framesDropped.fetch_add(1);
        return;
    }
    const int scaledW = quarterTurn ? outH : outW;
    const int scaledH = quarterTurn ? outW : outH;
    m_sws.reset(sws_getCachedContext(m_sws.release(), codedW, codedH,
                                     static_cast<AVPixelFormat>(frame->format), scaledW, scaledH,
                                     AV_PIX_FMT_RGBA, SWS_BILINEAR, nullptr, nullptr, nullptr));
    if (!m_sws)
        return;
    const qint64 stride = qint64(outW) * 4;
    prepareTokenPixels(*token, outW, outH, stride);
    std::uint8_t *target = reinterpret_cast<std::uint8_t *>(token->pixels.data());
    if (m_rotation == 0) {
        std::uint8_t *planes[4] = {target, nullptr, nullptr, nullptr};
        int strides[4] = {int(stride), 0, 0, 0};
        sws_scale(m_sws.get(), frame->data, frame->linesize, 0, codedH, planes, strides);
    } else {
        const qint64 scratchStride = qint64(scaledW) * 4;
        m_rotateScratch.resize(std::size_t(scratchStride * scaledH));
        std::uint8_t *planes[4] = {m_rotateScratch.data(), nullptr, nullptr, nullptr};
        int strides[4] = {int(scratchStride), 0, 0, 0};
        sws_scale(m_sws.get(), frame->data, frame->linesize, 0, codedH, planes, strides);
        rotateRgba(m_rotateScratch.data(), scaledW, scaledH, scratchStride, target, stride,
                   m_rotation);
    }
    const qint64 ptsUs = frameTimeUs(frame, m_videoStream);
    token->pts = ptsUs == AV_NOPTS_VALUE ? 0 : ptsUs;
    token->flag = true;
    m_decoder.deliverFrame(std::move(token));
}

// ---- control ----

void DecodeRun::seekTo(qint64 positionMs)
{
    const qint64 targetUs = std::max<qint64>(0, positionMs) * 1000;
    const int64_t ts = av_rescale_q(targetUs, AV_TIME_BASE_Q, m_videoStream->time_base) +
                       (m_videoStream->start_time != AV_NOPTS_VALUE ? m_videoStream->start_time : 0);
    AVFormatContext *format = m_input.context.get();
    if (av_seek_frame(format, m_videoStream->index, ts, AVSEEK_FLAG_BACKWARD) < 0)
        av_seek_frame(format, -1, targetUs, AVSEEK_FLAG_BACKWARD);
    avcodec_flush_buffers(m_videoCodec.get());
    if (m_audioCodec)
        avcodec_flush_buffers(m_audioCodec.get());
    m_audio.reset();
    clearQueue();
    resetAnchor();
    m_readAheadEnded = false;
    m_drained = false;
    // Pictures and sound between the key frame and the position asked for are skipped.
    const qint64 startUs = m_videoStream->start_time != AV_NOPTS_VALUE
                               ? av_rescale_q(m_videoStream->start_time, m_videoStream->time_base,
                                              AV_TIME_BASE_Q)
                               : 0;
    m_seekTargetUs = positionMs > 0 ? startUs + targetUs : -1;
}

void DecodeRun::drainDecoders()
{
    // Pictures still inside the decoder at the end of the file are shown too.
    if (m_audioCodec) {
        avcodec_send_packet(m_audioCodec.get(), nullptr);
        receiveAudioFrames();
    }
    avcodec_send_packet(m_videoCodec.get(), nullptr);
    receiveVideoFrames();
}

void DecodeRun::handleEndOfFile()
{
    if (!m_drained) {
        drainDecoders();
        m_drained = true;
        if (m_decoder.m_stop.load())
            return;
    }
    if (m_decoder.m_loop.load()) {
        m_decoder.m_ended.store(false);
        seekTo(0);
        return;
    }
    bool expected = false;
    if (m_decoder.m_ended.compare_exchange_strong(expected, true))
        m_decoder.postEndedNaturally();
    std::this_thread::sleep_for(kEndOfFilePoll);
}

void DecodeRun::showOneFrameAfterSeek()
{
    const qint64 deliveredBefore = m_decoder.m_framesDelivered.load();
    while (!m_decoder.m_stop.load() && m_decoder.m_framesDelivered.load() == deliveredBefore) {
        const int err = nextPacket(m_packet.get());
        if (err == AVERROR(EAGAIN)) {
            std::this_thread::sleep_for(kTryAgainSleep);
            continue;
        }
        if (err < 0) {
            if (!m_drained) {
                m_drained = true;
                avcodec_send_packet(m_videoCodec.get(), nullptr);
                while (avcodec_receive_frame(m_videoCodec.get(), m_frame.get()) >= 0) {
                    convertAndDeliver(m_frame.get());
                    av_frame_unref(m_frame.get());
                }
            }
            return;
        }
        if (m_packet->stream_index != m_videoStream->index) {
            av_packet_unref(m_packet.get()); // no sound while paused
            continue;
        }
        avcodec_send_packet(m_videoCodec.get(), m_packet.get());
        av_packet_unref(m_packet.get());
        while (avcodec_receive_frame(m_videoCodec.get(), m_frame.get()) >= 0) {
            const bool early = beforeSeekTarget(m_frame.get(), m_videoStream);
            if (!early && m_decoder.m_framesDelivered.load() == deliveredBefore) {
                m_seekTargetUs = -1;
                convertAndDeliver(m_frame.get());
            }
            av_frame_unref(m_frame.get());
        }
    }
}

void DecodeRun::decodeLoop()
{
    qint64 seekAppliedMs = -1;
    while (!m_decoder.m_stop.load()) {
        if (m_decoder.m_flushRequest.exchange(false))
            clearQueue();
        if (!m_decoder.m_playing.load()) {
            const qint64 request = m_decoder.m_seekRequestMs.load();
            if (request >= 0 && request != seekAppliedMs) {
                m_decoder.m_seekFlag.store(false);
                seekTo(request);
                seekAppliedMs = request;
                showOneFrameAfterSeek();
            } else {
                std::this_thread::sleep_for(kPausePoll);
            }
            continue;
        }
        // Playing: the next request made in pause is honoured even if it repeats the last one.
        seekAppliedMs = -1;
        if (m_decoder.m_resumed.exchange(false))
            resetAnchor();
        if (m_decoder.m_seekFlag.exchange(false))
            seekTo(m_decoder.m_seekRequestMs.load());

        const int err = nextPacket(m_packet.get());
        if (err == AVERROR(EAGAIN)) {
            std::this_thread::sleep_for(kTryAgainSleep);
            continue;
        }
        if (err == AVERROR_EOF) {
            handleEndOfFile();
            continue;
        }
        if (err < 0) {
            if (err != AVERROR_EXIT && !m_decoder.m_stop.load())
                qWarning().noquote() << "FFmpegVideoDecoder: read ended:"
                                     << errorText("av_read_frame", err);
            return;
        }
        processPacket(m_packet.get());
    }
}
