#include "output/FfmpegEncoderSink.h"

#include "media/FfmpegCompat.h"
#include "media/LogThrottle.h"
#include "output/StreamUrl.h"
#include "output/VideoEncoderChoice.h"

#include <QDebug>
#include <algorithm>
#include <cmath>

extern "C" {
#include <libavutil/channel_layout.h>
}

using selvane::EncodedStreams;
using selvane::FileRecorder;
using selvane::StreamPublisher;
namespace encoder = selvane::encoder;

namespace {

constexpr int kAacSampleRate = 48000;
// A hole this long in the program sound is filled with silence (mixer blocks are 10 ms).
constexpr qint64 kAudioGapUs = 15000;
constexpr qint64 kMaxAudioGapUs = 5000000;
constexpr int kAacBitrate = 160000;
constexpr int kAacDefaultFrameSize = 1024;

} // namespace

FfmpegEncoderSink::FfmpegEncoderSink() = default;

FfmpegEncoderSink::~FfmpegEncoderSink()
{
    close();
}

QString FfmpegEncoderSink::encoderName() const
{
    std::lock_guard lock(m_nameMutex);
    return m_encoderName;
}

bool FfmpegEncoderSink::needsGlobalHeader(const EncoderSettings &s) const
{
    bool global = false;
    if (s.fileEnabled && !s.filePath.isEmpty()) {
        const AVOutputFormat *format =
            av_guess_format(nullptr, s.filePath.toUtf8().constData(), nullptr);
        global = global || (format && (format->flags & AVFMT_GLOBALHEADER));
    }
    for (const StreamTarget &target : s.streamTargets) {
        const QByteArray name =
            selvane::streamContainerName(target.url, target.formatName).toLatin1();
        const AVOutputFormat *format = av_guess_format(name.constData(), nullptr, nullptr);
        global = global || (format && (format->flags & AVFMT_GLOBALHEADER));
    }
    return global;
}

bool FfmpegEncoderSink::probe(const EncoderSettings &settings, int width, int height)
{
    if (width < 1 || height < 1)
        return true;
    width &= ~1;
    height &= ~1;
    EncoderSettings s = settings;
    if (encoder::isEightK(width, height) && s.encoderMode != EncoderSettings::Hardware) {
        qWarning("FfmpegEncoderSink: real-time 8K requires explicit hardware encoding");
        return false;
    }
    for (const StreamTarget &target : s.streamTargets)
        s.livePublish = s.livePublish || selvane::isFlvTarget(target.url, target.formatName);
    encoder::OpenedEncoder opened;
    if (encoder::openVideoEncoder(s, std::max(width, 2), std::max(height, 2), needsGlobalHeader(s),
                                  &opened))
        return true;
    qWarning().noquote() << "FfmpegEncoderSink: encoder capability probe failed for"
                         << QStringLiteral("%1x%2@%3").arg(width).arg(height).arg(s.fps);
    return false;
}

bool FfmpegEncoderSink::openVideo(int width, int height, bool globalHeader)
{
    encoder::OpenedEncoder opened;
    if (!encoder::openVideoEncoder(m_settings, width, height, globalHeader, &opened))
        return false;
    m_videoCodec = std::move(opened.context);
    {
        std::lock_guard lock(m_nameMutex);
        m_encoderName = opened.name;
    }
    m_encodedSize = QSize(width, height);
    m_videoFrame.reset(av_frame_alloc());
    if (!m_videoFrame)
        return false;
    m_videoFrame->format = m_videoCodec->pix_fmt;
    m_videoFrame->width = width;
    m_videoFrame->height = height;
    if (av_frame_get_buffer(m_videoFrame.get(), 0) < 0)
        return false;
    m_converter.reset();
    // x264 copies a picture into its own frames while it is being sent: the program's picture
    // can be handed over as it is, with no copy of ours.
    m_encoderCopiesInput = opened.name == QLatin1String("libx264");
    m_lastVideoPts = AV_NOPTS_VALUE;
    return true;
}

