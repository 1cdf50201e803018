// Timing of what the mixer records, source kind by source kind: the coded flash-and-beep pattern
// sent through real servers on loopback (nginx for RTMP and HLS, SRT, UDP) and read from files
// with timestamp jumps and loops, then measured in the recording; sources of every frame rate
// into the 30 fps program; an interlaced source on air.

#include "LiveSupport.h"

#include <QRegularExpression>
#include <QtTest>

using namespace testsupport;

namespace {

const QString kBinary = testsupport::builtProgram("SELVANE_BINARY");

struct Run
{
    ProcessResult result;
    qint64 written = -1; // frames the final progress line says were written
};

Run record(const QStringList &arguments, int seconds, const QString &file)
{
    IsolatedHome home;
    Run run;
    run.result = runProcess(
        kBinary,
        QStringList{"--headless", "--duration", QString::number(seconds), "--record", file} +
            arguments,
        home.environment(), (seconds + 60) * 1000);
    const QRegularExpression done("done: .* written (\\d+) ");
    const QRegularExpressionMatch m = done.match(QString::fromUtf8(run.result.out));
    if (m.hasMatch())
        run.written = m.captured(1).toLongLong();
    return run;
}

// Presentation times of the video frames of a recording, in seconds.
QList<double> frameTimes(const QString &file)
{
    QProcess probe;
    probe.start("ffprobe", {"-v", "error", "-select_streams", "v:0", "-show_entries",
                            "frame=pts_time", "-of", "csv=p=0", file});
    probe.waitForFinished(120000);
    QList<double> times;
    for (const QByteArray &line : probe.readAllStandardOutput().split('\n'))
        if (!line.trimmed().isEmpty())
            times << line.trimmed().toDouble();
    return times;
}

// ffmpeg's idet over a file: frames it finds {interlaced (top or bottom first), progressive}.
std::pair<int, int> fieldOrderCounts(const QString &file)
{
    QByteArray log;
    QProcess run;
    run.start("ffmpeg",
              {"-hide_banner", "-nostdin", "-i", file, "-vf", "idet", "-an", "-f", "null", "-"});
    run.waitForFinished(180000);
    const QRegularExpression multi("Multi frame detection: TFF:\\s*(\\d+) BFF:\\s*(\\d+) "
                                   "Progressive:\\s*(\\d+)");
    const QRegularExpressionMatch m = multi.match(QString::fromUtf8(run.readAllStandardError()));
    if (!m.hasMatch())
        return {-1, -1};
    return {m.captured(1).toInt() + m.captured(2).toInt(), m.captured(3).toInt()};
}

} // namespace

class TestTiming : public QObject
{
    Q_OBJECT

    QTemporaryDir m_dir;
    QString path(const QString &name) const { return m_dir.filePath(name); }

    bool coded(const QString &file, double seconds, const QStringList &extra = {})
    {
        return runFfmpeg(QStringList{"-f",       "lavfi",
                                     "-i",       codedFlashGraph(),
                                     "-f",       "lavfi",
                                     "-i",       codedBeepGraph(),
                                     "-t",       QString::number(seconds),
                                     "-c:v",     "libx264",
                                     "-preset",  "veryfast",
                                     "-g",       "30",
                                     "-pix_fmt", "yuv420p",
                                     "-c:a",     "aac"} +
                         extra + QStringList{file});
    }

private slots:
    void initTestCase()
    {
        QVERIFY(m_dir.isValid());
        // B-frames, so that decode order differs from presentation order.
        QVERIFY(coded(path("coded.mp4"), 40, {"-bf", "2"}));
        QVERIFY(coded(path("loop.mp4"), 2));
        // A transport stream whose clock starts at 10 h.
        QVERIFY(runFfmpeg({"-i", path("coded.mp4"), "-c", "copy", "-output_ts_offset", "36000",
                           path("late.ts")}));
        // Two halves of the pattern joined with a 5000 s jump in their timestamps, cut at a
        // keyframe so that picture and sound keep their relation across the jump.
        QVERIFY(runFfmpeg({"-i", path("coded.mp4"), "-c", "copy", "-f", "segment", "-segment_times",
                           "5", "-reset_timestamps", "0", path("half%d.ts")}));
        QVERIFY(runFfmpeg({"-copyts", "-i", path("half1.ts"), "-c", "copy", "-muxdelay", "0",
                           "-output_ts_offset", "5000", path("shifted.ts")}));
        QFile jump(path("jump.ts"));
        QVERIFY(jump.open(QIODevice::WriteOnly));
        jump.write(readAll(path("half0.ts")));
        jump.write(readAll(path("shifted.ts")));
    }

