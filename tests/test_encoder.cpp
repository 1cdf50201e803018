// Encoder choice (hardware first, remembered failures, 8K rules), URL masking, an unusable
// recording folder, and the router's drop rules.
// The drop rules are observed for real: the encode worker is held up opening a FIFO that nobody
// reads yet, frames pile up, and the pictures that survive are read back from the output.

#include "TestSupport.h"
#include "media/FramePool.h"
#include "output/FfmpegEncoderSink.h"
#include "output/OutputRouter.h"
#include "output/StreamUrl.h"
#include "output/VideoEncoderChoice.h"

#include <QProcess>
#include <QTemporaryDir>
#include <QtTest>
#include <sys/stat.h>

using namespace selvane;
using namespace testsupport;

namespace {

// Presentation times (in frame periods) of the pictures in a file, via ffprobe.
QList<int> framePeriods(const QString &path, double fps)
{
    QProcess probe;
    probe.start("ffprobe", {"-v", "error", "-select_streams", "v:0", "-show_entries",
                            "packet=pts_time", "-of", "csv=p=0", path});
    probe.waitForFinished(20000);
    QList<int> periods;
    for (const QByteArray &line : probe.readAllStandardOutput().split('\n')) {
        bool ok = false;
        const double seconds = line.split(',').value(0).trimmed().toDouble(&ok);
        if (ok)
            periods << int(std::lround(seconds * fps));
    }
    std::sort(periods.begin(), periods.end());
    return periods;
}

} // namespace

class TestEncoder : public QObject
{
    Q_OBJECT

private slots:
    void init() { encoder::resetEncoderMemory(); }

    void hardwareMemoryAndOnceOnlyWarning()
    {
        // This machine has no GPU: every hardware candidate fails to open.
        std::chrono::steady_clock::time_point fake = std::chrono::steady_clock::now();
        encoder::setEncoderMemoryClock([&fake] { return fake; });
        EncoderSettings s;
        encoder::OpenedEncoder opened;
        {
            WarningCapture capture;
            QVERIFY(encoder::openVideoEncoder(s, 320, 240, false, &opened));
            QCOMPARE(opened.name, QString("libx264"));
            QCOMPARE(capture.lines().filter("unavailable").size(), 1);
        }
        const int attempts = encoder::hardwareOpenAttempts();
        {
            // A second start within 10 s: no hardware attempt, no second warning.
            WarningCapture capture;
            fake += std::chrono::seconds(9);
            QVERIFY(encoder::openVideoEncoder(s, 320, 240, false, &opened));
            QCOMPARE(encoder::hardwareOpenAttempts(), attempts);
            QVERIFY(capture.lines().filter("unavailable").isEmpty());
            // Another size is another request: hardware is tried again (still no warning).
            QVERIFY(encoder::openVideoEncoder(s, 640, 360, false, &opened));
            QVERIFY(encoder::hardwareOpenAttempts() > attempts);
            QVERIFY(capture.lines().filter("unavailable").isEmpty());
        }
        // Past the 10 seconds the request is probed again.
        const int before = encoder::hardwareOpenAttempts();
        fake += std::chrono::seconds(11);
        QVERIFY(encoder::openVideoEncoder(s, 640, 360, false, &opened));
        QVERIFY(encoder::hardwareOpenAttempts() > before);
        encoder::setEncoderMemoryClock(nullptr);
    }

    void probeRules()
    {
        FfmpegEncoderSink sink;
        EncoderSettings s;
        QVERIFY(sink.probe(s, 0, 0));
        {
            WarningCapture capture;
            QVERIFY(!sink.probe(s, 7680, 4320));
            QVERIFY(capture.contains("8K requires explicit hardware encoding"));
        }
        {
            WarningCapture capture;
            s.encoderMode = EncoderSettings::Hardware;
            QVERIFY(!sink.probe(s, 7680, 4320)); // hardware HEVC only, and none here
            QVERIFY(capture.contains("encoder capability probe failed for 7680x4320"));
        }
        s.encoderMode = EncoderSettings::Auto;
        QVERIFY(sink.probe(s, 1281, 721));
    }

    void urlsAndContainers()
    {
        QCOMPARE(maskStreamUrl("rtmp://server/app/key"), QString("rtmp://server/app/***"));
        QCOMPARE(maskStreamUrl("rtmps://a.example:443/live2/abc-def"),
                 QString("rtmps://a.example:443/live2/***"));
        QCOMPARE(maskStreamUrl("rtmp://server"), QString("rtmp://server"));
        QCOMPARE(streamContainerName("rtmp://x/a/b", "mpegts"), QString("flv"));
    }