void FfmpegEncoderSink::openAudio(bool globalHeader)
{
    m_audioCodec.reset();
    const AVCodec *codec = avcodec_find_encoder(AV_CODEC_ID_AAC);
    if (!codec) {
        qWarning("FfmpegEncoderSink: no AAC encoder, video-only mux");
        return;
    }
    ffsupport::CodecContextPtr context(avcodec_alloc_context3(codec));
    if (!context) {
        qWarning("FfmpegEncoderSink: avcodec_alloc_context3(AAC) failed");
        return;
    }
    context->sample_rate = kAacSampleRate;
    av_channel_layout_default(&context->ch_layout, 2);
    context->bit_rate = kAacBitrate;
    context->sample_fmt = ffcompat::preferredSampleFormat(codec, AV_SAMPLE_FMT_FLTP);
    context->time_base = AVRational{1, kAacSampleRate};
    if (globalHeader)
        context->flags |= AV_CODEC_FLAG_GLOBAL_HEADER;
    if (avcodec_open2(context.get(), codec, nullptr) < 0) {
        qWarning("FfmpegEncoderSink: audio avcodec_open2 failed, video-only mux");
        return;
    }
    ffsupport::FramePtr frame(av_frame_alloc());
    if (frame) {
        frame->format = context->sample_fmt;
        frame->nb_samples = context->frame_size > 0 ? context->frame_size : kAacDefaultFrameSize;
        frame->sample_rate = kAacSampleRate;
        av_channel_layout_copy(&frame->ch_layout, &context->ch_layout);
    }
    if (!frame || av_frame_get_buffer(frame.get(), 0) < 0) {
        qWarning("FfmpegEncoderSink: audio frame buffer failed");
        return;
    }
    m_audioCodec = std::move(context);
    m_audioFrame = std::move(frame);
    m_audioPending.clear();
    m_nextAudioPts = AV_NOPTS_VALUE;
    m_audioAligned = false;
    m_pendingStartUs = 0;
    m_inputEndUs = AV_NOPTS_VALUE;
    m_videoStartUs = AV_NOPTS_VALUE;
}

bool FfmpegEncoderSink::cacheStreamParameters()
{
    if (!m_streams)
        m_streams = std::make_shared<EncodedStreams>();
    std::lock_guard lock(m_streams->mutex);
    if (!m_streams->video)
        m_streams->video.reset(avcodec_parameters_alloc());
    if (!m_streams->video ||
        avcodec_parameters_from_context(m_streams->video.get(), m_videoCodec.get()) < 0)
        return false;
    m_streams->videoTimeBase = m_videoCodec->time_base;
    m_streams->frameRate = m_videoCodec->framerate;
    m_streams->audio.reset();
    if (m_audioCodec) {
        m_streams->audio.reset(avcodec_parameters_alloc());
        if (!m_streams->audio ||
            avcodec_parameters_from_context(m_streams->audio.get(), m_audioCodec.get()) < 0)
            return false;
        m_streams->audioTimeBase = m_audioCodec->time_base;
    }
    return true;
}

