#pragma once

// One destination of the encoder sink: the recording file (optionally cut into segments at
// keyframes) or one stream target. A file output is written by the encode worker directly. A
// stream target has its own network worker thread and a bounded packet queue, so a slow or
// broken network never stalls encoding, the file or another target; a broken target is reopened
// with backoff for as long as the output runs, and reports its state through status words.
//
// Threads: open()/finish() and the file path run on the encode worker; enqueue() runs on the
// encode worker; the network worker alone writes to and reopens a stream target. The status
// callback is called from both.

#include "media/FfmpegTypes.h"
#include "output/EncoderSettings.h"

#include <QDateTime>
#include <QString>

#include <atomic>
#include <condition_variable>
#include <deque>
#include <functional>
#include <memory>
#include <mutex>
#include <thread>

namespace selvane {

// The codec parameters and time bases of the sink's encoders, cached for (re)opening outputs;
// refreshed when the video encoder is reopened.
struct EncodedStreams
{
    std::mutex mutex;
    AVCodecParameters *video = nullptr;
    AVRational videoTimeBase{1, 30};
    AVCodecParameters *audio = nullptr; // null when the outputs carry video only
    AVRational audioTimeBase{1, 48000};
    ~EncodedStreams()
    {
        avcodec_parameters_free(&video);
        avcodec_parameters_free(&audio);
    }
};

class MuxOutput
{
public:
    using StatusCallback = std::function<void(int targetIndex, const QString &word)>;
    enum class Kind
    {
        File,
        Network,
    };
    struct SegmentLimits
    {
        bool enabled = false;
        double minutes = 0;
        double gib = 0;
    };

    MuxOutput(Kind kind, QString url, QString originalUrl, QString formatName, int targetIndex,
              std::shared_ptr<EncodedStreams> streams, StatusCallback status, SteadyNow now);
    ~MuxOutput();
    MuxOutput(const MuxOutput &) = delete;
    MuxOutput &operator=(const MuxOutput &) = delete;

    void setSegmentLimits(const SegmentLimits &limits) { m_segments = limits; }
    // Extra muxer options for RTMP through a relay ("rtmp_tcurl", "rtmp_app", "rtmp_playpath").
    void setRelayNames(QString tcUrl, QString app, QString playPath);

    // First open, on the encode worker. A stream target that cannot connect is left
    // reconnecting (its worker keeps trying); the result tells whether it is open now.
    bool open();
    // The encode worker hands every packet here (a reference is taken; the caller keeps its own).
    void submit(const AVPacket *packet, bool video);
    // Stream targets: start the worker after open().
    void startWorker();
    // Stops the worker (waiting in slices, with a warning after 5 s), writes the trailer and
    // closes everything.
    void close();
    // Asks the network worker to stop without waiting (close() waits).
    void requestStop()
    {
        m_stop.store(true);
        m_wake.notify_all();
    }

    bool isNetwork() const { return m_kind == Kind::Network; }
    // The I/O interrupt: a stop breaks blocking network calls (after the close's grace period).
    bool shouldInterrupt() const;
    int targetIndex() const { return m_targetIndex; }
    QString currentPath() const;
    // A recording that has been failing to write since this long ago (0 when it is fine).
    qint64 fileFailingForMs() const;
    // Stream targets, for tests and the progress line.
    std::chrono::steady_clock::time_point nextRetryAt() const;
    int reopenAttempts() const;
    qint64 queueResets() const { return m_queueResets.load(); }
    qint64 packetsWritten() const { return m_packetsWritten.load(); }
    qint64 bytesWritten() const { return m_bytesWritten.load(); }
    qint64 reconnects() const { return m_reconnectCount.load(); }

private:
    bool openContext(const QString &url, bool reconnectTimeout);
    void closeContext(bool writeTrailer);
    int writePacket(AVPacket *packet, bool video);
    void handleStreamWriteFailure(int err);
    void handleFileWriteFailure(int err);
    void maybeRotateSegment();
    QString segmentPath();
    void networkLoop();
    void reopen();
    void report(const char *word);
    std::chrono::steady_clock::time_point now() const;

    const Kind m_kind;
    const QString m_baseUrl; // file: the chosen path; network: the prepared URL
    const QString m_originalUrl;
    const QString m_formatName;
    const int m_targetIndex;
    std::shared_ptr<EncodedStreams> m_streams;
    StatusCallback m_status;
    SteadyNow m_now;
    SegmentLimits m_segments;
    QString m_relayTcUrl, m_relayApp, m_relayPlayPath;

    AVFormatContext *m_context = nullptr;
    int m_videoIndex = -1;
    int m_audioIndex = -1;
    // The encoders' time bases as they were when this output opened (read per packet).
    AVRational m_videoTimeBase{1, 30};
    AVRational m_audioTimeBase{1, 48000};
    QString m_openedUrl;
    qint64 m_offsetUs = -1; // start offset; unset until the first video keyframe
    std::deque<ffsupport::PacketPtr> m_earlyAudio; // sound that came before that keyframe
    bool m_everOpened = false;

    // Segments.
    int m_segmentNumber = 0;
    qint64 m_segmentBytes = 0;
    std::chrono::steady_clock::time_point m_segmentOpenedAt{};

    // File failures.
    // Written by the encode worker, read by observers on any thread.
    std::atomic<qint64> m_fileFailureStreak{0};
    std::atomic<std::chrono::steady_clock::time_point> m_fileFailingSince{};

    // Network state, guarded by m_mutex.
    mutable std::mutex m_mutex;
    std::condition_variable m_wake;
    std::deque<std::pair<AVPacket *, bool>> m_queue;
    bool m_waitKeyframe = false;
    bool m_reconnecting = false;
    bool m_congested = false;
    int m_attempt = 0;
    std::chrono::steady_clock::time_point m_nextRetry{};
    qint64 m_reconnects = 0;
    qint64 m_writeFailures = 0;
    std::atomic<qint64> m_queueResets{0};
    std::atomic<qint64> m_packetsWritten{0};
    std::atomic<qint64> m_bytesWritten{0};
    std::atomic<qint64> m_reconnectCount{0};
    std::atomic<bool> m_stop{false};
    std::atomic<qint64> m_graceUntilNs{0};
    bool m_closed = false;
    std::thread m_worker;
};

} // namespace selvane
