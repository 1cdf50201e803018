// The headless face run as a real process: channels from test signals, the progress line, the
// duration, Ctrl+C, and refusals of bad arguments.

#include "TestSupport.h"
#include "engine/Engine.h"
#include "engine/OutputRules.h"

#include <QRegularExpression>
#include <QScopeGuard>
#include <QStorageInfo>
#include <QtTest>
#include <csignal>

using namespace testsupport;
using selvane::Engine;

namespace {

const QString kBinary = testsupport::builtProgram("SELVANE_BINARY");
const QString kBars = "1=lavfi://testsrc2=size=640x360:rate=30[out0];sine=frequency=1000[out1]";

struct Progress
{
    int lines = 0;
    qint64 finalFrames = -1;
    double finalFps = 0;
};

Progress parseProgress(const QByteArray &out)
{
    Progress p;
    static const QRegularExpression line(
        R"(^(done: )?elapsed \d\d:\d\d:\d\d\.\d  frames (\d+)  fps ([\d.]+)  repeated (\d+)  skipped (\d+)  dropped (\d+)(  .*)?$)");
    for (const QByteArray &raw : out.split('\n')) {
        const QRegularExpressionMatch m = line.match(QString::fromUtf8(raw));
        if (!m.hasMatch())
            continue;
        ++p.lines;
        if (!m.captured(1).isEmpty()) {
            p.finalFrames = m.captured(2).toLongLong();
            p.finalFps = m.captured(3).toDouble();
        }
    }
    return p;
}

} // namespace

class TestHeadless : public QObject
{
    Q_OBJECT

private slots:
    void runsChannelsForTheDuration()
    {
        IsolatedHome home;
        QProcessEnvironment env = home.environment();
        env.remove("QT_QPA_PLATFORM");
        env.remove("DISPLAY");
        const ProcessResult r =
            runProcess(kBinary, {"--headless", "--channel", kBars, "--duration", "3"}, env);
        QVERIFY(r.finished);
        QCOMPARE(r.exitCode, 0);
        const Progress p = parseProgress(r.out);
        QVERIFY2(p.lines >= 3, r.out.constData());
        QVERIFY2(p.finalFrames >= 85 && p.finalFrames <= 95, r.out.constData());
        QVERIFY(p.finalFps > 28 && p.finalFps < 32);
        // No lock was taken; the progress stays out of the log file.
        QVERIFY(!QFile::exists(home.path("run/selvane_single_instance")));
        const QStringList logs = QDir(home.logDir()).entryList(QDir::Files);
        QCOMPARE(logs.size(), 1);
        QVERIFY(!readAll(QDir(home.logDir()).filePath(logs[0])).contains("fps"));
    }

    void interruptStopsCleanly()
    {
        IsolatedHome home;
        QProcess process;
        process.setProcessEnvironment(home.environment());
        process.start(kBinary, {"--headless", "--channel", kBars});
        QVERIFY(process.waitForStarted());
        QByteArray out;
        QTRY_VERIFY_WITH_TIMEOUT((out += process.readAllStandardOutput()).contains("frames"),
                                 10000);
        ::kill(pid_t(process.processId()), SIGINT);
        QVERIFY(process.waitForFinished(5000));
        QCOMPARE(process.exitStatus(), QProcess::NormalExit);
        QCOMPARE(process.exitCode(), 0);
        out += process.readAllStandardOutput();
        QVERIFY2(out.contains("interrupted: stopping"), out.constData());
        QVERIFY(parseProgress(out).finalFrames > 0);
    }