bool FfmpegEncoderSink::openOutputs()
{
    int opened = 0;
    {
        std::lock_guard lock(m_outputsMutex); // the last run's files go with this one
        m_recorder.reset();
        m_twin.reset();
    }
    if (m_settings.fileEnabled && !m_settings.filePath.trimmed().isEmpty()) {
        // The recording and its twin: two files from the same packets, each on its own.
        for (const auto &[path, slot] : {std::pair{m_settings.filePath, &m_recorder},
                                         std::pair{m_settings.twinFilePath, &m_twin}}) {
            if (path.trimmed().isEmpty())
                continue;
            auto file = std::make_unique<FileRecorder>(path.trimmed(), path, m_streams, m_now);
            file->setTimecode(m_settings.timecode);
            file->setSegmentLimits({m_settings.segmentEnabled, m_settings.segmentMinutes,
                                    m_settings.segmentGiB,
                                    m_settings.segmentEnabled ? m_settings.keepFreeMiB << 20 : 0});
            if (file->open())
                ++opened;
            std::lock_guard lock(m_outputsMutex);
            *slot = std::move(file);
        }
    }
    for (int index = 0; index < m_settings.streamTargets.size(); ++index) {
        const StreamTarget &target = m_settings.streamTargets[index];
        auto publisher = StreamPublisher::forTarget(target, index, m_streams, m_status, m_now);
        if (!publisher) {
            if (m_status)
                m_status(index, "stopped");
            continue;
        }
        if (m_settings.adaptiveBitrate)
            publisher->setSendBufferBytes(int(std::max<qint64>(65536, m_setKbps.load() * 125 / 2)));
        if (publisher->open())
            ++opened;
        publisher->startWorker();
        std::lock_guard lock(m_outputsMutex);
        m_targets.push_back(std::move(publisher));
    }
    return opened > 0;
}

bool FfmpegEncoderSink::open(const EncoderSettings &settings)
{
    const QSize size(std::max(2, m_requestedSize.width() & ~1),
                     std::max(2, m_requestedSize.height() & ~1));
    if (m_open) {
        if (size == m_encodedSize)
            return true;
        if (m_settings.fileEnabled && !m_settings.filePath.isEmpty()) {
            if (!m_sizeWarningGiven) {
                m_sizeWarningGiven = true;
                qWarning().noquote()
                    << "FfmpegEncoderSink: program dimensions changed during recording;keeping the "
                       "file session at"
                    << QStringLiteral("%1x%2")
                           .arg(m_encodedSize.width())
                           .arg(m_encodedSize.height());
            }
            return true;
        }
        return reopenVideoEncoderForNewSize(size.width(), size.height());
    }

    m_settings = settings;
    m_settings.livePublish = false;
    bool flvTarget = false;
    for (const StreamTarget &target : m_settings.streamTargets)
        flvTarget = flvTarget || selvane::isFlvTarget(target.url, target.formatName);
    m_settings.livePublish = flvTarget;
    if (encoder::familyFor(size.width(), size.height()) == encoder::Family::Hevc && flvTarget) {
        qWarning("FfmpegEncoderSink: HEVC output is not supported by RTMP/RTMPS FLV targets");
        return false;
    }
    const bool globalHeader = needsGlobalHeader(m_settings);
    if (!openVideo(size.width(), size.height(), globalHeader)) {
        qWarning().noquote()
            << "FfmpegEncoderSink: no usable encoder for"
            << QStringLiteral("%1x%2@%3").arg(size.width()).arg(size.height()).arg(m_settings.fps);
        m_videoCodec.reset();
        return false;
    }
    openAudio(globalHeader);
    m_packet.reset(av_packet_alloc());
    if (!m_packet || !cacheStreamParameters())
        return false;
    m_sizeWarningGiven = false;
    m_setKbps.store(m_videoCodec->bit_rate / 1000);
    m_currentKbps.store(m_videoCodec->bit_rate / 1000);
    m_bitrateSteps.store(0);
    m_adaptive.reset(m_videoCodec->bit_rate / 1000, m_settings.adaptiveFloorPercent);
    if (!openOutputs()) {
        closeOutputs();
        return false;
    }
    m_open = true;
    return true;
}

bool FfmpegEncoderSink::reopenVideoEncoderForNewSize(int width, int height)
{
    m_videoCodec.reset();
    if (!openVideo(width, height, needsGlobalHeader(m_settings))) {
        qWarning("FfmpegEncoderSink: reopenVideoEncoderForNewSize: no usable video encoder");
        return false;
    }
    if (!m_videoFrame || !m_videoFrame->data[0]) {
        qWarning("FfmpegEncoderSink: reopenVideoEncoderForNewSize: YUV buffer alloc failed");
        return false;
    }
    if (!m_streams) {
        qWarning("FfmpegEncoderSink: failed to refresh cached video codec parameters");
        return false;
    }
    std::lock_guard lock(m_streams->mutex);
    if (avcodec_parameters_from_context(m_streams->video.get(), m_videoCodec.get()) < 0) {
        qWarning("FfmpegEncoderSink: avcodec_parameters_from_context failed after video reopen");
        return false;
    }
    m_streams->videoTimeBase = m_videoCodec->time_base;
    m_streams->frameRate = m_videoCodec->framerate;
    return true;
}