    void soundStaysWithItsPicture_data()
    {
        QTest::addColumn<QString>("kind");
        for (const char *kind :
             {"ts-file-at-10h", "ts-jump", "loop", "rtmp-appears-late", "hls", "srt", "udp"})
            QTest::newRow(kind) << QString(kind);
    }

    void soundStaysWithItsPicture()
    {
        QFETCH(QString, kind);
        const QString sender = path("coded.mp4");
        const QStringList realTime{"-re", "-stream_loop", "-1", "-i", sender, "-c", "copy"};
        QTemporaryDir www;
        RtmpServer nginx;
        Publisher publisher;
        QString source;
        int seconds = 10;
        if (kind == "ts-file-at-10h") {
            source = path("late.ts");
        } else if (kind == "ts-jump") {
            source = path("jump.ts");
        } else if (kind == "loop") {
            source = path("loop.mp4");
            seconds = 16; // eight loops
        } else if (kind == "rtmp-appears-late") {
            QVERIFY(nginx.start());
            source = nginx.url("sync");
        } else if (kind == "hls") {
            QVERIFY(nginx.start(0, www.path()));
            publisher.start(realTime + QStringList{"-f", "hls", "-hls_time", "1", "-hls_list_size",
                                                   "6", "-hls_flags", "delete_segments",
                                                   www.filePath("live.m3u8")});
            // A playlist with a few segments, as a viewer joining a running stream finds it.
            QTRY_VERIFY_WITH_TIMEOUT(readAll(www.filePath("live.m3u8")).count("#EXTINF") >= 3,
                                     20000);
            source = QStringLiteral("http://127.0.0.1:%1/live.m3u8").arg(nginx.httpPort());
        } else if (kind == "srt") {
            // The sender listens and the mixer calls; the sender starts again after each peer.
            const QString url = QStringLiteral("srt://127.0.0.1:%1").arg(freeTcpPort());
            publisher.start(realTime + QStringList{"-f", "mpegts", url + "?mode=listener"});
            QTest::qWait(1000);
            source = url + "?mode=caller";
        } else if (kind == "udp") {
            const quint16 port = freeTcpPort();
            publisher.start(
                realTime +
                QStringList{"-f", "mpegts",
                            QStringLiteral("udp://127.0.0.1:%1?pkt_size=1316").arg(port)});
            source = QStringLiteral("udp://127.0.0.1:%1").arg(port);
        }

        QProcess late; // the RTMP publisher appears three seconds after the show started
        if (kind == "rtmp-appears-late")
            QTimer::singleShot(3000, [&] {
                late.start("ffmpeg",
                           realTime + QStringList{"-v", "error", "-f", "flv", nginx.url("sync")});
            });
        const QString file = path(kind + ".recorded.mp4");
        IsolatedHome home;
        QProcess mixer;
        mixer.setProcessEnvironment(home.environment());
        // The size is given, as for a live show: a network source that shows its size late
        // would be recorded at the fallback size (1080p), costly on a loaded two-core machine.
        mixer.start(kBinary, {"--headless", "--channel", "1=" + source, "--duration",
                              QString::number(seconds), "--size", "320x240", "--record", file});
        QTRY_VERIFY_WITH_TIMEOUT(mixer.state() == QProcess::NotRunning, (seconds + 40) * 1000);
        late.kill();
        late.waitForFinished(3000);
        QCOMPARE(mixer.exitCode(), 0);

        const SyncMeasure m = measureCodedSync(file);
        QStringList offsets;
        for (double o : m.offsets)
            offsets << QString::number(std::lround(o * 1000));
        qInfo("%s: median %+.0f ms, spread %.0f ms, first %+.0f ms, last %+.0f ms (%s)",
              qPrintable(kind), m.median * 1e3, m.spread * 1e3, m.first * 1e3, m.last * 1e3,
              qPrintable(offsets.join(' ')));
        const int expected = kind == "rtmp-appears-late" ? seconds - 3 : seconds;
        QVERIFY2(m.offsets.size() >= expected - 3, qPrintable(offsets.join(' ')));
        // The recording may begin in the middle of the first flash or beep, which then pairs
        // with a later one of the same code (two seconds on in the looped clip): the first
        // flash is left out of spread and drift.
        const QList<double> steady = m.offsets.mid(1);
        const auto [low, high] = std::minmax_element(steady.begin(), steady.end());
        const double frame = 1.0 / 30 + 0.002;
        QVERIFY(std::abs(m.median) <= 0.020);
        QVERIFY(*high - *low <= frame);
        QVERIFY(std::abs(steady.last() - steady.first()) <= frame); // no drift
    }

