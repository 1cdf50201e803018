// The frame pipeline: coalescing mailboxes, stale reports, output-resolution selection and lock,
// still images, decoder reports, and the overlay-video slots with their asynchronous teardown.
// Channels and overlays play real lavfi test signals.

#include "compose/FramePipeline.h"
#include "compose/OverlayManager.h"
#include "input/FFmpegVideoDecoder.h"

#include <QSignalSpy>
#include <QtTest>

#include <thread>

namespace {

const QString kBars = "lavfi://testsrc2=size=320x240:rate=30";
const QString kBarsHd = "lavfi://testsrc2=size=1280x720:rate=30";

FrameTokenPtr solidToken(FramePool &pool, int w, int h, qint64 pts)
{
    FrameTokenPtr token = pool.acquire();
    prepareTokenPixels(*token, w, h, qint64(w) * 4);
    token->pixels.fill('\x40');
    token->pts = pts;
    return token;
}

// Exposes the resolution lock that an output run takes.
class LockablePipeline : public FramePipeline
{
public:
    using FramePipeline::FramePipeline;
    using FramePipeline::lockResolution;
    using FramePipeline::unlockResolution;
};

QByteArray g_lastWarning;
void captureWarnings(QtMsgType type, const QMessageLogContext &, const QString &message)
{
    if (type == QtWarningMsg)
        g_lastWarning = message.toUtf8();
}

} // namespace

