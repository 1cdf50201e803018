// Encoder choice and configuration, URL handling, queue depths and the router's drop rules.
// The drop rules are observed for real: the encode worker is held up opening a FIFO that nobody
// reads yet, frames pile up, and the pictures that survive are read back from the output.

#include "MediaFixtures.h"
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

namespace {

QStringList g_warnings;
void collectWarnings(QtMsgType type, const QMessageLogContext &, const QString &message)
{
    if (type == QtWarningMsg)
        g_warnings << message;
}

struct WarningCapture
{
    QtMessageHandler previous;
    WarningCapture()
    {
        g_warnings.clear();
        previous = qInstallMessageHandler(collectWarnings);
    }
    ~WarningCapture() { qInstallMessageHandler(previous); }
};

FrameTokenPtr solidFrame(FramePool &pool, int w, int h, uchar shade)
{
    FrameWriter writer = pool.acquire();
    writer.prepare(w, h, qint64(w) * 4);
    writer->pixels.fill(char(shade));
    return std::move(writer).publish();
}

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

    void familyAndAutomaticBitrate()
    {
        QCOMPARE(encoder::familyFor(4096, 2160), encoder::Family::H264);
        QCOMPARE(encoder::familyFor(4098, 2160), encoder::Family::Hevc);
        QCOMPARE(encoder::familyFor(1080, 4100), encoder::Family::Hevc);
        QCOMPARE(encoder::automaticBitrateKbps(30, 1920, 1080), 7465);
        QCOMPARE(encoder::automaticBitrateKbps(60, 1920, 1080), 14930);
        QCOMPARE(encoder::automaticBitrateKbps(30, 640, 360), 2500);
        QCOMPARE(encoder::automaticBitrateKbps(60, 7680, 4320), 200000);
        QCOMPARE(encoder::automaticBitrateKbps(60, 3840, 2160), 59720);
        QCOMPARE(encoder::automaticBitrateKbps(120, 1920, 1080), 20000);
        QCOMPARE(encoder::automaticBitrateKbps(0.2, 1920, 1080), 2500);
    }