    void badArgumentsAreRefused_data()
    {
        QTest::addColumn<QStringList>("args");
        QTest::addColumn<QString>("message");
        QTest::newRow("no channel") << QStringList{"--headless"} << "at least one --channel";
        QTest::newRow("channel 5") << QStringList{"--headless", "--channel", "5=/tmp/x.mp4"}
                                   << "--channel expects N=ADDRESS";
        QTest::newRow("base without source")
            << QStringList{"--headless", "--channel", "1=/tmp/x.mp4", "--base", "2"}
            << "the base channel 2 has no source";
        // Outputs that cannot work are refused before anything starts.
        const QStringList bars{"--headless", "--channel", kBars};
        QTest::newRow("unknown container")
            << bars + QStringList{"--record", "/tmp/show.xyz"} << "names no known container";
        QTest::newRow("missing folder")
            << bars + QStringList{"--record", "/nonexistent/a.mp4"} << "does not exist";
        QTest::newRow("unwritable folder")
            << bars + QStringList{"--record", "/proc/a.mp4"} << "cannot be written";
        QTest::newRow("target without host")
            << bars + QStringList{"--stream", "rtmp:/live"} << "is not a URL such as";
        QTest::newRow("odd size") << bars + QStringList{"--size", "641x361"} << "even width";
        QTest::newRow("missing overlay file")
            << bars + QStringList{"--image", "/nonexistent.png@0,0,10,10"}
            << "is not a file that can be read";
        QTest::newRow("100 KB text")
            << bars + QStringList{"--text", QString(100000, 'x')} << "at most 10000 characters";
        QTest::newRow("target without container")
            << bars + QStringList{"--stream", "ftp://host/x"} << "add #FORMAT";
        QTest::newRow("unknown transition")
            << bars + QStringList{"--transition", "spin"} << "one of cut, mix, wipe, dip";
        QTest::newRow("transition too short")
            << bars + QStringList{"--transition", "mix:10"} << "from 100 to 10000 ms";
        QTest::newRow("stinger without its clip")
            << bars + QStringList{"--transition", "stinger:"} << "stinger:FILE";
        // Failover and the recording's copies.
        QTest::newRow("backup of channel 5")
            << bars + QStringList{"--backup", "5=channel:1"} << "--backup expects N=ADDRESS";
        QTest::newRow("backup of itself")
            << bars + QStringList{"--backup", "1=channel:1"} << "must be another channel";
        QTest::newRow("missing backup file")
            << bars + QStringList{"--backup", "1=/nonexistent/loop.mp4"}
            << "must be another channel";
        QTest::newRow("failover too soon")
            << bars + QStringList{"--failover-ms", "10"} << "from 100 to 3600000";
        QTest::newRow("missing slate")
            << bars + QStringList{"--slate", "/nonexistent/slate.png"} << "slate cannot be read";
        QTest::newRow("twin without a recording")
            << bars + QStringList{"--twin", "/tmp"} << "beside --record";
        QTest::newRow("twin is the recording")
            << bars + QStringList{"--record", "/tmp/twin-same.mp4", "--twin", "/tmp"}
            << "is the recording itself";
        QTest::newRow("start at no time")
            << bars + QStringList{"--record", "/tmp/at.mp4", "--start-at", "teatime"}
            << "--start-at expects a date-time";
        QTest::newRow("stop at a time gone")
            << bars + QStringList{"--record", "/tmp/at.mp4", "--stop-at", "2020-01-01T00:00"}
            << "That time has passed";
        QTest::newRow("ring without segments")
            << bars + QStringList{"--record", "/tmp/ring.mp4", "--keep-free", "100"}
            << "needs --segment-minutes";
        QTest::newRow("profile that does not read")
            << bars + QStringList{"--record", "/tmp/p.mp4", "--profile", "low=640x360:800"}
            << "NAME=WxH@FPS:KBPS";
        QTest::newRow("target on an unknown profile")
            << bars + QStringList{"--stream", "web=rtmp://127.0.0.1/live/k"}
            << "no profile named \"web\"";
        QTest::newRow("channel recording without a recording")
            << bars + QStringList{"--iso", "2"} << "needs --record";
        QTest::newRow("channel recording of channel 5")
            << bars + QStringList{"--record", "/tmp/p.mp4", "--iso", "5"} << "from 1 to 4";
    }

    void badArgumentsAreRefused()
    {
        QFETCH(QStringList, args);
        QFETCH(QString, message);
        IsolatedHome home;
        const ProcessResult r = runProcess(kBinary, args, home.environment());
        QCOMPARE(r.exitCode, 1);
        QVERIFY2(r.err.contains(message.toUtf8()), r.err.constData());
    }

    void noTakeIsReplaced()
    {
        IsolatedHome home;
        const QString take = home.path("take.mp4");
        const QStringList args{"--headless", "--channel", kBars, "--duration",
                               "1",          "--record",  take};
        QCOMPARE(runProcess(kBinary, args, home.environment()).exitCode, 0);
        const QByteArray first = readAll(take);
        const ProcessResult again = runProcess(kBinary, args, home.environment());
        QCOMPARE(again.exitCode, 0);
        QVERIFY2(again.out.contains("recording " + home.path("take_1.mp4").toUtf8()),
                 again.out.constData());
        QCOMPARE(readAll(take), first);
        QVERIFY(probeFile(home.path("take_1.mp4")).ok);
    }

