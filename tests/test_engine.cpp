// The engine through its API, on real test signals: the program follows cuts at the rate of
// the channel on air, a window thread that stalls never stalls the program or its recording,
// still pictures are letterboxed, the output size follows what is on air until the outputs
// lock it, and the overlay-video slots queue requests while a slot is being released.

#include "TestSupport.h"
#include "engine/Engine.h"
#include "engine/ResolutionPolicy.h"
#include "media/FrameConvert.h"
#include "output/OutputRouter.h"

#include <QSignalSpy>
#include <QtTest>

using namespace testsupport;
using namespace selvane;

namespace {

const QString kBars = "lavfi://testsrc2=size=320x240:rate=30";
const QString kBarsHd = "lavfi://testsrc2=size=1280x720:rate=30";
const QString kSmall = "lavfi://testsrc2=size=160x90:rate=30";

// Counts program pictures without holding them (holding would drain the pool).
struct ProgramWatch
{
    int frames = 0;
    int lastWidth = 0;
    int lastChannel = -2;
    void attach(Engine &engine, QObject *context)
    {
        QObject::connect(&engine, &Engine::programFrame, context,
                         [this](const FrameTokenPtr &frame, int channel) {
                             ++frames;
                             lastWidth = frame->width;
                             lastChannel = channel;
                         });
    }
};

} // namespace

class TestEngine : public QObject
{
    Q_OBJECT

    QTemporaryDir m_dir;

    // A captioned channel on air and recorded; the path of the recording, empty on failure.
    QString startCaptionedRecording(Engine &engine, const QString &address, const QString &name)
    {
        TextOverlayData caption;
        caption.id = 1;
        caption.text = QStringLiteral("ON AIR");
        caption.backgroundEnabled = true;
        engine.setTextOverlay(caption);
        engine.setChannelSource(0, address);
        OutputSettings settings;
        settings.encoder.fileEnabled = true;
        settings.encoder.filePath = QDir(m_dir.path()).filePath(name);
        settings.encoder.qualityPreset = EncoderSettings::Performance;
        QSignalSpy started(&engine, &Engine::outputsStarted);
        if (engine.startOutputs(settings) || !started.wait(10000))
            return {};
        return settings.encoder.filePath;
    }

private slots:
    void programFollowsCuts()
    {
        Engine engine;
        engine.setChannelSource(0, kBars);
        // Nobody watches at first, so no picture is handed out; one who comes later gets them
        // from then on, and channel pictures too.
        QTest::qWait(300);
        ProgramWatch watch;
        watch.attach(engine, this);
        int channelPictures = 0;
        connect(&engine, &Engine::channelPreview, this, [&] { ++channelPictures; });
        QTRY_VERIFY(watch.frames > 0 && channelPictures > 0);
        engine.setChannelSource(1, kBarsHd);
        engine.cutTo(1);
        QTRY_COMPARE(watch.lastWidth, 1280);
        QCOMPARE(engine.programSize(), QSize(1280, 720));
        QCOMPARE(watch.lastChannel, 1);
        engine.cutTo(0);
        QTRY_COMPARE(watch.lastWidth, 320);
        QCOMPARE(engine.programSize(), QSize(320, 240));
        QTest::qWait(1100); // a full second of rates
        const EngineStats stats = engine.stats();
        QVERIFY2(stats.program.fps > 10 && stats.program.fps < 35,
                 QByteArray::number(stats.program.fps));
        QCOMPARE(stats.channels[1].state, ChannelState::Playing);
        QCOMPARE(stats.channels[1].size, QSize(1280, 720));
        // No channel on air: the program goes on, in black.
        engine.cutTo(-1);
        QTest::qWait(100);
        watch.frames = 0;
        QTest::qWait(300);
        QVERIFY(watch.frames >= 5);
        QCOMPARE(watch.lastChannel, -1);
    }

