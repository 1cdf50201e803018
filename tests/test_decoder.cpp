// The channel decoder against real media made at test time and a real RTMP server: every
// picture and its sound on one time line, loop and natural end, nothing kept once stopped,
// rotation, AV1 fallback, damaged files, pause and seek, live sources, and control calls that never
// wait for a run (a source change while the server has gone silent). Also the packet queue's drop
// rule on its own.

#include "TestSupport.h"
#include "input/FFmpegVideoDecoder.h"
#include "input/PacketQueue.h"
#include "media/SourceFeeds.h"

#include <QColor>
#include <QStandardPaths>
#include <QtTest>
#include <algorithm>
#include <mutex>
#include <set>
#include <thread>

using namespace testsupport;
using selvane::SourceAddress;

namespace {

struct Delivered
{
    qint64 ptsUs = 0;
    qint64 wallUs = 0;
    int width = 0;
    int height = 0;
    QColor topLeft;
    QColor topRight;
    QColor bottomLeft;
    QColor bottomRight;
};

QColor pixelAt(const FrameToken &frame, int x, int y)
{
    return pixelOf(frame, x, y);
}

// Keeps the first `fraction` of a file, or inverts every `step`-th byte after `skip` bytes.
bool damagedCopy(const QString &from, const QString &to, double fraction, qsizetype skip = 0,
                 qsizetype step = 0)
{
    QByteArray data = readAll(from);
    data = data.left(qsizetype(data.size() * fraction));
    for (qsizetype i = skip; step > 0 && i < data.size(); i += step)
        data[i] = char(~data[i]);
    QFile out(to);
    return out.open(QIODevice::WriteOnly) && out.write(data) == data.size();
}

using selvane::SourceError;

bool near(const QColor &a, const QColor &b, int tolerance = 40)
{
    return std::abs(a.red() - b.red()) <= tolerance &&
           std::abs(a.green() - b.green()) <= tolerance &&
           std::abs(a.blue() - b.blue()) <= tolerance;
}

// Plays the program's part for one decoder: takes its pictures and sound from the feed as soon
// as they come, on a thread of its own, and notes when each picture arrived.
class DecoderProbe : public QObject
{
public:
    FramePool pool{18, 1920, 1080};
    selvane::SourceFeed feed;
    FFmpegVideoDecoder decoder;
    QList<SourceError> errors;
    QList<QList<int>> infos;
    int ended = 0;

    DecoderProbe()
    {
        clock.start();
        decoder.setFramePool(pool);
        decoder.setFeed(&feed);
        connect(&decoder, &FFmpegVideoDecoder::decodeError, this,
                [this](SourceError error) { errors << error; });
        connect(&decoder, &FFmpegVideoDecoder::sourceVideoInfoChanged, this,
                [this](int cw, int ch, int dw, int dh, quint64 generation) {
                    infos << QList<int>{cw, ch, dw, dh, int(generation)};
                });
        connect(&decoder, &FFmpegVideoDecoder::playbackEndedNaturally, this, [this] { ++ended; });
        qRegisterMetaType<SourceError>("selvane::SourceError");
        reader = std::thread([this] { readLoop(); });
    }
    ~DecoderProbe() override
    {
        decoder.stop();
        decoder.waitUntilIdle(2000);
        stopping.store(true);
        reader.join();
    }