namespace {

// An AVFrame over a picture's own planes, holding the picture until the frame's last reference
// goes. Null when it cannot be made (the caller copies instead).
ffsupport::FramePtr borrowPicture(FrameTokenPtr picture, const AVFrame &like)
{
    ffsupport::FramePtr out(av_frame_alloc());
    if (!out || av_frame_copy_props(out.get(), &like) < 0)
        return {};
    const FrameToken::AvPlanes planes = std::as_const(*picture).avPlanes();
    auto *held = new FrameTokenPtr(std::move(picture));
    AVBufferRef *buffer = av_buffer_create(
        const_cast<std::uint8_t *>(planes.data[0]), 1,
        [](void *opaque, std::uint8_t *) { delete static_cast<FrameTokenPtr *>(opaque); }, held,
        AV_BUFFER_FLAG_READONLY);
    if (!buffer) {
        delete held;
        return {};
    }
    out->buf[0] = buffer;
    for (int i = 0; i < 4; ++i) {
        out->data[i] = const_cast<std::uint8_t *>(planes.data[i]);
        out->linesize[i] = planes.linesize[i];
    }
    out->format = like.format;
    out->width = like.width;
    out->height = like.height;
    return out;
}

} // namespace

int FfmpegEncoderSink::pushVideoFrame(FrameTokenPtr frame, qint64 ptsUs)
{
    if (!m_open || !frame || frame->width < 1 || frame->height < 1 || !frame->hasPicture())
        return 1;
    // The program clock in encoder ticks. A picture that arrives a little early for the next
    // tick (event-loop jitter) takes it; a second picture in an already used tick is skipped.
    const AVRational base = m_videoCodec->time_base;
    const double exact = double(ptsUs) * base.den / (1000000.0 * base.num);
    int64_t pts = std::llround(exact);
    if (m_lastVideoPts != AV_NOPTS_VALUE && pts <= m_lastVideoPts) {
        if (exact <= double(m_lastVideoPts) + 0.3)
            return 1;
        pts = m_lastVideoPts + 1;
    }
    if (!m_converter.prepare(*frame, *m_videoFrame, m_settings.qualityPreset))
        return AVERROR(ENOMEM);
    AVFrame *input = m_videoFrame.get();
    ffsupport::FramePtr borrowed;
    if (m_converter.passesThrough() && m_encoderCopiesInput)
        borrowed = borrowPicture(std::move(frame), *m_videoFrame);
    if (borrowed) {
        input = borrowed.get();
    } else {
        if (av_frame_make_writable(m_videoFrame.get()) < 0)
            return AVERROR(ENOMEM);
        m_converter.convert(*frame, m_videoFrame.get());
        frame.reset(); // the pool gets the picture back as soon as it is converted
    }
    input->pts = pts;
    m_lastVideoPts = pts;
    const int err = encodeAndDistribute(m_videoCodec.get(), input, true);
    borrowed.reset(); // the encoder has copied it: the picture goes back to its pool
    adaptBitrate();
    if (!m_audioAligned && m_audioCodec) {
        if (m_videoStartUs == AV_NOPTS_VALUE)
            m_videoStartUs = av_rescale_q(pts, base, AVRational{1, 1000000});
        // With no sound yet, the first block that comes is aligned instead.
        if (!m_audioPending.empty())
            alignAudioTo(m_videoStartUs);
    }
    return err;
}

