#include "output/StreamPublisher.h"

#include "media/ReconnectPolicy.h"
#include "media/ThreadName.h"
#include "net/ProxyRoute.h"
#include "net/ProxySettings.h"
#include "net/SocksTcpRelay.h"
#include "output/StreamUrl.h"

#include <QDateTime>
#include <QDebug>
#include <QDir>
#include <QFileInfo>
#include <QUrl>
#include <algorithm>

namespace selvane {

using namespace std::chrono_literals;
namespace rc = reconnect;

namespace {

constexpr auto kTrailerGrace = std::chrono::seconds(2);
constexpr std::size_t kPacketsPerWake = 4;

} // namespace

StreamPublisher::StreamPublisher(QString url, QString originalUrl, QString formatName,
                                 int targetIndex, std::shared_ptr<EncodedStreams> streams,
                                 StatusCallback status, SteadyNow now)
    : m_url(std::move(url)), m_originalUrl(std::move(originalUrl)),
      m_formatName(std::move(formatName)), m_targetIndex(targetIndex), m_status(std::move(status)),
      m_now(std::move(now)), m_mux(MuxContext::Use::Stream, std::move(streams), &m_stop)
{
}

StreamPublisher::~StreamPublisher()
{
    close();
}

std::unique_ptr<StreamPublisher> StreamPublisher::forTarget(const StreamTarget &target,
                                                            int targetIndex,
                                                            std::shared_ptr<EncodedStreams> streams,
                                                            StatusCallback status, SteadyNow now)
{
    const QString &original = target.url;
    const QString &formatName = target.formatName;
    if (isHlsTarget(target)) {
        // A folder on this machine: made when missing, written like any target (a full disk
        // or a folder taken away is retried like a dead server).
        const QString playlist = QFileInfo(original.trimmed()).absoluteFilePath();
        QDir().mkpath(QFileInfo(playlist).absolutePath());
        auto publisher = std::make_unique<StreamPublisher>(
            playlist, original, QStringLiteral("hls"), targetIndex, std::move(streams),
            std::move(status), std::move(now));
        publisher->m_hls = {std::clamp(target.hlsSegmentSeconds, 1, 6),
                            std::clamp(target.hlsWindow, 2, 60)};
        return publisher;
    }
    QString url = original.trimmed();
    const QUrl parsed(url, QUrl::StrictMode);
    if (url.isEmpty() || !parsed.isValid() || parsed.scheme().isEmpty() ||
        (parsed.host().isEmpty() && !url.toLower().startsWith("file:"))) {
        qWarning().noquote() << "FfmpegEncoderSink: invalid network output URL"
                             << maskStreamUrl(url);
        return nullptr;
    }
    bool rewritten = false;
    const QString reachable = rewriteYouTubeRtmp(url, &rewritten);
    if (rewritten) {
        qInfo().noquote() << "FfmpegEncoderSink: YouTube RTMP -> RTMPS for reachability:"
                          << maskStreamUrl(url) << "->" << maskStreamUrl(reachable);
        url = reachable;
    }
    auto publisher =
        std::make_unique<StreamPublisher>(url, original, formatName, targetIndex,
                                          std::move(streams), std::move(status), std::move(now));
    const QString host = proxy::urlHost(url);
    const QString scheme = QUrl(url).scheme().toLower();
    if (proxy::isRelayable(url)) {
        // Whether the proxy is running is asked again at every connection.
        const proxy::Server socks = proxy::socksProxyFor(host, false);
        if (socks.isValid()) {
            qInfo().noquote() << "FfmpegEncoderSink: RTMP publish using local SOCKS relay; target"
                              << targetIndex << "via" << socks.endpoint();
            publisher->setSocksProxy(socks);
        }
    } else if ((scheme == "srt" || scheme == "udp" || scheme == "rtp") &&
               proxy::socksProxyFor(host, false).isValid()) {
        qWarning().noquote() << "FfmpegEncoderSink: a SOCKS proxy carries TCP only; target"
                             << targetIndex << "(" + scheme + ") connects directly";
    }
    return publisher;
}

int StreamPublisher::interruptCallback(void *opaque)
{
    return static_cast<const StreamPublisher *>(opaque)->shouldInterrupt() ? 1 : 0;
}

bool StreamPublisher::shouldInterrupt() const
{
    if (!m_stop.load())
        return false;
    const qint64 grace = m_graceUntilNs.load();
    return grace == 0 || std::chrono::steady_clock::now().time_since_epoch().count() > grace;
}

std::chrono::steady_clock::time_point StreamPublisher::now() const
{
    return m_now ? m_now() : std::chrono::steady_clock::now();
}

void StreamPublisher::report(const char *word)
{
    if (m_status)
        m_status(m_targetIndex, QString::fromLatin1(word));
}

std::shared_ptr<SocksTcpRelay> StreamPublisher::relay() const
{
    std::lock_guard lock(m_relayMutex);
    return m_relay;
}

bool StreamPublisher::open()
{
    // The first connection is made by the network worker like every later one: a dead or slow
    // target at start costs the encoder, the recording and the other targets nothing, and a
    // target that is down goes on trying with the same backoff.
    m_stop.store(false);
    {
        std::lock_guard lock(m_mutex);
        m_reconnecting = true;
        m_connected = false;
        m_attempt = 0;
        m_nextRetry = now();
    }
    report("connecting");
    return true;
}

int StreamPublisher::connectOnce(bool afterFailure)
{
    if (isRtmpFamilyUrl(m_url) &&
        QString::fromLatin1(avformat_configuration()).contains("--enable-librtmp")) {
        qWarning(
            "FfmpegEncoderSink: RTMP output requires an FFmpeg build without --enable-librtmp; "
            "refusing the non-interruptible external librtmp path");
        return AVERROR(ENOSYS);
    }
    QString openUrl = m_url;
    OptionList route;
    std::shared_ptr<SocksTcpRelay> relay;
    std::uint64_t serialBefore = 0;
    if (m_socks.isValid()) {
        if (proxy::isLocalAndNotRunning(m_socks)) {
            qWarning().noquote() << "FfmpegEncoderSink: the SOCKS proxy" << m_socks.endpoint()
                                 << "on this machine is not running; target" << m_targetIndex
                                 << "connects directly";
        } else {
            relay = this->relay();
            if (!relay) {
                const proxy::RelayRoute started = proxy::startRelay(m_url, m_socks);
                if (!started.relay) {
                    qWarning().noquote()
                        << "FfmpegEncoderSink: target" << m_targetIndex << "via"
                        << m_socks.endpoint() << "not connected:" << started.failure;
                    return AVERROR(ENETUNREACH);
                }
                relay = started.relay;
                std::lock_guard lock(m_relayMutex);
                m_relay = relay;
            }
            const proxy::RelayRoute through = proxy::routeThrough(relay, m_url);
            openUrl = through.url;
            route = through.options;
            serialBefore = relay->lastOutcome().serial;
        }
    }
    MuxContext::Setup setup;
    setup.url = openUrl;
    setup.originalUrl = m_originalUrl;
    setup.container = streamContainerName(m_url, m_formatName).toLatin1();
    setup.interrupt = {interruptCallback, this};
    setup.ioOptions = [this, afterFailure, &openUrl, &route](ffsupport::Dictionary &options) {
        fillIoOptions(options, afterFailure, openUrl, route);
    };
    if (m_hls.segmentSeconds > 0)
        setup.muxerOptions = [this](ffsupport::Dictionary &options) {
            fillHlsOptions(options);
        };
    if (const int err = m_mux.open(setup); err < 0) {
        // The muxer sees a closed connection; the relay knows what the proxy said.
        const QString why = relay ? proxy::relayFailureSince(*relay, serialBefore) : QString();
        if (!why.isEmpty() && !m_stop.load())
            qWarning().noquote() << "FfmpegEncoderSink: target" << m_targetIndex
                                 << "through the SOCKS proxy" << m_socks.endpoint()
                                 << "failed:" << why;
        return err;
    }
    qInfo("FfmpegEncoderSink: publish header OK");
    report("online");
    return 0;
}

void StreamPublisher::fillIoOptions(ffsupport::Dictionary &options, bool afterFailure,
                                    const QString &openUrl, const OptionList &route) const
{
    if (m_hls.segmentSeconds > 0)
        return; // the HLS muxer writes its own files
    options.set("rw_timeout", afterFailure ? rc::kReconnectTimeoutUs : rc::kFirstConnectTimeoutUs);
    options.set("tcp_nodelay", "1");
    if (m_sendBufferBytes > 0)
        options.set("send_buffer_size", QByteArray::number(m_sendBufferBytes).constData());
    const QString lower = m_url.toLower();
    if (isRtmpFamilyUrl(m_url))
        options.set("rtmp_live", "live");
    if (lower.startsWith("srt://"))
        options.set("linger", "1"); // seconds to deliver what is sent when the socket closes
    if (lower.startsWith("rtmps://")) {
        options.set("tls_verify", "1");
        options.set("verifyhost", QUrl(m_url).host().toUtf8().constData());
        // A private ingest's own certificate authority.
        const QByteArray caFile = qgetenv("SELVANE_TLS_CA_FILE");
        if (!caFile.isEmpty())
            options.set("ca_file", caFile.constData());
        // Without the SOCKS relay, TLS can tunnel through the HTTP proxy (CONNECT); where the
        // settings say direct it must not follow the environment's http_proxy on its own.
        const proxy::Server http =
            route.isEmpty() ? proxy::httpProxyFor(QUrl(m_url).host(), true) : proxy::Server{};
        options.set("http_proxy", http.url().toUtf8().constData());
        if (http.isValid())
            qInfo().noquote() << "FfmpegEncoderSink: RTMPS publish through the HTTP proxy"
                              << http.endpoint();
    }
    if (lower.startsWith("http://") || lower.startsWith("https://")) {
        const proxy::Server http =
            proxy::httpProxyFor(QUrl(m_url).host(), lower.startsWith("https://"));
        // Empty when the settings say direct, so that the environment's proxy is not taken.
        options.set("http_proxy", http.url().toUtf8().constData());
        if (http.isValid())
            qInfo().noquote() << "FfmpegEncoderSink: http_proxy for HTTP(S) publish"
                              << http.endpoint();
    }
    for (const auto &[key, value] : route)
        options.set(key.constData(), value.constData());
    qInfo().noquote() << "FfmpegEncoderSink: opening publish URL" << maskStreamUrl(openUrl)
                      << (route.isEmpty() && openUrl == m_url ? "(direct)" : "(local SOCKS relay)");
}

void StreamPublisher::fillHlsOptions(ffsupport::Dictionary &options) const
{
    // Segments are named by the moment this connection opened, so that a new run (or a new
    // connection after a failure) never writes over the files of an earlier one. A segment is
    // written under a temporary name and renamed once whole; the playlist likewise.
    const QFileInfo playlist(m_url);
    const QString stamp = QDateTime::currentDateTime().toString(QStringLiteral("yyyyMMdd_HHmmss"));
    const QString segments = playlist.dir().filePath(
        playlist.completeBaseName() + QLatin1Char('_') + stamp + QStringLiteral("_%05d.ts"));
    options.set("hls_time", QByteArray::number(m_hls.segmentSeconds).constData());
    options.set("hls_list_size", QByteArray::number(m_hls.window).constData());
    options.set("hls_flags", "delete_segments+temp_file+program_date_time+independent_segments");
    options.set("hls_segment_filename", segments.toUtf8().constData());
    options.set("hls_delete_threshold", "2");
}

void StreamPublisher::dropQueueLocked()
{
    m_packetsDropped.fetch_add(qint64(m_queue.size()));
    m_queue.clear();
}

void StreamPublisher::submit(const AVPacket *source, bool video)
{
    ffsupport::PacketPtr copy(av_packet_clone(source));
    if (!copy) {
        m_packetsDropped.fetch_add(1);
        return;
    }
    bool reset = false;
    bool wake = false;
    qint64 resets = 0;
    {
        std::lock_guard lock(m_mutex);
        if (m_queue.size() >= rc::kQueueResetPackets) {
            // Dropping the whole backlog and restarting at a keyframe keeps the stream current.
            dropQueueLocked();
            m_waitKeyframe = true;
            m_congested = true;
            resets = m_queueResets.fetch_add(1) + 1;
            reset = true;
        }
        m_queue.emplace_back(std::move(copy), video);
        // Sound packets go out with the next picture (at most a frame later), so the worker
        // wakes once a frame rather than once a packet; a few of them alone wake it too.
        wake = video || m_queue.size() >= kPacketsPerWake;
    }
    if (wake)
        m_wake.notify_one();
    if (reset) {
        if (rc::shouldLog(resets, 5, 50))
            qWarning().noquote() << "FfmpegEncoderSink: network mux queue reset; count" << resets
                                 << "target" << m_targetIndex;
        report("congested");
    }
}

void StreamPublisher::startWorker()
{
    if (m_worker.joinable())
        return;
    m_worker = std::thread([this] { networkLoop(); });
}

void StreamPublisher::requestStop()
{
    // What is queued still goes out, within the grace period, before the trailer: the end of
    // the show reaches the viewers too.
    if (m_graceUntilNs.load() == 0)
        m_graceUntilNs.store(std::chrono::steady_clock::now().time_since_epoch().count() +
                             std::chrono::nanoseconds(kTrailerGrace).count());
    m_stop.store(true);
    m_wake.notify_all();
}

bool StreamPublisher::drainOverLocked() const
{
    return m_reconnecting || m_queue.empty() || shouldInterrupt();
}

void StreamPublisher::networkLoop()
{
    nameThisThread("stream");
    for (;;) {
        std::unique_lock lock(m_mutex);
        if (m_stop.load() && drainOverLocked())
            return;
        if (m_reconnecting) {
            // Packets that arrive while the target is down are not kept: the stream resumes
            // with what is current.
            dropQueueLocked();
            const auto t = now();
            if (t >= m_nextRetry) {
                lock.unlock();
                retryConnection();
                continue;
            }
            m_wake.wait_for(lock,
                            std::min<std::chrono::steady_clock::duration>(m_nextRetry - t, 50ms));
            continue;
        }
        if (m_queue.empty()) {
            m_wake.wait_for(lock, 50ms);
            continue;
        }
        Queued next = std::move(m_queue.front());
        m_queue.pop_front();
        const bool video = next.second;
        if (m_waitKeyframe) {
            if (!video || !(next.first->flags & AV_PKT_FLAG_KEY)) {
                m_packetsDropped.fetch_add(1);
                continue;
            }
            m_waitKeyframe = false;
        }
        lock.unlock();
        const int err = m_mux.write(next.first.get(), video);
        next.first.reset();
        if (err < 0) {
            if (m_stop.load())
                return;
            handleWriteFailure(err);
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

void StreamPublisher::handleWriteFailure(int err)
{
    m_mux.close(false);
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
                             << failures << ") target" << m_targetIndex << maskStreamUrl(m_url);
    report("reconnecting");
}

void StreamPublisher::retryConnection()
{
    m_mux.close(false);
    bool first = false;
    {
        std::lock_guard lock(m_mutex);
        first = !m_connected;
    }
    const int err = connectOnce(!first);
    if (m_stop.load())
        return;
    if (err >= 0) {
        qint64 reconnects = 0;
        {
            std::lock_guard lock(m_mutex);
            m_reconnecting = false;
            m_attempt = 0;
            // The stream starts (again) with a keyframe, so that a viewer can decode at once.
            m_waitKeyframe = true;
            m_congested = false;
            if (m_connected)
                reconnects = ++m_reconnects;
            m_connected = true;
        }
        if (first)
            return; // connectOnce reported "online"
        m_reconnectCount.store(reconnects);
        if (rc::shouldLog(reconnects, 5, 20))
            qInfo().noquote() << "FfmpegEncoderSink: stream mux reconnected (n=" << reconnects
                              << ") target" << m_targetIndex << maskStreamUrl(m_url);
        return; // connectOnce reported "online"
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
        qWarning().noquote() << "FfmpegEncoderSink: target reopen failed, attempt" << attempt
                             << "next in" << delayMs << "ms" << maskStreamUrl(m_url);
    report("reconnecting");
}

bool StreamPublisher::reconnectNow()
{
    {
        std::lock_guard lock(m_mutex);
        if (!m_reconnecting || m_stop.load())
            return false;
        m_nextRetry = now();
    }
    m_wake.notify_all();
    return true;
}

std::chrono::steady_clock::time_point StreamPublisher::nextRetryAt() const
{
    std::lock_guard lock(m_mutex);
    return m_nextRetry;
}

qint64 StreamPublisher::queuedPackets() const
{
    std::lock_guard lock(m_mutex);
    return qint64(m_queue.size());
}

int StreamPublisher::reopenAttempts() const
{
    std::lock_guard lock(m_mutex);
    return m_attempt;
}

void StreamPublisher::close()
{
    if (m_closed)
        return;
    m_closed = true;
    requestStop();
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
        dropQueueLocked();
    }
    // A stream gets a short grace period to deliver its last packets, so that a silent server
    // cannot hold up the close.
    m_graceUntilNs.store(std::chrono::steady_clock::now().time_since_epoch().count() +
                         std::chrono::nanoseconds(kTrailerGrace).count());
    m_mux.close(true);
    m_graceUntilNs.store(0);
    std::shared_ptr<SocksTcpRelay> relay;
    {
        std::lock_guard lock(m_relayMutex);
        relay = std::move(m_relay);
    }
    if (relay)
        relay->stop();
}

} // namespace selvane