    std::vector<Delivered> snapshot()
    {
        std::lock_guard lock(mutex);
        return frames;
    }
    qsizetype frameCount()
    {
        std::lock_guard lock(mutex);
        return qsizetype(frames.size());
    }
    qint64 audio()
    {
        std::lock_guard lock(mutex);
        return audioFrames;
    }
    // The time of the first sound taken.
    qint64 firstSoundUs()
    {
        std::lock_guard lock(mutex);
        return soundStartUs;
    }
    void clear()
    {
        std::lock_guard lock(mutex);
        frames.clear();
        audioFrames = 0;
    }
    // Keeps the first `count` pictures themselves, each with the sum of its bytes on arrival.
    void keepFirst(int count)
    {
        std::lock_guard lock(mutex);
        keepCount = count;
    }
    std::vector<std::pair<FrameTokenPtr, quint64>> kept()
    {
        std::lock_guard lock(mutex);
        return keptPictures;
    }
    static quint64 sumOf(const FrameToken &frame)
    {
        quint64 sum = 0;
        for (int p = 0; p < 3; ++p) {
            const int rows = p == 0 ? frame.height : (frame.height + 1) / 2;
            const int width = p == 0 ? frame.width : (frame.width + 1) / 2;
            for (int y = 0; y < rows; ++y) {
                const uchar *row = frame.plane(p) + y * frame.planeStride(p);
                for (int x = 0; x < width; ++x)
                    sum = sum * 31 + row[x];
            }
        }
        return sum;
    }

private:
    void readLoop()
    {
        std::vector<std::int16_t> sound(2 * 4800);
        while (!stopping.load()) {
            bool idle = true;
            while (FrameTokenPtr frame = feed.frames().pop()) {
                idle = false;
                const int w = frame->width;
                const int h = frame->height;
                Delivered d{frame->ptsUs,
                            clock.nsecsElapsed() / 1000,
                            w,
                            h,
                            pixelAt(*frame, 4, 4),
                            pixelAt(*frame, w - 5, 4),
                            pixelAt(*frame, 4, h - 5),
                            pixelAt(*frame, w - 5, h - 5)};
                std::lock_guard lock(mutex);
                frames.push_back(d);
                if (int(keptPictures.size()) < keepCount)
                    keptPictures.emplace_back(frame, sumOf(*frame));
            }
            qint64 headUs = 0;
            quint64 timeline = 0;
            const bool haveHead = feed.sound().head(&headUs, &timeline);
            if (const int got = feed.sound().takeOldest(sound.data(), 4800)) {
                idle = false;
                std::lock_guard lock(mutex);
                if (audioFrames == 0 && haveHead)
                    soundStartUs = headUs;
                audioFrames += got;
            }
            if (idle)
                std::this_thread::sleep_for(std::chrono::milliseconds(2));
        }
    }

    std::mutex mutex;
    std::vector<Delivered> frames;
    int keepCount = 0;
    std::vector<std::pair<FrameTokenPtr, quint64>> keptPictures;
    qint64 audioFrames = 0;
    qint64 soundStartUs = 0;
    QElapsedTimer clock;
    std::atomic<bool> stopping{false};
    std::thread reader;
};

QStringList x264(const QString &extra = {})
{
    QStringList args{"-c:v", "libx264", "-preset", "ultrafast", "-pix_fmt", "yuv420p"};
    if (!extra.isEmpty())
        args << extra.split(' ');
    return args;
}

} // namespace

class TestDecoder : public QObject
{
    Q_OBJECT

    QTemporaryDir m_dir;
    QString path(const QString &name) const { return QDir(m_dir.path()).filePath(name); }

    // A 1-second 320x240 clip at 30 fps with a 1 kHz tone.
    QString shortClip()
    {
        const QString file = path("short.mp4");
        if (!QFile::exists(file))
            makeClip(file, "testsrc2=size=320x240:rate=30", "sine=frequency=1000:sample_rate=44100",
                     1.0,
                     x264() << "-c:a"
                            << "aac"
                            << "-movflags"
                            << "+faststart");
        return file;
    }

private slots:
    void testSignalsLeaveNothingBehind()
    {
        // Opened, read, started over and closed ten times, under valgrind: every frame a test
        // signal's graph made is freed with it (a graph read through libavdevice's lavfi input
        // lost one frame at every close).
        if (QStandardPaths::findExecutable("valgrind").isEmpty())
            QSKIP("valgrind is not installed");
        const ProcessResult r = runProcess(
            "valgrind",
            {"--leak-check=full", "--errors-for-leak-kinds=definite,indirect", "--error-exitcode=9",
             testsupport::builtProgram("SELVANE_TESTSIGNAL_CYCLES")},
            QProcessEnvironment::systemEnvironment(), 120000);
        QVERIFY2(r.finished && r.exitCode == 0, r.err.right(3000).constData());
        QVERIFY(r.out.contains("test signal cycles done"));
    }