void FfmpegEncoderSink::pushAudio(const std::int16_t *samples, int frames, qint64 ptsUs)
{
    if (!m_open || !m_audioCodec || frames <= 0)
        return;
    if (m_audioPending.empty() && !m_audioAligned)
        m_pendingStartUs = ptsUs;
    if (m_inputEndUs != AV_NOPTS_VALUE && ptsUs - m_inputEndUs > kAudioGapUs &&
        (m_audioAligned || !m_audioPending.empty())) {
        // Sound that never came (the mixer stalled, the queue dropped a block) is silence here,
        // so that the sound after it stays with its picture.
        const qint64 gapFrames =
            std::min<qint64>(ptsUs - m_inputEndUs, kMaxAudioGapUs) * kAacSampleRate / 1000000;
        m_audioPending.insert(m_audioPending.end(), std::size_t(gapFrames) * 2, 0);
    }
    m_inputEndUs = ptsUs + qint64(frames) * 1000000 / kAacSampleRate;
    m_audioPending.insert(m_audioPending.end(), samples, samples + std::size_t(frames) * 2);
    if (!m_audioAligned && m_videoStartUs != AV_NOPTS_VALUE) {
        alignAudioTo(m_videoStartUs);
        return;
    }
    if (!m_audioAligned) {
        // Until the first picture is encoded, keep only the latest second of sound.
        const std::size_t keep = std::size_t(kAacSampleRate) * 2;
        if (m_audioPending.size() > keep) {
            const std::size_t drop = m_audioPending.size() - keep;
            m_audioPending.erase(m_audioPending.begin(),
                                 m_audioPending.begin() + std::ptrdiff_t(drop));
            m_pendingStartUs += qint64(drop / 2) * 1000000 / kAacSampleRate;
        }
        return;
    }
    encodeAudioFrames();
}

void FfmpegEncoderSink::alignAudioTo(qint64 videoStartUs)
{
    // The sound starts exactly with the first picture: containers that start every track at
    // zero would otherwise shift one against the other by the difference.
    const qint64 offsetFrames = (videoStartUs - m_pendingStartUs) * kAacSampleRate / 1000000;
    if (offsetFrames > 0) {
        const std::size_t drop = std::min(m_audioPending.size(), std::size_t(offsetFrames) * 2);
        m_audioPending.erase(m_audioPending.begin(), m_audioPending.begin() + std::ptrdiff_t(drop));
    } else if (offsetFrames < 0 && !m_audioPending.empty()) {
        m_audioPending.insert(m_audioPending.begin(), std::size_t(-offsetFrames) * 2, 0);
    }
    m_nextAudioPts = av_rescale(videoStartUs, kAacSampleRate, 1000000);
    m_audioAligned = true;
    encodeAudioFrames();
}

void FfmpegEncoderSink::encodeAudioFrames()
{
    AVFrame *frame = m_audioFrame.get();
    const std::size_t perFrame = std::size_t(frame->nb_samples) * 2;
    std::size_t consumed = 0;
    while (m_audioPending.size() - consumed >= perFrame) {
        if (m_audioCodec->sample_fmt != AV_SAMPLE_FMT_FLTP) {
            qWarning("FfmpegEncoderSink: unexpected AAC input sample format");
            m_audioPending.clear();
            return;
        }
        if (av_frame_make_writable(frame) < 0)
            break;
        auto *left = reinterpret_cast<float *>(frame->data[0]);
        auto *right = reinterpret_cast<float *>(frame->data[1]);
        const std::int16_t *in = m_audioPending.data() + consumed;
        for (int i = 0; i < frame->nb_samples; ++i) {
            left[i] = in[2 * i] / 32768.0f;
            right[i] = in[2 * i + 1] / 32768.0f;
        }
        consumed += perFrame;
        frame->pts = m_nextAudioPts;
        m_nextAudioPts += frame->nb_samples;
        encodeAndDistribute(m_audioCodec.get(), frame, false);
    }
    m_audioPending.erase(m_audioPending.begin(), m_audioPending.begin() + std::ptrdiff_t(consumed));
}

