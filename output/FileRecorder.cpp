#include "output/FileRecorder.h"

#include "output/ReconnectPolicy.h"
#include "output/StreamUrl.h"

#include <QDateTime>
#include <QDebug>
#include <QDir>
#include <QFileInfo>

namespace selvane {

namespace {
// A segment cut at the end of a run is never shorter than this.
constexpr auto kShortestSegment = std::chrono::seconds(1);
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

bool FileRecorder::openSegmentOrFile(const QString &path)
{
    MuxContext::Setup setup;
    setup.url = unusedRecordingPath(path);
    setup.originalUrl = m_originalPath;
    return m_mux.open(setup) >= 0;
}

bool FileRecorder::open()
{
    QString path = m_basePath;
    if (m_segments.enabled) {
        m_segmentNumber = 1;
        path = segmentPath();
    }
    if (!openSegmentOrFile(path))
        return false;
    m_segmentOpenedAt = now();
    if (m_segments.enabled)
        qInfo().noquote() << "FfmpegEncoderSink: recording segment opened" << currentPath();
    return true;
}

void FileRecorder::submit(const AVPacket *source, bool video)
{
    if (video && (source->flags & AV_PKT_FLAG_KEY))
        maybeRotateSegment();
    ffsupport::PacketPtr packet(av_packet_clone(source));
    if (!packet) {
        m_uncopied.fetch_add(1);
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
    const int err = m_mux.write(packet.get(), video);
    if (err < 0)
        handleWriteFailure(err);
    else if (m_failureStreak.load() > 0 && m_mux.ioHealthy())
        m_failureStreak.store(0);
}

void FileRecorder::handleWriteFailure(int err)
{
    // The file stays open and the next packet goes to it again; how long the streak has lasted
    // is what the router judges when it decides the recording is lost.
    if (m_failureStreak.load() == 0)
        m_failingSince.store(now());
    const qint64 streak = m_failureStreak.fetch_add(1) + 1;
    if (reconnect::shouldLog(streak, 12, 200))
        qWarning().noquote()
            << "FfmpegEncoderSink: file mux write failed (will retry same file, streak" << streak
            << ")" << ffsupport::errorText("write", err);
}

qint64 FileRecorder::fileFailingForMs() const
{
    if (m_failureStreak.load() == 0)
        return 0;
    return std::chrono::duration_cast<std::chrono::milliseconds>(now() - m_failingSince.load())
        .count();
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
    if (!openSegmentOrFile(path)) {
        qWarning("FfmpegEncoderSink: recording segment rotation failed");
        m_uncopied.fetch_add(qint64(pending.size()));
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
