// Outputs for several audiences, judged by what arrives: two profiles to two applications of a
// real RTMP server read back at their sizes and bitrates; a congested target of one profile
// that steps its bitrate down and up again while the recording of another profile stays whole;
// channel recordings that line up with the program to the frame (a counter is burnt into each
// channel's pictures); an HLS folder readable while it is written and complete at the stop.

#include "TestSupport.h"
#include "engine/Engine.h"

#include <QSignalSpy>
#include <QtTest>
#include <arpa/inet.h>
#include <atomic>
#include <netinet/in.h>
#include <sys/socket.h>
#include <thread>
#include <unistd.h>

using namespace testsupport;
using namespace selvane;

namespace {

ProcessResult run(const QString &program, const QStringList &arguments)
{
    return runProcess(program, arguments, QProcessEnvironment::systemEnvironment(), 60000);
}

// A TCP reader of an MPEG-TS stream that takes at most `bytesPerSecond` while throttled (its
// receive buffer kept small, so the sender feels it at once) and everything once released.
// Whatever it reads goes to a file.
class ThrottledReader
{
public:
    ThrottledReader(const QString &file, int bytesPerSecond) : m_file(file), m_rate(bytesPerSecond)
    {
        m_listener = ::socket(AF_INET, SOCK_STREAM, 0);
        const int small = 8192;
        ::setsockopt(m_listener, SOL_SOCKET, SO_RCVBUF, &small, sizeof small);
        sockaddr_in address{};
        address.sin_family = AF_INET;
        address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        ::bind(m_listener, reinterpret_cast<sockaddr *>(&address), sizeof address);
        socklen_t length = sizeof address;
        ::getsockname(m_listener, reinterpret_cast<sockaddr *>(&address), &length);
        m_port = ntohs(address.sin_port);
        ::listen(m_listener, 1);
        m_thread = std::thread([this] { run(); });
    }
    ~ThrottledReader()
    {
        m_stop = true;
        ::shutdown(m_listener, SHUT_RDWR);
        ::close(m_listener);
        m_thread.join();
    }
    quint16 port() const { return m_port; }
    void release() { m_throttled = false; }
    qint64 bytes() const { return m_bytes.load(); }

private:
    void run()
    {
        const int connection = ::accept(m_listener, nullptr, nullptr);
        if (connection < 0)
            return;
        QFile out(m_file);
        out.open(QIODevice::WriteOnly);
        timeval wait{0, 100000};
        ::setsockopt(connection, SOL_SOCKET, SO_RCVTIMEO, &wait, sizeof wait);
        char buffer[65536];
        QElapsedTimer clock;
        clock.start();
        qint64 allowed = 0;
        while (!m_stop) {
            int chunk = int(sizeof buffer);
            if (m_throttled) {
                // Tokens at the rate, taken in slices of 10 ms.
                allowed = std::min<qint64>(allowed + clock.restart() * m_rate / 1000, m_rate / 10);
                if (allowed < 1024) {
                    std::this_thread::sleep_for(std::chrono::milliseconds(10));
                    continue;
                }
                chunk = int(std::min<qint64>(allowed, chunk));
            }
            const ssize_t got = ::recv(connection, buffer, std::size_t(chunk), 0);
            if (got == 0)
                break;
            if (got < 0)
                continue;
            allowed -= got;
            m_bytes += got;
            out.write(buffer, got);
        }
        ::close(connection);
    }