    void programRunsAtTheOutputRate_data()
    {
        QTest::addColumn<QString>("video");
        QTest::addColumn<QStringList>("extra");
        QTest::newRow("25") << "testsrc2=size=640x360:rate=25" << QStringList{};
        QTest::newRow("50") << "testsrc2=size=640x360:rate=50" << QStringList{};
        QTest::newRow("60") << "testsrc2=size=640x360:rate=60" << QStringList{};
        QTest::newRow("23.976") << "testsrc2=size=640x360:rate=24000/1001" << QStringList{};
        // Pictures kept irregularly (gaps of up to a sixth of a second), stored as they come.
        QTest::newRow("variable")
            << "testsrc2=size=640x360:rate=30,select='not(eq(mod(n\\,7)\\,3))*not(between(mod(n\\,"
               "40)\\,20\\,24))'"
            << QStringList{"-fps_mode", "vfr"};
        QTest::newRow("4K into 1080p")
            << "testsrc2=size=3840x2160:rate=30" << QStringList{"--size", "1920x1080"};
    }

    void programRunsAtTheOutputRate()
    {
        QFETCH(QString, video);
        QFETCH(QStringList, extra);
        const QString clip = path(QString(QTest::currentDataTag()).replace(' ', '_') + ".mkv");
        const QStringList encoding = extra.value(0) == "-fps_mode" ? extra : QStringList{};
        QVERIFY(makeClip(clip, video, "sine=frequency=440", 6.0,
                         QStringList{"-c:v", "libx264", "-preset", "ultrafast", "-pix_fmt",
                                     "yuv420p", "-c:a", "aac"} +
                             encoding));
        const QString file = clip + ".mp4";
        const QStringList options = encoding.isEmpty() ? extra : QStringList{};
        const Run run = record(QStringList{"--channel", "1=" + clip} + options, 4, file);
        QCOMPARE(run.result.exitCode, 0);

        const QList<double> times = frameTimes(file);
        // Four seconds less the time the first picture takes to decode.
        QVERIFY2(times.size() >= 105 && times.size() <= 121,
                 qPrintable(QString::number(times.size())));
        QCOMPARE(run.written, qint64(times.size())); // the progress line tells what was written
        for (qsizetype i = 1; i < times.size(); ++i)
            QVERIFY2(std::abs(times[i] - times[i - 1] - 1.0 / 30) < 0.001,
                     qPrintable(QStringLiteral("frame %1 at %2 s after %3 s")
                                    .arg(i)
                                    .arg(times[i])
                                    .arg(times[i - 1])));
        // Sound runs as long as the picture.
        const ProbedFile probed = probeFile(file, false);
        QVERIFY(probed.ok && probed.stream("aac"));
        // (The MP4's last fragment may end up to three AAC frames before the last picture.)
        QVERIFY2(std::abs(probed.stream("aac")->duration - times.size() / 30.0) < 0.07,
                 qPrintable(QStringLiteral("sound %1 s, pictures %2 s")
                                .arg(probed.stream("aac")->duration)
                                .arg(times.size() / 30.0)));
    }

    void interlacedSourceGoesOnAirProgressive()
    {
        // 1080i25, top field first, with each field a different moment of the picture.
        const QString clip = path("interlaced.ts");
        QVERIFY(makeClip(clip, "testsrc2=size=1920x1080:rate=50,tinterlace=interleave_top",
                         "sine=frequency=440", 4.0,
                         {"-c:v", "mpeg2video", "-q:v", "4", "-flags", "+ilme+ildct", "-top", "1",
                          "-c:a", "mp2"}));
        const auto [sourceInterlaced, sourceProgressive] = fieldOrderCounts(clip);
        QVERIFY2(
            sourceInterlaced > 5 * sourceProgressive,
            qPrintable(QStringLiteral("%1 / %2").arg(sourceInterlaced).arg(sourceProgressive)));

        const QString file = path("interlaced.mp4");
        const Run run = record({"--channel", "1=" + clip, "--preset", "performance"}, 3, file);
        QCOMPARE(run.result.exitCode, 0);
        const auto [interlaced, progressive] = fieldOrderCounts(file);
        QVERIFY2(progressive > 0 && interlaced * 10 < progressive,
                 qPrintable(QStringLiteral("%1 / %2").arg(interlaced).arg(progressive)));
    }
};

QTEST_GUILESS_MAIN(TestTiming)
#include "test_timing.moc"