    // Outputs that wait for their time: the schedule's stretches, and date-times given on the
    // command line; the progress line counts down to them.
    void outputsRunAtTheirTimes()
    {
        IsolatedHome home;
        const QString schedule = home.path("show.json");
        QFile file(schedule);
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.write(R"({"format": "selvane_program_arrangement", "version": 3,
            "sceneClips": [{"id": "a", "kind": "channel", "channel": 0, "startMs": 0}],
            "outputs": [{"startMs": 2500, "endMs": 4500}]})");
        file.close();
        const QString take = home.path("stretch.mkv");
        ProcessResult r = runProcess(kBinary,
                                     {"--headless", "--channel", kBars, "--schedule", schedule,
                                      "--record", take, "--duration", "6"},
                                     home.environment());
        QCOMPARE(r.exitCode, 0);
        QVERIFY2(r.out.contains("outputs stop in 00:00:0"), r.out.constData());
        ProbedFile probed = probeFile(take);
        QVERIFY2(probed.ok && probed.stream("h264") &&
                     std::abs(probed.stream("h264")->frames - 60) <= 1,
                 r.out.constData());

        const QDateTime start = QDateTime::currentDateTime().addSecs(3);
        const QString dated = home.path("dated.mkv");
        r = runProcess(kBinary,
                       {"--headless", "--channel", kBars, "--record", dated, "--duration", "7",
                        "--start-at", start.toString("yyyy-MM-ddTHH:mm:ss"), "--stop-at",
                        start.addSecs(2).toString("HH:mm:ss")},
                       home.environment());
        QCOMPARE(r.exitCode, 0);
        probed = probeFile(dated);
        QVERIFY2(probed.ok && probed.stream("h264") &&
                     std::abs(probed.stream("h264")->frames - 60) <= 1,
                 r.out.constData());
    }

    void streamTargetsAsTyped()
    {
        // "#FORMAT" is split off only when it names a container; an SRT stream id keeps its "#".
        const QString srt = "srt://127.0.0.1:9000?streamid=#!::r=live/key,m=publish";
        QCOMPARE(selvane::OutputRules::parseStreamTarget(srt).url, srt);
        QCOMPARE(selvane::OutputRules::parseStreamTarget(srt).formatName, QString("mpegts"));
        QCOMPARE(selvane::OutputRules::parseStreamTarget("https://host/ingest?token=1").formatName,
                 QString("mpegts"));
        const StreamTarget named =
            selvane::OutputRules::parseStreamTarget("udp://127.0.0.1:5000#matroska");
        QCOMPARE(named.url, QString("udp://127.0.0.1:5000"));
        QCOMPARE(named.formatName, QString("matroska"));
    }

    void noSecretReachesALogOrTheTerminal()
    {
        // Every kind of source and target with secrets in it, none of them reachable, FFmpeg
        // at its most talkative.
        IsolatedHome home;
        QProcessEnvironment env = home.environment();
        env.insert("SELVANE_AV_LOG_LEVEL", "48"); // debug
        const quint16 closed = freeTcpPort();
        const QString at = QStringLiteral("127.0.0.1:%1").arg(closed);
        const ProcessResult r = runProcess(
            kBinary,
            {"--headless", "--channel", kBars, "--channel", "2=rtmp://" + at + "/live/SECRETa",
             "--channel",
             "3=srt://" + at + "?mode=caller&passphrase=SECRETbbbbbb&streamid=#!::r=live/SECRETc",
             "--channel", "4=http://user:SECRETd@" + at + "/hls/SECRETe/index.m3u8?token=SECRETf",
             "--duration", "3", "--record", home.path("s.mkv"), "--stream",
             "rtmp://" + at + "/live/SECRETg", "--stream",
             "srt://" + at + "?streamid=#!::r=live/SECRETh,m=publish&passphrase=SECRETiiiiii",
             "--stream", "https://" + at + "/ingest/SECRETj?token=SECRETk"},
            env, 60000);
        QVERIFY(r.finished);
        const QStringList logs = QDir(home.logDir()).entryList(QDir::Files);
        QCOMPARE(logs.size(), 1);
        const QByteArray log = readAll(QDir(home.logDir()).filePath(logs[0]));
        QVERIFY2(log.contains("127.0.0.1"), log.constData()); // the sources were talked about
        for (const QByteArray &text : {r.out, r.err, log}) {
            const qsizetype leak = text.indexOf("SECRET");
            QVERIFY2(leak < 0, text.mid(std::max<qsizetype>(0, leak - 200), 300).constData());
        }
    }

    void targetsThatAreDownCostNothingAndComeOnline()
    {
        // A recording with an SRT and an RTMP target nobody answers: the file has every frame.
        IsolatedHome home;
        const QString at = QStringLiteral("127.0.0.1:%1").arg(freeTcpPort());
        const ProcessResult dead = runProcess(
            kBinary,
            {"--headless", "--channel", kBars, "--duration", "4", "--record", home.path("d.mp4"),
             "--stream", "srt://" + at + "?mode=caller", "--stream", "rtmp://" + at + "/live/x"},
            home.environment(), 60000);
        QCOMPARE(dead.exitCode, 0);
        const QRegularExpression done("done: .* written (\\d+)  .*encoder-drops (\\d+)");
        const QRegularExpressionMatch m = done.match(QString::fromUtf8(dead.out));
        QVERIFY2(m.hasMatch(), dead.out.constData());
        QCOMPARE(m.captured(2).toInt(), 0);
        QVERIFY2(m.captured(1).toInt() >= 115, dead.out.constData());
        QCOMPARE(probeFile(home.path("d.mp4")).stream("h264")->frames, m.captured(1).toLongLong());

        // A stream-only run whose server is down at start keeps trying and goes online when
        // the server appears.
        RtmpServer server;
        const quint16 port = freeTcpPort();
        QProcess run;
        run.setProcessEnvironment(home.environment());
        run.start(kBinary, {"--headless", "--channel", kBars, "--duration", "9", "--stream",
                            QStringLiteral("rtmp://127.0.0.1:%1/live/late").arg(port)});
        QTest::qWait(2000);
        QVERIFY(server.start(port));
        QVERIFY(run.waitForFinished(40000));
        const QByteArray out = run.readAllStandardOutput();
        QCOMPARE(run.exitCode(), 0);
        QVERIFY2(out.contains("targets reconnecting") && out.contains("targets online"),
                 out.constData());
    }

    void streamCarriesTheEndOfTheShow()
    {
        // What is still queued at stop reaches the SRT receiver before the trailer.
        IsolatedHome home;
        const QString url = QStringLiteral("srt://127.0.0.1:%1").arg(freeTcpPort());
        QProcess receiver;
        receiver.start("ffmpeg", {"-v", "error", "-y", "-i", url + "?mode=listener", "-c", "copy",
                                  home.path("rx.ts")});
        QVERIFY(receiver.waitForStarted());
        QTest::qWait(500);
        const ProcessResult r =
            runProcess(kBinary,
                       {"--headless", "--channel", kBars, "--duration", "4", "--record",
                        home.path("rec.mp4"), "--stream", url + "?mode=caller"},
                       home.environment(), 60000);
        QCOMPARE(r.exitCode, 0);
        QVERIFY(receiver.waitForFinished(15000));
        const qint64 recorded = probeFile(home.path("rec.mp4")).stream("h264")->frames;
        const ProbedFile received = probeFile(home.path("rx.ts"));
        QVERIFY2(received.ok, received.errors.constData());
        QCOMPARE(received.stream("h264")->frames, recorded);
    }

    void recordingThatFillsTheDiskNeverStopsTheStream()
    {
        // A small tmpfs as the recording folder: it fills up during a show that also streams,
        // then room is made again.
        IsolatedHome home;
        const QString disk = home.path("disk");
        QDir().mkpath(disk);
        if (QProcess::execute("mount", {"-t", "tmpfs", "-o", "size=24m", "tmpfs", disk}) != 0)
            QSKIP("mounting a tmpfs is not allowed here");
        const auto unmount = qScopeGuard([&] { QProcess::execute("umount", {"-l", disk}); });
        RtmpServer server;
        QVERIFY(server.start());
        QProcess reader; // plays before the show publishes, so it gets all of it
        reader.start("ffmpeg", {"-v", "error", "-nostdin", "-y", "-rw_timeout", "4000000", "-i",
                                server.url("show"), "-c", "copy", home.path("rx.flv")});
        QVERIFY(reader.waitForStarted());
        QTest::qWait(1000); // connected and waiting before the show publishes
        QProcess run;
        run.setProcessEnvironment(home.environment());
        run.start(kBinary,
                  {"--headless", "--channel", kBars, "--duration", "14", "--bitrate", "4000",
                   "--record", disk + "/show.mp4", "--stream", server.url("show")});
        QTest::qWait(3000);
        {
            QFile filler(disk + "/filler");
            QVERIFY(filler.open(QIODevice::WriteOnly));
            const QByteArray block(1 << 20, 'x');
            while (filler.write(block) == block.size() && filler.flush()) {
            }
        }
        QTest::qWait(4000);
        QFile::remove(disk + "/filler");
        QVERIFY(run.waitForFinished(40000));
        const QByteArray out = run.readAllStandardOutput();
        const QByteArray err = run.readAllStandardError();
        QCOMPARE(run.exitCode(), 3);
        QVERIFY2(out.contains("recording failed (No space left on device)"), out.constData());
        QVERIFY2(err.contains("recording failed during the run (No space left on device); the "
                              "streams went on, and the recording went on in " +
                              disk.toUtf8() + "/show_1.mp4"),
                 err.constData());
        QVERIFY(reader.waitForFinished(15000)); // 4 s after the publisher has gone

        const QRegularExpression done("done: .* written (\\d+)  .*encoder-drops (\\d+)");
        const QRegularExpressionMatch m = done.match(QString::fromUtf8(out));
        QVERIFY2(m.hasMatch(), out.constData());
        const qint64 written = m.captured(1).toLongLong();
        QVERIFY2(written >= 14 * 30 - 10, out.constData());
        QCOMPARE(m.captured(2).toInt(), 0);
        // The stream never noticed.
        const qint64 streamed = probeFile(home.path("rx.flv")).stream("h264")->frames;
        QVERIFY2(streamed >= written - 15, qPrintable(QString::number(streamed)));
        // What was written before the disk filled plays, all of it: the fragment the full disk
        // tore was cut off. The rest went on in a new file.
        const ProbedFile cut = probeFile(disk + "/show.mp4");
        QVERIFY2(cut.ok && cut.stream("h264"), cut.errors.constData());
        const qint64 first = cut.stream("h264")->frames;
        const ProbedFile resumed = probeFile(disk + "/show_1.mp4");
        QVERIFY2(resumed.ok, resumed.errors.constData());
        // Both hold the stream's pictures in order, none missing, the second file's later.
        const QStringList streamedPackets = videoPacketHashes(home.path("rx.flv"));
        qsizetype next = 0;
        for (const QString &file : {disk + "/show.mp4", disk + "/show_1.mp4"}) {
            const QByteArray errors = decodeErrors(file);
            QVERIFY2(errors.isEmpty(), qPrintable(file + ": " + errors));
            const QStringList packets = videoPacketHashes(file);
            const qsizetype at = streamedPackets.indexOf(packets.value(0), next);
            QVERIFY2(at >= next, qPrintable(file));
            QCOMPARE(packets, streamedPackets.mid(at, packets.size()));
            next = at + packets.size();
        }
        QVERIFY2(first >= 2 * 30, qPrintable(QString::number(first)));
        QVERIFY2(resumed.stream("h264")->frames >= 4 * 30,
                 qPrintable(QString::number(resumed.stream("h264")->frames)));
        QVERIFY(first + resumed.stream("h264")->frames < written);
        qInfo("written %lld, streamed %lld, first file %lld, resumed file %lld", written, streamed,
              first, resumed.stream("h264")->frames);

        // A disk that stays full: the exit says no new file was begun.
        QProcess full;
        full.setProcessEnvironment(home.environment());
        full.start(kBinary, {"--headless", "--channel", kBars, "--duration", "5", "--bitrate",
                             "4000", "--record", disk + "/again.mp4"});
        QTest::qWait(1500);
        {
            QFile filler(disk + "/filler");
            QVERIFY(filler.open(QIODevice::WriteOnly));
            const QByteArray block(1 << 20, 'x');
            while (filler.write(block) == block.size() && filler.flush()) {
            }
        }
        QVERIFY(full.waitForFinished(30000));
        QCOMPARE(full.exitCode(), 3);
        const QByteArray fullErr = full.readAllStandardError();
        QVERIFY2(fullErr.contains("no new file could be begun after it"), fullErr.constData());
        // The file the disk stopped holds what it had whole, or is gone if that was nothing.
        if (QFile::exists(disk + "/again.mp4")) {
            const QByteArray errors = decodeErrors(disk + "/again.mp4");
            QVERIFY2(errors.isEmpty(), errors.constData());
        }
    }

    void twinRecordingsFailAndResumeEachOnItsOwn()
    {
        // Two small disks: the recording on one, its twin on the other. Each fills in turn and
        // is freed again; the other copy never notices.
        IsolatedHome home;
        QStringList disks{home.path("disk1"), home.path("disk2")};
        for (const QString &disk : disks) {
            QDir().mkpath(disk);
            if (QProcess::execute("mount", {"-t", "tmpfs", "-o", "size=24m", "tmpfs", disk}) != 0)
                QSKIP("mounting a tmpfs is not allowed here");
        }
        const auto unmount = qScopeGuard([&] {
            for (const QString &disk : disks)
                QProcess::execute("umount", {"-l", disk});
        });
        const auto fill = [](const QString &disk) {
            QFile filler(disk + "/filler");
            if (!filler.open(QIODevice::WriteOnly))
                return;
            const QByteArray block(1 << 20, 'x');
            while (filler.write(block) == block.size() && filler.flush()) {
            }
        };
        QProcess run;
        run.setProcessEnvironment(home.environment());
        run.start(kBinary, {"--headless", "--channel", kBars, "--duration", "17", "--bitrate",
                            "4000", "--record", disks[0] + "/show.mp4", "--twin", disks[1]});
        QTest::qWait(4500);
        fill(disks[0]);
        QTest::qWait(3000);
        QFile::remove(disks[0] + "/filler");
        QTest::qWait(3000);
        fill(disks[1]);
        QTest::qWait(3000);
        QFile::remove(disks[1] + "/filler");
        QVERIFY(run.waitForFinished(40000));
        const QByteArray out = run.readAllStandardOutput();
        const QByteArray err = run.readAllStandardError();
        QCOMPARE(run.exitCode(), 3);
        for (const QByteArray &which :
             {QByteArray("the recording"), QByteArray("the twin recording")})
            QVERIFY2(err.contains(which +
                                  " failed during the run (No space left on device); the "
                                  "streams went on, and " +
                                  which + " went on in "),
                     err.constData());
        QVERIFY2(out.contains("twin failed (No space left on device)"), out.constData());

        // Each disk: the file up to its failure and the one after it, both whole.
        std::array<qint64, 2> before{}, after{};
        for (int d = 0; d < 2; ++d) {
            const ProbedFile first = probeFile(disks[d] + "/show.mp4");
            const ProbedFile resumed = probeFile(disks[d] + "/show_1.mp4");
            QVERIFY2(first.ok && resumed.ok, first.errors + resumed.errors);
            for (const QString &file : {disks[d] + "/show.mp4", disks[d] + "/show_1.mp4"}) {
                const QByteArray errors = decodeErrors(file);
                QVERIFY2(errors.isEmpty(), qPrintable(file + ": " + errors));
            }
            before[std::size_t(d)] = first.stream("h264")->frames;
            after[std::size_t(d)] = resumed.stream("h264")->frames;
        }
        qInfo("recording %lld + %lld pictures, twin %lld + %lld", before[0], after[0], before[1],
              after[1]);
        // The twin went on while the recording's disk was full, and the other way round.
        QVERIFY(before[1] > before[0] + 60);
        QVERIFY(after[0] > after[1] + 60);
        // Where both wrote, they hold the same pictures: the same packets, byte for byte, up to
        // the end of each file the full disk stopped.
        const QStringList recording = videoPacketHashes(disks[0] + "/show.mp4");
        const QStringList twin = videoPacketHashes(disks[1] + "/show.mp4");
        QVERIFY(before[0] > 40 && recording.size() == before[0]);
        QCOMPARE(twin.mid(0, recording.size()), recording);
        const QStringList recordingAfter = videoPacketHashes(disks[0] + "/show_1.mp4");
        const QStringList twinAfter = videoPacketHashes(disks[1] + "/show_1.mp4");
        const qsizetype at = recordingAfter.indexOf(twinAfter.value(0));
        QVERIFY(at > 0 && twinAfter.size() == after[1]);
        QCOMPARE(recordingAfter.mid(at, twinAfter.size()), twinAfter);
    }

    void diskForecastAndRingRecording()
    {
        // A disk of 16 MiB and a picture x264 cannot squeeze below its bitrate: the forecast
        // against the moment the disk really fills; then a ring recording on the same disk.
        IsolatedHome home;
        const QString disk = home.path("disk");
        QDir().mkpath(disk);
        if (QProcess::execute("mount", {"-t", "tmpfs", "-o", "size=16m", "tmpfs", disk}) != 0)
            QSKIP("mounting a tmpfs is not allowed here");
        const auto unmount = qScopeGuard([&] { QProcess::execute("umount", {"-l", disk}); });
        const QString noisy = "1=lavfi://testsrc2=size=640x360:rate=30,noise=alls=40:allf=t+u";
        QProcess run;
        run.setProcessEnvironment(home.environment());
        run.start(kBinary, {"--headless", "--channel", noisy, "--duration", "60", "--bitrate",
                            "8000", "--record", disk + "/show.mp4"});
        QElapsedTimer clock;
        clock.start();
        const QRegularExpression forecast("recording show\\.mp4 \\(disk (\\d+) s");
        qint64 predictedAtMs = -1, predictedS = -1, fullAtMs = -1;
        QByteArray out;
        while (fullAtMs < 0 && clock.elapsed() < 60000 && run.state() != QProcess::NotRunning) {
            run.waitForReadyRead(500);
            out += run.readAllStandardOutput();
            for (const QByteArray &line : out.split('\n')) {
                const QRegularExpressionMatch m = forecast.match(QString::fromUtf8(line));
                // The first forecast after six seconds of writing.
                if (m.hasMatch() && predictedAtMs < 0 && clock.elapsed() > 6000) {
                    predictedAtMs = clock.elapsed();
                    predictedS = m.captured(1).toLongLong();
                }
                if (line.contains("recording failed (No space left on device)") && fullAtMs < 0)
                    fullAtMs = clock.elapsed();
            }
            if (!out.endsWith('\n'))
                continue;
            out.clear();
        }
        run.kill();
        run.waitForFinished(10000);
        QVERIFY2(predictedAtMs > 0 && fullAtMs > predictedAtMs, out.constData());
        const double truthS = (fullAtMs - predictedAtMs) / 1000.0;
        qInfo("forecast %lld s left, the disk filled %.1f s later", predictedS, truthS);
        QVERIFY2(std::abs(predictedS - truthS) <= 0.1 * truthS + 1.0,
                 qPrintable(QString("%1 vs %2").arg(predictedS).arg(truthS)));
        // The recording filled the disk itself: its file ends with the last whole fragment.
        const QByteArray cutErrors = decodeErrors(disk + "/show.mp4");
        QVERIFY2(cutErrors.isEmpty(), cutErrors.constData());

        // Ring: segments of 3 s, the oldest of this take deleted to keep 6 MiB free; another
        // take's file stays.
        for (const QString &name : QDir(disk).entryList(QDir::Files))
            QFile::remove(disk + "/" + name);
        QVERIFY(runFfmpeg({"-f", "lavfi", "-i", "testsrc2=size=320x240:rate=30", "-t", "2",
                           disk + "/other.mp4"}));
        QProcess ring;
        ring.setProcessEnvironment(home.environment());
        ring.start(kBinary, {"--headless", "--channel", noisy, "--duration", "20", "--bitrate",
                             "8000", "--record", disk + "/ring.mp4", "--segment-minutes", "0.05",
                             "--keep-free", "6"});
        QVERIFY(ring.waitForFinished(90000));
        const QByteArray ringOut = ring.readAllStandardOutput();
        const QByteArray ringErr = ring.readAllStandardError();
        QCOMPARE(ring.exitCode(), 0);
        QVERIFY2(!ringOut.contains("recording failed"), ringOut.constData());
        QVERIFY2(ringErr.contains("ring recording removed"), ringErr.constData());
        QVERIFY(QFile::exists(disk + "/other.mp4"));
        QVERIFY(!QFile::exists(disk + "/ring.mp4")); // the oldest segment went first
        const QStringList kept = QDir(disk).entryList({"ring*.mp4"}, QDir::Files, QDir::Name);
        QVERIFY2(kept.size() >= 2, qPrintable(kept.join(',')));
        for (const QString &name : kept)
            QVERIFY2(probeFile(disk + "/" + name, false).ok, qPrintable(name));
        QVERIFY(QStorageInfo(disk).bytesAvailable() >= 2 << 20);
    }

    void lostInputComesBackWhileTheProgramRunsOn()
    {
        // The server of a live RTMP channel is killed and comes back a few seconds later.
        IsolatedHome home;
        RtmpServer server;
        QVERIFY(server.start());
        const quint16 port = server.port();
        auto publish = [&](QProcess &publisher) {
            publisher.start("ffmpeg", {"-v",
                                       "error",
                                       "-nostdin",
                                       "-re",
                                       "-f",
                                       "lavfi",
                                       "-i",
                                       "testsrc2=size=320x240:rate=30",
                                       "-f",
                                       "lavfi",
                                       "-i",
                                       "sine=frequency=440",
                                       "-c:v",
                                       "libx264",
                                       "-preset",
                                       "ultrafast",
                                       "-g",
                                       "30",
                                       "-c:a",
                                       "aac",
                                       "-f",
                                       "flv",
                                       server.url("in")});
            return publisher.waitForStarted();
        };
        QProcess first;
        QVERIFY(publish(first));
        QTest::qWait(1500);
        QProcess run;
        run.setProcessEnvironment(home.environment());
        run.start(kBinary, {"--headless", "--channel", "1=" + server.url("in"), "--duration", "16",
                            "--size", "320x240", "--record", home.path("out.mp4")});
        QTest::qWait(5000);
        server.stop();
        QTest::qWait(2500);
        QVERIFY(server.start(port));
        QProcess second;
        QVERIFY(publish(second));
        QVERIFY(run.waitForFinished(40000));
        second.kill();
        first.kill();
        second.waitForFinished(5000);
        first.waitForFinished(5000);
        const QByteArray out = run.readAllStandardOutput();
        QCOMPARE(run.exitCode(), 0);
        const qsizetype lost = out.indexOf("channels 1:reconnecting");
        QVERIFY2(lost > 0 && out.indexOf("channels 1:live", lost) > lost, out.constData());

        // Every tick of the 16 s became a frame, and the sound (silence while the source was
        // away) runs as long as the pictures.
        const QRegularExpression done("done: .* written (\\d+)  ");
        const QRegularExpressionMatch m = done.match(QString::fromUtf8(out));
        QVERIFY2(m.hasMatch(), out.constData());
        const qint64 written = m.captured(1).toLongLong();
        QVERIFY2(written >= 16 * 30 - 10, out.constData());
        const ProbedFile file = probeFile(home.path("out.mp4"));
        QCOMPARE(file.stream("h264")->frames, written);
        std::vector<std::int16_t> sound;
        double soundStart = 0;
        QVERIFY(decodeAudio(home.path("out.mp4"), &sound, &soundStart));
        const double soundSeconds = double(sound.size()) / 48000;
        QVERIFY2(qAbs(soundSeconds - written / 30.0) < 0.3,
                 qPrintable(QString::number(soundSeconds)));
        qInfo("written %lld frames, sound %.2f s", written, soundSeconds);
    }

    void everySourceRunsTheWholeShowOrIsReported_data()
    {
        QTest::addColumn<QString>("file");
        QTest::addColumn<QString>("made"); // the ffmpeg input that makes it; empty: none
        QTest::addColumn<int>("exitCode");
        QTest::addColumn<int>("luma"); // the program's mean luma at the end (black: 0)
        QTest::addColumn<bool>("sound");
        const QString picture = "testsrc2=size=320x240";
        QTest::newRow("jpeg still") << "s.jpg" << picture << 0 << 120 << false;
        QTest::newRow("bmp still") << "s.bmp" << picture << 0 << 120 << false;
        QTest::newRow("webp still") << "s.webp" << picture << 0 << 120 << false;
        QTest::newRow("sound alone") << "a.mp3"
                                     << "sine=frequency=440:duration=5" << 0 << 0 << true;
        QTest::newRow("missing file") << "missing.mp4" << QString() << 4 << 0 << false;
        QTest::newRow("bad test signal") << "lavfi://nosuchfilter" << QString() << 4 << 0 << false;
    }

    void everySourceRunsTheWholeShowOrIsReported()
    {
        // The outputs start with the run, whatever the source does: black until (or unless)
        // a picture comes, and a channel whose source never opens is named at the end.
        QFETCH(QString, file);
        QFETCH(QString, made);
        QFETCH(int, exitCode);
        QFETCH(int, luma);
        QFETCH(bool, sound);
        IsolatedHome home;
        const QString source = file.contains("://") ? file : home.path(file);
        if (!made.isEmpty()) {
            QStringList args{"-f", "lavfi", "-i", made};
            if (!file.endsWith(".mp3"))
                args << "-frames:v"
                     << "1";
            QVERIFY(runFfmpeg(args << source));
        }
        const ProcessResult r = runProcess(kBinary,
                                           {"--headless", "--channel", "1=" + source, "--duration",
                                            "2", "--record", home.path("out.mp4")},
                                           home.environment(), 60000);
        QCOMPARE(r.exitCode, exitCode);
        if (exitCode == 4)
            QVERIFY2(r.err.contains("channel 1: the source never opened"), r.err.constData());
        const ProbedFile out = probeFile(home.path("out.mp4"));
        QVERIFY2(out.ok, out.errors.constData());
        QVERIFY2(qAbs(out.duration - 2.0) < 0.2, qPrintable(QString::number(out.duration)));
        QProcess last;
        last.start("ffmpeg", {"-v", "error", "-sseof", "-0.3", "-i", home.path("out.mp4"),
                              "-frames:v", "1", "-f", "rawvideo", "-pix_fmt", "gray", "-"});
        QVERIFY(last.waitForFinished(20000));
        const QByteArray pixels = last.readAllStandardOutput();
        QVERIFY(!pixels.isEmpty());
        qint64 sum = 0;
        for (char p : pixels)
            sum += uchar(p);
        QVERIFY2(qAbs(sum / pixels.size() - luma) < 12,
                 qPrintable(QString::number(sum / pixels.size())));
        std::vector<std::int16_t> samples;
        double start = 0;
        QVERIFY(decodeAudio(home.path("out.mp4"), &samples, &start));
        const bool loud = std::any_of(samples.begin(), samples.end(),
                                      [](std::int16_t v) { return std::abs(v) > 1000; });
        QCOMPARE(loud, sound);
    }
};

QTEST_GUILESS_MAIN(TestHeadless)
#include "test_headless.moc"