    void stalledWindowThreadNeverStallsTheRecording()
    {
        Engine engine;
        engine.startAudio();
        const QString file = startCaptionedRecording(
            engine, "lavfi://testsrc2=size=640x360:rate=30[out0];sine[out1]", "stall.mp4");
        QVERIFY(!file.isEmpty());
        QTest::qWait(1000);
        QThread::msleep(1500); // the window is busy: nothing on this thread runs
        QTest::qWait(1000);
        QSignalSpy stopped(&engine, &Engine::outputsStopped);
        engine.stopOutputs();
        QVERIFY(stopped.wait(10000));
        QCOMPARE(engine.stats().program.framesWithoutOverlays, 0);

        // Every picture made it, and none is missing in the middle.
        QProcess probe;
        probe.start("ffprobe", {"-v", "error", "-select_streams", "v:0", "-show_entries",
                                "packet=pts_time", "-of", "csv=p=0", file});
        QVERIFY(probe.waitForFinished(20000));
        QList<double> times;
        for (const QByteArray &line : probe.readAllStandardOutput().split('\n'))
            if (!line.trimmed().isEmpty())
                times << line.toDouble();
        std::sort(times.begin(), times.end());
        double largestGap = 0;
        for (int i = 1; i < times.size(); ++i)
            largestGap = std::max(largestGap, times[i] - times[i - 1]);
        qInfo("%lld pictures over %.2f s, largest gap %.0f ms", qint64(times.size()),
              times.last() - times.first(), largestGap * 1000);
        QVERIFY2(largestGap < 0.2, QByteArray::number(largestGap));
        QVERIFY(times.size() >= 95);
    }

    void overlaysStayOnEveryPictureWhileTheEncoderLags()
    {
        // The encode queue fills up while the encoder is held up: the pictures it holds must
        // neither starve the decoders nor leave the compositor without a picture to draw on.
        Engine engine;
        QVERIFY(!startCaptionedRecording(engine, "lavfi://testsrc2=size=1280x720:rate=30",
                                         "lagging.mp4")
                     .isEmpty());
        QTest::qWait(500);
        const EngineStats before = engine.stats();
        OutputRouter::injectEncoderStall(2500);
        QTest::qWait(3000);
        const EngineStats after = engine.stats();
        QSignalSpy stopped(&engine, &Engine::outputsStopped);
        engine.stopOutputs();
        QVERIFY(stopped.wait(15000));
        qInfo("while the encoder lagged: %lld program pictures, %lld without overlays, %lld "
              "dropped by the decoder, %lld by the encode queue",
              after.program.frames - before.program.frames, after.program.framesWithoutOverlays,
              after.channels[0].framesDropped, after.output.encoderDrops);
        QVERIFY(after.output.encoderDrops > 0); // the queue did overflow
        QCOMPARE(after.program.framesWithoutOverlays, 0);
        QCOMPARE(after.channels[0].framesDropped, before.channels[0].framesDropped);
        QVERIFY(after.program.frames - before.program.frames >= 80);
    }

    void stillPicturesAreLetterboxed()
    {
        Engine engine;
        engine.setOutputSize({true, QSize(800, 600)});
        FrameTokenPtr last;
        connect(&engine, &Engine::programFrame, this, [&](const FrameTokenPtr &frame, int channel) {
            if (channel == -1)
                last = frame;
        });
        QImage image(400, 100, QImage::Format_RGB32);
        image.fill(QColor(200, 30, 30));
        engine.showStill(image);
        QTRY_VERIFY(last);
        QCOMPARE(QSize(last->width, last->height), QSize(800, 600));
        const QImage view = frameToImage(*last);
        // 400x100 fitted into 800x600 is 800x200, centred at rows 200..399.
        const auto close = [](QColor a, QColor b) {
            return std::abs(a.red() - b.red()) + std::abs(a.green() - b.green()) +
                       std::abs(a.blue() - b.blue()) <=
                   12;
        };
        QVERIFY(close(view.pixelColor(400, 100), Qt::black));
        QVERIFY(close(view.pixelColor(400, 300), QColor(200, 30, 30)));
        QVERIFY(close(view.pixelColor(400, 500), Qt::black));
        // A still is repeated at the output rate; a channel on air ends it.
        last.reset();
        const qint64 before = engine.stats().program.frames;
        QTest::qWait(500);
        QVERIFY(engine.stats().program.frames - before >= 10);
        engine.setChannelSource(0, kSmall);
        engine.cutTo(0);
        QTest::qWait(300);
        last.reset();
        QTest::qWait(300);
        QVERIFY(!last);
    }

