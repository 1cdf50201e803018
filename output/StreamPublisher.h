#pragma once

// Owns one stream target's connection: a MuxContext, a network worker thread and a bounded
// packet queue, so a slow or broken network never stalls encoding, the recording or another
// target. Threads: open/submit/startWorker/requestStop/close on the encode worker; the network
// worker alone connects (the first time too), writes and reconnects, and at stop delivers what
// is queued before the trailer; the observers are safe from any thread.
// Reports: status words "connecting", "online", "congested", "reconnecting", "stopped" through
// the status callback (from both threads), log lines and counters.

#include "media/SteadyClock.h"
#include "output/MuxContext.h"

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

class StreamPublisher
{
public:
    using StatusCallback = std::function<void(int targetIndex, const QString &word)>;

    // A publisher for a target as the user gave it: the URL checked (null, logged, when it is
    // not usable), YouTube RTMP moved to RTMPS, RTMP routed through the SOCKS relay when a
    // proxy is set.
    static std::unique_ptr<StreamPublisher> forTarget(const QString &url, const QString &formatName,
                                                      int targetIndex,
                                                      std::shared_ptr<EncodedStreams> streams,
                                                      StatusCallback status, SteadyNow now);

    // url: where to connect; originalUrl: as the user gave it (named in failures).
    StreamPublisher(QString url, QString originalUrl, QString formatName, int targetIndex,
                    std::shared_ptr<EncodedStreams> streams, StatusCallback status, SteadyNow now);
    ~StreamPublisher();
    StreamPublisher(const StreamPublisher &) = delete;
    StreamPublisher &operator=(const StreamPublisher &) = delete;

    // Extra muxer options for RTMP through a relay ("rtmp_tcurl", "rtmp_app", "rtmp_playpath").
    void setRelayNames(QString tcUrl, QString app, QString playPath);

    // The first connection. A target that cannot connect is left reconnecting (the worker keeps
    // trying once started); the result tells whether it is online now.
    bool open();
    // Queues a copy of the packet; the caller keeps its own.
    void submit(const AVPacket *packet, bool video);
    void startWorker();
    // Asks the worker to stop without waiting (close() waits), so several targets stop together.
    void requestStop();
    // Stops the worker (waiting in slices, with a warning after 5 s), writes the trailer within
    // a short grace period and closes the connection.
    void close();

    int targetIndex() const { return m_targetIndex; }
    QString currentUrl() const { return m_mux.openedUrl(); }
    std::chrono::steady_clock::time_point nextRetryAt() const;
    int reopenAttempts() const;
    qint64 queueResets() const { return m_queueResets.load(); }
    qint64 packetsWritten() const { return m_mux.packetsWritten(); }
    qint64 bytesWritten() const { return m_mux.bytesWritten(); }
    qint64 reconnects() const { return m_reconnectCount.load(); }
    // Queue resets, outages and the wait for a keyframe after either, and what the muxer left out.
    qint64 packetsDropped() const { return m_packetsDropped.load() + m_mux.packetsDropped(); }

private:
    using Queued = std::pair<ffsupport::PacketPtr, bool>; // the packet, and whether it is video

    // One connection attempt: 0 when online, a negative AVERROR otherwise.
    int connectOnce(bool afterFailure);
    void fillIoOptions(ffsupport::Dictionary &options, bool afterFailure) const;
    // The worker: sends what is queued and decides when to try connecting again.
    void networkLoop();
    void retryConnection();
    void handleWriteFailure(int err);
    bool drainOverLocked() const;
    void dropQueueLocked();
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
    QString m_relayTcUrl, m_relayApp, m_relayPlayPath;

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
