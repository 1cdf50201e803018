#include "output/FfmpegEncoderSink.h"

#include "media/FfmpegCompat.h"
#include "media/FrameSizes.h"
#include "net/ProxySettings.h"
#include "output/StreamUrl.h"
#include "output/VideoEncoderChoice.h"

#include <QDebug>
#include <QUrl>

#include <algorithm>
#include <cmath>

extern "C" {
#include <libavutil/channel_layout.h>
#include <libavutil/imgutils.h>
#include <libavutil/opt.h>
#include <libavutil/pixdesc.h>
}

using selvane::EncodedStreams;
using selvane::MuxOutput;
namespace encoder = selvane::encoder;

namespace {

constexpr int kAacSampleRate = 48000;
constexpr int kAacBitrate = 160000;
constexpr int kAacDefaultFrameSize = 1024;

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
    if (pixels >= selvane::frames::kPixels8K)
        return 6;
    if (pixels >= selvane::frames::kPixels4K)
        return 4;
    return 2;
}

int even(double value) { return std::max(2, int(value) & ~1); }

} // namespace

FfmpegEncoderSink::FfmpegEncoderSink() = default;

FfmpegEncoderSink::~FfmpegEncoderSink() { close(); }

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
        const QByteArray name = selvane::streamContainerName(target.url, target.formatName).toLatin1();
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
    m_sws.reset();
    m_swsSourceWidth = 0;
    m_swsSourceHeight = 0;
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
}

bool FfmpegEncoderSink::cacheStreamParameters()
{
    if (!m_streams)
        m_streams = std::make_shared<EncodedStreams>();
    std::lock_guard lock(m_streams->mutex);
    if (!m_streams->video)
        m_streams->video = avcodec_parameters_alloc();
    if (!m_streams->video ||
        avcodec_parameters_from_context(m_streams->video, m_videoCodec.get()) < 0)
        return false;
    m_streams->videoTimeBase = m_videoCodec->time_base;
    avcodec_parameters_free(&m_streams->audio);
    if (m_audioCodec) {
        m_streams->audio = avcodec_parameters_alloc();
        if (!m_streams->audio ||
            avcodec_parameters_from_context(m_streams->audio, m_audioCodec.get()) < 0)
            return false;
        m_streams->audioTimeBase = m_audioCodec->time_base;
    }
    return true;
}

