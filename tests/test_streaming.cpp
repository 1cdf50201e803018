// A recording and two RTMP targets on a real nginx-rtmp server at once: both streams readable,
// the server killed and restarted (reconnecting, then online again, with the 1 s, 2 s, 4 s
// backoff, and no gap in the recording), and a receiver that stops reading (congested, while
// the file and the other target keep every frame). The program comes from a lavfi channel.

#include "TestSupport.h"
#include "engine/Engine.h"

#include <QElapsedTimer>
#include <QtTest>
#include <csignal>

using namespace testsupport;
using namespace selvane;

namespace {

const QString kSignal = "lavfi://testsrc2=size=640x360:rate=30[out0];sine=frequency=1000[out1]";

struct StatusEvent
{
    qint64 ms;
    int index;
    QString word;
};

// Pull a live stream from the server for a moment and report what ffprobe sees.
QByteArray probeStream(const QString &url)
{
    QProcess probe;
    probe.setProcessChannelMode(QProcess::MergedChannels);
    // FLV announces its streams with their first packets: analyse long enough to see a picture.
    probe.start("ffprobe", {"-v", "error", "-rw_timeout", "5000000", "-analyzeduration", "10000000",
                            "-probesize", "20000000", "-show_entries", "stream=codec_name", "-of",
                            "csv=p=0", url});
    // The event loop keeps running meanwhile: program pictures are composed on this thread.
    QElapsedTimer waited;
    waited.start();
    while (probe.state() != QProcess::NotRunning && waited.elapsed() < 20000)
        QTest::qWait(50);
    if (probe.state() != QProcess::NotRunning) {
        probe.kill();
        probe.waitForFinished(2000);
        return "timeout";
    }
    return probe.readAll();
}

#define VERIFY_STREAM_READABLE(url)                                                                \
    do {                                                                                           \
        const QByteArray seen = probeStream(url);                                                  \
        QVERIFY2(seen.contains("h264") && seen.contains("aac"), seen.constData());                 \
    } while (false)

} // namespace

class TestStreaming : public QObject
{
    Q_OBJECT

    QTemporaryDir m_dir;

private slots:
    void recordingAndTwoTargetsSurviveAServerRestart()
    {
        RtmpServer server;
        QVERIFY2(server.start(), server.errorLog().constData());
        Engine engine;
        engine.startAudio();
        QElapsedTimer clock;
        clock.start();
        QList<StatusEvent> events;
        connect(&engine, &Engine::streamStatusChanged, this, [&](int index, const QString &word) {
            events.append({clock.elapsed(), index, word});
        });
        OutputSettings output;
        EncoderSettings &settings = output.encoder;
        settings.fileEnabled = true;
        settings.filePath = QDir(m_dir.path()).filePath("restart.mp4");
        settings.streamTargets << StreamTarget{server.url("a"), "flv"}
                               << StreamTarget{server.url("b"), "flv"};
        settings.qualityPreset = EncoderSettings::Performance;
        engine.setChannelSource(0, kSignal);
        QSignalSpy started(&engine, &Engine::outputsStarted);
        QCOMPARE(engine.startOutputs(output), selvane::Problem());
        QVERIFY(started.wait(10000));
        QCOMPARE(started.at(0).at(0).toSize(), QSize(640, 360));
        const qint64 startedMs = clock.elapsed();
        const auto online = [&](int index) {
            for (auto it = events.crbegin(); it != events.crend(); ++it)
                if (it->index == index)
                    return it->word == "online";
            return false;
        };
        QTRY_VERIFY_WITH_TIMEOUT(online(0) && online(1), 10000);
        QTest::qWait(2000);
        VERIFY_STREAM_READABLE(server.url("a"));
        VERIFY_STREAM_READABLE(server.url("b"));

        // The server dies; it comes back on the same port five seconds later.
        server.stop();
        const qint64 killedMs = clock.elapsed();
        QTest::qWait(5000);
        QVERIFY(server.start(server.port()));
        QTRY_VERIFY_WITH_TIMEOUT(online(0) && online(1), 15000);
        QTest::qWait(1500);
        VERIFY_STREAM_READABLE(server.url("a"));

        QSignalSpy stopped(&engine, &Engine::outputsStopped);
        const qint64 stopMs = clock.elapsed();
        engine.stopOutputs();
        QTRY_COMPARE_WITH_TIMEOUT(stopped.count(), 1, 15000);

        // Both targets noticed, tried again with growing waits, and came back.
        for (int index = 0; index < 2; ++index) {
            QList<qint64> reconnecting;
            for (const StatusEvent &e : events)
                if (e.index == index && e.ms >= killedMs && e.word == "reconnecting")
                    reconnecting << e.ms;
            QVERIFY2(reconnecting.size() >= 3, qPrintable(QString::number(reconnecting.size())));
            QVERIFY(reconnecting[2] - reconnecting[1] >= 800);
        }

        // The recording went on through all of it: as many pictures as wall time allows.
        const ProbedFile probed = probeFile(settings.filePath);
        QVERIFY2(probed.ok, probed.errors.constData());
        const double wallSeconds = (stopMs - startedMs) / 1000.0;
        const qint64 frames = probed.stream("h264")->frames;
        qInfo("recording: %lld frames for %.2f s of output", frames, wallSeconds);
        QVERIFY2(std::abs(frames - wallSeconds * 30) <= 6, QByteArray::number(frames));
        QVERIFY(probed.stream("aac"));
    }