    void fileGivesEveryPictureAndItsSoundOnOneTimeLine()
    {
        const QString file = path("full1080.mp4");
        QByteArray log;
        QVERIFY2(makeClip(file, "testsrc2=size=1920x1080:rate=30", "sine=frequency=1000", 4.0,
                          x264("-g 60 -bf 2") << "-c:a"
                                              << "aac",
                          &log),
                 log.constData());
        DecoderProbe probe;
        probe.decoder.setSource(SourceAddress(file));
        QTRY_VERIFY_WITH_TIMEOUT(probe.decoder.hasEnded(), 20000);
        QTRY_VERIFY_WITH_TIMEOUT(probe.audio() >= 4 * 48000 - 2400, 2000);
        const std::vector<Delivered> frames = probe.snapshot();
        QVERIFY(probe.errors.isEmpty());
        QVERIFY(!probe.decoder.isLive());
        QCOMPARE(probe.decoder.durationMs() / 100, 40); // 4.0x s
        // Nothing is paced or dropped by the decoder: every picture, in order, 1/30 s apart,
        // and the sound starts with the first picture.
        QCOMPARE(frames.size(), std::size_t(120));
        QCOMPARE(frames.front().width, 1920);
        for (std::size_t i = 1; i < frames.size(); ++i)
            QVERIFY(std::abs(frames[i].ptsUs - frames[i - 1].ptsUs - 33333) <= 1);
        QVERIFY2(std::abs(probe.firstSoundUs() - frames.front().ptsUs) < 1000,
                 QByteArray::number(probe.firstSoundUs() - frames.front().ptsUs));
        QVERIFY(std::abs(probe.audio() - 4 * 48000) < 2400);
    }

    void heldPicturesOutliveTheDecoder()
    {
        // Decoded pictures travel by reference to the decoder's own buffers: one that is held
        // must stay as it came while the decoder goes on (B-frames and references included)
        // and after the decoder has closed the file.
        const QString file = path("held.mp4");
        QByteArray log;
        QVERIFY2(makeClip(file, "testsrc2=size=320x240:rate=30", "sine=frequency=1000", 3.0,
                          x264("-g 30 -bf 2") << "-c:a"
                                              << "aac",
                          &log),
                 log.constData());
        auto probe = std::make_unique<DecoderProbe>();
        probe->keepFirst(8);
        probe->decoder.setSource(SourceAddress(file));
        QTRY_VERIFY_WITH_TIMEOUT(probe->decoder.hasEnded(), 20000);
        QCOMPARE(probe->snapshot().size(), std::size_t(90));
        const auto kept = probe->kept();
        QCOMPARE(kept.size(), std::size_t(8));
        QVERIFY(kept[0].first->held); // not a copy
        probe.reset();
        std::set<quint64> distinct;
        for (const auto &[picture, sum] : kept) {
            QCOMPARE(DecoderProbe::sumOf(*picture), sum);
            distinct.insert(sum);
        }
        QCOMPARE(distinct.size(), kept.size()); // eight pictures, not one buffer eight times
    }

