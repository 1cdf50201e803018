#include "output/MuxOutput.h"

#include "net/ProxySettings.h"
#include "output/ReconnectPolicy.h"
#include "output/StreamUrl.h"

#include <QDebug>
#include <QDir>
#include <QFileInfo>
#include <QUrl>

extern "C" {
#include <libavutil/opt.h>
}

namespace selvane {

using namespace std::chrono_literals;
namespace rc = reconnect;

namespace {

constexpr auto kTrailerGrace = std::chrono::seconds(2);
constexpr std::size_t kMaxEarlyAudioPackets = 256; // about five seconds of AAC

int interruptOnStop(void *opaque) { return static_cast<MuxOutput *>(opaque)->shouldInterrupt() ? 1 : 0; }

bool muxerKnowsMovFlag(const AVOutputFormat *format, const char *flag)
{
    if (!format || !format->priv_class)
        return false;
    const AVClass *priv = format->priv_class;
    return av_opt_find(&priv, flag, "movflags", 0, AV_OPT_SEARCH_FAKE_OBJ) != nullptr;
}

bool isMp4Family(const AVOutputFormat *format)
{
    const QString name = QString::fromLatin1(format->name);
    return name == "mp4" || name == "mov" || name == "ismv" || name == "ipod" || name == "psp";
}

} // namespace

MuxOutput::MuxOutput(Kind kind, QString url, QString originalUrl, QString formatName,
                     int targetIndex, std::shared_ptr<EncodedStreams> streams,
                     StatusCallback status, SteadyNow now)
    : m_kind(kind), m_baseUrl(std::move(url)), m_originalUrl(std::move(originalUrl)),
      m_formatName(std::move(formatName)), m_targetIndex(targetIndex),
      m_streams(std::move(streams)), m_status(std::move(status)), m_now(std::move(now))
{
}

MuxOutput::~MuxOutput() { close(); }

bool MuxOutput::shouldInterrupt() const
{
    if (!m_stop.load())
        return false;
    const qint64 grace = m_graceUntilNs.load();
    return grace == 0 || std::chrono::steady_clock::now().time_since_epoch().count() > grace;
}

std::chrono::steady_clock::time_point MuxOutput::now() const
{
    return m_now ? m_now() : std::chrono::steady_clock::now();
}

void MuxOutput::report(const char *word)
{
    if (m_kind == Kind::Network && m_status)
        m_status(m_targetIndex, QString::fromLatin1(word));
}

void MuxOutput::setRelayNames(QString tcUrl, QString app, QString playPath)
{
    m_relayTcUrl = std::move(tcUrl);
    m_relayApp = std::move(app);
    m_relayPlayPath = std::move(playPath);
}

QString MuxOutput::currentPath() const
{
    std::lock_guard lock(m_mutex);
    return m_openedUrl;
}

QString MuxOutput::segmentPath()
{
    const QFileInfo chosen(m_baseUrl);
    const QString suffix = chosen.suffix().isEmpty() ? QString() : "." + chosen.suffix();
    const QString name = QStringLiteral("%1_%2_%3%4")
                             .arg(chosen.completeBaseName(),
                                  QDateTime::currentDateTime().toString("yyyyMMdd_HHmmss"))
                             .arg(m_segmentNumber, 3, 10, QLatin1Char('0'))
                             .arg(suffix);
    return chosen.dir().filePath(name);
}

bool MuxOutput::open()
{
    m_stop.store(false);
    if (m_kind == Kind::File) {
        QString path = m_baseUrl;
        if (m_segments.enabled) {
            m_segmentNumber = 1;
            path = segmentPath();
        }
        if (!openContext(path, false))
            return false;
        m_segmentOpenedAt = now();
        if (m_segments.enabled)
            qInfo().noquote() << "FfmpegEncoderSink: recording segment opened" << path;
        return true;
    }
    report("connecting");
    if (openContext(m_baseUrl, false))
        return true;
    // The worker keeps trying for as long as the output runs.
    std::lock_guard lock(m_mutex);
    m_reconnecting = true;
    m_attempt = 1;
    m_nextRetry = now() + std::chrono::milliseconds(rc::afterFailedReopenMs(m_attempt));
    report("reconnecting");
    return false;
}

bool MuxOutput::openContext(const QString &url, bool reconnectTimeout)
{
    const bool network = m_kind == Kind::Network;
    const QString masked = maskStreamUrl(url);
    const QByteArray container = network ? streamContainerName(url, m_formatName).toLatin1() : QByteArray();
    if (network && isRtmpFamilyUrl(url) &&
        QString::fromLatin1(avformat_configuration()).contains("--enable-librtmp")) {
        qWarning("FfmpegEncoderSink: RTMP output requires an FFmpeg build without --enable-librtmp; "
                 "refusing the non-interruptible external librtmp path");
        return false;
    }
    AVFormatContext *context = nullptr;
    const QByteArray urlBytes = url.toUtf8();
    if (avformat_alloc_output_context2(&context, nullptr,
                                       container.isEmpty() ? nullptr : container.constData(),
                                       urlBytes.constData()) < 0 ||
        !context) {
        qWarning().noquote() << "FfmpegEncoderSink: avformat_alloc_output_context2 failed"
                             << "fmt=" << (container.isEmpty() ? "(null)" : container.constData())
                             << "url=" << masked;
        return false;
    }
    context->interrupt_callback = {interruptOnStop, this};
    if (network) {
        // A missing sound stream must not hold the pictures back for long.
        context->max_interleave_delta = 500000;
    }
    {
        std::lock_guard lock(m_streams->mutex);
        AVStream *video = avformat_new_stream(context, nullptr);
        if (!video || avcodec_parameters_copy(video->codecpar, m_streams->video) < 0) {
            qWarning("FfmpegEncoderSink: failed to cache video codec parameters for stream");
            avformat_free_context(context);
            return false;
        }
        video->time_base = m_streams->videoTimeBase;
        m_videoTimeBase = m_streams->videoTimeBase;
        m_audioTimeBase = m_streams->audioTimeBase;
        m_videoIndex = video->index;
        m_audioIndex = -1;
        if (m_streams->audio) {
            AVStream *audio = avformat_new_stream(context, nullptr);
            if (!audio || avcodec_parameters_copy(audio->codecpar, m_streams->audio) < 0) {
                qWarning("FfmpegEncoderSink: failed to cache audio codec parameters for stream");
                avformat_free_context(context);
                return false;
            }
            audio->time_base = m_streams->audioTimeBase;
            m_audioIndex = audio->index;
        }
    }

    ffsupport::Dictionary options;
    if (network) {
        options.set("rw_timeout", reconnectTimeout ? rc::kReconnectTimeoutUs : rc::kFirstConnectTimeoutUs);
        options.set("tcp_nodelay", "1");
        const QString lower = url.toLower();
        if (isRtmpFamilyUrl(url))
            options.set("rtmp_live", "live");
        if (lower.startsWith("rtmps://")) {
            options.set("tls_verify", "1");
            options.set("verifyhost", QUrl(url).host().toUtf8().constData());
        }
        if (lower.startsWith("http://") || lower.startsWith("https://")) {
            const QString httpProxy = proxy::httpProxyUrl();
            if (!httpProxy.isEmpty()) {
                options.set("http_proxy", httpProxy.toUtf8().constData());
                qInfo("FfmpegEncoderSink: http_proxy for HTTP(S) publish");
            }
        }
        if (!m_relayTcUrl.isEmpty()) {
            options.set("rtmp_tcurl", m_relayTcUrl.toUtf8().constData());
            options.set("rtmp_app", m_relayApp.toUtf8().constData());
            options.set("rtmp_playpath", m_relayPlayPath.toUtf8().constData());
        }
        qInfo().noquote() << "FfmpegEncoderSink: opening publish URL" << masked
                          << (m_relayTcUrl.isEmpty() ? "(direct)" : "(local SOCKS relay)");
    }

    if (!(context->oformat->flags & AVFMT_NOFILE)) {
        int err = 0;
        if (network) {
            err = avio_open2(&context->pb, urlBytes.constData(), AVIO_FLAG_WRITE,
                             &context->interrupt_callback, options.address());
        } else {
            ffsupport::Dictionary fileOptions;
            fileOptions.set("write_buffer_size", "4194304");
            err = avio_open2(&context->pb, urlBytes.constData(), AVIO_FLAG_WRITE,
                             &context->interrupt_callback, fileOptions.address());
            if (err < 0)
                err = avio_open2(&context->pb, urlBytes.constData(), AVIO_FLAG_WRITE,
                                 &context->interrupt_callback, nullptr);
        }
        if (err < 0) {
            if (!m_stop.load())
                qWarning().noquote()
                    << "FfmpegEncoderSink: avio_open failed:" << ffsupport::errorText("avio_open2", err)
                    << "url:" << masked
                    << "| check Tools>Settings proxy (socks5://127.0.0.1:10808) or VPN TUN";
            avformat_free_context(context);
            return false;
        }
    }

    ffsupport::Dictionary muxerOptions;
    const QString formatName = QString::fromLatin1(context->oformat->name);
    if (!network && (formatName == "mp4" || formatName == "mov")) {
        // Crash-safe recording: fragments at every keyframe, so a file cut off at any moment
        // plays up to its last fragment.
        muxerOptions.set("movflags", muxerKnowsMovFlag(context->oformat, "hybrid_fragmented")
                                         ? "+hybrid_fragmented+frag_keyframe+empty_moov+default_base_moof"
                                         : "+frag_keyframe+empty_moov+default_base_moof");
    } else if (formatName == "ismv" || (network && isMp4Family(context->oformat))) {
        muxerOptions.set("movflags", "+frag_keyframe+empty_moov+default_base_moof");
    } else if (formatName == "flv") {
        muxerOptions.set("flvflags", "no_duration_filesize");
    }
    const int err = avformat_write_header(context, muxerOptions.address());
    if (err < 0) {
        if (!m_stop.load())
            qWarning().noquote() << "FfmpegEncoderSink: avformat_write_header failed for" << masked
                                 << "original:" << maskStreamUrl(m_originalUrl) << "-"
                                 << ffsupport::errorText("avformat_write_header", err);
        avio_closep(&context->pb);
        avformat_free_context(context);
        return false;
    }
    // The header (for a fragmented MP4, the whole index) reaches the disk at once.
    if (context->pb)
        avio_flush(context->pb);
    m_context = context;
    m_segmentBytes = 0;
    m_earlyAudio.clear();
    {
        std::lock_guard lock(m_mutex);
        m_openedUrl = url;
    }
    m_offsetUs = -1;
    m_everOpened = true;
    if (network) {
        qInfo("FfmpegEncoderSink: publish header OK");
        report("online");
    }
    return true;
}

void MuxOutput::closeContext(bool writeTrailer)
{
    if (!m_context)
        return;
    if (writeTrailer) {
        const int err = av_write_trailer(m_context);
        if (err < 0 && !m_stop.load())
            qWarning().noquote() << "FfmpegEncoderSink: av_write_trailer failed:"
                                 << ffsupport::errorText("av_write_trailer", err);
    }
    if (!(m_context->oformat->flags & AVFMT_NOFILE))
        avio_closep(&m_context->pb);
    avformat_free_context(m_context);
    m_context = nullptr;
}

int MuxOutput::writePacket(AVPacket *packet, bool video)
{
    if (!m_context)
        return 0;
    const int index = video ? m_videoIndex : m_audioIndex;
    if (index < 0)
        return 0;
    const AVRational encoderBase = video ? m_videoTimeBase : m_audioTimeBase;
    if (packet->pts == AV_NOPTS_VALUE && packet->dts == AV_NOPTS_VALUE)
        packet->dts = 0;
    if (packet->dts == AV_NOPTS_VALUE)
        packet->dts = packet->pts;
    if (packet->pts == AV_NOPTS_VALUE)
        packet->pts = packet->dts;
    // Every output starts at a video keyframe near time zero. The encoder may hand out sound
    // before that picture (pictures take longer to encode): such sound waits, and what belongs
    // after the keyframe is written once it is known.
    bool flushEarlyAudio = false;
    if (m_offsetUs < 0) {
        if (!video) {
            if (m_earlyAudio.size() >= kMaxEarlyAudioPackets)
                m_earlyAudio.pop_front();
            m_earlyAudio.emplace_back(av_packet_clone(packet));
            return 0;
        }
        if (!(packet->flags & AV_PKT_FLAG_KEY))
            return 0;
        m_offsetUs = av_rescale_q(packet->pts, encoderBase, AV_TIME_BASE_Q);
        flushEarlyAudio = true;
    }
    const int64_t offset = av_rescale_q(m_offsetUs, AV_TIME_BASE_Q, encoderBase);
    packet->pts -= offset;
    packet->dts -= offset;
    if (!video && (packet->pts < 0 || packet->dts < 0))
        return 0; // sound from before the first picture of this output
    packet->pts = std::max<int64_t>(0, packet->pts);
    packet->dts = std::max<int64_t>(0, packet->dts);
    packet->stream_index = index;
    av_packet_rescale_ts(packet, encoderBase, m_context->streams[index]->time_base);
    const bool keyframe = video && (packet->flags & AV_PKT_FLAG_KEY);
    m_segmentBytes += packet->size;
    const int size = packet->size;
    int err = av_interleaved_write_frame(m_context, packet);
    if (err >= 0)
        m_bytesWritten.fetch_add(size);
    if (flushEarlyAudio) {
        std::deque<ffsupport::PacketPtr> early;
        early.swap(m_earlyAudio);
        for (ffsupport::PacketPtr &audio : early)
            if (audio && err >= 0)
                err = std::min(err, writePacket(audio.get(), false));
    }
    if (err >= 0)
        m_packetsWritten.fetch_add(1);
    // A keyframe closes the previous fragment: pushing it to the disk now means a recording cut
    // off at any moment plays up to its last fragment.
    if (keyframe && m_kind == Kind::File && m_context->pb)
        avio_flush(m_context->pb);
    return err < 0 ? err : (m_context->pb && m_context->pb->error < 0 ? m_context->pb->error : err);
}

void MuxOutput::submit(const AVPacket *source, bool video)
{
    if (m_kind == Kind::File) {
        if (video && (source->flags & AV_PKT_FLAG_KEY))
            maybeRotateSegment();
        ffsupport::PacketPtr packet(av_packet_clone(source));
        if (!packet)
            return;
        const int err = writePacket(packet.get(), video);
        if (err < 0) {
            handleFileWriteFailure(err);
        } else if (m_fileFailureStreak > 0 && m_context && m_context->pb && !m_context->pb->error) {
            m_fileFailureStreak.store(0);
        }
        return;
    }
    AVPacket *copy = av_packet_clone(source);
    if (!copy)
        return;
    bool reset = false;
    qint64 resets = 0;
    {
        std::lock_guard lock(m_mutex);
        if (m_queue.size() >= rc::kQueueResetPackets) {
            // Dropping the whole backlog and restarting at a keyframe keeps the stream current.
            for (auto &[queued, isVideo] : m_queue)
                av_packet_free(&queued);
            m_queue.clear();
            m_waitKeyframe = true;
            m_congested = true;
            resets = m_queueResets.fetch_add(1) + 1;
            reset = true;
        }
        m_queue.emplace_back(copy, video);
    }
    m_wake.notify_one();
    if (reset) {
        if (rc::shouldLog(resets, 5, 50))
            qWarning().noquote() << "FfmpegEncoderSink: network mux queue reset; count" << resets
                                 << "target" << m_targetIndex;
        report("congested");
    }
}

void MuxOutput::handleFileWriteFailure(int err)
{
    if (m_fileFailureStreak.load() == 0)
        m_fileFailingSince.store(now());
    const qint64 streak = m_fileFailureStreak.fetch_add(1) + 1;
    if (rc::shouldLog(streak, 12, 200))
        qWarning().noquote() << "FfmpegEncoderSink: file mux write failed (will retry same file, streak"
                             << streak << ")" << ffsupport::errorText("write", err);
}

qint64 MuxOutput::fileFailingForMs() const
{
    if (m_kind != Kind::File || m_fileFailureStreak.load() == 0)
        return 0;
    return std::chrono::duration_cast<std::chrono::milliseconds>(now() - m_fileFailingSince.load())
        .count();
}

void MuxOutput::maybeRotateSegment()
{
    if (!m_segments.enabled || !m_context)
        return;
    const auto elapsed = now() - m_segmentOpenedAt;
    const bool timeUp = m_segments.minutes > 0 &&
                        elapsed >= std::chrono::milliseconds(qint64(m_segments.minutes * 60000.0));
    // The muxer holds the current fragment back until the next keyframe, so the bytes handed to
    // this file measure its size better than what has reached the disk.
    const qint64 size = std::max<qint64>(m_context->pb ? avio_tell(m_context->pb) : 0, m_segmentBytes);
    const bool sizeUp = m_segments.gib > 0 && size >= qint64(m_segments.gib * double(1LL << 30));
    if (!timeUp && !sizeUp)
        return;
    const int err = av_write_trailer(m_context);
    if (err < 0)
        qWarning().noquote() << "FfmpegEncoderSink: segment trailer failed:"
                             << ffsupport::errorText("av_write_trailer", err);
    closeContext(false);
    ++m_segmentNumber;
    const QString path = segmentPath();
    if (!openContext(path, false)) {
        qWarning("FfmpegEncoderSink: recording segment rotation failed");
        return;
    }
    m_segmentOpenedAt = now();
    qInfo().noquote() << "FfmpegEncoderSink: recording segment opened" << path;
}

void MuxOutput::startWorker()
{
    if (m_kind != Kind::Network || m_worker.joinable())
        return;
    m_worker = std::thread([this] { networkLoop(); });
}

void MuxOutput::networkLoop()
{
    for (;;) {
        std::unique_lock lock(m_mutex);
        if (m_stop.load())
            return;
        if (m_reconnecting) {
            // Packets that arrive while the target is down are not kept: the stream resumes
            // with what is current.
            for (auto &[queued, isVideo] : m_queue)
                av_packet_free(&queued);
            m_queue.clear();
            const auto t = now();
            if (t >= m_nextRetry) {
                lock.unlock();
                reopen();
                continue;
            }
            m_wake.wait_for(lock, std::min<std::chrono::steady_clock::duration>(m_nextRetry - t, 50ms));
            continue;
        }
        if (m_queue.empty()) {
            m_wake.wait_for(lock, 50ms);
            continue;
        }
        auto [packet, video] = m_queue.front();
        m_queue.pop_front();
        if (m_waitKeyframe) {
            if (!video || !(packet->flags & AV_PKT_FLAG_KEY)) {
                av_packet_free(&packet);
                continue;
            }
            m_waitKeyframe = false;
        }
        lock.unlock();
        const int err = writePacket(packet, video);
        av_packet_free(&packet);
        if (err < 0) {
            if (m_stop.load())
                return;
            handleStreamWriteFailure(err);
            continue;
        }
        bool wasCongested = false;
        {
            std::lock_guard relock(m_mutex);
            wasCongested = std::exchange(m_congested, false);
        }
        if (wasCongested)
            report("online");
    }
}

void MuxOutput::handleStreamWriteFailure(int err)
{
    closeContext(false);
    qint64 failures = 0;
    {
        std::lock_guard lock(m_mutex);
        failures = ++m_writeFailures;
        m_reconnecting = true;
        m_nextRetry = now() + std::chrono::milliseconds(rc::afterWriteFailureMs(m_attempt));
    }
    if (rc::shouldLog(failures, 8, 25))
        qWarning().noquote() << "FfmpegEncoderSink: stream mux write failed, will reconnect:"
                             << ffsupport::errorText("av_interleaved_write_frame", err) << "(seq"
                             << failures << ") target" << m_targetIndex << maskStreamUrl(m_baseUrl);
    report("reconnecting");
}

void MuxOutput::reopen()
{
    closeContext(false);
    const bool ok = openContext(m_baseUrl, true);
    if (m_stop.load())
        return;
    if (ok) {
        qint64 reconnects = 0;
        {
            std::lock_guard lock(m_mutex);
            m_reconnecting = false;
            m_attempt = 0;
            m_waitKeyframe = false;
            m_congested = false;
            reconnects = ++m_reconnects;
        }
        m_reconnectCount.store(reconnects);
        if (rc::shouldLog(reconnects, 5, 20))
            qInfo().noquote() << "FfmpegEncoderSink: stream mux reconnected (n=" << reconnects
                              << ") target" << m_targetIndex << maskStreamUrl(m_baseUrl);
        return; // openContext reported "online"
    }
    int attempt = 0;
    qint64 delayMs = 0;
    {
        std::lock_guard lock(m_mutex);
        attempt = ++m_attempt;
        delayMs = rc::afterFailedReopenMs(attempt);
        m_nextRetry = now() + std::chrono::milliseconds(delayMs);
    }
    if (rc::shouldLog(attempt, 1, 64))
        qWarning().noquote() << "FfmpegEncoderSink: RTMP mux reopen failed, attempt" << attempt
                             << "next in" << delayMs << "ms" << maskStreamUrl(m_baseUrl);
    report("reconnecting");
}

std::chrono::steady_clock::time_point MuxOutput::nextRetryAt() const
{
    std::lock_guard lock(m_mutex);
    return m_nextRetry;
}

int MuxOutput::reopenAttempts() const
{
    std::lock_guard lock(m_mutex);
    return m_attempt;
}

void MuxOutput::close()
{
    if (m_closed)
        return;
    m_closed = true;
    m_stop.store(true);
    if (m_worker.joinable()) {
        int waitedMs = 0;
        bool warned = false;
        // The interrupt callback breaks blocking network calls; a worker that still has not
        // returned is waited for, with one warning.
        std::mutex joinMutex;
        std::condition_variable joined;
        bool done = false;
        std::thread watcher([&] {
            m_worker.join();
            std::lock_guard lock(joinMutex);
            done = true;
            joined.notify_all();
        });
        std::unique_lock lock(joinMutex);
        while (!done) {
            m_wake.notify_all();
            joined.wait_for(lock, std::chrono::milliseconds(rc::kCloseSliceMs));
            waitedMs += rc::kCloseSliceMs;
            if (!done && !warned && waitedMs >= rc::kCloseWarnAfterMs) {
                warned = true;
                qWarning("FfmpegEncoderSink: network worker still stopping after 5 seconds");
            }
        }
        lock.unlock();
        watcher.join();
    }
    report("stopped");
    {
        std::lock_guard lock(m_mutex);
        for (auto &[queued, isVideo] : m_queue)
            av_packet_free(&queued);
        m_queue.clear();
    }
    // The trailer completes a file, so nothing may interrupt it; a stream gets a short grace
    // period to deliver its last packets, so that a silent server cannot hold up the close.
    m_graceUntilNs.store(std::chrono::steady_clock::now().time_since_epoch().count() +
                         std::chrono::nanoseconds(kTrailerGrace).count());
    if (m_kind == Kind::File)
        m_stop.store(false);
    closeContext(true);
    m_stop.store(true);
    m_graceUntilNs.store(0);
}

} // namespace selvane