    void receiverThatStopsReadingIsCongestedAlone()
    {
        RtmpServer server;
        QVERIFY(server.start());
        // The second target is a single-session receiver that will stop reading.
        const quint16 port = freeTcpPort();
        const QString receiverUrl = QStringLiteral("rtmp://127.0.0.1:%1/live/stuck").arg(port);
        QProcess receiver;
        receiver.start("ffmpeg", {"-hide_banner", "-loglevel", "error", "-listen", "1", "-f", "flv",
                                  "-i", receiverUrl, "-c", "copy", "-f", "null", "-"});
        QVERIFY(receiver.waitForStarted());
        QTest::qWait(500);

        Engine engine;
        engine.startAudio();
        QList<StatusEvent> events;
        connect(&engine, &Engine::streamStatusChanged, this, [&](int index, const QString &word) {
            events.append({0, index, word});
        });
        OutputSettings output;
        EncoderSettings &settings = output.encoder;
        settings.fileEnabled = true;
        settings.filePath = QDir(m_dir.path()).filePath("congested.mp4");
        settings.streamTargets << StreamTarget{server.url("fine"), "flv"}
                               << StreamTarget{receiverUrl, "flv"};
        settings.qualityPreset = EncoderSettings::Performance;
        settings.bitrateKbps = 4000;
        engine.setChannelSource(0, kSignal);
        QCOMPARE(engine.startOutputs(output), selvane::Problem());
        QTRY_VERIFY_WITH_TIMEOUT(events.size() >= 4, 10000); // both connecting and online
        QTest::qWait(1000);
        ::kill(pid_t(receiver.processId()), SIGSTOP);
        const auto sawCongested = [&] {
            for (const StatusEvent &e : events)
                if (e.index == 1 && e.word == "congested")
                    return true;
            return false;
        };
        QTRY_VERIFY_WITH_TIMEOUT(sawCongested(), 15000);
        QTest::qWait(1000);
        const OutputStats stats = engine.stats().output;
        QCOMPARE(stats.targets.size(), 2);
        const qint64 fileBytes = stats.file.bytes;
        const qint64 fineBytes = stats.targets[0].bytes;
        qInfo("file %lld bytes, healthy target %lld bytes (%lld resets), stuck target %lld resets",
              fileBytes, fineBytes, stats.targets[0].queueResets, stats.targets[1].queueResets);
        QCOMPARE(stats.targets[0].queueResets, 0);
        QVERIFY(stats.targets[1].queueResets >= 1);
        // The healthy target carries what the file carries (a few packets may be in flight).
        QVERIFY2(std::abs(fileBytes - fineBytes) < fileBytes / 20, QByteArray::number(fineBytes));
        for (const StatusEvent &e : events)
            QVERIFY2(!(e.index == 0 && e.word == "congested"), "the healthy target was congested");

        QSignalSpy stopped(&engine, &Engine::outputsStopped);
        engine.stopOutputs();
        QTRY_COMPARE_WITH_TIMEOUT(stopped.count(), 1, 20000);
        ::kill(pid_t(receiver.processId()), SIGCONT);
        receiver.kill();
        receiver.waitForFinished(3000);
    }
};

QTEST_MAIN(TestStreaming)
#include "test_streaming.moc"