bool FfmpegEncoderSink::openOutputs()
{
    int opened = 0;
    if (m_settings.fileEnabled && !m_settings.filePath.trimmed().isEmpty()) {
        auto file = std::make_unique<MuxOutput>(MuxOutput::Kind::File, m_settings.filePath.trimmed(),
                                                m_settings.filePath, QString(), -1, m_streams,
                                                m_status, m_now);
        file->setSegmentLimits({m_settings.segmentEnabled, m_settings.segmentMinutes,
                                m_settings.segmentGiB});
        if (file->open())
            ++opened;
        std::lock_guard lock(m_outputsMutex);
        m_outputs.push_back(std::move(file));
    }
    for (int index = 0; index < m_settings.streamTargets.size(); ++index) {
        const StreamTarget &target = m_settings.streamTargets[index];
        const QString original = target.url;
        QString url = target.url.trimmed();
        const QUrl parsed(url, QUrl::StrictMode);
        if (url.isEmpty() || !parsed.isValid() || parsed.scheme().isEmpty() ||
            (parsed.host().isEmpty() && !url.toLower().startsWith("file:"))) {
            qWarning().noquote() << "FfmpegEncoderSink: invalid network output URL"
                                 << selvane::maskStreamUrl(url);
            if (m_status)
                m_status(index, "stopped");
            continue;
        }
        bool rewritten = false;
        const QString reachable = selvane::rewriteYouTubeRtmp(url, &rewritten);
        if (rewritten) {
            qInfo().noquote() << "FfmpegEncoderSink: YouTube RTMP -> RTMPS for reachability:"
                              << selvane::maskStreamUrl(url) << "->"
                              << selvane::maskStreamUrl(reachable);
            url = reachable;
        }
        auto output = std::make_unique<MuxOutput>(MuxOutput::Kind::Network, url, original,
                                                  target.formatName, index, m_streams, m_status,
                                                  m_now);
        if (selvane::isRtmpFamilyUrl(url) && !selvane::proxy::socksEndpoint().isEmpty()) {
            const QUrl real(url);
            const QString relay =
                selvane::proxy::startPublishRelay(real.host(), real.port(url.startsWith("rtmps", Qt::CaseInsensitive) ? 443 : 1935));
            if (!relay.isEmpty()) {
                qInfo("FfmpegEncoderSink: RTMP publish using local SOCKS relay");
                QUrl local(url);
                local.setScheme("rtmp");
                const qsizetype colon = relay.lastIndexOf(':');
                local.setHost(relay.left(colon));
                local.setPort(relay.mid(colon + 1).toInt());
                const QString path = real.path();
                const qsizetype slash = path.lastIndexOf('/');
                output = std::make_unique<MuxOutput>(MuxOutput::Kind::Network, local.toString(),
                                                     original, target.formatName, index, m_streams,
                                                     m_status, m_now);
                output->setRelayNames(url.left(url.lastIndexOf('/')), path.mid(1, slash - 1),
                                      path.mid(slash + 1));
            }
        }
        if (output->open())
            ++opened;
        output->startWorker();
        std::lock_guard lock(m_outputsMutex);
        m_outputs.push_back(std::move(output));
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
                    << QStringLiteral("%1x%2").arg(m_encodedSize.width()).arg(m_encodedSize.height());
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
        qWarning().noquote() << "FfmpegEncoderSink: no usable encoder for"
                             << QStringLiteral("%1x%2@%3").arg(size.width()).arg(size.height()).arg(m_settings.fps);
        m_videoCodec.reset();
        return false;
    }
    openAudio(globalHeader);
    m_packet.reset(av_packet_alloc());
    if (!m_packet || !cacheStreamParameters())
        return false;
    m_sizeWarningGiven = false;
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
    if (avcodec_parameters_from_context(m_streams->video, m_videoCodec.get()) < 0) {
        qWarning("FfmpegEncoderSink: avcodec_parameters_from_context failed after video reopen");
        return false;
    }
    m_streams->videoTimeBase = m_videoCodec->time_base;
    return true;
}

bool FfmpegEncoderSink::ensureConverter(const FrameToken &frame)
{
    if (m_sws && frame.width == m_swsSourceWidth && frame.height == m_swsSourceHeight)
        return true;
    m_sws.reset();
    const int outW = m_encodedSize.width();
    const int outH = m_encodedSize.height();
    int fitW = outW;
    int fitH = outH;
    if (frame.width != outW || frame.height != outH) {
        // A picture of another size is fitted into the encoded size, keeping its shape.
        const double scale = std::min(double(outW) / frame.width, double(outH) / frame.height);
        fitW = std::min(outW, even(frame.width * scale + 0.5));
        fitH = std::min(outH, even(frame.height * scale + 0.5));
    }
    SwsContext *context = sws_alloc_context();
    if (!context)
        return false;
    av_opt_set_int(context, "srcw", frame.width, 0);
    av_opt_set_int(context, "srch", frame.height, 0);
    av_opt_set_int(context, "src_format", AV_PIX_FMT_RGBA, 0);
    av_opt_set_int(context, "dstw", fitW, 0);
    av_opt_set_int(context, "dsth", fitH, 0);
    av_opt_set_int(context, "dst_format", m_videoCodec->pix_fmt, 0);
    av_opt_set_int(context, "sws_flags", swsFlagsFor(m_settings.qualityPreset), 0);
    const int threadsErr = av_opt_set_int(context, "threads",
                                          swsThreadsFor(qint64(outW) * outH), 0);
    if (threadsErr < 0)
        qWarning().noquote() << "FfmpegEncoderSink: swscale threads option unavailable;"
                             << "color conversion will use the FFmpeg default:"
                             << ffsupport::errorText("av_opt_set_int", threadsErr);
    if (sws_init_context(context, nullptr, nullptr) < 0) {
        sws_freeContext(context);
        return false;
    }
    m_sws.reset(context);
    m_fitSize = QSize(fitW, fitH);
    m_swsSourceWidth = frame.width;
    m_swsSourceHeight = frame.height;
    return true;
}

