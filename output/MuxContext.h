#pragma once

// Owns one opened output context (muxer, I/O, the streams copied from the encoders) and the
// timestamp rules every destination shares: start at a video keyframe, hold early sound. A
// recording knows where its last whole fragment ends on the disk, and a file whose writing
// failed is cut back to there when it closes, so that it never ends in a torn fragment.
// Threads: opened, written and closed by one thread at a time (its owner's); the counters and
// openedUrl() may be read from any thread.
// Reports: failures to open or finish, and the cut of a failed file, as log lines (none while
// its owner is stopping).

#include "media/FfmpegTypes.h"

#include <QString>
#include <atomic>
#include <deque>
#include <functional>
#include <memory>
#include <mutex>

namespace selvane {

// The codec parameters and time bases of the sink's encoders, cached for (re)opening outputs;
// refreshed when the video encoder is reopened.
struct EncodedStreams
{
    std::mutex mutex;
    ffsupport::CodecParametersPtr video;
    AVRational videoTimeBase{1, 30};
    AVRational frameRate{30, 1};         // the pictures' rate (a timecode counts in it)
    ffsupport::CodecParametersPtr audio; // null when the outputs carry video only
    AVRational audioTimeBase{1, 48000};
};

class MuxContext
{
public:
    enum class Use
    {
        Recording,
        Stream,
    };
    struct Setup
    {
        QString url;
        QString originalUrl;  // named when the muxer refuses the header
        QByteArray container; // empty: chosen from the URL
        AVIOInterruptCB interrupt{nullptr, nullptr};
        // Filled once the context and its streams exist, right before the I/O opens.
        std::function<void(ffsupport::Dictionary &)> ioOptions;
        // The muxer's own options for this output (an HLS folder's segments and playlist).
        std::function<void(ffsupport::Dictionary &)> muxerOptions;
        // A recording's timecode origin, "HH:MM:SS:FF" (empty: none).
        QString timecode;
    };

    // `stopping` (may be null) silences the failures its owner caused by stopping.
    MuxContext(Use use, std::shared_ptr<EncodedStreams> streams, const std::atomic<bool> *stopping);
    MuxContext(const MuxContext &) = delete;
    MuxContext &operator=(const MuxContext &) = delete;

    // 0 when the header is written; a negative AVERROR otherwise.
    int open(const Setup &setup);
    // Rewrites the packet's timestamps and stream index in place. 0 or more when written or
    // deliberately left out; a negative AVERROR when the muxer or its I/O failed.
    int write(AVPacket *packet, bool video);
    // The trailer alone, unlogged; close(false) must follow.
    int writeTrailer();
    // A recording whose I/O has failed (now or before) is cut back to wholeEnd().
    void close(bool writeTrailer);

    bool isOpen() const { return bool(m_context); }
    // The I/O reports no error (false when closed).
    bool ioHealthy() const;
    // What this file holds so far: the muxer keeps the current fragment until the next keyframe,
    // so the bytes handed to it measure that better than what has reached the disk.
    qint64 sizeSoFar() const;
    // Recording: where the header ends, and where the last fragment (or the header) that
    // reached the disk whole ends. Owner's thread; 0 before the header is on the disk.
    qint64 headerEnd() const { return m_headerEnd; }
    qint64 wholeEnd() const { return m_wholeEnd; }
    // The URL last opened (it stays after a close).
    QString openedUrl() const;
    qint64 packetsWritten() const { return m_packetsWritten.load(); }
    qint64 bytesWritten() const { return m_bytesWritten.load(); }
    // Packets left out: pictures before the first keyframe, sound held too long or from
    // before it, anything handed over while closed.
    qint64 packetsDropped() const { return m_packetsDropped.load(); }

private:
    bool quiet() const { return m_stopping && m_stopping->load(); }
    bool addStreams(AVFormatContext *context);
    int openIo(AVFormatContext *context, const Setup &setup, const QString &masked);
    int writeOne(AVPacket *packet, bool video);
    // Pushes what the muxer has finished to the disk; true when all of it got there so far.
    bool flushWhole();
    void cutBackToWholeEnd(const QString &path) const;

    const Use m_use;
    const std::shared_ptr<EncodedStreams> m_streams;
    const std::atomic<bool> *const m_stopping;

    ffsupport::OutputContextPtr m_context;
    int m_videoIndex = -1;
    int m_audioIndex = -1;
    // The encoders' time bases as they were when this context opened (read per packet).
    AVRational m_videoTimeBase{1, 30};
    AVRational m_audioTimeBase{1, 48000};
    qint64 m_offsetUs = -1; // start offset; unset until the first video keyframe
    std::deque<ffsupport::PacketPtr> m_earlyAudio; // sound that came before that keyframe
    qint64 m_bytesSinceOpen = 0;
    qint64 m_headerEnd = 0;
    qint64 m_wholeEnd = 0;

    mutable std::mutex m_urlMutex;
    QString m_openedUrl;
    std::atomic<qint64> m_packetsWritten{0};
    std::atomic<qint64> m_bytesWritten{0};
    std::atomic<qint64> m_packetsDropped{0};
};

} // namespace selvane
