#include "output/FileRecorder.h"

#include "media/ReconnectPolicy.h"
#include "output/StreamUrl.h"

#include <QDateTime>
#include <QDebug>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QStorageInfo>

namespace selvane {

namespace {
// A segment cut at the end of a run is never shorter than this.
constexpr auto kShortestSegment = std::chrono::seconds(1);
// A failed recording tries again only where this much room is free.
constexpr qint64 kFreeToResume = 1 << 20;

QString ioReason(int err)
{
    char text[AV_ERROR_MAX_STRING_SIZE] = {};
    av_strerror(err, text, sizeof text);
    return QString::fromUtf8(text);
}
} // namespace

FileRecorder::FileRecorder(QString path, QString originalPath,
                           std::shared_ptr<EncodedStreams> streams, SteadyNow now)
    : m_basePath(std::move(path)), m_originalPath(std::move(originalPath)), m_now(std::move(now)),
      // Nothing may cut a file short: it is never interrupted and its failures always show.
      m_mux(MuxContext::Use::Recording, std::move(streams), nullptr)
{
}

FileRecorder::~FileRecorder()
{
    close();
}

std::chrono::steady_clock::time_point FileRecorder::now() const
{
    return m_now ? m_now() : std::chrono::steady_clock::now();
}

QString FileRecorder::segmentPath() const
{
    const QFileInfo chosen(m_basePath);
    const QString suffix = chosen.suffix().isEmpty() ? QString() : "." + chosen.suffix();
    const QString name = QStringLiteral("%1_%2_%3%4")
                             .arg(chosen.completeBaseName(),
                                  QDateTime::currentDateTime().toString("yyyyMMdd_HHmmss"))
                             .arg(m_segmentNumber, 3, 10, QLatin1Char('0'))
                             .arg(suffix);
    return chosen.dir().filePath(name);
}

int FileRecorder::openSegmentOrFile(const QString &path)
{
    MuxContext::Setup setup;
    setup.url = unusedRecordingPath(path);
    setup.originalUrl = m_originalPath;
    setup.timecode = m_timecode;
    const int err = m_mux.open(setup);
    if (err >= 0) {
        m_packetsAtOpen = m_mux.packetsWritten();
        m_takeFiles.push_back(m_mux.openedUrl());
        return err;
    }
    // The name was free a moment ago: whatever this attempt left there holds nothing of the show.
    QFile::remove(setup.url);
    return err;
}

bool FileRecorder::open()
{
    m_failed.store(false);
    m_failures.store(0);
    m_resumes.store(0);
    QString path = m_basePath;
    if (m_segments.enabled) {
        m_segmentNumber = 1;
        path = segmentPath();
    }
    if (const int err = openSegmentOrFile(path); err < 0) {
        fail(ioReason(err));
        return false;
    }
    m_segmentOpenedAt = now();
    if (m_segments.enabled)
        qInfo().noquote() << "FfmpegEncoderSink: recording segment opened" << currentPath();
    return true;
}

void FileRecorder::submit(const AVPacket *source, bool video)
{
    const bool keyframe = video && (source->flags & AV_PKT_FLAG_KEY);
    if (keyframe && m_segments.keepFreeBytes > 0 && now() >= m_nextSpaceCheck)
        keepFreeSpace();
    if (m_failed.load()) {
        // A new file can only begin at a keyframe.
        if (!keyframe || now() < m_nextAttempt || !tryResume()) {
            m_lost.fetch_add(1);
            return;
        }
    } else if (keyframe) {
        maybeRotateSegment();
    }
    ffsupport::PacketPtr packet(av_packet_clone(source));
    if (!packet) {
        m_lost.fetch_add(1);
        return;
    }
    if (m_rotating) {
        // The next segment begins once it has a second of its own (see maybeRotateSegment).
        m_pending.emplace_back(std::move(packet), video);
        if (now() - m_rotateAt >= kShortestSegment)
            finishRotation();
        return;
    }
    write(std::move(packet), video);
}

void FileRecorder::write(ffsupport::PacketPtr packet, bool video)
{
    if (m_failed.load()) {
        m_lost.fetch_add(1);
        return;
    }
    const int err = m_mux.write(packet.get(), video);
    if (err < 0)
        fail(ioReason(err));
}

QString FileRecorder::failureReason() const
{
    std::lock_guard lock(m_reasonMutex);
    return m_reason;
}

void FileRecorder::fail(const QString &reason)
{
    {
        std::lock_guard lock(m_reasonMutex);
        m_reason = reason;
    }
    if (!m_failed.exchange(true)) {
        m_failures.fetch_add(1);
        m_attempts = 0;
        qWarning().noquote() << "FfmpegEncoderSink: recording failed:" << reason
                             << "- the streams go on; a new file is tried every second";
    }
    if (m_mux.isOpen()) {
        // No trailer: the I/O has failed and writes nothing more. The close cuts off the
        // fragment the failure tore, and the whole ones before it play as they are.
        const QString path = m_mux.openedUrl();
        const bool noPackets = m_mux.packetsWritten() == m_packetsAtOpen;
        m_mux.close(false);
        if (noPackets || m_mux.wholeEnd() <= m_mux.headerEnd())
            QFile::remove(path); // a header at most: nothing of the show
    }
    if (m_rotating) {
        m_rotating = false;
        m_lost.fetch_add(qint64(m_pending.size()));
        m_pending.clear();
    }
    m_nextAttempt = now() + kRetryInterval;
}

bool FileRecorder::tryResume()
{
    m_nextAttempt = now() + kRetryInterval;
    ++m_attempts;
    QString path = m_basePath;
    if (m_segments.enabled) {
        ++m_segmentNumber;
        path = segmentPath();
    }
    QString problem;
    if (recordingProblem(path) != OutputProblem::None)
        problem = QStringLiteral("the folder cannot be written");
    else if (QStorageInfo(QFileInfo(path).absolutePath()).bytesAvailable() < kFreeToResume)
        problem = QStringLiteral("no space left on the disk");
    else if (const int err = openSegmentOrFile(path); err < 0)
        problem = ioReason(err);
    if (!problem.isEmpty()) {
        if (m_segments.enabled)
            --m_segmentNumber;
        if (reconnect::shouldLog(m_attempts, 3, 60))
            qWarning().noquote() << "FfmpegEncoderSink: recording still failed after" << m_attempts
                                 << "attempts:" << problem;
        return false;
    }
    m_failed.store(false);
    m_resumes.fetch_add(1);
    m_segmentOpenedAt = now();
    qInfo().noquote() << "FfmpegEncoderSink: recording resumed into" << currentPath();
    return true;
}

void FileRecorder::maybeRotateSegment()
{
    if (!m_segments.enabled || !m_mux.isOpen() || m_rotating)
        return;
    const auto elapsed = now() - m_segmentOpenedAt;
    const bool timeUp = m_segments.minutes > 0 &&
                        elapsed >= std::chrono::milliseconds(qint64(m_segments.minutes * 60000.0));
    const bool sizeUp =
        m_segments.gib > 0 && m_mux.sizeSoFar() >= qint64(m_segments.gib * double(1LL << 30));
    if (!timeUp && !sizeUp)
        return;
    // The cut is at this keyframe, but the old file stays open for a second more: a run that
    // ends within it puts its last moments there instead of into a segment of a few frames.
    m_rotating = true;
    m_rotateAt = now();
}

void FileRecorder::keepFreeSpace()
{
    m_nextSpaceCheck = now() + std::chrono::seconds(1);
    if (m_takeFiles.empty())
        return;
    QStorageInfo disk(QFileInfo(m_takeFiles.back()).absolutePath());
    // Only files this take wrote and has closed: never the one being written.
    const std::size_t keep = m_failed.load() ? 0 : 1;
    while (disk.isValid() && disk.bytesAvailable() < m_segments.keepFreeBytes &&
           m_takeFiles.size() > keep) {
        const QString oldest = m_takeFiles.front();
        if (oldest == m_mux.openedUrl() && m_mux.isOpen())
            break;
        m_takeFiles.erase(m_takeFiles.begin());
        if (!QFile::remove(oldest))
            continue;
        m_deleted.fetch_add(1);
        qInfo().noquote() << "FfmpegEncoderSink: ring recording removed" << oldest << "to keep"
                          << m_segments.keepFreeBytes / (1 << 20) << "MB free";
        disk.refresh();
    }
}

void FileRecorder::finishRotation()
{
    m_rotating = false;
    const int err = m_mux.writeTrailer();
    if (err < 0)
        qWarning().noquote() << "FfmpegEncoderSink: segment trailer failed:"
                             << ffsupport::errorText("av_write_trailer", err);
    m_mux.close(false);
    ++m_segmentNumber;
    const QString path = segmentPath();
    std::vector<std::pair<ffsupport::PacketPtr, bool>> pending;
    pending.swap(m_pending);
    if (const int err = openSegmentOrFile(path); err < 0) {
        m_lost.fetch_add(qint64(pending.size()));
        fail(ioReason(err));
        return;
    }
    m_segmentOpenedAt = m_rotateAt;
    qInfo().noquote() << "FfmpegEncoderSink: recording segment opened" << currentPath();
    for (auto &[packet, video] : pending)
        write(std::move(packet), video);
}

void FileRecorder::close()
{
    if (m_rotating) {
        m_rotating = false;
        for (auto &[packet, video] : m_pending)
            write(std::move(packet), video);
        m_pending.clear();
    }
    m_mux.close(true);
}

} // namespace selvane
