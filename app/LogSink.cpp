#include "app/LogSink.h"

#include "app/LogSinkPlatform.h"
#include "net/SecretMask.h"

#include <QCoreApplication>
#include <QDateTime>
#include <QDir>
#include <QFileInfo>
#include <QStandardPaths>
#include <QTimer>
#include <algorithm>
#include <atomic>
#include <chrono>
#include <condition_variable>
#include <cstdio>
#include <cstdlib>
#include <deque>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

extern "C" {
#include <libavutil/log.h>
}

namespace selvane {

namespace plat = logplatform;

namespace {

constexpr qint64 kDefaultMaxFileBytes = 20971520;
constexpr int kDefaultMaxFileCount = 5;
constexpr int kMaxFileCountLimit = 32;
constexpr int kDefaultMaxQueueLines = 20000;
constexpr int kMinQueueLinesFromEnv = 1000;
constexpr int kDefaultFfmpegLevel = AV_LOG_WARNING; // 24
constexpr int kWriterBatchLines = 512;
constexpr auto kWriterWait = std::chrono::milliseconds(250);
constexpr unsigned kPipeBufferBytes = 65536;
constexpr std::size_t kIoChunkBytes = 4096;
constexpr auto kReaderPoll = std::chrono::milliseconds(50);
// A partial stderr line is logged once more than 400 ms passed without new bytes.
constexpr auto kPartialLineAfter = std::chrono::nanoseconds(399999999);

struct LogFile
{
    int fd = -1;
    std::string buffer; // lines written but not yet flushed to the descriptor
};

qint64 g_maxFileBytes = kDefaultMaxFileBytes;
int g_maxFileCount = kDefaultMaxFileCount;
int g_maxQueueLines = kDefaultMaxQueueLines;
int g_ffmpegLevel = kDefaultFfmpegLevel;

std::mutex g_queueMutex;
std::mutex g_fileMutex;
std::condition_variable g_wake;
std::deque<QByteArray> g_queue;

// Guarded by g_fileMutex.
std::string g_filePath;
QString g_filePathText;
LogFile *g_file = nullptr;
qint64 g_bytesWritten = 0;

std::atomic<bool> g_stop{false};
// Lines queued but not yet written and flushed: what a console signal waits for.
std::atomic<int> g_unwritten{0};
std::thread g_writer;
bool g_writerStarted = false;

int g_savedStderr = -1;
int g_pipeRead = -1;
std::atomic<bool> g_pipeActive{false};
std::atomic<bool> g_readerStop{false};
std::thread g_reader;
bool g_stderrRedirected = false;

bool g_handlerInstalled = false;
std::atomic_flag g_shutdownDone = ATOMIC_FLAG_INIT;
std::atomic_flag g_exitHookRegistered = ATOMIC_FLAG_INIT;

void flushFileLocked()
{
    if (!g_file || g_file->fd < 0 || g_file->buffer.empty())
        return;
    const char *data = g_file->buffer.data();
    std::size_t left = g_file->buffer.size();
    while (left > 0) {
        const std::int64_t written = plat::writeDescriptor(g_file->fd, data, left);
        if (written < 1)
            break;
        data += written;
        left -= static_cast<std::size_t>(written);
    }
    g_file->buffer.clear();
}

void closeFileLocked()
{
    if (!g_file)
        return;
    flushFileLocked();
    plat::closeDescriptor(g_file->fd);
    g_file->fd = -1;
}

std::string numberedPath(int k)
{
    return g_filePath + "." + std::to_string(k);
}

void shiftOldFiles()
{
    const int count = g_maxFileCount;
    // With a count of 1 nothing is shifted: the live file is reopened for appending and keeps
    // growing past the limit.
    if (count < 2)
        return;
    plat::removeFile(numberedPath(count - 1));
    for (int i = count - 2; i >= 1; --i) {
        if (plat::fileExists(numberedPath(i))) {
            if (plat::fileExists(numberedPath(i + 1)))
                plat::removeFile(numberedPath(i + 1));
            plat::renameFile(numberedPath(i), numberedPath(i + 1));
        }
    }
    if (plat::fileExists(g_filePath)) {
        if (plat::fileExists(numberedPath(1)))
            plat::removeFile(numberedPath(1));
        plat::renameFile(g_filePath, numberedPath(1));
    }
}

void rotateIfNeededLocked()
{
    if (!g_file || g_file->fd < 0 || g_maxFileBytes < 1 || g_bytesWritten < g_maxFileBytes)
        return;
    closeFileLocked();
    shiftOldFiles();
    g_file->fd = plat::openAppend(g_filePath);
    if (g_file->fd >= 0) {
        g_bytesWritten = 0;
    } else {
        std::fprintf(stderr, "selvane: log rotate reopen failed for %s\n", g_filePath.c_str());
        std::fflush(stderr);
    }
}

void appendLineLocked(const QByteArray &line)
{
    if (!g_file || g_file->fd < 0 || line.isEmpty())
        return;
    g_file->buffer.append(line.constData(), static_cast<std::size_t>(line.size()));
    g_file->buffer.push_back('\n');
    g_bytesWritten += line.size() + 1;
    rotateIfNeededLocked();
}

void writeLineToFile(const QByteArray &line)
{
    std::lock_guard lock(g_fileMutex);
    appendLineLocked(line);
}

void mirrorToDebugger(const QByteArray &line)
{
#ifdef _WIN32
    plat::debugOutput((line + '\n').constData());
#else
    Q_UNUSED(line);
#endif
}

void writerLoop()
{
    std::vector<QByteArray> batch;
    batch.reserve(kWriterBatchLines);
    for (;;) {
        {
            std::unique_lock lock(g_queueMutex);
            const auto deadline = std::chrono::steady_clock::now() + kWriterWait;
            g_wake.wait_until(lock, deadline, [] { return g_stop.load() || !g_queue.empty(); });
            while (!g_queue.empty() && batch.size() < static_cast<std::size_t>(kWriterBatchLines)) {
                batch.push_back(std::move(g_queue.front()));
                g_queue.pop_front();
            }
        }
        for (const QByteArray &line : batch) {
            writeLineToFile(line);
            mirrorToDebugger(line);
        }
        if (!batch.empty()) {
            std::lock_guard lock(g_fileMutex);
            flushFileLocked();
            g_unwritten.fetch_sub(int(batch.size()));
        } else if (g_stop.load()) {
            break;
        }
        batch.clear();
    }
    for (;;) {
        QByteArray line;
        {
            std::lock_guard lock(g_queueMutex);
            if (g_queue.empty())
                break;
            line = std::move(g_queue.front());
            g_queue.pop_front();
        }
        writeLineToFile(line);
        mirrorToDebugger(line);
        g_unwritten.fetch_sub(1);
    }
    std::lock_guard lock(g_fileMutex);
    flushFileLocked();
}

// Writes all of `data` to the saved stderr descriptor in chunks of at most 4096 bytes.
void writeRawToSavedStderr(const char *data, std::size_t size)
{
    const int fd = g_savedStderr;
    if (fd < 0)
        return;
    while (size > 0) {
        const std::int64_t written = plat::writeDescriptor(fd, data, std::min(size, kIoChunkBytes));
        if (written < 1)
            break;
        data += written;
        size -= static_cast<std::size_t>(written);
    }
}

void writeToSavedStderr(const char *data, std::size_t size)
{
    writeRawToSavedStderr(data, size);
    writeRawToSavedStderr("\n", 1);
}

// A line somebody wrote to stderr: console output keeps working, line by line, with its
// secrets masked like every other line.
void passCapturedLine(const QByteArray &line)
{
    const QByteArray masked = selvane::maskSecrets(line);
    enqueueLogLine(masked);
    writeToSavedStderr(masked.constData(), static_cast<std::size_t>(masked.size()));
}

// Reads what is waiting in the pipe (without blocking); false when the pipe is gone.
bool readAvailable(int fd, QByteArray &line, std::chrono::steady_clock::time_point &lastData,
                   bool *gotData)
{
    char chunk[kIoChunkBytes];
    *gotData = false;
    const std::int64_t available = plat::peekPipe(fd);
    if (available < 0)
        return false;
    if (available == 0)
        return true;
    const std::int64_t got = plat::readPipe(
        fd, chunk, std::min<std::size_t>(static_cast<std::size_t>(available), sizeof chunk));
    if (got <= 0)
        return false;
    *gotData = true;
    lastData = std::chrono::steady_clock::now();
    for (std::int64_t i = 0; i < got; ++i) {
        const char c = chunk[i];
        if (c == '\n') {
            if (!line.isEmpty())
                passCapturedLine(line);
            line.clear();
        } else if (c != '\r') {
            line.append(c);
        }
    }
    return true;
}

void stderrReaderLoop()
{
    const int fd = g_pipeRead;
    if (fd < 0)
        return;
    QByteArray line;
    line.reserve(512);
    auto lastData = std::chrono::steady_clock::now();
    bool gotData = false;
    while (!g_readerStop.load()) {
        if (!readAvailable(fd, line, lastData, &gotData))
            break;
        if (gotData)
            continue;
        if (!line.isEmpty() && std::chrono::steady_clock::now() - lastData > kPartialLineAfter) {
            passCapturedLine(line);
            line.clear();
        }
        std::this_thread::sleep_for(kReaderPoll);
    }
    // What was written just before the stop (a last error message, say) still reaches the
    // console.
    while (readAvailable(fd, line, lastData, &gotData) && gotData) {
    }
    if (!line.isEmpty())
        passCapturedLine(line);
}

void ffmpegLogCallback(void *avcl, int level, const char *fmt, va_list args)
{
    if (level > g_ffmpegLevel)
        return;
    char text[4096];
    int printPrefix = 1;
    va_list copy;
    va_copy(copy, args);
    av_log_format_line(avcl, level, fmt, copy, text, sizeof text, &printPrefix);
    va_end(copy);
    text[sizeof text - 1] = '\0';
    QByteArray line(text);
    while (!line.isEmpty() && (line.endsWith('\n') || line.endsWith('\r')))
        line.chop(1);
    if (line.isEmpty())
        return;
    // FFmpeg prints whole URLs (with their keys) when it opens or fails to open them.
    line = selvane::maskSecrets(line);
    enqueueLogLine(line);
    if (g_pipeActive.load()) {
        writeToSavedStderr(line.constData(), static_cast<std::size_t>(line.size()));
    } else {
        std::fwrite(line.constData(), 1, static_cast<std::size_t>(line.size()), stderr);
        std::fputc('\n', stderr);
        std::fflush(stderr);
        mirrorToDebugger(line);
    }
}

void qtMessageHandler(QtMsgType type, const QMessageLogContext &context, const QString &message)
{
    const QString masked = selvane::maskSecrets(message);
    const QByteArray text = qFormatLogMessage(type, context, masked).toUtf8();
    enqueueLogLine(text);
    if (g_pipeActive.load())
        writeToSavedStderr(text.constData(), static_cast<std::size_t>(text.size()));
    else
        qt_message_output(type, context, masked);
    if (type == QtFatalMsg) {
        shutdownLogSink();
        std::fflush(stderr);
        std::abort();
    }
}

void readEnvironment()
{
    bool ok = false;
    const qint64 maxBytes =
        QString::fromLatin1(qgetenv("SELVANE_LOG_MAX_BYTES")).toLongLong(&ok, 10);
    if (ok && maxBytes >= 1)
        g_maxFileBytes = maxBytes;
    const int maxFiles = QString::fromLatin1(qgetenv("SELVANE_LOG_MAX_FILES")).toInt(&ok, 10);
    if (ok && maxFiles >= 1 && maxFiles <= kMaxFileCountLimit)
        g_maxFileCount = maxFiles;
    const int queueMax = QString::fromLatin1(qgetenv("SELVANE_LOG_QUEUE_MAX")).toInt(&ok, 10);
    if (ok && queueMax >= kMinQueueLinesFromEnv)
        g_maxQueueLines = queueMax;
}

void openLogFile()
{
    std::lock_guard lock(g_fileMutex);
    if (g_file) {
        closeFileLocked();
        delete g_file;
        g_file = nullptr;
    }
    auto *file = new LogFile;
    file->fd = plat::openTruncate(g_filePath);
    if (file->fd >= 0) {
        g_file = file;
        g_bytesWritten = plat::descriptorSize(file->fd);
    } else {
        delete file;
        std::fprintf(stderr, "selvane: could not open log file %s, stderr only\n",
                     g_filePath.c_str());
        std::fflush(stderr);
    }
}

void redirectStderr()
{
    if (g_stderrRedirected)
        return;
    g_stderrRedirected = true;
    std::fflush(stderr);
    const int stderrFd = plat::stderrDescriptor();
    g_savedStderr = plat::duplicateDescriptor(stderrFd);
    bool ok = g_savedStderr >= 0;
    if (ok) {
        int fds[2] = {-1, -1};
        if (!plat::createPipe(fds, kPipeBufferBytes)) {
            plat::closeDescriptor(g_savedStderr);
            g_savedStderr = -1;
            ok = false;
        } else if (!plat::replaceDescriptor(fds[1], stderrFd)) {
            plat::closeDescriptor(fds[0]);
            plat::closeDescriptor(fds[1]);
            plat::closeDescriptor(g_savedStderr);
            g_savedStderr = -1;
            g_pipeRead = -1;
            ok = false;
        } else {
            plat::closeDescriptor(fds[1]);
            g_pipeRead = fds[0];
        }
    }
    if (!ok) {
        std::fprintf(stderr, "selvane: stderr pipe not available; line aggregation disabled\n");
        std::fflush(stderr);
        return;
    }
    g_pipeActive.store(true);
    g_readerStop.store(false);
    g_reader = std::thread(stderrReaderLoop);
}

void shutdownAtExit()
{
    shutdownLogSink();
}

} // namespace

QString logDirectoryPath()
{
    const QString location = QStandardPaths::writableLocation(QStandardPaths::GenericDataLocation);
    if (!location.isEmpty()) {
        const QString dir =
            QDir(location).filePath(QStringLiteral("Ostrel/%1/logs").arg("Selvane"));
        if (QDir().mkpath(dir))
            return dir;
    }
    const QString fallback = QDir(QCoreApplication::applicationDirPath()).filePath("logs");
    QDir().mkpath(fallback);
    return fallback;
}

void pruneOversizedLogs(qint64 limitBytes)
{
    if (limitBytes < 1)
        return;
    const QDir dir(logDirectoryPath());
    const QFileInfoList files =
        dir.entryInfoList({QStringLiteral("selvane*.log*")}, QDir::Files, QDir::Unsorted);
    for (const QFileInfo &info : files) {
        if (info.size() > limitBytes)
            QFile::remove(info.absoluteFilePath());
    }
}

void enqueueLogLine(const QByteArray &bytes)
{
    qsizetype end = bytes.size();
    while (end > 0 && (bytes[end - 1] == '\n' || bytes[end - 1] == '\r'))
        --end;
    if (end == 0)
        return;
    {
        std::lock_guard lock(g_queueMutex);
        while (g_queue.size() >= static_cast<std::size_t>(g_maxQueueLines)) {
            g_queue.pop_front();
            g_unwritten.fetch_sub(1);
        }
        g_queue.push_back(end == bytes.size() ? bytes : bytes.left(end));
        g_unwritten.fetch_add(1);
    }
    g_wake.notify_one();
}

void reassertFfmpegLogging()
{
    av_log_set_callback(ffmpegLogCallback);
    av_log_set_level(g_ffmpegLevel);
}

void initLogSink()
{
    QCoreApplication *app = QCoreApplication::instance();
    if (!app || g_writerStarted)
        return;

    readEnvironment();

    const QString dir = logDirectoryPath();
    // Starts within one second share a time stamp: each gets a file of its own.
    const QString stamp = QDateTime::currentDateTime().toString("yyyyMMdd_HHmmss");
    QString name = QStringLiteral("selvane_%1.log").arg(stamp);
    for (int n = 2; QFileInfo::exists(QDir(dir).filePath(name)) && n < 1000; ++n)
        name = QStringLiteral("selvane_%1_%2.log").arg(stamp).arg(n);
    {
        std::lock_guard lock(g_fileMutex);
        g_filePathText = QDir(dir).filePath(name);
        g_filePath = QDir::toNativeSeparators(g_filePathText).toLocal8Bit().toStdString();
    }
    openLogFile();

    g_stop.store(false);
    g_writerStarted = true;
    g_writer = std::thread(writerLoop);

    redirectStderr();

    g_ffmpegLevel = kDefaultFfmpegLevel;
    bool ok = false;
    const int level = QString::fromLatin1(qgetenv("SELVANE_AV_LOG_LEVEL")).toInt(&ok, 10);
    if (ok)
        g_ffmpegLevel = level;

    av_log_set_level(g_ffmpegLevel);
    av_log_set_callback(ffmpegLogCallback);
    qInstallMessageHandler(qtMessageHandler);
    g_handlerInstalled = true;

    plat::installAbortHandler(waitForWriter);
    plat::installConsoleHandler(waitForWriter);

    if (!g_exitHookRegistered.test_and_set())
        std::atexit(shutdownAtExit);
    QObject::connect(
        app, &QCoreApplication::aboutToQuit, app, [] { shutdownLogSink(); }, Qt::DirectConnection);

    qInfo().noquote() << "selvane log file:" << g_filePathText;
    // Components that initialise FFmpeg later (the multimedia backend among them) may install
    // log callbacks of their own; take the callback back a few times during start-up.
    QTimer::singleShot(0, app, [] { reassertFfmpegLogging(); });
    QTimer::singleShot(200, app, [] { reassertFfmpegLogging(); });
    QTimer::singleShot(2000, Qt::CoarseTimer, app, [] { reassertFfmpegLogging(); });
}

void shutdownLogSink()
{
    if (g_shutdownDone.test_and_set())
        return;

    // The stderr reader first: what was written to stderr last (the error a show ends with)
    // goes into the queue before the writer drains it for the last time.
    if (g_pipeActive.load()) {
        g_readerStop.store(true);
        const int stderrFd = plat::stderrDescriptor();
        if (stderrFd != g_savedStderr) {
            std::fflush(stderr);
            // Puts the real stderr back and closes the pipe's write end, which ends the reader.
            plat::replaceDescriptor(g_savedStderr, stderrFd);
        }
        g_pipeActive.store(false);
        if (g_reader.joinable())
            g_reader.join();
        plat::closeDescriptor(g_pipeRead);
        plat::closeDescriptor(g_savedStderr);
        g_pipeRead = -1;
        g_savedStderr = -1;
    }

    {
        std::lock_guard lock(g_queueMutex);
        g_stop.store(true);
    }
    g_wake.notify_all();
    if (g_writer.joinable())
        g_writer.join();

    av_log_set_callback(nullptr);

    if (g_handlerInstalled) {
        qInstallMessageHandler(nullptr);
        g_handlerInstalled = false;
    }

    std::lock_guard lock(g_fileMutex);
    if (g_file) {
        closeFileLocked();
        delete g_file;
        g_file = nullptr;
    }
}

void waitForWriter()
{
    // Called in a signal handler: only an atomic and a sleep, never the heap or a lock. The
    // writer thread drains the queue on its own; the process ends once it has, or after half a
    // second (when the writer itself is what failed).
    for (int i = 0; i < 50 && g_unwritten.load() > 0; ++i)
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
}

LogSinkSettings logSinkSettings()
{
    return {g_maxFileBytes, g_maxFileCount, g_maxQueueLines, g_ffmpegLevel};
}

QString logFilePath()
{
    std::lock_guard lock(g_fileMutex);
    return g_filePathText;
}

} // namespace selvane