    void outputSizeFollowsWhatIsOnAir()
    {
        QCOMPARE(chooseOutputSize({true, {1281, 721}}, {}).size, QSize(1280, 720));
        QVERIFY(!chooseOutputSize({true, {0, 720}}, {640, 360}).valid);
        const OutputSizeChoice fallback = chooseOutputSize({}, {});
        QVERIFY(fallback.usedFallback && fallback.size == QSize(1920, 1080));
        QCOMPARE(chooseOutputSize({}, {641, 361}).size, QSize(640, 360));

        Engine engine;
        QSignalSpy changed(&engine, &Engine::programSizeChanged);
        engine.setChannelSource(0, "lavfi://testsrc2=size=641x361:rate=30");
        QTRY_COMPARE(engine.programSize(), QSize(640, 360));
        // A new source replaces the size; reports of the old source are ignored.
        engine.setChannelSource(0, kBars);
        QTRY_COMPARE(engine.programSize(), QSize(320, 240));
        QTest::qWait(300);
        QCOMPARE(engine.programSize(), QSize(320, 240));
        WarningCapture warnings;
        engine.setOutputSize({true, QSize(0, 720)});
        QVERIFY(warnings.contains("FramePipeline: invalid output resolution selection"));
        QCOMPARE(engine.programSize(), QSize(320, 240));
        QVERIFY(changed.size() >= 2);
    }

    void overlayVideoSlotsQueueWhileReleasing()
    {
        Engine engine;
        QSet<int> previews;
        connect(&engine, &Engine::overlayPreview, this,
                [&](int mediaId, const FrameTokenPtr &) { previews.insert(mediaId); });
        const auto video = [](int id) {
            return MediaOverlayRecord{
                id, MediaOverlayRecord::OverlayVideo, kSmall, {0, 0, 160, 90}, true, 1.0, true};
        };
        for (int id = 10; id < 13; ++id)
            engine.setMediaOverlay(video(id));
        engine.setMediaOverlay(MediaOverlayRecord{
            13, MediaOverlayRecord::OverlayVideo, kSmall, {0, 0, 160, 90}, true, 1.0, true});
        QTRY_COMPARE(previews, (QSet<int>{10, 11, 12, 13}));

        engine.removeMediaOverlay(10);
        engine.removeMediaOverlay(11);
        // Two requests while both slots are still being released: neither overwrites the other.
        engine.setMediaOverlay(video(20));
        engine.setMediaOverlay(video(21));
        QTRY_VERIFY(previews.contains(20) && previews.contains(21));
        // Pictures the removed overlays had already sent may still be on their way; after them,
        // the four that are left, and only they.
        QTest::qWait(500);
        previews.clear();
        QTRY_COMPARE(previews, (QSet<int>{12, 13, 20, 21}));
        QCOMPARE(engine.mediaOverlays().size(), 4);
    }

    void channelErrorsAreReported()
    {
        Engine engine;
        QSignalSpy errors(&engine, &Engine::channelError);
        WarningCapture warnings;
        engine.setChannelSource(2, "lavfi://nosuchfilter");
        QTRY_COMPARE(errors.size(), 1);
        QCOMPARE(errors.at(0).at(0).toInt(), 2);
        QCOMPARE(errors.at(0).at(1).value<SourceError>(), SourceError::OpenFailed);
        QVERIFY(warnings.contains("Channel 3 decoder: avformat_open_input failed"));
        QCOMPARE(engine.stats().channels[2].state, ChannelState::Failed);
    }
};

QTEST_MAIN(TestEngine)
#include "test_engine.moc"