    QString m_file;
    int m_rate;
    int m_listener = -1;
    quint16 m_port = 0;
    std::atomic<bool> m_stop{false};
    std::atomic<bool> m_throttled{true};
    std::atomic<qint64> m_bytes{0};
    std::thread m_thread;
};

// The video packets of a file: (time in s, bytes).
std::vector<std::pair<double, int>> videoPackets(const QString &file)
{
    const ProcessResult probe =
        run("ffprobe", {"-v", "error", "-select_streams", "v:0", "-show_entries",
                        "packet=pts_time,size", "-of", "csv=p=0", file});
    std::vector<std::pair<double, int>> packets;
    for (const QByteArray &line : probe.out.split('\n')) {
        const QList<QByteArray> fields = line.split(',');
        if (fields.size() >= 2 && fields[0] != "N/A")
            packets.push_back({fields[0].toDouble(), fields[1].toInt()});
    }
    return packets;
}

// The video bitrate (kbit/s) of a file between two times.
double kbpsBetween(const std::vector<std::pair<double, int>> &packets, double from, double to)
{
    qint64 bytes = 0;
    for (const auto &[time, size] : packets)
        if (time >= from && time < to)
            bytes += size;
    return to > from ? double(bytes) * 8 / 1000 / (to - from) : 0;
}

// A 320x240 picture whose top quarter holds the frame number plus `offset` in 16 bars of
// 20 pixels (light: a one bit), over grey.
QString counterGraph(int offset)
{
    return QStringLiteral("lavfi://color=c=gray:size=320x240:rate=30,format=yuv420p,"
                          "geq=lum='if(lt(Y,60),if(mod(floor((N+%1)/pow(2,floor(X/20))),2),"
                          "235,16),128)':cb=128:cr=128[out0];sine=frequency=%2[out1]")
        .arg(offset)
        .arg(offset ? 600 : 300);
}

// The counters of a file's pictures, read back from the bars.
std::vector<int> countersOf(const QString &file)
{
    const ProcessResult decoded =
        run("ffmpeg", {"-v", "error", "-i", file, "-vf",
                       "crop=320:60:0:0,scale=16:1:flags=area,format=gray", "-f", "rawvideo", "-"});
    std::vector<int> counters;
    for (qsizetype at = 0; at + 16 <= decoded.out.size(); at += 16) {
        int value = 0;
        for (int bit = 0; bit < 16; ++bit)
            if (uchar(decoded.out[at + bit]) > 128)
                value |= 1 << bit;
        counters.push_back(value);
    }
    return counters;
}

QSize videoSize(const QString &file)
{
    const QString text =
        QString::fromUtf8(run("ffprobe", {"-v", "error", "-select_streams", "v:0", "-show_entries",
                                          "stream=width,height", "-of", "csv=p=0", file})
                              .out)
            .trimmed();
    const QString first = text.section('\n', 0, 0);
    return QSize(first.section(',', 0, 0).toInt(), first.section(',', 1, 1).toInt());
}

QString tagOf(const QString &file, const char *entry)
{
    return QString::fromUtf8(run("ffprobe", {"-v", "error", "-show_entries", entry, "-of",
                                             "default=nw=1:nk=1", file})
                                 .out)
        .trimmed()
        .section('\n', 0, 0);
}

} // namespace

class TestProfiles : public QObject
{
    Q_OBJECT

    QTemporaryDir m_dir;

    QString path(const QString &name) const { return QDir(m_dir.path()).filePath(name); }

    static EncodeProfile profile(const QString &name, QSize size, double fps, int kbps)
    {
        EncodeProfile p;
        p.name = name;
        p.size = size;
        p.fps = fps;
        p.bitrateKbps = kbps;
        p.qualityPreset = EncoderSettings::Performance;
        return p;
    }

    // A test signal with a tone on channel 1, on air.
    static bool onAir(Engine &engine, const QString &picture)
    {
        engine.startAudio();
        const bool ok =
            !engine.setChannelSource(0, "lavfi://" + picture + "[out0];sine=frequency=1000[out1]");
        engine.cutTo(0);
        return ok;
    }

    // Outputs of this size, encoded quickly.
    static OutputSettings at(QSize size)
    {
        OutputSettings settings;
        settings.size = {true, size};
        settings.encoder.qualityPreset = EncoderSettings::Performance;
        return settings;
    }

    static EncodeStats encodeOf(const OutputStats &stats, const QString &profile)
    {
        for (const EncodeStats &e : stats.encodes)
            if (e.profile == profile)
                return e;
        return {};
    }

private slots:
    void refusedBeforeAnythingStarts_data()
    {
        QTest::addColumn<int>("fault");
        QTest::addColumn<int>("kind");
        QTest::newRow("unknown profile") << 0 << int(ProblemKind::ProfileUnknown);
        QTest::newRow("faster than the program") << 1 << int(ProblemKind::ProfileAboveProgramRate);
        QTest::newRow("twice the same name") << 2 << int(ProblemKind::ProfileTwice);
        QTest::newRow("bad name") << 3 << int(ProblemKind::ProfileBadName);
        QTest::newRow("channel without recording") << 4 << int(ProblemKind::IsoNeedsRecording);
        QTest::newRow("channel twice") << 5 << int(ProblemKind::IsoTwice);
        QTest::newRow("HLS segment too long") << 6 << int(ProblemKind::HlsBadSegment);
    }
    void refusedBeforeAnythingStarts()
    {
        QFETCH(int, fault);
        QFETCH(int, kind);
        Engine engine;
        OutputSettings settings;
        EncoderSettings &e = settings.encoder;
        e.fileEnabled = true;
        e.filePath = path("refused.mp4");
        e.profiles << profile("low", QSize(640, 360), 30, 800);
        switch (fault) {
        case 0:
            e.fileProfile = "nosuch";
            break;
        case 1:
            e.profiles[0].fps = 60;
            break;
        case 2:
            e.profiles << profile("low", QSize(320, 180), 30, 400);
            break;
        case 3:
            e.profiles[0].name = "low res";
            break;
        case 4:
            e.fileEnabled = false;
            e.streamTargets << StreamTarget(path("hls/a.m3u8"), "hls");
            e.isoRecordings << IsoRecording{1, {}, {}};
            break;
        case 5:
            e.isoRecordings << IsoRecording{1, {}, {}} << IsoRecording{1, "low", {}};
            break;
        case 6:
            e.streamTargets << StreamTarget(path("hls/a.m3u8"), "hls");
            e.streamTargets.last().hlsSegmentSeconds = 9;
            break;
        }
        QCOMPARE(int(engine.startOutputs(settings).kind), kind);
        QVERIFY(!engine.outputsActive());
        QVERIFY(!QFileInfo::exists(path("refused.mp4")));
    }

