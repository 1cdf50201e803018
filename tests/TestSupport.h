#pragma once

// What the suites share: media made at test time with the ffmpeg CLI, real servers on loopback
// (nginx-rtmp, a PulseAudio null sink), bounded runs of the selvane binary in a private home,
// recordings read back with ffprobe and decoded or copied with ffmpeg, solid pictures from a
// pool, captured warnings, and the flash-and-beep analysis that measures how far sound is from
// its picture.

#include "engine/Problem.h"
#include "media/FramePool.h"

#include <QColor>
#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QMutex>
#include <QProcess>
#include <QProcessEnvironment>
#include <QStringList>
#include <QTcpServer>
#include <QTcpSocket>
#include <QTemporaryDir>
#include <QThread>
#include <algorithm>
#include <cmath>
#include <csignal>
#include <cstring>
#include <string>
#include <vector>

namespace testsupport {

// A program the build made for the tests (the selvane executable, a helper): ctest gives its
// path in the environment, so that a test's object code holds no path of the tree and a fresh
// clone compiles it from the compiler cache.
inline QString builtProgram(const char *variable)
{
    const QString path = qEnvironmentVariable(variable);
    if (path.isEmpty())
        qFatal("%s is not set: run the suites through ctest", variable);
    return path;
}

// ---- media ----

// Runs `ffmpeg -hide_banner -loglevel error -y ARGS`; true on success (its output in `log`).
inline bool runFfmpeg(const QStringList &args, QByteArray *log = nullptr, int timeoutMs = 120000)
{
    QProcess process;
    process.setProcessChannelMode(QProcess::MergedChannels);
    process.start("ffmpeg",
                  QStringList{"-hide_banner", "-loglevel", "error", "-nostdin", "-y"} + args);
    if (!process.waitForStarted(10000))
        return false;
    const bool finished = process.waitForFinished(timeoutMs);
    if (log)
        *log = process.readAll();
    if (!finished) {
        process.kill();
        process.waitForFinished(2000);
        return false;
    }
    return process.exitStatus() == QProcess::NormalExit && process.exitCode() == 0;
}

// A clip from lavfi graphs (`audio` may be empty), encoded with the given arguments.
inline bool makeClip(const QString &path, const QString &video, const QString &audio,
                     double seconds, const QStringList &encode, QByteArray *log = nullptr)
{
    QStringList args;
    if (!video.isEmpty())
        args << "-f"
             << "lavfi"
             << "-i" << video;
    if (!audio.isEmpty())
        args << "-f"
             << "lavfi"
             << "-i" << audio;
    args << "-t" << QString::number(seconds) << encode << path;
    return runFfmpeg(args, log);
}

// A picture of one grey value (0..255 in RGB) from `pool`.
inline FrameTokenPtr solidFrame(FramePool &pool, int width, int height, uchar value,
                                qint64 ptsUs = 0)
{
    FrameWriter frame = pool.acquire();
    if (!frame)
        return {};
    frame.prepareI420(width, height);
    const qint64 luma = frame->planeOffset(1);
    std::memset(frame.bits(), 16 + (219 * value + 127) / 255, std::size_t(luma));
    std::memset(frame.bits() + luma, 128, std::size_t(frame->pixels.size() - luma));
    frame->ptsUs = ptsUs;
    return std::move(frame).publish();
}

// One pixel of a picture, in RGB (BT.601, limited range).
inline QColor pixelOf(const FrameToken &frame, int x, int y)
{
    if (!frame.isI420()) {
        const uchar *p = frame.bits() + y * frame.stride + x * 4;
        return QColor(p[0], p[1], p[2], p[3]);
    }
    const double luma = 1.164 * (frame.plane(0)[y * frame.planeStride(0) + x] - 16);
    const int u = frame.plane(1)[(y / 2) * frame.planeStride(1) + x / 2] - 128;
    const int v = frame.plane(2)[(y / 2) * frame.planeStride(2) + x / 2] - 128;
    const auto channel = [](double c) {
        return std::clamp(int(std::lround(c)), 0, 255);
    };
    return QColor(channel(luma + 1.596 * v), channel(luma - 0.392 * u - 0.813 * v),
                  channel(luma + 2.017 * u));
}

inline quint16 freeTcpPort()
{
    QTcpServer server;
    if (!server.listen(QHostAddress::LocalHost, 0))
        return 0;
    const quint16 port = server.serverPort();
    server.close();
    return port;
}

// ---- warnings ----

// Collects the warnings logged while it lives (any thread).
class WarningCapture
{
public:
    WarningCapture()
    {
        s_current = this;
        m_previous = qInstallMessageHandler(handler);
    }
    ~WarningCapture()
    {
        qInstallMessageHandler(m_previous);
        s_current = nullptr;
    }
    QStringList lines() const
    {
        QMutexLocker lock(&m_mutex);
        return m_lines;
    }
    bool contains(const QString &text) const
    {
        for (const QString &line : lines())
            if (line.contains(text))
                return true;
        return false;
    }

private:
    static void handler(QtMsgType type, const QMessageLogContext &, const QString &message)
    {
        if (type == QtWarningMsg && s_current) {
            QMutexLocker lock(&s_current->m_mutex);
            s_current->m_lines << message;
        }
    }
    inline static WarningCapture *s_current = nullptr;
    QtMessageHandler m_previous = nullptr;
    mutable QMutex m_mutex;
    QStringList m_lines;
};

// ---- processes ----

struct ProcessResult
{
    bool finished = false;
    QProcess::ExitStatus exitStatus = QProcess::NormalExit;
    int exitCode = -1;
    QByteArray out;
    QByteArray err;
    qint64 elapsedMs = 0;
};

// XDG_DATA_HOME, XDG_CONFIG_HOME and XDG_RUNTIME_DIR inside one temporary folder, so that
// settings, logs and the instance lock never touch the user's own.
class IsolatedHome
{
public:
    IsolatedHome()
    {
        QDir root(m_dir.path());
        for (const char *sub : {"data", "config", "run"})
            root.mkpath(sub);
        QFile::setPermissions(root.filePath("run"),
                              QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
    }
    QString path(const QString &sub = {}) const { return QDir(m_dir.path()).filePath(sub); }
    QString logDir() const { return path("data/Ostrel/Selvane/logs"); }
    QProcessEnvironment environment() const
    {
        QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
        env.insert("XDG_DATA_HOME", path("data"));
        env.insert("XDG_CONFIG_HOME", path("config"));
        env.insert("XDG_RUNTIME_DIR", path("run"));
        env.insert("QT_QPA_PLATFORM", "offscreen");
        for (const char *name : {"SELVANE_LOG_MAX_BYTES", "SELVANE_LOG_MAX_FILES",
                                 "SELVANE_LOG_QUEUE_MAX", "SELVANE_AV_LOG_LEVEL"})
            env.remove(name);
        return env;
    }

private:
    QTemporaryDir m_dir;
};

inline ProcessResult runProcess(const QString &program, const QStringList &arguments,
                                const QProcessEnvironment &env, int timeoutMs = 30000)
{
    ProcessResult result;
    QProcess process;
    process.setProcessEnvironment(env);
    QElapsedTimer timer;
    timer.start();
    process.start(program, arguments);
    if (!process.waitForStarted(timeoutMs))
        return result;
    result.finished = process.waitForFinished(timeoutMs);
    result.elapsedMs = timer.elapsed();
    if (!result.finished) {
        process.kill();
        process.waitForFinished(2000);
    }
    result.exitStatus = process.exitStatus();
    result.exitCode = process.exitCode();
    result.out = process.readAllStandardOutput();
    result.err = process.readAllStandardError();
    return result;
}

inline QByteArray readAll(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

// ---- reading recordings back ----

struct ProbedStream
{
    QString codec;
    qint64 frames = -1; // counted by decoding
    double duration = 0;
};

struct ProbedFile
{
    bool ok = false;
    QList<ProbedStream> streams;
    double duration = 0;
    QByteArray errors;
    const ProbedStream *stream(const QString &codec) const
    {
        for (const ProbedStream &s : streams)
            if (s.codec == codec)
                return &s;
        return nullptr;
    }
};

inline ProbedFile probeFile(const QString &path, bool countFrames = true)
{
    QProcess process;
    QStringList args{"-v", "error"};
    if (countFrames)
        args << "-count_frames";
    args << "-show_entries"
         << "stream=codec_name,nb_read_frames,duration:format=duration"
         << "-of"
         << "default=nw=1" << path;
    process.start("ffprobe", args);
    ProbedFile result;
    if (!process.waitForFinished(60000))
        return result;
    result.ok = process.exitCode() == 0;
    result.errors = process.readAllStandardError();
    ProbedStream *current = nullptr;
    for (const QByteArray &raw : process.readAllStandardOutput().split('\n')) {
        const QString line = QString::fromUtf8(raw).trimmed();
        const QString key = line.section('=', 0, 0);
        const QString value = line.section('=', 1);
        if (key == "codec_name") {
            result.streams.append({value, -1, 0});
            current = &result.streams.last();
        } else if (key == "nb_read_frames" && current) {
            current->frames = value.toLongLong();
        } else if (key == "duration") {
            if (current && current->duration == 0 && value != "N/A")
                current->duration = value.toDouble();
            else
                result.duration = value.toDouble();
        }
    }
    return result;
}

// One recorded picture's colour, as a letter: r(ed), g(reen), b(lue), y(ellow), k (dark),
// m(ixed: a blend between two). `asStored`: one letter for each picture in the file, none made
// up for gaps in its times.
inline std::string readColours(const QString &file, bool asStored = false)
{
    QProcess ffmpeg;
    QStringList sync;
    if (asStored)
        sync << "-fps_mode"
             << "passthrough";
    ffmpeg.start("ffmpeg", QStringList{"-v", "error", "-i", file, "-vf", "scale=8:6:flags=area"} +
                               sync + QStringList{"-f", "rawvideo", "-pix_fmt", "rgb24", "-"});
    ffmpeg.waitForFinished(60000);
    const QByteArray rgb = ffmpeg.readAllStandardOutput();
    const int size = 8 * 6 * 3;
    std::string colours;
    for (int at = 0; at + size <= rgb.size(); at += size) {
        // The upper two thirds: a slate's words stand below them.
        double r = 0, g = 0, b = 0;
        for (int i = at; i < at + size * 2 / 3; i += 3) {
            r += uchar(rgb[i]);
            g += uchar(rgb[i + 1]);
            b += uchar(rgb[i + 2]);
        }
        r /= 32 * 255.0, g /= 32 * 255.0, b /= 32 * 255.0;
        char c = 'm';
        if (r < 0.2 && g < 0.2 && b < 0.35)
            c = 'k';
        else if (r > 0.8 && g > 0.8 && b < 0.3)
            c = 'y';
        else if (r > 0.8 && g < 0.15 && b < 0.15)
            c = 'r';
        else if (g > 0.4 && r < 0.15 && b < 0.15)
            c = 'g';
        else if (b > 0.8 && r < 0.15 && g < 0.15)
            c = 'b';
        colours += c;
    }
    return colours;
}

// The runs of one colour: (colour, first picture, length), short flickers left out.
struct ColourRun
{
    char colour;
    int first;
    int length;
};
inline std::vector<ColourRun> runsOf(const std::string &colours, int shortest = 5)
{
    std::vector<ColourRun> runs;
    for (int i = 0; i < int(colours.size());) {
        int j = i;
        while (j < int(colours.size()) && colours[std::size_t(j)] == colours[std::size_t(i)])
            ++j;
        if (j - i >= shortest) {
            if (!runs.empty() && runs.back().colour == colours[std::size_t(i)])
                runs.back().length = j - runs.back().first;
            else
                runs.push_back({colours[std::size_t(i)], i, j - i});
        }
        i = j;
    }
    return runs;
}

inline std::string sequence(const std::vector<ColourRun> &runs)
{
    std::string s;
    for (const ColourRun &run : runs)
        s += run.colour;
    return s;
}

// What decoding every stream of the file to the end says at level "error": empty when the file
// opens and all of it decodes.
inline QByteArray decodeErrors(const QString &path)
{
    QProcess process;
    process.start("ffmpeg", {"-v", "error", "-nostdin", "-i", path, "-f", "null", "-"});
    if (!process.waitForFinished(60000))
        return "ffmpeg did not finish";
    QByteArray errors = process.readAllStandardError();
    if (process.exitStatus() != QProcess::NormalExit || process.exitCode() != 0)
        errors += "ffmpeg exit code " + QByteArray::number(process.exitCode());
    return errors;
}

// The MD5 of each video packet of a file in file order, copied, not decoded: two recordings of
// the same encoder agree packet for packet where both hold the same pictures.
inline QStringList videoPacketHashes(const QString &path)
{
    QProcess process;
    process.start("ffmpeg", {"-v", "error", "-nostdin", "-i", path, "-map", "0:v", "-c", "copy",
                             "-f", "framemd5", "-"});
    process.waitForFinished(60000);
    QStringList hashes;
    for (const QByteArray &line : process.readAllStandardOutput().split('\n'))
        if (!line.startsWith('#') && !line.trimmed().isEmpty())
            hashes << QString::fromLatin1(line.split(',').last().trimmed());
    return hashes;
}

// True when the first video frame of the file is a key frame.
inline bool startsWithKeyFrame(const QString &path)
{
    QProcess process;
    process.start("ffprobe", {"-v", "error", "-select_streams", "v:0", "-read_intervals", "%+#1",
                              "-show_entries", "frame=key_frame", "-of", "csv=p=0", path});
    process.waitForFinished(20000);
    return process.readAllStandardOutput().trimmed().startsWith("1");
}

// ---- flash and beep: how far sound is from its picture ----

// Mono s16 samples of a file's audio and the time of its first sample.
// The level in dB of a tone in `count` samples from `first` (Goertzel), 48 kHz mono.
inline double toneDb(const std::vector<std::int16_t> &samples, qint64 first, int count, double hz)
{
    const double w = 2 * M_PI * hz / 48000.0, coefficient = 2 * std::cos(w);
    double s1 = 0, s2 = 0;
    for (qint64 i = std::max<qint64>(0, first); i < first + count && i < qint64(samples.size());
         ++i) {
        const double s = samples[std::size_t(i)] + coefficient * s1 - s2;
        s2 = s1;
        s1 = s;
    }
    const double power = s1 * s1 + s2 * s2 - coefficient * s1 * s2;
    return 10 * std::log10(std::max(power, 1e-9));
}

inline bool decodeAudio(const QString &file, std::vector<std::int16_t> *samples,
                        double *startSeconds)
{
    QProcess probe;
    probe.start("ffprobe", {"-v", "error", "-select_streams", "a:0", "-show_entries",
                            "stream=start_time", "-of", "csv=p=0", file});
    probe.waitForFinished(20000);
    // A transport stream lists its streams twice (in its program and on their own).
    *startSeconds = probe.readAllStandardOutput().trimmed().split('\n').value(0).toDouble();
    QProcess decode;
    decode.start("ffmpeg", {"-v", "error", "-i", file, "-map", "0:a:0", "-ac", "1", "-ar", "48000",
                            "-f", "s16le", "-"});
    decode.waitForFinished(120000);
    const QByteArray raw = decode.readAllStandardOutput();
    samples->resize(std::size_t(raw.size() / 2));
    if (samples->empty())
        return false;
    std::memcpy(samples->data(), raw.constData(), samples->size() * 2);
    return true;
}

// A flash of 100 ms and a beep of 100 ms at the start of every second, coded: second n flashes
// at grey level 40 + 24 * (n mod 8) and beeps at 500 + 250 * (n mod 8) Hz, so that a flash and a
// beep can be paired without doubt up to about four seconds apart. As lavfi graphs for the
// picture and the sound, and as a channel address.
inline QString codedFlashGraph(int width = 320, int height = 240, double fps = 30)
{
    return QStringLiteral("color=c=black:size=%1x%2:rate=%3,geq=lum='if(lt(mod(T\\,1)\\,0.1)\\,"
                          "40+24*mod(floor(T)\\,8)\\,16)':cb=128:cr=128")
        .arg(width)
        .arg(height)
        .arg(fps);
}
inline QString codedBeepGraph()
{
    return QStringLiteral("aevalsrc=exprs='if(lt(mod(t\\,1)\\,0.1)\\,0.5*sin(2*PI*(500+250*mod("
                          "floor(t)\\,8))*t)\\,0)':sample_rate=48000");
}

inline QString codedFlashBeepAddress()
{
    return "lavfi://" + codedFlashGraph() + "[out0];" + codedBeepGraph() + "[out1]";
}

// Sound minus picture, in seconds, for every coded flash of a recording that has its beep.
struct SyncMeasure
{
    QList<double> offsets;
    double median = 0;
    double spread = 0; // largest minus smallest
    double first = 0;  // offsets at the start and the end of the recording: drift
    double last = 0;
};
inline SyncMeasure measureCodedSync(const QString &file)
{
    SyncMeasure m;
    QProcess probe;
    probe.start("ffprobe", {"-v", "error", "-f", "lavfi", "-i", "movie=" + file + ",signalstats",
                            "-show_entries", "frame=pts_time:frame_tags=lavfi.signalstats.YAVG",
                            "-of", "csv=p=0"});
    probe.waitForFinished(180000);
    QList<std::pair<double, int>> flashes;
    bool bright = false;
    for (const QByteArray &line : probe.readAllStandardOutput().split('\n')) {
        const QList<QByteArray> f = line.trimmed().split(',');
        if (f.size() < 2)
            continue;
        const double y = f[1].toDouble();
        if (!bright && y > 30)
            flashes.append({f[0].toDouble(), int(std::lround((y - 40) / 24.0)) & 7});
        bright = y > 30;
    }
    std::vector<std::int16_t> samples;
    double start = 0;
    if (!decodeAudio(file, &samples, &start))
        return m;
    QList<std::pair<double, int>> beeps;
    for (qsizetype i = 0; i + 4000 < qsizetype(samples.size()); ++i) {
        if (std::abs(int(samples[std::size_t(i)])) < 3000)
            continue;
        int crossings = 0; // over the 80 ms after the onset
        for (qsizetype k = i + 1; k < i + 3840; ++k)
            crossings += (samples[std::size_t(k - 1)] < 0) != (samples[std::size_t(k)] < 0);
        const double hz = crossings / 2.0 / 0.08;
        beeps.append({start + double(i) / 48000.0, int(std::lround((hz - 500) / 250.0)) & 7});
        i += 24000; // the next beep is a second later
    }
    for (const auto &[t, code] : flashes) {
        double best = 1e9;
        for (const auto &[b, beepCode] : beeps)
            if (beepCode == code && std::abs(b - t) < std::abs(best))
                best = b - t;
        if (std::abs(best) < 4.0)
            m.offsets << best;
    }
    if (m.offsets.isEmpty())
        return m;
    QList<double> sorted = m.offsets;
    std::sort(sorted.begin(), sorted.end());
    m.median = sorted[sorted.size() / 2];
    m.spread = sorted.last() - sorted.first();
    m.first = m.offsets.first();
    m.last = m.offsets.last();
    return m;
}

// ---- servers on loopback ----

// nginx with the rtmp module on a free port, started and stopped by PID, with its own prefix;
// with `wwwRoot` it also serves that folder over HTTP (HLS playlists) on httpPort().
// freeze()/thaw() stop and continue it to simulate a server that has gone silent.
class RtmpServer
{
public:
    ~RtmpServer() { stop(); }

    bool start(quint16 port = 0, const QString &wwwRoot = {})
    {
        m_port = port ? port : freeTcpPort();
        m_httpPort = wwwRoot.isEmpty() ? 0 : freeTcpPort();
        const QString http =
            wwwRoot.isEmpty()
                ? QString()
                : QStringLiteral(
                      "http { access_log off; server { listen 127.0.0.1:%1; root %2;\n"
                      "  types { application/vnd.apple.mpegurl m3u8; video/mp2t ts; } } }\n")
                      .arg(m_httpPort)
                      .arg(wwwRoot);
        QDir prefix(m_dir.path());
        prefix.mkpath("logs");
        QFile conf(prefix.filePath("nginx.conf"));
        if (!conf.open(QIODevice::WriteOnly))
            return false;
        conf.write(
            QStringLiteral(
                "load_module /usr/lib/nginx/modules/ngx_rtmp_module.so;\n"
                "daemon off;\nmaster_process off;\nworker_processes 1;\n"
                "pid %1/nginx.pid;\nerror_log %1/logs/error.log warn;\n"
                "events { worker_connections 256; }\n"
                "rtmp { server { listen 127.0.0.1:%2; chunk_size 4096;\n"
                "  application live { live on; record off; drop_idle_publisher 5s; }\n"
                "  application alt { live on; record off; drop_idle_publisher 5s; } } }\n%3")
                .arg(m_dir.path())
                .arg(m_port)
                .arg(http)
                .toUtf8());
        conf.close();
        m_process.setProcessChannelMode(QProcess::MergedChannels);
        m_process.start("nginx", {"-c", prefix.filePath("nginx.conf"), "-p", m_dir.path(), "-e",
                                  prefix.filePath("logs/error.log")});
        if (!m_process.waitForStarted(5000))
            return false;
        QElapsedTimer timer;
        timer.start();
        while (timer.elapsed() < 5000) {
            QTcpSocket probe;
            probe.connectToHost("127.0.0.1", m_port);
            if (probe.waitForConnected(200))
                return true;
            if (m_process.state() != QProcess::Running)
                return false;
            QThread::msleep(50);
        }
        return false;
    }

    void stop()
    {
        if (m_process.state() == QProcess::NotRunning)
            return;
        thaw();
        m_process.kill();
        m_process.waitForFinished(5000);
    }

    void freeze() { ::kill(pid_t(m_process.processId()), SIGSTOP); }
    void thaw() { ::kill(pid_t(m_process.processId()), SIGCONT); }

    quint16 port() const { return m_port; }
    quint16 httpPort() const { return m_httpPort; }
    // A stream of the application "live" (or "alt", the server's second application).
    QString url(const QString &key, const QString &application = QStringLiteral("live")) const
    {
        return QStringLiteral("rtmp://127.0.0.1:%1/%2/%3").arg(m_port).arg(application, key);
    }
    QByteArray errorLog() const { return readAll(QDir(m_dir.path()).filePath("logs/error.log")); }

private:
    QTemporaryDir m_dir;
    QProcess m_process;
    quint16 m_port = 0;
    quint16 m_httpPort = 0;
};

// A PulseAudio server of the test's own with one null sink.
class PulseServer
{
public:
    ~PulseServer()
    {
        if (m_process.state() != QProcess::NotRunning) {
            m_process.terminate();
            if (!m_process.waitForFinished(3000))
                m_process.kill();
            m_process.waitForFinished(2000);
        }
    }
    bool start(const QString &sinkName)
    {
        QDir root(m_dir.path());
        root.mkpath("run");
        root.mkpath("home");
        QFile::setPermissions(root.filePath("run"),
                              QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
        m_env = QProcessEnvironment::systemEnvironment();
        m_env.insert("XDG_RUNTIME_DIR", root.filePath("run"));
        m_env.insert("HOME", root.filePath("home"));
        m_env.remove("PULSE_SERVER");
        m_process.setProcessEnvironment(m_env);
        m_process.setProcessChannelMode(QProcess::MergedChannels);
        m_process.start("pulseaudio",
                        {"--daemonize=no", "--exit-idle-time=-1", "-n", "--disable-shm=yes",
                         "--load=module-null-sink sink_name=" + sinkName,
                         "--load=module-native-protocol-unix auth-anonymous=1"});
        if (!m_process.waitForStarted(5000))
            return false;
        QElapsedTimer timer;
        timer.start();
        while (timer.elapsed() < 10000) {
            QProcess info;
            info.setProcessEnvironment(m_env);
            info.start("pactl", {"info"});
            info.waitForFinished(3000);
            if (info.exitCode() == 0)
                return true;
            QThread::msleep(100);
        }
        return false;
    }
    QProcessEnvironment environment() const { return m_env; }
    QByteArray log() { return m_process.readAll(); }

private:
    QTemporaryDir m_dir;
    QProcess m_process;
    QProcessEnvironment m_env;
};

} // namespace testsupport

namespace selvane {
// A refusal in a failed comparison: its English words.
inline char *toString(const Problem &problem)
{
    return qstrdup(problem ? qPrintable(problemText(problem, ProblemLanguage::English))
                           : "no problem");
}
} // namespace selvane