void FfmpegEncoderSink::convertInto(const FrameToken &frame)
{
    AVFrame *out = m_videoFrame.get();
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
            planes[comp.plane] = out->data[comp.plane] +
                                 (y >> (chroma ? desc->log2_chroma_h : 0)) * out->linesize[comp.plane] +
                                 (x >> (chroma ? desc->log2_chroma_w : 0)) * comp.step;
        }
    }
    const uint8_t *source[4] = {frame.bits(), nullptr, nullptr, nullptr};
    const int sourceStride[4] = {int(frame.stride), 0, 0, 0};
    sws_scale(m_sws.get(), source, sourceStride, 0, frame.height, planes, out->linesize);
}

int FfmpegEncoderSink::pushVideoFrame(FrameTokenPtr frame, qint64 ptsUs)
{
    if (!m_open || !frame || frame->width < 1 || frame->height < 1 || frame->pixels.isEmpty())
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
    if (!ensureConverter(*frame) || av_frame_make_writable(m_videoFrame.get()) < 0)
        return AVERROR(ENOMEM);
    convertInto(*frame);
    frame.reset(); // the pool gets the picture back as soon as it is converted
    m_videoFrame->pts = pts;
    m_lastVideoPts = pts;
    encodeAndDistribute(m_videoCodec.get(), m_videoFrame.get(), true);
    if (!m_audioAligned && m_audioCodec)
        alignAudioTo(av_rescale_q(pts, base, AVRational{1, 1000000}));
    return 0;
}

void FfmpegEncoderSink::pushAudio(const std::int16_t *samples, int frames, qint64 ptsUs)
{
    if (!m_open || !m_audioCodec || frames <= 0)
        return;
    if (m_audioPending.empty() && !m_audioAligned)
        m_pendingStartUs = ptsUs;
    m_audioPending.insert(m_audioPending.end(), samples, samples + std::size_t(frames) * 2);
    if (!m_audioAligned) {
        // Until the first picture is encoded, keep only the latest second of sound.
        const std::size_t keep = std::size_t(kAacSampleRate) * 2;
        if (m_audioPending.size() > keep) {
            const std::size_t drop = m_audioPending.size() - keep;
            m_audioPending.erase(m_audioPending.begin(), m_audioPending.begin() + std::ptrdiff_t(drop));
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

void FfmpegEncoderSink::encodeAndDistribute(AVCodecContext *codec, AVFrame *frame, bool video)
{
    if (avcodec_send_frame(codec, frame) < 0)
        return;
    while (avcodec_receive_packet(codec, m_packet.get()) >= 0) {
        if (video && m_packet->duration <= 0) {
            // One picture lasts one frame period of the program rate.
            const AVRational base = codec->time_base;
            m_packet->duration = std::max<int64_t>(
                1, std::llround(double(base.den) / (base.num * std::max(1.0, m_settings.fps))));
        }
        m_bytesEncoded.fetch_add(m_packet->size);
        if (video)
            m_framesEncoded.fetch_add(1);
        for (auto &output : m_outputs)
            output->submit(m_packet.get(), video);
        av_packet_unref(m_packet.get());
    }
}

std::vector<FfmpegEncoderSink::OutputStats> FfmpegEncoderSink::outputStats() const
{
    std::lock_guard lock(m_outputsMutex);
    std::vector<OutputStats> stats;
    for (const auto &output : m_outputs)
        stats.push_back({output->targetIndex(),
                         output->isNetwork() ? selvane::maskStreamUrl(output->currentPath())
                                             : output->currentPath(),
                         output->packetsWritten(), output->bytesWritten(), output->queueResets(),
                         output->reconnects(), output->fileFailingForMs() > 0});
    return stats;
}

qint64 FfmpegEncoderSink::fileFailingForMs() const
{
    qint64 longest = 0;
    for (const auto &output : m_outputs)
        longest = std::max(longest, output->fileFailingForMs());
    return longest;
}

void FfmpegEncoderSink::closeOutputs()
{
    // Every network worker is asked to stop first, so that their waits overlap.
    for (auto &output : m_outputs)
        output->requestStop();
    for (auto &output : m_outputs)
        output->close();
    std::lock_guard lock(m_outputsMutex);
    m_outputs.clear();
}

void FfmpegEncoderSink::close()
{
    if (m_open) {
        encodeAndDistribute(m_videoCodec.get(), nullptr, true);
        if (m_audioCodec)
            encodeAndDistribute(m_audioCodec.get(), nullptr, false);
    }
    closeOutputs();
    m_open = false;
    m_videoCodec.reset();
    m_audioCodec.reset();
    m_sws.reset();
}
