#pragma once

// Owns the recording file: one MuxContext, cut into segments at keyframes when limits are set,
// retrying the same file when writes fail.
// Threads: open/submit/close run on the encode worker; the observers are safe from any thread.
// Reports: log lines, and how long the file has been failing to write (fileFailingForMs).

#include "media/SteadyClock.h"
#include "output/MuxContext.h"

#include <QString>
#include <atomic>
#include <chrono>
#include <memory>
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
    };

    FileRecorder(QString path, QString originalPath, std::shared_ptr<EncodedStreams> streams,
                 SteadyNow now);
    ~FileRecorder();
    FileRecorder(const FileRecorder &) = delete;
    FileRecorder &operator=(const FileRecorder &) = delete;

    void setSegmentLimits(const SegmentLimits &limits) { m_segments = limits; }

    bool open();
    // Writes a copy of the packet; the caller keeps its own.
    void submit(const AVPacket *packet, bool video);
    // Writes the trailer and closes the file.
    void close();

    QString currentPath() const { return m_mux.openedUrl(); }
    // Since when the file has been failing to write, in ms (0 when it writes).
    qint64 fileFailingForMs() const;
    qint64 packetsWritten() const { return m_mux.packetsWritten(); }
    qint64 bytesWritten() const { return m_mux.bytesWritten(); }
    qint64 packetsDropped() const { return m_mux.packetsDropped() + m_uncopied.load(); }

private:
    bool openSegmentOrFile(const QString &path);
    void maybeRotateSegment();
    void finishRotation();
    void write(ffsupport::PacketPtr packet, bool video);
    QString segmentPath() const;
    void handleWriteFailure(int err);
    std::chrono::steady_clock::time_point now() const;

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

    // Written by the encode worker, read by observers on any thread.
    std::atomic<qint64> m_failureStreak{0};
    std::atomic<std::chrono::steady_clock::time_point> m_failingSince{};
    std::atomic<qint64> m_uncopied{0}; // packets that could not be copied
};

} // namespace selvane
