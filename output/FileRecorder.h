#pragma once

// Owns the recording file: one MuxContext, cut into segments at keyframes when limits are set.
// A file that cannot be written (disk full, folder gone, permission lost) is closed and cut back
// to the end of its last whole fragment (MuxContext does the cut), so it plays up to there, and
// the recording is "failed" with the reason; every second after that, at a keyframe, it tries
// again in a new file beside it (a free name, never an earlier one). Nothing of this touches the
// stream targets.
// Threads: open/submit/close run on the encode worker; the observers are safe from any thread.
// With a free-space limit on a segmented recording (a ring), the oldest files of the take are
// deleted while the disk is short of room, once a second at most.
// Reports: log lines (throttled while it keeps failing), and state(), failures().

#include "media/SteadyClock.h"
#include "output/MuxContext.h"

#include <QString>
#include <atomic>
#include <chrono>
#include <memory>
#include <mutex>
#include <utility>
#include <vector>

namespace selvane {

class FileRecorder
{
public:
    struct SegmentLimits
    {
        bool enabled = false;
        double minutes = 0; // 0: no time limit
        double gib = 0;     // 0: no size limit
        // Ring recording: the oldest files of this take are deleted while the disk has less
        // free than this (0: never); the file being written and files of other takes never.
        qint64 keepFreeBytes = 0;
    };

    FileRecorder(QString path, QString originalPath, std::shared_ptr<EncodedStreams> streams,
                 SteadyNow now);
    ~FileRecorder();
    FileRecorder(const FileRecorder &) = delete;
    FileRecorder &operator=(const FileRecorder &) = delete;

    void setSegmentLimits(const SegmentLimits &limits) { m_segments = limits; }
    // Every file of the take carries this timecode origin ("HH:MM:SS:FF"; empty: none).
    void setTimecode(const QString &timecode) { m_timecode = timecode; }

    bool open();
    // Writes a copy of the packet; the caller keeps its own.
    void submit(const AVPacket *packet, bool video);
    // Writes the trailer and closes the file.
    void close();

    QString currentPath() const { return m_mux.openedUrl(); }
    // True while nothing can be written; the reason is the I/O error last seen.
    bool failed() const { return m_failed.load(); }
    QString failureReason() const;
    // How many times the recording went from writing to failed since open().
    int failures() const { return m_failures.load(); }
    int resumes() const { return m_resumes.load(); } // new files begun after a failure
    qint64 packetsWritten() const { return m_mux.packetsWritten(); }
    qint64 bytesWritten() const { return m_mux.bytesWritten(); }
    // Packets that never reached a file: not copyable, or handed over while it had failed.
    qint64 packetsDropped() const { return m_mux.packetsDropped() + m_lost.load(); }

    // Files of this take deleted to keep the disk's free space (ring recording).
    int filesDeleted() const { return m_deleted.load(); }

    // Time between attempts to write again after a failure.
    static constexpr auto kRetryInterval = std::chrono::seconds(1);

private:
    // 0 or a negative AVERROR.
    int openSegmentOrFile(const QString &path);
    void maybeRotateSegment();
    void finishRotation();
    void write(ffsupport::PacketPtr packet, bool video);
    QString segmentPath() const;
    void fail(const QString &reason);
    QString m_timecode;
    bool tryResume();
    std::chrono::steady_clock::time_point now() const;
    // Ring recording: deletes this take's oldest files while the disk is short of room.
    void keepFreeSpace();

    const QString m_basePath;
    const QString m_originalPath;
    SteadyNow m_now;
    SegmentLimits m_segments;
    MuxContext m_mux;

    int m_segmentNumber = 0;
    std::chrono::steady_clock::time_point m_segmentOpenedAt{};
    // A cut that is due waits a second with the next segment's packets, so that a run ending
    // meanwhile never leaves a segment of a few frames.
    bool m_rotating = false;
    std::chrono::steady_clock::time_point m_rotateAt{};
    std::vector<std::pair<ffsupport::PacketPtr, bool>> m_pending;

    std::chrono::steady_clock::time_point m_nextAttempt{};
    std::vector<QString> m_takeFiles; // every file this take opened, oldest first
    std::chrono::steady_clock::time_point m_nextSpaceCheck{};
    qint64 m_attempts = 0;
    qint64 m_packetsAtOpen = 0;

    // Written by the encode worker, read by observers on any thread.
    std::atomic<bool> m_failed{false};
    std::atomic<int> m_failures{0};
    std::atomic<int> m_resumes{0};
    mutable std::mutex m_reasonMutex;
    QString m_reason;
    std::atomic<qint64> m_lost{0};
    std::atomic<int> m_deleted{0};
};

} // namespace selvane
