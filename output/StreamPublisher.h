#pragma once

// Owns one stream target's connection: a MuxContext, a network worker thread and a bounded
// packet queue, so a slow or broken network never stalls encoding, the recording or another
// target. Threads: open/submit/startWorker/requestStop/close on the encode worker; the network
// worker alone connects (the first time too), writes and reconnects, and at stop delivers what
// is queued before the trailer; the observers are safe from any thread.
// Reports: status words "connecting", "online", "congested", "reconnecting", "stopped" through
// the status callback (from both threads), log lines and counters.
//
// A target that a SOCKS proxy applies to (net/ProxySettings.h) owns a local relay
// (net/SocksTcpRelay.h), started by the network worker with the first connection and stopped
// with the target; every connection goes through it, an RTMPS one still encrypted to the real
// server. A failure on the proxy's side is logged with its reason and leaves the target
// reconnecting like any other; only a proxy on this machine that is not running is passed by
// (logged) for a direct connection.

#include "media/SteadyClock.h"
#include "net/ProxySettings.h"
#include "output/EncoderSettings.h"
#include "output/MuxContext.h"

#include <QByteArray>
#include <QList>
#include <QPair>
#include <QString>
#include <atomic>
#include <chrono>
#include <condition_variable>
#include <deque>
#include <functional>
#include <memory>
#include <mutex>
#include <thread>
#include <utility>

namespace selvane {

class SocksTcpRelay;

class StreamPublisher
{
public:
    using StatusCallback = std::function<void(int targetIndex, const QString &word)>;

    // A publisher for a target as the user gave it: the URL checked (null, logged, when it is
    // not usable), YouTube RTMP moved to RTMPS, RTMP and RTSP routed through the SOCKS relay
    // when a SOCKS proxy applies to the target's host.
    // An HLS target writes its folder: segments of its length, a playlist of its window, old
    // segments deleted, the playlist replaced whole (never half-written).
    static std::unique_ptr<StreamPublisher> forTarget(const StreamTarget &target, int targetIndex,
                                                      std::shared_ptr<EncodedStreams> streams,
                                                      StatusCallback status, SteadyNow now);

    // url: where to connect; originalUrl: as the user gave it (named in failures).
    StreamPublisher(QString url, QString originalUrl, QString formatName, int targetIndex,
                    std::shared_ptr<EncodedStreams> streams, StatusCallback status, SteadyNow now);
    ~StreamPublisher();
    StreamPublisher(const StreamPublisher &) = delete;
    StreamPublisher &operator=(const StreamPublisher &) = delete;

    // Publishes through a local relay to this SOCKS proxy (invalid: direct).
    void setSocksProxy(proxy::Server socks) { m_socks = std::move(socks); }
    // Caps the connection's send buffer (TCP-based targets), so that a slow link shows in this
    // target's queue within a second or two rather than after megabytes held by the system: an
    // adaptive bitrate reads that queue. 0: the system's own.
    void setSendBufferBytes(int bytes) { m_sendBufferBytes = bytes; }
    // The relay's counters while it runs (null when the target is direct); any thread.
    std::shared_ptr<SocksTcpRelay> relay() const;

    // The first connection. A target that cannot connect is left reconnecting (the worker keeps
    // trying once started); the result tells whether it is online now.
    bool open();
    // Queues a copy of the packet; the caller keeps its own.
    void submit(const AVPacket *packet, bool video);
    void startWorker();
    // Asks the worker to stop without waiting (close() waits), so several targets stop together.
    void requestStop();
    // A target that is down tries again at once instead of waiting out its backoff; false when
    // it is not waiting to reconnect. Any thread.
    bool reconnectNow();
    // Stops the worker (waiting in slices, with a warning after 5 s), writes the trailer within
    // a short grace period and closes the connection.
    void close();

    int targetIndex() const { return m_targetIndex; }
    // The target's own URL (a relayed connection opens a loopback URL in its place).
    QString currentUrl() const { return m_url; }
    std::chrono::steady_clock::time_point nextRetryAt() const;
    int reopenAttempts() const;
    qint64 queueResets() const { return m_queueResets.load(); }
    qint64 packetsWritten() const { return m_mux.packetsWritten(); }
    qint64 bytesWritten() const { return m_mux.bytesWritten(); }
    qint64 reconnects() const { return m_reconnectCount.load(); }
    // Queue resets, outages and the wait for a keyframe after either, and what the muxer left out.
    qint64 packetsDropped() const { return m_packetsDropped.load() + m_mux.packetsDropped(); }
    // Packets waiting to be sent now (the backlog a slow link builds). Any thread.
    qint64 queuedPackets() const;

private:
    using Queued = std::pair<ffsupport::PacketPtr, bool>; // the packet, and whether it is video
    using OptionList = QList<QPair<QByteArray, QByteArray>>;

    // One connection attempt: 0 when online, a negative AVERROR otherwise.
    int connectOnce(bool afterFailure);
    void fillIoOptions(ffsupport::Dictionary &options, bool afterFailure, const QString &openUrl,
                       const OptionList &route) const;
    // The worker: sends what is queued and decides when to try connecting again.
    void networkLoop();
    void retryConnection();
    void handleWriteFailure(int err);
    bool drainOverLocked() const;
    void dropQueueLocked();
    void fillHlsOptions(ffsupport::Dictionary &options) const;
    void report(const char *word);
    bool shouldInterrupt() const;
    static int interruptCallback(void *opaque);
    std::chrono::steady_clock::time_point now() const;

    const QString m_url;
    const QString m_originalUrl;
    const QString m_formatName;
    const int m_targetIndex;
    StatusCallback m_status;
    SteadyNow m_now;
    proxy::Server m_socks;
    int m_sendBufferBytes = 0;
    struct
    {
        int segmentSeconds = 0; // 0: not an HLS folder
        int window = 0;
    } m_hls;
    mutable std::mutex m_relayMutex;
    std::shared_ptr<SocksTcpRelay> m_relay; // the network worker's; guarded for relay()

    std::atomic<bool> m_stop{false};
    std::atomic<qint64> m_graceUntilNs{0};
    MuxContext m_mux; // the encode worker's until startWorker(), then the network worker's

    // Guarded by m_mutex.
    mutable std::mutex m_mutex;
    std::condition_variable m_wake;
    std::deque<Queued> m_queue;
    bool m_waitKeyframe = false;
    bool m_reconnecting = false;
    bool m_connected = false; // a connection has been made since open()
    bool m_congested = false;
    int m_attempt = 0;
    std::chrono::steady_clock::time_point m_nextRetry{};
    qint64 m_reconnects = 0;
    qint64 m_writeFailures = 0;

    std::atomic<qint64> m_queueResets{0};
    std::atomic<qint64> m_reconnectCount{0};
    std::atomic<qint64> m_packetsDropped{0};
    bool m_closed = false;
    std::thread m_worker;
};

} // namespace selvane