    void twoProfilesToTwoApplications()
    {
        RtmpServer server;
        QVERIFY(server.start());
        Engine engine;
        QVERIFY(onAir(engine, "testsrc2=size=1280x720:rate=30"));
        OutputSettings settings = at(QSize(1280, 720));
        EncoderSettings &e = settings.encoder;
        e.bitrateKbps = 3000;
        e.profiles << profile("low", QSize(640, 360), 15, 600);
        e.streamTargets << StreamTarget(server.url("main"), "flv")
                        << StreamTarget(server.url("low", "alt"), "flv");
        e.streamTargets[1].profile = "low";
        QSignalSpy started(&engine, &Engine::outputsStarted);
        QVERIFY(!engine.startOutputs(settings));
        QVERIFY(started.wait(10000));
        QTRY_VERIFY_WITH_TIMEOUT(engine.stats().output.targets.value(1).status == "online", 10000);
        // Viewers of each application keep what they get for 6 s.
        QProcess main, low;
        for (auto [reader, url, file] :
             {std::tuple{&main, server.url("main"), path("main.flv")},
              std::tuple{&low, server.url("low", "alt"), path("low.flv")}})
            reader->start("ffmpeg",
                          {"-v", "error", "-y", "-i", url, "-t", "6", "-c", "copy", file});
        QVERIFY(main.waitForFinished(30000) && low.waitForFinished(30000));
        const OutputStats stats = engine.stats().output;
        engine.stopOutputs();

        QCOMPARE(stats.encodes.size(), 2);
        QCOMPARE(stats.targets[1].profile, QString("low"));
        QCOMPARE(videoSize(path("main.flv")), QSize(1280, 720));
        QCOMPARE(videoSize(path("low.flv")), QSize(640, 360));
        const double mainKbps = kbpsBetween(videoPackets(path("main.flv")), 1, 5.5);
        const double lowKbps = kbpsBetween(videoPackets(path("low.flv")), 1, 5.5);
        const std::vector<std::pair<double, int>> lowPackets = videoPackets(path("low.flv"));
        QVERIFY(lowPackets.size() > 30);
        // The reader joins at a keyframe: pictures a second over what it got.
        const double lowFps =
            double(lowPackets.size() - 1) / (lowPackets.back().first - lowPackets.front().first);
        qInfo("read back: main %.0f kbit/s, low %.0f kbit/s at %.1f pictures a second", mainKbps,
              lowKbps, lowFps);
        QVERIFY2(mainKbps > 2000 && mainKbps < 4000, qPrintable(QString::number(mainKbps)));
        QVERIFY2(lowKbps > 350 && lowKbps < 850, qPrintable(QString::number(lowKbps)));
        QVERIFY2(std::abs(lowFps - 15) < 2, qPrintable(QString::number(lowFps)));
    }