    void loopGoesOnOneTimeLineWithoutEndSignal()
    {
        DecoderProbe probe;
        probe.decoder.setLoop(true);
        probe.decoder.setSource(SourceAddress(shortClip()));
        QTRY_VERIFY_WITH_TIMEOUT(probe.frameCount() >= 150, 10000);
        QCOMPARE(probe.ended, 0);
        QVERIFY(!probe.decoder.hasEnded());
        // Five loops of a 1 s clip follow each other on one time line. A loop lasts as long as
        // the longer of its streams (the AAC sound runs a little past the last picture), and
        // the n-th loop starts exactly n such lengths in, however many loops there are.
        const std::vector<Delivered> frames = probe.snapshot();
        const qint64 loopUs = frames[30].ptsUs - frames[0].ptsUs;
        QVERIFY2(loopUs >= 1'000'000 && loopUs <= 1'050'000, QByteArray::number(loopUs));
        for (std::size_t i = 1; i < 150; ++i) {
            const qint64 expected = qint64(i / 30) * loopUs + qint64(i % 30) * 1'000'000 / 30;
            const qint64 at = frames[i].ptsUs - frames[0].ptsUs;
            QVERIFY2(std::abs(at - expected) <= 2,
                     QByteArray::number(qlonglong(i)) + ": " + QByteArray::number(at - expected));
        }
        probe.decoder.stop();
    }

    void fileWithoutLoopEndsOnce()
    {
        DecoderProbe probe;
        probe.decoder.setSource(SourceAddress(shortClip()));
        QTRY_COMPARE_WITH_TIMEOUT(probe.ended, 1, 5000);
        QCOMPARE(probe.frameCount(), qsizetype(30)); // the decoder's last pictures included
        QTest::qWait(300);
        QCOMPARE(probe.ended, 1);
        QCOMPARE(probe.infos.size(), 1);
        QCOMPARE(probe.infos[0], (QList<int>{320, 240, 320, 240, int(probe.decoder.generation())}));
        // A seek from the end plays again.
        probe.clear();
        probe.decoder.seek(500);
        QTRY_VERIFY_WITH_TIMEOUT(probe.frameCount() >= 14, 3000);
        QVERIFY(probe.snapshot().front().ptsUs >= 500000);
        // Stopped, it keeps none of its pictures: a cleared channel holds no memory.
        QVERIFY(probe.pool.freeCount() > 0);
        probe.decoder.stop();
        QTRY_COMPARE_WITH_TIMEOUT(probe.pool.freeCount(), 0, 2000);
    }

    void rotatedClipArrivesUpright()
    {
        // Blue with a red square in its top-left corner, stored with a display rotation: upright
        // (as the ffmpeg CLI shows it too) the square is in the bottom-left corner of a portrait
        // picture.
        const QString plain = path("plain.mp4");
        const QString file = path("rotated.mp4");
        QByteArray log;
        QVERIFY2(
            makeClip(plain,
                     "color=c=blue:size=320x240:rate=10,drawbox=x=0:y=0:w=60:h=60:color=red:t=fill",
                     {}, 0.5, x264(), &log),
            log.constData());
        QVERIFY(runFfmpeg({"-i", plain, "-c", "copy", "-metadata:s:v:0", "rotate=90", file}, &log));
        DecoderProbe probe;
        probe.decoder.setSource(SourceAddress(file));
        QTRY_VERIFY_WITH_TIMEOUT(probe.frameCount() >= 1, 5000);
        QTRY_COMPARE(probe.infos.size(), 1);
        QCOMPARE(probe.infos[0].mid(0, 4), (QList<int>{320, 240, 240, 320}));
        const Delivered first = probe.snapshot().front();
        QCOMPARE(QSize(first.width, first.height), QSize(240, 320));
        QVERIFY(near(first.bottomLeft, Qt::red));
        for (const QColor &corner : {first.topLeft, first.topRight, first.bottomRight})
            QVERIFY(near(corner, Qt::blue));
    }