int FfmpegEncoderSink::encodeAndDistribute(AVCodecContext *codec, AVFrame *frame, bool video)
{
    int err = avcodec_send_frame(codec, frame);
    if (err == AVERROR(EAGAIN)) {
        // The encoder takes no input until its finished packets are taken out.
        distribute(codec, video);
        err = avcodec_send_frame(codec, frame);
    }
    if (!frame && err == AVERROR_EOF)
        err = 0; // flushed before: nothing is left inside
    if (err < 0) {
        noteEncoderError("avcodec_send_frame", video, err);
        return err;
    }
    distribute(codec, video);
    return 0;
}

void FfmpegEncoderSink::distribute(AVCodecContext *codec, bool video)
{
    for (;;) {
        const int err = avcodec_receive_packet(codec, m_packet.get());
        if (err == AVERROR(EAGAIN) || err == AVERROR_EOF)
            return;
        if (err < 0) {
            noteEncoderError("avcodec_receive_packet", video, err);
            return;
        }
        if (video && m_packet->duration <= 0) {
            // One picture lasts one frame period of the program rate.
            const AVRational base = codec->time_base;
            m_packet->duration = std::max<int64_t>(
                1, std::llround(double(base.den) / (base.num * std::max(1.0, m_settings.fps))));
        }
        m_bytesEncoded.fetch_add(m_packet->size);
        if (video)
            m_framesEncoded.fetch_add(1);
        // The recording is written here; each stream target only queues a copy.
        if (m_recorder)
            m_recorder->submit(m_packet.get(), video);
        if (m_twin)
            m_twin->submit(m_packet.get(), video);
        for (auto &target : m_targets)
            target->submit(m_packet.get(), video);
        av_packet_unref(m_packet.get());
    }
}

void FfmpegEncoderSink::noteEncoderError(const char *call, bool video, int err)
{
    // An encoder that refuses every frame would otherwise log at the frame rate.
    const qint64 count = m_encoderErrors.fetch_add(1) + 1;
    if (selvane::shouldLog(count, 5, 100))
        qWarning().noquote() << "FfmpegEncoderSink:" << (video ? "video" : "audio")
                             << "encoder error; count" << count << ffsupport::errorText(call, err);
}

bool FfmpegEncoderSink::reconnectTargetNow(int index)
{
    std::lock_guard lock(m_outputsMutex);
    for (const auto &target : m_targets)
        if (target->targetIndex() == index)
            return target->reconnectNow();
    return false;
}

std::vector<FfmpegEncoderSink::OutputStats> FfmpegEncoderSink::outputStats() const
{
    std::lock_guard lock(m_outputsMutex);
    std::vector<OutputStats> stats;
    for (const auto &[recorder, index] : {std::pair{m_recorder.get(), OutputStats::kRecording},
                                          std::pair{m_twin.get(), OutputStats::kTwin}}) {
        if (!recorder)
            continue;
        OutputStats file;
        file.targetIndex = index;
        file.path = recorder->currentPath();
        file.packetsWritten = recorder->packetsWritten();
        file.bytesWritten = recorder->bytesWritten();
        file.packetsDropped = recorder->packetsDropped();
        file.failed = recorder->failed();
        file.failureReason = recorder->failureReason();
        file.failures = recorder->failures();
        file.resumes = recorder->resumes();
        stats.push_back(file);
    }
    for (const auto &target : m_targets) {
        OutputStats out;
        out.targetIndex = target->targetIndex();
        out.path = selvane::maskStreamUrl(target->currentUrl());
        out.packetsWritten = target->packetsWritten();
        out.bytesWritten = target->bytesWritten();
        out.queueResets = target->queueResets();
        out.reconnects = target->reconnects();
        out.packetsDropped = target->packetsDropped();
        stats.push_back(out);
    }
    return stats;
}