    void congestedTargetStepsDownAndTheRecordingStaysWhole()
    {
        // The recording (default profile, fixed) and a stream of the adaptive "net" profile to a
        // reader that takes 100 kB/s until it is released.
        ThrottledReader reader(path("net.ts"), 100 * 1000);
        Engine engine;
        QVERIFY(onAir(engine, "testsrc2=size=640x360:rate=30"));
        OutputSettings settings = at(QSize(640, 360));
        EncoderSettings &e = settings.encoder;
        e.bitrateKbps = 1500;
        e.fileEnabled = true;
        e.filePath = path("whole.mp4");
        EncodeProfile net = profile("net", QSize(640, 360), 30, 2000);
        net.adaptive = true;
        net.floorPercent = 20;
        e.profiles << net;
        e.streamTargets << StreamTarget(QStringLiteral("tcp://127.0.0.1:%1").arg(reader.port()),
                                        "mpegts");
        e.streamTargets[0].profile = "net";
        QSignalSpy started(&engine, &Engine::outputsStarted);
        QVERIFY(!engine.startOutputs(settings));
        QVERIFY(started.wait(10000));
        QTRY_VERIFY_WITH_TIMEOUT(encodeOf(engine.stats().output, "net").setKbps > 0, 10000);
        QElapsedTimer clock;
        clock.start();
        // Within 10 s the bitrate is one the link carries (800 kbit/s with the sound).
        QTRY_VERIFY_WITH_TIMEOUT(encodeOf(engine.stats().output, "net").currentKbps <= 700, 10000);
        const qint64 reachedMs = clock.elapsed();
        const EncodeStats down = encodeOf(engine.stats().output, "net");
        QVERIFY(down.bitrateSteps >= 1);
        QCOMPARE(down.setKbps, qint64(2000));
        QVERIFY(down.currentKbps >= 400); // its floor
        QTest::qWait(5000);
        const double congestedUntil = double(clock.elapsed()) / 1000;
        reader.release();
        // Released, it steps up again once the queue has stayed short.
        QTRY_VERIFY_WITH_TIMEOUT(
            encodeOf(engine.stats().output, "net").currentKbps > down.currentKbps, 20000);
        const OutputStats stats = engine.stats().output;
        QSignalSpy stopped(&engine, &Engine::outputsStopped);
        engine.stopOutputs();
        QVERIFY(stopped.wait(15000));
        qInfo("congested: %lld kbit/s after %lld ms; up again to %lld kbit/s after %.1f s",
              down.currentKbps, reachedMs, encodeOf(stats, "net").currentKbps,
              double(clock.elapsed()) / 1000 - congestedUntil);

        // The read-back stream: what came after the step is well below what came before it.
        const std::vector<std::pair<double, int>> packets = videoPackets(path("net.ts"));
        QVERIFY(packets.size() > 100);
        const double first = packets.front().first;
        const double before = kbpsBetween(packets, first, first + 1.5);
        const double after =
            kbpsBetween(packets, first + congestedUntil - 3, first + congestedUntil);
        qInfo("read back: %.0f kbit/s at the start, %.0f kbit/s while stepped down", before, after);
        QVERIFY2(after < before * 0.6, qPrintable(QStringLiteral("%1 %2").arg(before).arg(after)));

        // The recording of the fixed profile never noticed: every picture, none dropped.
        const EncodeStats recording = encodeOf(stats, "default");
        QCOMPARE(recording.bitrateSteps, 0);
        QCOMPARE(recording.encoderDrops, qint64(0));
        QVERIFY(decodeErrors(path("whole.mp4")).isEmpty());
        const qint64 frames = probeFile(path("whole.mp4")).stream("h264")->frames;
        const double seconds = double(clock.elapsed()) / 1000;
        QVERIFY2(std::abs(frames - seconds * 30) < 30,
                 qPrintable(QStringLiteral("%1 frames in %2 s").arg(frames).arg(seconds)));
    }