    void av1PlaysThroughSoftwareAfterOneWarning()
    {
        const QString file = path("clip_av1.mkv");
        QByteArray log;
        QVERIFY2(makeClip(file, "testsrc2=size=160x120:rate=10", {}, 1.0,
                          {"-c:v", "libaom-av1", "-cpu-used", "8", "-row-mt", "1", "-b:v", "200k"},
                          &log),
                 log.constData());
        WarningCapture warnings;
        DecoderProbe probe;
        probe.decoder.setSource(SourceAddress(file));
        QTRY_COMPARE_WITH_TIMEOUT(probe.ended, 1, 8000);
        QCOMPARE(warnings.lines().filter("AV1 hardware decode unavailable").size(), 1);
        QVERIFY(probe.errors.isEmpty());
        QCOMPARE(probe.frameCount(), qsizetype(10));
    }

    void damagedFilesEndOrFailNeverHang_data()
    {
        QTest::addColumn<QString>("damage");
        QTest::newRow("truncated, index first") << "truncate-faststart";
        QTest::newRow("truncated, index last") << "truncate-indexlast";
        QTest::newRow("bit-flipped") << "bitflip";
        QTest::newRow("missing file") << "missing";
    }

    void damagedFilesEndOrFailNeverHang()
    {
        QFETCH(QString, damage);
        const QString good = path("good_" + damage + (damage.endsWith("ts") ? ".ts" : ".mp4"));
        QStringList encode = x264("-g 15") << "-c:a"
                                           << "aac";
        if (damage == "truncate-faststart" || damage == "bitflip")
            encode << "-movflags"
                   << "+faststart";
        QVERIFY(makeClip(good, "testsrc2=size=320x240:rate=30", "sine", 2.0, encode));
        const QString bad = path("bad_" + damage);
        if (damage.startsWith("truncate"))
            QVERIFY(damagedCopy(good, bad, 0.5));
        else if (damage.startsWith("bitflip"))
            QVERIFY(damagedCopy(good, bad, 1.0, 4096, 211));
        DecoderProbe probe;
        probe.decoder.setSource(
            SourceAddress(damage == "missing" ? path("does_not_exist.mp4") : bad));
        QTRY_VERIFY_WITH_TIMEOUT(probe.ended == 1 || !probe.errors.isEmpty(), 10000);
        if (damage == "truncate-indexlast" || damage == "missing")
            QCOMPARE(probe.errors, QList<SourceError>{SourceError::OpenFailed});
        if (!probe.errors.isEmpty())
            QCOMPARE(probe.decoder.state(), FFmpegVideoDecoder::State::Failed);
        if (damage == "truncate-faststart")
            QVERIFY(probe.frameCount() > 5 && probe.frameCount() < 60);
        probe.decoder.stop();
        QVERIFY(probe.decoder.waitUntilIdle(1000));
    }

    void seekInPauseShowsExactlyOneFrame()
    {
        DecoderProbe probe;
        probe.decoder.setSource(SourceAddress(shortClip()));
        QTRY_VERIFY_WITH_TIMEOUT(probe.frameCount() >= 3, 3000);
        probe.decoder.pause();
        QTest::qWait(100);
        probe.clear();
        probe.decoder.seek(600);
        QTRY_COMPARE_WITH_TIMEOUT(probe.frameCount(), qsizetype(1), 3000);
        QTest::qWait(200);
        std::vector<Delivered> frames = probe.snapshot();
        QCOMPARE(frames.size(), std::size_t(1));
        QVERIFY2(frames[0].ptsUs >= 600000 && frames[0].ptsUs < 640000,
                 QByteArray::number(frames[0].ptsUs).constData());
        // The same position again: nothing new.
        probe.decoder.seek(600);
        QTest::qWait(300);
        QCOMPARE(probe.frameCount(), qsizetype(1));
        probe.decoder.seek(200);
        QTRY_COMPARE_WITH_TIMEOUT(probe.frameCount(), qsizetype(2), 3000);
        frames = probe.snapshot();
        QVERIFY(frames[1].ptsUs >= 200000 && frames[1].ptsUs < 240000);
        // Resume plays on from there at the normal pace.
        probe.decoder.resume();
        QTRY_VERIFY_WITH_TIMEOUT(probe.frameCount() >= 10, 3000);
        QVERIFY(probe.snapshot()[2].ptsUs > frames[1].ptsUs);
    }