    void recordingThatCannotBeWrittenRefusesTheStart()
    {
        // Whichever face starts the outputs: a folder that cannot be written, a container
        // nobody knows.
        QTemporaryDir dir;
        for (const QString &path :
             {QStringLiteral("/proc/selvane-no-such-dir/out.mp4"), dir.filePath("show.xyz")}) {
            OutputRouter router;
            EncoderSettings s;
            s.fileEnabled = true;
            s.filePath = path;
            router.setSettings(s);
            router.setOutputSize({320, 240});
            WarningCapture capture;
            QVERIFY(!router.start());
            QVERIFY(!router.isRunning());
            QVERIFY(capture.contains(path));
        }
    }

    void overloadDropsNewestForRecordingsAndOldestForLive_data()
    {
        QTest::addColumn<bool>("live");
        QTest::newRow("recording only") << false;
        QTest::newRow("live target") << true;
    }

    void overloadDropsNewestForRecordingsAndOldestForLive()
    {
        QFETCH(bool, live);
        QTemporaryDir dir;
        const QString fifo = QDir(dir.path()).filePath(live ? "live.ts" : "rec.ts");
        QCOMPARE(mkfifo(fifo.toLocal8Bit().constData(), 0600), 0);
        EncoderSettings s;
        s.encoderMode = EncoderSettings::Software;
        s.qualityPreset = EncoderSettings::Performance;
        if (live) {
            s.streamTargets << StreamTarget{"file:" + fifo, "mpegts"};
        } else {
            s.fileEnabled = true;
            s.filePath = fifo;
        }
        OutputRouter router;
        std::atomic<bool> online{false};
        router.setStatusCallback([&](int, const QString &status) {
            if (status == QLatin1String("online"))
                online.store(true);
        });
        router.setSettings(s);
        router.setOutputSize({64, 64});
        QVERIFY(router.start());
        QCOMPARE(router.queueDepth(), live ? 4 : 32);
        // The worker is now stuck opening the FIFO: every frame waits in the queue.
        FramePool pool(50, 64, 64);
        WarningCapture capture;
        const int total = 40;
        // A second of sound: about 47 packets, well inside a stream target's backlog limit
        // while its connection waits for the reader.
        const std::vector<std::int16_t> silence(48000 * 2, 0);
        router.pushAudio(silence.data(), 48000, 0);
        for (int i = 0; i < total; ++i)
            router.enqueueFrame(solidFrame(pool, 64, 64, uchar(i * 5)), qint64(i) * 1000000 / 30);
        QCOMPARE(router.droppedFrames(), qint64(total - router.queueDepth()));
        QCOMPARE(capture.lines().filter("encode queue overloaded").size(), 5); // throttled

        const QString captured = QDir(dir.path()).filePath("captured.ts");
        QProcess reader;
        reader.setStandardOutputFile(captured);
        reader.start("cat", {fifo});
        QVERIFY(reader.waitForStarted());
        QTest::qWait(1500);
        // A target that tried before the reader was there connects on its next attempt.
        QTRY_VERIFY_WITH_TIMEOUT(!live || online.load(), 10000);
        router.stop();
        QVERIFY(reader.waitForFinished(5000));
        QList<int> expected;
        if (live) {
            for (int i = total - 4; i < total; ++i)
                expected << i; // the newest survive
        } else {
            for (int i = 0; i < 31; ++i)
                expected << i; // the first ones stay; the newest queued one gives way
            expected << total - 1;
        }
        const QList<int> got = framePeriods(captured, 30.0);
        // Timestamps start at zero in the output: compare the shape of the sequence.
        QList<int> shifted;
        for (int p : got)
            shifted << p - got.value(0) + expected.value(0);
        if (live) {
            // The target connects only once the reader is there, and starts at a keyframe.
            // When the worker took an early picture before the queue filled, that picture was
            // the keyframe and went out before the connection: the rest waits for the next
            // keyframe, which this short run never reaches. Whatever arrives is the newest.
            QVERIFY(shifted.size() <= expected.size());
            for (int p : shifted)
                QVERIFY(expected.contains(p));
        } else {
            QCOMPARE(shifted, expected);
        }
    }
};

QTEST_GUILESS_MAIN(TestEncoder)
#include "test_encoder.moc"