    void softwareEncoderConfiguration()
    {
        EncoderSettings s;
        s.fps = 29.97;
        s.keyframeSeconds = 2;
        s.encoderMode = EncoderSettings::Software;
        encoder::OpenedEncoder opened;
        QVERIFY(encoder::openVideoEncoder(s, 640, 360, false, &opened));
        QCOMPARE(opened.name, QString("libx264"));
        QCOMPARE(opened.context->framerate.num, 30);
        QCOMPARE(opened.context->framerate.den, 1);
        QCOMPARE(opened.context->time_base.den, 30);
        QCOMPARE(opened.context->gop_size, 60);
        QCOMPARE(opened.context->max_b_frames, 0);
        QCOMPARE(opened.context->pix_fmt, AV_PIX_FMT_YUV420P);
        QCOMPARE(opened.context->bit_rate, 2500000);
        QCOMPARE(opened.context->rc_min_rate, 0);
        QCOMPARE(opened.context->rc_buffer_size, 5000000);
        s.livePublish = true;
        s.bitrateKbps = 3000;
        QVERIFY(encoder::openVideoEncoder(s, 640, 360, true, &opened));
        QCOMPARE(opened.context->time_base.den, 1000);
        QCOMPARE(opened.context->rc_min_rate, 3000000);
        QCOMPARE(opened.context->rc_buffer_size, 3000000);
        QVERIFY(opened.context->flags & AV_CODEC_FLAG_GLOBAL_HEADER);
    }

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
            QCOMPARE(g_warnings.filter("unavailable").size(), 1);
            QVERIFY(g_warnings.filter("unavailable")[0].startsWith(
                "FfmpegEncoderSink: NVENC/QSV/AMF unavailable for H.264"));
            QVERIFY(g_warnings.filter("unavailable")[0].endsWith("; trying software encoder"));
        }
        const int attempts = encoder::hardwareOpenAttempts();
        {
            // A second start within 10 s: no hardware attempt, no second warning.
            WarningCapture capture;
            fake += std::chrono::seconds(9);
            QVERIFY(encoder::openVideoEncoder(s, 320, 240, false, &opened));
            QCOMPARE(encoder::hardwareOpenAttempts(), attempts);
            QVERIFY(g_warnings.filter("unavailable").isEmpty());
            // Another size is another request: hardware is tried again (still no warning).
            QVERIFY(encoder::openVideoEncoder(s, 640, 360, false, &opened));
            QVERIFY(encoder::hardwareOpenAttempts() > attempts);
            QVERIFY(g_warnings.filter("unavailable").isEmpty());
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
            QVERIFY(g_warnings.contains("FfmpegEncoderSink: real-time 8K requires explicit hardware encoding"));
        }
        {
            WarningCapture capture;
            s.encoderMode = EncoderSettings::Hardware;
            QVERIFY(!sink.probe(s, 7680, 4320)); // hardware HEVC only, and none here
            QVERIFY(g_warnings.filter("; hardware mode cannot continue").size() == 1);
            QVERIFY(g_warnings.contains(
                "FfmpegEncoderSink: encoder capability probe failed for 7680x4320@30"));
        }
        s.encoderMode = EncoderSettings::Auto;
        QVERIFY(sink.probe(s, 1281, 721));
    }

    void urlsAndContainers()
    {
        QCOMPARE(maskStreamUrl("rtmp://server/app/key"), QString("rtmp://server/app/***"));
        QCOMPARE(maskStreamUrl("rtmps://a.example:443/live2/abc-def"), QString("rtmps://a.example:443/live2/***"));
        QCOMPARE(maskStreamUrl("rtmp://server"), QString("rtmp://server"));
        QCOMPARE(maskStreamUrl("srt://host:9000?streamid=x"), QString("srt://host:9000?streamid=x"));
        bool rewritten = false;
        QCOMPARE(rewriteYouTubeRtmp("rtmp://a.rtmp.youtube.com/live2/key", &rewritten),
                 QString("rtmps://a.rtmps.youtube.com:443/live2/key"));
        QVERIFY(rewritten);
        QCOMPARE(rewriteYouTubeRtmp("rtmp://example.com/live2/key", &rewritten),
                 QString("rtmp://example.com/live2/key"));
        QVERIFY(!rewritten);
        QVERIFY(isFlvTarget("RTMPS://x/app/k", ""));
        QVERIFY(isFlvTarget("srt://x:1", "live_flv"));
        QCOMPARE(streamContainerName("srt://x:1", "m2ts"), QString("mpegts"));
        QCOMPARE(streamContainerName("rtmp://x/a/b", "mpegts"), QString("flv"));
    }

    void queueDepthsByPictureSizeAndUse()
    {
        QCOMPARE(OutputRouter::queueDepthFor({1920, 1080}, false), 32);
        QCOMPARE(OutputRouter::queueDepthFor({1920, 1080}, true), 4);
        QCOMPARE(OutputRouter::queueDepthFor({3840, 2160}, false), 8);
        QCOMPARE(OutputRouter::queueDepthFor({7680, 4320}, false), 3);
        QCOMPARE(OutputRouter::queueDepthFor({0, 0}, false), 32);
    }

    void unwritableDirectoryRefusesTheStart()
    {
        OutputRouter router;
        EncoderSettings s;
        s.fileEnabled = true;
        s.filePath = "/proc/selvane-no-such-dir/out.mp4";
        router.setSettings(s);
        router.setOutputSize({320, 240});
        WarningCapture capture;
        QVERIFY(!router.start());
        QVERIFY(!router.isRunning());
        QCOMPARE(g_warnings.filter("OutputRouter: output directory not writable or cannot be created:").size(), 1);
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
        router.setSettings(s);
        router.setOutputSize({64, 64});
        QVERIFY(router.start());
        QCOMPARE(router.queueDepth(), live ? 4 : 32);
        // The worker is now stuck opening the FIFO: every frame waits in the queue.
        FramePool pool(50, 64, 64);
        WarningCapture capture;
        const int total = 40;
        const std::vector<std::int16_t> silence(48000 * 2 * 2, 0);
        router.pushAudio(silence.data(), 48000 * 2, 0);
        for (int i = 0; i < total; ++i)
            router.enqueueFrame(solidFrame(pool, 64, 64, uchar(i * 5)), qint64(i) * 1000000 / 30);
        QCOMPARE(router.droppedFrames(), qint64(total - router.queueDepth()));
        const QStringList drops = g_warnings.filter("OutputRouter: encode queue overloaded; dropped frame count");
        QCOMPARE(drops.size(), 5);
        QVERIFY(drops.first().endsWith(live ? "live= true" : "live= false"));

        const QString captured = QDir(dir.path()).filePath("captured.ts");
        QProcess reader;
        reader.setStandardOutputFile(captured);
        reader.start("cat", {fifo});
        QVERIFY(reader.waitForStarted());
        QTest::qWait(1500);
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
        QCOMPARE(shifted, expected);
    }
};

QTEST_GUILESS_MAIN(TestEncoder)
#include "test_encoder.moc"