    void liveRtmpIsNotPacedAndStopsWhileServerIsFrozen()
    {
        RtmpServer server;
        QVERIFY2(server.start(), server.errorLog().constData());
        // A publisher that sends far faster than real time: 60 fps of pictures encoded as fast
        // as the machine can.
        QProcess publisher;
        publisher.start("ffmpeg",
                        {"-hide_banner", "-loglevel", "error", "-nostdin", "-f", "lavfi", "-i",
                         "testsrc2=size=320x240:rate=60", "-c:v", "libx264", "-preset", "ultrafast",
                         "-tune", "zerolatency", "-g", "30", "-f", "flv", server.url("cam")});
        QVERIFY(publisher.waitForStarted());
        QTest::qWait(1500);

        DecoderProbe probe;
        probe.decoder.setSource(SourceAddress(server.url("cam")));
        QTRY_VERIFY_WITH_TIMEOUT(probe.frameCount() >= 10, 15000);
        QVERIFY(probe.decoder.isLive());
        const qsizetype before = probe.frameCount();
        QTest::qWait(2000);
        const double fps = (probe.frameCount() - before) / 2.0;
        qInfo("live RTMP delivery: %.1f pictures per second for a 60 fps stream sent faster than "
              "real time",
              fps);
        QVERIFY2(fps > 90.0, QByteArray::number(fps).constData()); // not paced to 60 fps
        QVERIFY(probe.errors.isEmpty());

        // The server goes silent: the run is stuck in a network read. Changing the source
        // returns at once, the stuck run is interrupted, and the new source plays.
        publisher.kill();
        publisher.waitForFinished(3000);
        server.freeze();
        QTest::qWait(500);
        const QString next = shortClip();
        QElapsedTimer callTimer;
        callTimer.start();
        probe.decoder.setSource(SourceAddress(next));
        const qint64 callMs = callTimer.elapsed();
        probe.clear();
        QTRY_VERIFY_WITH_TIMEOUT(probe.frameCount() >= 5, 3000);
        qInfo("source change with the server frozen: the call took %lld ms, the new source "
              "played after %lld ms",
              callMs, callTimer.elapsed());
        QVERIFY2(callMs < 20, QByteArray::number(callMs).constData());
        QVERIFY(probe.snapshot().front().width == 320);
        probe.decoder.stop();
        QVERIFY(probe.decoder.waitUntilIdle(1000));
        server.stop();
    }

    void packetQueueDropsTheOldestAndReportsTheReadersEnd()
    {
        selvane::PacketQueue queue(3);
        ffsupport::PacketPtr packet(av_packet_alloc());
        for (int i = 0; i < 5; ++i) {
            QCOMPARE(av_new_packet(packet.get(), 8), 0);
            packet->pts = i;
            queue.push(packet.get());
        }
        QCOMPARE(queue.droppedPackets(), 2);
        QCOMPARE(queue.take(packet.get(), false), 0);
        QCOMPARE(packet->pts, 2); // the two oldest gave way
        av_packet_unref(packet.get());
        queue.markEnded(AVERROR_EOF);
        QCOMPARE(queue.take(packet.get(), true), 0); // what is queued comes first
        av_packet_unref(packet.get());
        QCOMPARE(queue.take(packet.get(), true), 0);
        av_packet_unref(packet.get());
        QCOMPARE(queue.take(packet.get(), true), AVERROR_EOF);
        selvane::PacketQueue empty;
        std::atomic<bool> stop{false};
        std::thread stopper([&] {
            QThread::msleep(50);
            stop.store(true);
        });
        QCOMPARE(empty.take(packet.get(), true, [&] { return stop.load(); }), AVERROR_EXIT);
        stopper.join();
    }
};

QTEST_GUILESS_MAIN(TestDecoder)
#include "test_decoder.moc"