    void channelRecordingsLineUpWithTheProgram()
    {
        Engine engine;
        engine.startAudio();
        QVERIFY(!engine.setChannelSource(0, counterGraph(0)));
        QVERIFY(!engine.setChannelSource(1, counterGraph(20000)));
        QTRY_VERIFY_WITH_TIMEOUT(engine.stats().channels[1].framesDelivered > 10, 10000);
        engine.cutTo(0);
        OutputSettings settings;
        EncoderSettings &e = settings.encoder;
        settings.size = {true, QSize(320, 240)};
        e.qualityPreset = EncoderSettings::Performance;
        e.bitrateKbps = 2000;
        e.fileEnabled = true;
        e.filePath = path("program.mp4");
        e.isoRecordings << IsoRecording{0, {}, {}} << IsoRecording{1, {}, {}};
        QSignalSpy started(&engine, &Engine::outputsStarted);
        QVERIFY(!engine.startOutputs(settings));
        QVERIFY(started.wait(10000));
        QTest::qWait(1500);
        engine.cutTo(1);
        QTest::qWait(1500);
        engine.cutTo(0);
        QTest::qWait(1000);
        QSignalSpy stopped(&engine, &Engine::outputsStopped);
        engine.stopOutputs();
        QVERIFY(stopped.wait(15000));

        const std::vector<int> program = countersOf(path("program.mp4"));
        const std::array<std::vector<int>, 2> iso = {countersOf(path("program_iso1.mp4")),
                                                     countersOf(path("program_iso2.mp4"))};
        QVERIFY(program.size() > 90);
        // Each file starts on the same tick and ends within a tick of the others.
        for (const std::vector<int> &channel : iso)
            QVERIFY2(
                std::abs(int(channel.size()) - int(program.size())) <= 1,
                qPrintable(QStringLiteral("%1 vs %2").arg(channel.size()).arg(program.size())));
        // Every program picture is the picture of the channel on air at the same place in that
        // channel's own file.
        int fromTwo = 0;
        const std::size_t common = std::min({program.size(), iso[0].size(), iso[1].size()});
        for (std::size_t k = 0; k < common; ++k) {
            const int channel = program[k] >= 20000 ? 1 : 0;
            fromTwo += channel;
            QVERIFY2(iso[std::size_t(channel)][k] == program[k],
                     qPrintable(QStringLiteral("picture %1: program %2, channel %3 file %4")
                                    .arg(k)
                                    .arg(program[k])
                                    .arg(channel + 1)
                                    .arg(iso[std::size_t(channel)][k])));
        }
        QVERIFY(fromTwo > 30 && fromTwo < int(common) - 30);
        // The channels' own files run on while the other is on air.
        QVERIFY(iso[1].front() >= 20000 && iso[0].back() < 20000);
        // One timecode origin for all three.
        const QString timecode = tagOf(path("program.mp4"), "stream_tags=timecode");
        QVERIFY(!timecode.isEmpty());
        QCOMPARE(tagOf(path("program_iso1.mp4"), "stream_tags=timecode"), timecode);
        QCOMPARE(tagOf(path("program_iso2.mp4"), "stream_tags=timecode"), timecode);
        // Each holds its own channel's sound.
        std::vector<std::int16_t> sound;
        double start = 0;
        QVERIFY(decodeAudio(path("program_iso2.mp4"), &sound, &start));
        QVERIFY(sound.size() > 48000);
        QVERIFY(toneDb(sound, 24000, 4800, 600) > toneDb(sound, 24000, 4800, 300) + 20);
        qInfo("%d program pictures, %d of them from channel 2, each found in its channel's file",
              int(common), fromTwo);
    }

    void hlsFolderReadableWhileWrittenAndCompleteAtTheStop()
    {
        Engine engine;
        QVERIFY(onAir(engine, "testsrc2=size=640x360:rate=30"));
        OutputSettings settings = at(QSize(640, 360));
        EncoderSettings &e = settings.encoder;
        e.keyframeSeconds = 1;
        const QString playlist = path("web/live/index.m3u8");
        e.streamTargets << StreamTarget(playlist, "hls");
        e.streamTargets[0].hlsSegmentSeconds = 1;
        e.streamTargets[0].hlsWindow = 3;
        QSignalSpy started(&engine, &Engine::outputsStarted);
        QVERIFY(!engine.startOutputs(settings));
        QVERIFY(started.wait(10000));
        // Read over and over while it is written: always a whole playlist naming segments
        // that exist.
        QElapsedTimer clock;
        clock.start();
        int reads = 0;
        while (clock.elapsed() < 6000) {
            const QByteArray text = readAll(playlist);
            if (!text.isEmpty()) {
                ++reads;
                QVERIFY2(text.startsWith("#EXTM3U") && text.endsWith('\n'), text.constData());
                for (const QByteArray &line : text.split('\n'))
                    if (line.endsWith(".ts"))
                        QVERIFY2(QFileInfo::exists(path("web/live/") + line), line.constData());
            }
            QTest::qWait(20);
        }
        QVERIFY(reads > 50);
        // A player can read it now.
        QCOMPARE(videoSize(playlist), QSize(640, 360));
        // Old segments go: the window and a few kept for players still reading them.
        const int segments = int(QDir(path("web/live")).entryList({"*.ts"}, QDir::Files).size());
        QVERIFY2(segments >= 3 && segments <= 7, qPrintable(QString::number(segments)));
        QSignalSpy stopped(&engine, &Engine::outputsStopped);
        engine.stopOutputs();
        QVERIFY(stopped.wait(15000));
        const QByteArray last = readAll(playlist);
        QVERIFY2(last.contains("#EXT-X-ENDLIST"), last.constData());
        QVERIFY(QDir(path("web/live")).entryList({"*.tmp"}, QDir::Files).isEmpty());
        QVERIFY(decodeErrors(playlist).isEmpty());
    }
};

QTEST_MAIN(TestProfiles)
#include "test_profiles.moc"