class TestPipeline : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase()
    {
        qRegisterMetaType<FrameTokenPtr>("FrameTokenPtr");
        qRegisterMetaType<QImage>("QImage");
    }

    void newestBaseFrameWinsAndPassesThrough()
    {
        QObject owner;
        FramePipeline pipeline(&owner);
        QSignalSpy base(&pipeline, &FramePipeline::baseFrameReady);
        QSignalSpy program(&pipeline, &FramePipeline::programFrameReady);
        QSignalSpy previews(&pipeline, &FramePipeline::channelFrameReady);
        FramePool pool(4, 64, 64);
        FrameTokenPtr first = solidToken(pool, 64, 64, 1);
        FrameTokenPtr second = solidToken(pool, 64, 64, 2);
        std::thread producer([&] {
            pipeline.submitChannelFrame(0, first);
            pipeline.submitChannelFrame(0, second);
            pipeline.submitChannelFrame(1, first); // not the base: preview only
        });
        producer.join();
        QTRY_COMPARE(program.count(), 1);
        QTest::qWait(50);
        QCOMPARE(program.count(), 1);
        QCOMPARE(base.count(), 1);
        // Nothing to draw: the program frame is the very base token.
        QCOMPARE(program.at(0).at(0).value<FrameTokenPtr>(), second);
        QCOMPARE(base.at(0).at(0).value<FrameTokenPtr>(), second);
        QCOMPARE(previews.count(), 2);
        QCOMPARE(previews.at(0).at(0).toInt(), 0);
        QCOMPARE(previews.at(0).at(1).value<FrameTokenPtr>(), second);
        QCOMPARE(previews.at(1).at(0).toInt(), 1);
    }

    void outputResolutionSelection()
    {
        QObject owner;
        LockablePipeline pipeline(&owner);
        QSignalSpy changed(&pipeline, &FramePipeline::effectiveOutputResolutionChanged);
        // No source yet: the fallback.
        QCOMPARE(pipeline.effectiveOutputSize(), QSize(1920, 1080));
        QVERIFY(pipeline.usedFallbackResolution());
        pipeline.setOutputResolutionSelection(FramePipeline::kExplicitResolutionMode, 1281, 721);
        QCOMPARE(pipeline.effectiveOutputSize(), QSize(1280, 720));
        QVERIFY(!pipeline.usedFallbackResolution());
        QCOMPARE(changed.count(), 1);
        QCOMPARE(changed.at(0).at(0).toSize(), QSize(1280, 720));
        pipeline.setOutputResolutionSelection(FramePipeline::kExplicitResolutionMode, 1280, 720);
        QCOMPARE(changed.count(), 1); // same result: no signal

        const QtMessageHandler previous = qInstallMessageHandler(captureWarnings);
        pipeline.setOutputResolutionSelection(FramePipeline::kExplicitResolutionMode, 0, 720);
        qInstallMessageHandler(previous);
        QVERIFY(g_lastWarning.startsWith("FramePipeline: invalid output resolution selection"));
        QCOMPARE(pipeline.effectiveOutputSize(), QSize(1280, 720));

        // 4K output: the pools allow fewer frames in flight.
        pipeline.setOutputResolutionSelection(FramePipeline::kExplicitResolutionMode, 3840, 2160);
        QCOMPARE(pipeline.programPool().maxInUse(), 10);
        QCOMPARE(pipeline.overlayPool().maxInUse(), 4);

        // Same as program follows the base channel's display size, with odd sizes made even.
        pipeline.setOutputResolutionSelection(0, 0, 0);
        pipeline.setChannelSource(0, "lavfi://testsrc2=size=641x361:rate=30");
        QTRY_COMPARE(pipeline.effectiveOutputSize(), QSize(640, 360));
        QVERIFY(!pipeline.usedFallbackResolution());
        QCOMPARE(pipeline.programPool().maxInUse(), 20);

        // While locked, a new source size does not change the output.
        pipeline.lockResolution();
        pipeline.setChannelSource(0, kBars);
        QTRY_COMPARE(pipeline.channelDisplaySize(0), QSize(320, 240));
        QCOMPARE(pipeline.effectiveOutputSize(), QSize(640, 360));
        pipeline.unlockResolution();
        QCOMPARE(pipeline.effectiveOutputSize(), QSize(320, 240));
    }

    void staleVideoInfoIsIgnored()
    {
        QObject owner;
        FramePipeline pipeline(&owner);
        pipeline.setChannelSource(0, kBars);
        QTRY_COMPARE(pipeline.effectiveOutputSize(), QSize(320, 240));
        const quint64 generation = pipeline.channelDecoder(0)->generation();
        pipeline.onChannelSourceVideoInfoChanged(0, 1920, 1080, 1920, 1080, generation - 1);
        QCOMPARE(pipeline.effectiveOutputSize(), QSize(320, 240));
        pipeline.onChannelSourceVideoInfoChanged(7, 1920, 1080, 1920, 1080, generation);
        QCOMPARE(pipeline.effectiveOutputSize(), QSize(320, 240));
        pipeline.onChannelSourceVideoInfoChanged(0, 800, 600, 800, 600, generation);
        QCOMPARE(pipeline.effectiveOutputSize(), QSize(800, 600));
    }

    void liveChannelDrivesTheProgramAndBaseCanSwitch()
    {
        // Counters only: holding the tokens would drain the pool the decoders draw from.
        QObject owner;
        FramePipeline pipeline(&owner);
        int programFrames = 0;
        int lastWidth = 0;
        QSet<int> previewChannels;
        connect(&pipeline, &FramePipeline::programFrameReady, &owner,
                [&](const FrameTokenPtr &frame) {
                    ++programFrames;
                    lastWidth = frame->width;
                });
        connect(&pipeline, &FramePipeline::channelFrameReady, &owner,
                [&](int channel, const FrameTokenPtr &) { previewChannels.insert(channel); });
        pipeline.setChannelSource(0, kBars);
        pipeline.setChannelSource(1, kBarsHd);
        pipeline.setBaseChannel(1);
        QTRY_VERIFY(programFrames > 0);
        programFrames = 0;
        QTest::qWait(1500);
        QVERIFY2(programFrames >= 40 && programFrames <= 50,
                 QByteArray::number(programFrames).constData());
        QCOMPARE(lastWidth, 1280);
        QCOMPARE(pipeline.effectiveOutputSize(), QSize(1280, 720));
        QCOMPARE(previewChannels, (QSet<int>{0, 1}));
        pipeline.setBaseChannel(0);
        QTRY_COMPARE(lastWidth, 320);
        QCOMPARE(pipeline.effectiveOutputSize(), QSize(320, 240));
        // A base outside 0..3: no program frames at all.
        pipeline.setBaseChannel(-1);
        QTest::qWait(100);
        programFrames = 0;
        QTest::qWait(300);
        QCOMPARE(programFrames, 0);
    }

    void decoderErrorsAreReported()
    {
        QObject owner;
        FramePipeline pipeline(&owner);
        QSignalSpy errors(&pipeline, &FramePipeline::errorOccurred);
        const QtMessageHandler previous = qInstallMessageHandler(captureWarnings);
        pipeline.setChannelSource(2, "lavfi://sine=frequency=440");
        QTRY_COMPARE(errors.count(), 1);
        qInstallMessageHandler(previous);
        QCOMPARE(errors.at(0).at(0).toString(), QString("no video stream"));
        QCOMPARE(g_lastWarning, QByteArray("Channel 2 decoder: no video stream"));
    }

    void stillImageIsLetterboxedIntoTheOutput()
    {
        QObject owner;
        FramePipeline pipeline(&owner);
        pipeline.setOutputResolutionSelection(FramePipeline::kExplicitResolutionMode, 800, 600);
        pipeline.setProgramSourceMode(FramePipeline::kStillImageMode);
        QSignalSpy program(&pipeline, &FramePipeline::programFrameReady);
        QImage image(400, 100, QImage::Format_RGB32);
        image.fill(QColor(200, 30, 30));
        pipeline.pushStillImage(QImage(), 1); // ignored
        pipeline.pushStillImage(image, 1234);
        QCOMPARE(program.count(), 1);
        const FrameTokenPtr frame = program.at(0).at(0).value<FrameTokenPtr>();
        QCOMPARE(frame->pts, 1234);
        QCOMPARE(frame->width, 800);
        QCOMPARE(frame->height, 600);
        const QImage view(reinterpret_cast<const uchar *>(frame->pixels.constData()), 800, 600,
                          frame->stride, QImage::Format_RGBA8888);
        // 400x100 fitted into 800x600 is 800x200, centred at rows 200..399.
        QCOMPARE(view.pixelColor(400, 100), QColor(Qt::black));
        QCOMPARE(view.pixelColor(400, 300), QColor(200, 30, 30));
        QCOMPARE(view.pixelColor(400, 500), QColor(Qt::black));
        // In still-image mode the channels do not drive the program.
        pipeline.setChannelSource(0, kBars);
        QTest::qWait(400);
        QCOMPARE(program.count(), 1);
    }

    void overlayVideoSlots()
    {
        QObject owner;
        OverlayManager overlays;
        FramePipeline pipeline(&owner);
        pipeline.setOverlayManager(&overlays);
        pipeline.setOutputResolutionSelection(FramePipeline::kExplicitResolutionMode, 1920, 1080);
        for (int id = 10; id < 14; ++id) {
            MediaOverlayRecord record;
            record.id = id;
            record.kind = MediaOverlayRecord::OverlayVideo;
            record.filePath = kBars;
            record.rect = QRectF(0, 0, 320, 180); // half the scene: 960x540 output pixels
            overlays.setMediaOverlay(record);
            pipeline.registerOverlayVideo(id, kBars);
        }
        QSignalSpy overlayFrames(&pipeline, &FramePipeline::overlayFrameReady);
        QTRY_VERIFY(overlayFrames.count() >= 4);
        // Fitted into its rectangle keeping its 4:3 shape; the preview is small.
        QTRY_COMPARE(overlays.overlayVideoPicture(10).size(), QSize(720, 540));
        QVERIFY(overlayFrames.last().at(2).value<QImage>().width() <= 256);
        QVERIFY(overlays.hasAnythingToDraw());

        const QtMessageHandler previous = qInstallMessageHandler(captureWarnings);
        pipeline.registerOverlayVideo(14, kBars);
        qInstallMessageHandler(previous);
        QCOMPARE(g_lastWarning, QByteArray("FramePipeline: overlay video slots full (max 4)"));
        QCOMPARE(pipeline.overlaySlotOf(14), -1);

        // Re-registering an id reuses its slot with a new decoder generation.
        const int slot = pipeline.overlaySlotOf(11);
        const quint64 before = pipeline.overlayDecoder(slot)->generation();
        pipeline.registerOverlayVideo(11, kBarsHd);
        QCOMPARE(pipeline.overlaySlotOf(11), slot);
        QVERIFY(pipeline.overlayDecoder(slot)->generation() > before);

        // Quick unregister and re-register: the late completion must not free the new one.
        pipeline.unregisterOverlayVideo(12);
        const int slot12 = pipeline.overlaySlotOf(12);
        pipeline.registerOverlayVideo(12, kBars);
        QTest::qWait(500); // the teardown task completes meanwhile
        QCOMPARE(pipeline.overlaySlotOf(12), slot12);
        QVERIFY(pipeline.overlayDecoder(slot12)->isRunning());
        overlayFrames.clear();
        QTRY_VERIFY([&] {
            for (const QList<QVariant> &args : overlayFrames)
                if (args.at(0).toInt() == 12)
                    return true;
            return false;
        }());

        // A plain unregister frees the slot and forgets the picture; a waiting request takes it.
        pipeline.registerOverlayVideo(14, kBars); // all full: waits for the slot of 13
        pipeline.unregisterOverlayVideo(13);
        const QtMessageHandler previous2 = qInstallMessageHandler(captureWarnings);
        g_lastWarning.clear();
        pipeline.registerOverlayVideo(15, kBars); // still full while 13 is torn down
        qInstallMessageHandler(previous2);
        QTRY_COMPARE(pipeline.overlaySlotOf(13), -1);
        QVERIFY(overlays.overlayVideoPicture(13).isNull());
        QTRY_VERIFY(pipeline.overlaySlotOf(15) >= 0 || pipeline.overlaySlotOf(14) >= 0);
    }

    void finishWithMismatchedGenerationKeepsTheSlot()
    {
        QObject owner;
        FramePipeline pipeline(&owner);
        pipeline.registerOverlayVideo(3, kBars);
        const int slot = pipeline.overlaySlotOf(3);
        QVERIFY(slot >= 0);
        const quint64 generation = pipeline.overlayDecoder(slot)->generation();
        pipeline.finishOverlayAsyncUnregisterSlot(slot, 3, generation - 1);
        QCOMPARE(pipeline.overlaySlotOf(3), slot);
        pipeline.finishOverlayAsyncUnregisterSlot(9, 3, generation);
        QCOMPARE(pipeline.overlaySlotOf(3), slot);
        pipeline.finishOverlayAsyncUnregisterSlot(slot, 3, generation);
        QCOMPARE(pipeline.overlaySlotOf(3), -1);
    }
};

QTEST_GUILESS_MAIN(TestPipeline)
#include "test_pipeline.moc"