void FfmpegEncoderSink::adaptBitrate()
{
    if (!m_settings.adaptiveBitrate || m_targets.empty())
        return;
    std::vector<selvane::AdaptiveBitrate::Reading> readings;
    readings.reserve(m_targets.size());
    for (const auto &target : m_targets)
        readings.push_back(
            {target->queuedPackets(), target->queueResets(), target->bytesWritten()});
    const qint64 nowMs = std::chrono::duration_cast<std::chrono::milliseconds>(
                             selvane::steadyNow(m_now).time_since_epoch())
                             .count();
    const qint64 before = m_adaptive.currentKbps();
    const qint64 kbps = m_adaptive.update(nowMs, readings);
    if (kbps <= 0)
        return;
    // The encoder takes the new rate with its next picture (x264 reconfigures in place).
    const qint64 bitrate = kbps * 1000;
    m_videoCodec->bit_rate = bitrate;
    m_videoCodec->rc_max_rate = bitrate;
    if (m_videoCodec->rc_min_rate > 0)
        m_videoCodec->rc_min_rate = bitrate;
    m_videoCodec->rc_buffer_size =
        int(std::min<qint64>(m_settings.livePublish ? bitrate : 2 * bitrate, INT_MAX));
    m_currentKbps.store(kbps);
    m_bitrateSteps.store(m_adaptive.steps());
    if (kbps < before)
        qInfo().noquote() << "Adaptive bitrate:" << m_settings.encodeName << before << "->" << kbps
                          << "kbit/s (a target is congested; it sent" << m_adaptive.measuredKbps()
                          << "kbit/s)";
    else
        qInfo().noquote() << "Adaptive bitrate:" << m_settings.encodeName << before << "->" << kbps
                          << "kbit/s (the targets keep up)";
    if (!m_encoderName.startsWith(QLatin1String("libx26")))
        qWarning().noquote() << "Adaptive bitrate:" << m_settings.encodeName << m_encoderName
                             << "may keep its bitrate until the outputs restart";
}

void FfmpegEncoderSink::closeOutputs()
{
    // Every network worker is asked to stop first, so that their waits overlap.
    for (auto &target : m_targets)
        target->requestStop();
    if (m_recorder)
        m_recorder->close();
    if (m_twin)
        m_twin->close();
    for (auto &target : m_targets)
        target->close();
    // The closed recorder stays until the next open: its failures are still asked for.
    std::lock_guard lock(m_outputsMutex);
    m_targets.clear();
}

void FfmpegEncoderSink::finishAudioWithPicture()
{
    if (!m_audioCodec || !m_audioAligned || m_lastVideoPts == AV_NOPTS_VALUE)
        return;
    // The program's sound for the last moments is still being mixed when the outputs stop:
    // it ends as silence with the last picture, and the last part-filled frame is kept.
    const qint64 videoEnd =
        av_rescale_q(m_lastVideoPts + 1, m_videoCodec->time_base, AVRational{1, kAacSampleRate});
    const qint64 audioEnd = m_nextAudioPts + qint64(m_audioPending.size() / 2);
    const qint64 missing = std::min<qint64>(videoEnd - audioEnd, kAacSampleRate);
    if (missing > 0)
        m_audioPending.insert(m_audioPending.end(), std::size_t(missing) * 2, 0);
    const std::size_t perFrame = std::size_t(m_audioFrame->nb_samples) * 2;
    if (const std::size_t part = m_audioPending.size() % perFrame; part > 0)
        m_audioPending.insert(m_audioPending.end(), perFrame - part, 0);
    encodeAudioFrames();
}

void FfmpegEncoderSink::close()
{
    if (m_open) {
        finishAudioWithPicture();
        encodeAndDistribute(m_videoCodec.get(), nullptr, true);
        if (m_audioCodec)
            encodeAndDistribute(m_audioCodec.get(), nullptr, false);
    }
    closeOutputs();
    m_open = false;
    m_videoCodec.reset();
    m_audioCodec.reset();
    m_converter.reset();
}
