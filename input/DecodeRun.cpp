#include "input/DecodeRun.h"

#include "input/SourceAddress.h"
#include "media/FfmpegCompat.h"
#include "media/LogThrottle.h"
#include "media/ThreadName.h"

#include <QDebug>
#include <algorithm>
#include <cstring>

namespace selvane {

using namespace std::chrono_literals;
using ffsupport::errorText;

namespace {

// Live sources keep their latency bounded; a file may read ahead.
constexpr int kFilePacketDepth = 200;
constexpr int kLivePacketDepth = 8;
constexpr auto kTryAgainSleep = 1ms;
constexpr auto kEndOfFilePoll = 20ms;
constexpr auto kPausePoll = 25ms;
// Waits for a free picture of the pool (no one wakes the decoder when one comes back) ...
constexpr int kRoomWaitMs = 5;
// ... and for room in the source's queue, whose every taking (and every seek, flush and stop)
// wakes the decoder: the bound only covers a wake-up that never comes.
constexpr int kQueueWaitMs = 40;
// While a file's pictures wait for room, reading goes on (sound keeps flowing) until this many
// picture packets wait: about two seconds at 30 pictures a second.
constexpr int kReadAheadPackets = 60;

int interruptWhenCancelled(void *opaque)
{
    return static_cast<const DecodeHost *>(opaque)->cancelled() ? 1 : 0;
}

} // namespace

AVIOInterruptCB DecodeRun::interruptFor(const DecodeHost &host)
{
    return {interruptWhenCancelled, const_cast<DecodeHost *>(&host)};
}

DecodeRun::DecodeRun(DecoderControls &controls, DecodeHost &host)
    : m_controls(controls), m_host(host)
{
}

DecodeRun::~DecodeRun()
{
    stopReader();
}

bool DecodeRun::open(const SourceAddress &source, bool separateAudio)
{
    m_network = source.isNetwork();
    m_input = openMainInput(source, separateAudio, interruptFor(m_host));
    if (m_input.error != SourceError::None) {
        if (!m_host.cancelled())
            m_host.failed(m_input.error, {});
        return false;
    }
    m_realTime = m_input.live && !isSegmentedStream(m_input.context.get());
    m_queue.setDepth(m_realTime ? kLivePacketDepth : kFilePacketDepth);
    m_queue.setDropCounter(&m_host.packetDropCounter());

    AVFormatContext *format = m_input.context.get();
    const int videoIndex = av_find_best_stream(format, AVMEDIA_TYPE_VIDEO, -1, -1, nullptr, 0);
    const int audioIndex = av_find_best_stream(format, AVMEDIA_TYPE_AUDIO, -1, -1, nullptr, 0);
    if (videoIndex < 0 && audioIndex < 0) {
        m_input.context.reset();
        m_host.failed(SourceError::NoVideoStream, {});
        return false;
    }
    if (videoIndex >= 0) {
        m_videoStream = format->streams[videoIndex];
        if (!openVideoDecoder(m_videoStream, &m_video)) {
            m_video = OpenedVideoDecoder{};
            m_input.context.reset();
            m_host.failed(SourceError::DecoderOpenFailed, {});
            return false;
        }
        m_pictures = std::make_unique<PictureConverter>(uprightRotationDegrees(m_videoStream),
                                                        *m_video.hardwareFormat);
    } else {
        // Sound alone: the sound's stream is the clock, and black pictures on its time carry
        // it onto the program (see showBlackUpTo).
        m_videoStream = format->streams[audioIndex];
        m_pictures = std::make_unique<PictureConverter>(0, AV_PIX_FMT_NONE);
        m_black.reset(av_frame_alloc());
        if (!m_black) {
            m_input.context.reset();
            m_host.failed(SourceError::AllocFailed, {});
            return false;
        }
        m_black->format = AV_PIX_FMT_YUV420P;
        m_black->width = kBlackSize.width();
        m_black->height = kBlackSize.height();
        if (av_frame_get_buffer(m_black.get(), 0) < 0) {
            m_input.context.reset();
            m_host.failed(SourceError::AllocFailed, {});
            return false;
        }
        const int rows[3] = {m_black->height, m_black->height / 2, m_black->height / 2};
        const int values[3] = {16, 128, 128};
        for (int plane = 0; plane < 3; ++plane)
            std::memset(m_black->data[plane], values[plane],
                        std::size_t(m_black->linesize[plane]) * std::size_t(rows[plane]));
    }

    // The best audio stream plays when its decoder opens; otherwise the source plays silent.
    if (audioIndex >= 0) {
        AVStream *stream = format->streams[audioIndex];
        const AVCodec *codec = avcodec_find_decoder(stream->codecpar->codec_id);
        ffsupport::CodecContextPtr context(codec ? avcodec_alloc_context3(codec) : nullptr);
        if (context && avcodec_parameters_to_context(context.get(), stream->codecpar) >= 0) {
            context->pkt_timebase = stream->time_base;
            if (avcodec_open2(context.get(), codec, nullptr) >= 0) {
                m_audioStream = stream;
                m_audioCodec = std::move(context);
            }
        }
    }

    m_frame.reset(av_frame_alloc());
    m_progressive.reset(av_frame_alloc());
    m_audioFrame.reset(av_frame_alloc());
    m_packet.reset(av_packet_alloc());
    m_readAheadPacket.reset(av_packet_alloc());
    if (!m_frame || !m_progressive || !m_audioFrame || !m_packet || !m_readAheadPacket) {
        m_audioCodec.reset();
        m_video = OpenedVideoDecoder{};
        m_input.context.reset();
        m_host.failed(SourceError::AllocFailed, {});
        return false;
    }
    m_timelineId = m_host.timeline();
    double fps = 0.0;
    if (videoIndex >= 0) {
        const AVRational rate = m_videoStream->avg_frame_rate.num > 0
                                    ? m_videoStream->avg_frame_rate
                                    : m_videoStream->r_frame_rate;
        if (rate.num > 0 && rate.den > 0)
            fps = av_q2d(rate);
    }
    m_host.opened(m_input.durationMs, m_input.live, m_realTime, fps);

    // A live camera whose microphone shares its input has a reader of its own, so that the
    // device is drained while pictures are converted.
    m_useReader = m_input.live && m_input.captureDevice && m_audioStream;
    if (m_useReader)
        m_reader = std::thread([this] { readerLoop(); });
    return true;
}

// ---- packets ----

int DecodeRun::nextPacket(AVPacket *packet)
{
    if (m_useReader)
        return m_queue.take(packet, true, [this] { return m_host.cancelled(); });
    if (m_queue.take(packet, false) == 0)
        return 0;
    return m_input.read(packet);
}

void DecodeRun::readerLoop()
{
    nameThisThread("demux");
    ffsupport::PacketPtr packet(av_packet_alloc());
    while (packet && !m_host.cancelled()) {
        const int err = m_input.read(packet.get());
        if (err == AVERROR(EAGAIN)) {
            std::this_thread::sleep_for(kTryAgainSleep);
            continue;
        }
        if (err < 0) {
            m_queue.markEnded(err);
            return;
        }
        m_queue.push(packet.get());
    }
}

void DecodeRun::stopReader()
{
    if (m_reader.joinable()) {
        m_queue.wakeAll();
        m_reader.join();
    }
}

// ---- decoding ----

qint64 DecodeRun::rawTimeUs(const AVFrame *frame, const AVStream *stream) const
{
    int64_t ts = frame->best_effort_timestamp;
    if (ts == AV_NOPTS_VALUE)
        ts = frame->pts;
    if (ts == AV_NOPTS_VALUE)
        return SourceTimeline::kNoTime;
    return av_rescale_q(ts, stream->time_base, AV_TIME_BASE_Q);
}

qint64 DecodeRun::durationUs(const AVFrame *frame, const AVStream *stream) const
{
    if (stream == m_audioStream && frame->sample_rate > 0)
        return qint64(frame->nb_samples) * 1000000 / frame->sample_rate;
    if (const std::int64_t ticks = ffcompat::frameDuration(frame))
        return av_rescale_q(ticks, stream->time_base, AV_TIME_BASE_Q);
    const AVRational rate =
        stream->avg_frame_rate.num > 0 ? stream->avg_frame_rate : stream->r_frame_rate;
    return rate.num > 0 ? av_rescale(1000000, rate.den, rate.num) : 33333;
}

bool DecodeRun::beforeSeekTarget(const AVFrame *frame, const AVStream *stream) const
{
    if (m_seekTargetUs < 0)
        return false;
    const qint64 t = rawTimeUs(frame, stream);
    return t != SourceTimeline::kNoTime && t < m_seekTargetUs;
}

void DecodeRun::sendPacket(AVCodecContext *codec, AVPacket *packet)
{
    // A packet the decoder refuses (damaged data) is skipped and counted; the run goes on.
    const int err = avcodec_send_packet(codec, packet);
    if (err < 0 && err != AVERROR(EAGAIN) && err != AVERROR_EOF) {
        m_host.packetDropCounter().fetch_add(1);
        if (shouldLog(++m_refusedPackets, 5, 500))
            qWarning().noquote() << "FFmpegVideoDecoder: packet refused by the decoder (count"
                                 << m_refusedPackets
                                 << "):" << errorText("avcodec_send_packet", err);
    }
    av_packet_unref(packet);
}

void DecodeRun::processPacket(AVPacket *packet)
{
    if (m_audioStream && packet->stream_index == m_audioStream->index) {
        decodeAudioPacket(packet);
    } else if (packet->stream_index == m_videoStream->index) {
        sendPacket(m_video.context.get(), packet);
        receiveVideoFrames();
    } else {
        av_packet_unref(packet);
    }
}

void DecodeRun::decodeAudioPacket(AVPacket *packet)
{
    sendPacket(m_audioCodec.get(), packet);
    receiveAudioFrames();
}

void DecodeRun::receiveAudioFrames()
{
    AVFrame *audioFrame = m_audioFrame.get();
    while (avcodec_receive_frame(m_audioCodec.get(), audioFrame) >= 0) {
        if (!beforeSeekTarget(audioFrame, m_audioStream)) {
            const qint64 mediaUs = m_timeline.mapAudio(rawTimeUs(audioFrame, m_audioStream),
                                                       durationUs(audioFrame, m_audioStream));
            m_audio.convert(audioFrame, m_audioCodec.get(), mediaUs,
                            [this](const std::int16_t *samples, int frames, qint64 startUs) {
                                m_host.deliverAudio(samples, frames, startUs, m_timelineId);
                            });
            if (m_black)
                showBlackUpTo(rawTimeUs(audioFrame, m_audioStream) +
                              durationUs(audioFrame, m_audioStream));
        }
        av_frame_unref(audioFrame);
    }
}

void DecodeRun::showBlackUpTo(qint64 rawEndUs)
{
    if (rawEndUs == SourceTimeline::kNoTime)
        return;
    if (m_nextBlackUs == SourceTimeline::kNoTime || m_nextBlackUs > rawEndUs + kBlackPeriodUs)
        m_nextBlackUs = rawEndUs; // the first, or after a seek or a loop back
    while (m_nextBlackUs < rawEndUs && !interrupted()) {
        m_black->pts = av_rescale_q(m_nextBlackUs, AV_TIME_BASE_Q, m_videoStream->time_base);
        m_black->best_effort_timestamp = m_black->pts;
        showPicture(m_black.get());
        m_nextBlackUs += kBlackPeriodUs;
    }
}

void DecodeRun::receiveVideoFrames()
{
    AVCodecContext *codec = m_video.context.get();
    while (!interrupted() && avcodec_receive_frame(codec, m_frame.get()) >= 0) {
        if (!beforeSeekTarget(m_frame.get(), m_videoStream)) {
            m_seekTargetUs = -1;
            showPicture(m_frame.get());
        }
        av_frame_unref(m_frame.get());
    }
}

bool DecodeRun::interrupted() const
{
    return m_host.cancelled() || m_controls.seekFlag.load() || m_controls.flushRequest.load();
}

void DecodeRun::showPicture(const AVFrame *decoded)
{
    const AVFrame *frame = m_pictures->inSystemMemory(decoded);
    if (!frame || frame->width < 1 || frame->height < 1)
        return;
    switch (m_deinterlacer.filter(frame, m_progressive.get(), m_videoStream->time_base)) {
    case Deinterlacer::Result::Held:
        return;
    case Deinterlacer::Result::Out:
        frame = m_progressive.get();
        if (!m_reportedDeinterlacing) {
            m_reportedDeinterlacing = true;
            m_host.deinterlacing();
        }
        break;
    case Deinterlacer::Result::Pass:
        break;
    }
    FrameTokenPtr picture;
    if (!convertPicture(frame, &picture))
        return;
    if (offerUntilTaken(picture))
        ++m_delivered;
}

bool DecodeRun::convertPicture(const AVFrame *frame, FrameTokenPtr *out)
{
    const PictureConverter::Sizes sizes = m_pictures->sizesOf(frame);
    if (!(sizes == m_lastSizes)) {
        m_lastSizes = sizes;
        m_host.videoInfo(sizes.coded, sizes.display);
    }
    const QSize target(m_controls.targetWidth.load(), m_controls.targetHeight.load());
    FrameWriter token = m_host.acquireFrame();
    // A file waits for a picture to come back to the pool (the program takes them in time);
    // a source that must be drained drops the picture rather than fall behind.
    while (!token && !m_realTime && !interrupted()) {
        if (!readAheadOnce())
            m_host.waitForRoom(kRoomWaitMs);
        token = m_host.acquireFrame();
    }
    if (!token) {
        m_host.pictureDropped();
        return false;
    }
    if (!m_pictures->convert(frame, PictureConverter::outputSize(sizes.display, target), token))
        return false;
    const qint64 rawUs = rawTimeUs(frame, m_videoStream);
    if (rawUs != SourceTimeline::kNoTime) {
        const qint64 startUs =
            m_videoStream->start_time != AV_NOPTS_VALUE
                ? av_rescale_q(m_videoStream->start_time, m_videoStream->time_base, AV_TIME_BASE_Q)
                : 0;
        m_host.positionMs().store(std::max<qint64>(0, (rawUs - startUs) / 1000));
    }
    token->ptsUs = m_timeline.mapVideo(rawUs, durationUs(frame, m_videoStream));
    token->timeline = m_timelineId;
    *out = std::move(token).publish();
    return true;
}

bool DecodeRun::offerUntilTaken(FrameTokenPtr &picture)
{
    for (;;) {
        if (m_host.offerFrame(picture))
            return true;
        if (interrupted())
            return false;
        // Reading goes on while the picture waits, so that the sound keeps coming.
        if (!readAheadOnce())
            m_host.waitForRoom(kQueueWaitMs);
    }
}

bool DecodeRun::readAheadOnce()
{
    // Black pictures are made while sound is decoded: reading on there would decode sound
    // inside the decoding of sound.
    if (m_useReader || m_readAheadEnded || m_black || m_queue.size() >= kReadAheadPackets)
        return false;
    AVPacket *packet = m_readAheadPacket.get();
    const int err = m_input.read(packet);
    if (err == AVERROR(EAGAIN))
        return false;
    if (err < 0) {
        // The loop's own read reports the end (or the error) again when the queue is empty.
        m_readAheadEnded = true;
        return false;
    }
    if (m_audioStream && packet->stream_index == m_audioStream->index)
        decodeAudioPacket(packet);
    else if (packet->stream_index == m_videoStream->index)
        m_queue.push(packet);
    else
        av_packet_unref(packet);
    return true;
}

// ---- control ----

void DecodeRun::seekTo(qint64 positionMs, bool newTimeline)
{
    const qint64 targetUs = std::max<qint64>(0, positionMs) * 1000;
    const qint64 startTs =
        m_videoStream->start_time != AV_NOPTS_VALUE ? m_videoStream->start_time : 0;
    const int64_t ts = av_rescale_q(targetUs, AV_TIME_BASE_Q, m_videoStream->time_base) + startTs;
    AVFormatContext *format = m_input.context.get();
    if (m_input.graph) {
        // A generator has no place to seek to: it starts over (a loop, or any seek).
        if (!m_input.graph->restart())
            qWarning("FFmpegVideoDecoder: the test signal did not start again");
    } else if (av_seek_frame(format, m_videoStream->index, ts, AVSEEK_FLAG_BACKWARD) < 0) {
        av_seek_frame(format, -1, targetUs, AVSEEK_FLAG_BACKWARD);
    }
    if (m_video.context)
        avcodec_flush_buffers(m_video.context.get());
    if (m_audioCodec)
        avcodec_flush_buffers(m_audioCodec.get());
    m_audio.reset();
    m_deinterlacer.reset();
    m_queue.clear();
    m_readAheadEnded = false;
    m_drained = false;
    m_endReported = false;
    if (newTimeline) {
        // An operator's seek: what was queued is of no use, and the time starts anew.
        m_host.discardQueued();
        m_timelineId = m_host.newTimeline();
        m_timeline.reset();
    }
    // Pictures and sound between the key frame and the position asked for are skipped.
    const qint64 startUs = av_rescale_q(startTs, m_videoStream->time_base, AV_TIME_BASE_Q);
    m_seekTargetUs = positionMs > 0 ? startUs + targetUs : -1;
}

void DecodeRun::drainDecoders()
{
    // Pictures still inside the decoder at the end of the file are shown too.
    if (m_audioCodec) {
        avcodec_send_packet(m_audioCodec.get(), nullptr);
        receiveAudioFrames();
    }
    if (m_video.context) {
        avcodec_send_packet(m_video.context.get(), nullptr);
        receiveVideoFrames();
    }
}

bool DecodeRun::handleEndOfFile()
{
    if (!m_drained) {
        drainDecoders();
        m_drained = true;
        if (m_host.cancelled())
            return true;
    }
    if (m_input.live && m_network) {
        qInfo().noquote() << "FFmpegVideoDecoder: the live source ended";
        return false;
    }
    if (m_controls.loop.load()) {
        // The next loop follows this one without a gap in either stream.
        const qint64 startUs =
            m_input.context->start_time != AV_NOPTS_VALUE ? m_input.context->start_time : 0;
        m_timeline.loopRestart(startUs);
        seekTo(0, false);
        return true;
    }
    if (!m_endReported) {
        m_endReported = true;
        m_host.endedNaturally();
    }
    std::this_thread::sleep_for(kEndOfFilePoll);
    return true;
}

void DecodeRun::showOneFrameAfterSeek()
{
    const qint64 deliveredBefore = m_delivered;
    AVCodecContext *codec = m_video.context.get();
    if (!codec)
        return; // sound alone: black shows anyway
    while (!m_host.cancelled() && m_delivered == deliveredBefore) {
        const int err = nextPacket(m_packet.get());
        if (err == AVERROR(EAGAIN)) {
            std::this_thread::sleep_for(kTryAgainSleep);
            continue;
        }
        if (err < 0) {
            if (!m_drained) {
                m_drained = true;
                avcodec_send_packet(codec, nullptr);
                while (avcodec_receive_frame(codec, m_frame.get()) >= 0) {
                    showPicture(m_frame.get());
                    av_frame_unref(m_frame.get());
                }
            }
            return;
        }
        if (m_packet->stream_index != m_videoStream->index) {
            av_packet_unref(m_packet.get()); // no sound while paused
            continue;
        }
        sendPacket(codec, m_packet.get());
        while (avcodec_receive_frame(codec, m_frame.get()) >= 0) {
            if (!beforeSeekTarget(m_frame.get(), m_videoStream) && m_delivered == deliveredBefore) {
                m_seekTargetUs = -1;
                showPicture(m_frame.get());
            }
            av_frame_unref(m_frame.get());
        }
    }
}

void DecodeRun::decodeLoop()
{
    qint64 seekAppliedMs = -1;
    while (!m_host.cancelled()) {
        if (m_controls.flushRequest.exchange(false))
            m_queue.clear();
        if (!m_controls.playing.load()) {
            const qint64 request = m_controls.seekRequestMs.load();
            if (request >= 0 && request != seekAppliedMs) {
                m_controls.seekFlag.store(false);
                seekTo(request, true);
                seekAppliedMs = request;
                showOneFrameAfterSeek();
            } else {
                std::this_thread::sleep_for(kPausePoll);
            }
            continue;
        }
        // Playing: the next request made in pause is honoured even if it repeats the last one.
        seekAppliedMs = -1;
        if (m_controls.resumed.exchange(false))
            m_timelineId = m_host.newTimeline(); // the program takes the source up from here
        if (m_controls.seekFlag.exchange(false))
            seekTo(m_controls.seekRequestMs.load(), true);

        const int err = nextPacket(m_packet.get());
        if (err == AVERROR(EAGAIN)) {
            std::this_thread::sleep_for(kTryAgainSleep);
            continue;
        }
        if (err == AVERROR_EOF) {
            if (!handleEndOfFile())
                return;
            continue;
        }
        if (err < 0) {
            if (err != AVERROR_EXIT && !m_host.cancelled())
                m_host.failed(SourceError::ReadFailed, errorText("av_read_frame", err));
            return;
        }
        processPacket(m_packet.get());
    }
}

} // namespace selvane
