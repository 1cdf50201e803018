#pragma once

// The process-wide log sink: Qt messages, FFmpeg's av_log output and everything written to
// stderr become whole lines in one bounded queue; a single writer thread appends them to a
// rotating file "selvane_<yyyyMMdd_HHmmss>.log" in logDirectoryPath(). Producers on any thread
// only take the queue mutex; the disk is touched by the writer thread alone, which a fatal
// signal gives half a second to write what is queued (waitForWriter). Started once by main,
// stopped exactly once.

#include <QByteArray>
#include <QString>
#include <QtGlobal>

namespace selvane {

QString logDirectoryPath();
void pruneOversizedLogs(qint64 limitBytes);
void initLogSink();
void shutdownLogSink();
void enqueueLogLine(const QByteArray &bytes);
void reassertFfmpegLogging();
// Safe in a signal handler: waits (at most half a second) for the writer thread to have written
// every queued line.
void waitForWriter();

// Start-up prune limit used by main: half the default rotation size, so that rotated files
// left by earlier runs are removed at the next start.
inline constexpr qint64 kStartupLogPruneBytes = 10485760;

// The limits in force (after the environment was read by initLogSink) and the live file.
struct LogSinkSettings
{
    qint64 maxFileBytes = 0;
    int maxFileCount = 0;
    int maxQueueLines = 0;
    int ffmpegLogLevel = 0;
};
LogSinkSettings logSinkSettings();
QString logFilePath();

} // namespace selvane
