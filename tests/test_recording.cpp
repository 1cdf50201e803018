// Recording the program: a real headless run read back with ffprobe, a copy taken while the
// file is written, a process killed mid-recording, segments by size and by time (fake clock), a
// disk that fills in the middle of a fragment's header (fake clock, a tmpfs), and the reopen
// backoff of a stream target against a dead port (fake clock).

#include "TestSupport.h"
#include "media/FramePool.h"
#include "output/FfmpegEncoderSink.h"
#include "output/StreamPublisher.h"
#include "output/VideoEncoderChoice.h"

#include <QRegularExpression>
#include <QScopeGuard>
#include <QtTest>
#include <csignal>
#include <unistd.h>

using namespace testsupport;

namespace {

const QString kBinary = testsupport::builtProgram("SELVANE_BINARY");
const QString kSignal = "1=lavfi://testsrc2=size=640x360:rate=30[out0];sine=frequency=1000[out1]";

// A picture of noise from a seed: the encoder cannot make two of them the same size, so the
// fragments of a recording end anywhere in a page of the disk.
FrameTokenPtr noiseFrame(FramePool &pool, int width, int height, quint32 seed)
{
    FrameWriter frame = pool.acquire();
    if (!frame)
        return {};
    frame.prepareI420(width, height);
    const qint64 luma = frame->planeOffset(1);
    quint32 x = seed * 2654435761u + 1;
    for (qint64 i = 0; i < luma; ++i) {
        x ^= x << 13;
        x ^= x >> 17;
        x ^= x << 5;
        frame.bits()[i] = uchar(16 + x % 220);
    }
    std::memset(frame.bits() + luma, 128, std::size_t(frame->pixels.size() - luma));
    return std::move(frame).publish();
}

// The top-level boxes of an MP4 file in order: type and size (the last one as far as the file
// goes, even where its size says more).
QList<std::pair<QByteArray, qint64>> topLevelBoxes(const QString &path)
{
    const QByteArray data = readAll(path);
    QList<std::pair<QByteArray, qint64>> boxes;
    qint64 at = 0;
    while (at + 8 <= data.size()) {
        const auto byte = [&](qint64 i) {
            return quint64(uchar(data[at + i]));
        };
        qint64 size = qint64(byte(0) << 24 | byte(1) << 16 | byte(2) << 8 | byte(3));
        if (size == 1 && at + 16 <= data.size()) {
            size = 0;
            for (int i = 8; i < 16; ++i)
                size = size << 8 | qint64(byte(i));
        } else if (size == 0) {
            size = data.size() - at;
        }
        if (size < 8)
            break;
        boxes.append({data.mid(at + 4, 4), size});
        at += size;
    }
    return boxes;
}

// Fills the disk of `folder` until nothing more can be written.
void fillDisk(const QString &folder)
{
    QFile filler(folder + "/filler");
    if (!filler.open(QIODevice::WriteOnly))
        return;
    const QByteArray block(1 << 16, 'x');
    while (filler.write(block) == block.size() && filler.flush()) {
    }
}

} // namespace

class TestRecording : public QObject
{
    Q_OBJECT

    QTemporaryDir m_dir;
    QString path(const QString &name) const { return QDir(m_dir.path()).filePath(name); }

private slots:
    void tenSecondRecordingReadsBackWhileAndAfterWriting()
    {
        IsolatedHome home;
        const QString file = path("ten.mp4");
        QProcess run;
        run.setProcessEnvironment(home.environment());
        run.start(kBinary,
                  {"--headless", "--channel", kSignal, "--duration", "10", "--record", file});
        QVERIFY(run.waitForStarted());
        // A copy taken while the file is still being written plays.
        QTest::qWait(6000);
        const QString copy = path("ten_copy.mp4");
        QVERIFY(QFile::copy(file, copy));
        QVERIFY(run.waitForFinished(30000));
        QCOMPARE(run.exitCode(), 0);
        const QByteArray out = run.readAllStandardOutput();
        QVERIFY2(out.contains("outputs started: 640x360@30"), out.constData());

        const ProbedFile probed = probeFile(file);
        QVERIFY2(probed.ok, probed.errors.constData());
        const ProbedStream *video = probed.stream("h264");
        QVERIFY(video);
        QVERIFY(probed.stream("aac"));
        qInfo("10 s recording: %lld frames over %.3f s", video->frames, probed.duration);
        QVERIFY2(probed.duration > 9.5 && probed.duration < 10.2,
                 QByteArray::number(probed.duration));
        QVERIFY2(std::abs(video->frames - std::llround(probed.duration * 30)) <= 1,
                 QByteArray::number(video->frames));

        const ProbedFile partial = probeFile(copy);
        QVERIFY2(partial.ok, partial.errors.constData());
        QVERIFY(partial.stream("h264") && partial.stream("h264")->frames >= 60);
    }

    void killedRecordingPlaysUpToItsLastFragment()
    {
        IsolatedHome home;
        const QString file = path("killed.mp4");
        QProcess run;
        run.setProcessEnvironment(home.environment());
        run.start(kBinary, {"--headless", "--channel", kSignal, "--record", file});
        QVERIFY(run.waitForStarted());
        QTest::qWait(7000);
        ::kill(pid_t(run.processId()), SIGKILL);
        QVERIFY(run.waitForFinished(5000));
        const ProbedFile probed = probeFile(file);
        QVERIFY2(probed.ok, probed.errors.constData());
        QVERIFY(probed.stream("h264"));
        qInfo("killed after 7 s: %lld frames survive", probed.stream("h264")->frames);
        QVERIFY(probed.stream("h264")->frames >= 90); // at least the fragments of 3 s
    }

    void segmentsBySizeStartOnKeyframes()
    {
        IsolatedHome home;
        const QString file = path("sized.mp4");
        const ProcessResult r =
            runProcess(kBinary,
                       {"--headless", "--channel", kSignal, "--duration", "7", "--record", file,
                        "--segment-gib", "0.0003", "--bitrate", "2000"},
                       home.environment());
        QCOMPARE(r.exitCode, 0);
        QStringList segments =
            QDir(m_dir.path()).entryList({"sized_*.mp4"}, QDir::Files, QDir::Name);
        QVERIFY2(segments.size() >= 3, qPrintable(segments.join(' ')));
        QVERIFY(!QFile::exists(file));
        static const QRegularExpression name(R"(^sized_\d{8}_\d{6}_(\d{3})\.mp4$)");
        for (int i = 0; i < segments.size(); ++i) {
            const QRegularExpressionMatch m = name.match(segments[i]);
            QVERIFY2(m.hasMatch(), qPrintable(segments[i]));
        }
        // Numbered 001, 002, ... in the order they were opened.
        std::sort(segments.begin(), segments.end(),
                  [](const QString &a, const QString &b) { return a.right(7) < b.right(7); });
        for (int i = 0; i < segments.size(); ++i) {
            QCOMPARE(segments[i].right(7),
                     QStringLiteral("%1.mp4").arg(i + 1, 3, 10, QLatin1Char('0')));
            const QString segment = path(segments[i]);
            QVERIFY2(startsWithKeyFrame(segment), qPrintable(segments[i]));
            const ProbedFile probed = probeFile(segment);
            QVERIFY2(probed.ok && probed.stream("h264") && probed.stream("h264")->frames > 0,
                     qPrintable(segments[i]));
        }
    }

    void segmentsByTimeWithAFakeClock()
    {
        auto fakeNow = std::make_shared<std::chrono::steady_clock::time_point>(
            std::chrono::steady_clock::now());
        FfmpegEncoderSink sink;
        sink.setClock([fakeNow] { return *fakeNow; });
        EncoderSettings s;
        s.fileEnabled = true;
        s.filePath = path("timed.mp4");
        s.encoderMode = EncoderSettings::Software;
        s.qualityPreset = EncoderSettings::Performance;
        s.keyframeSeconds = 2;
        s.segmentEnabled = true;
        s.segmentMinutes = 1;
        sink.setOutputSize(64, 64);
        QVERIFY(sink.open(s));
        FramePool pool(8, 64, 64);
        const auto start = *fakeNow;
        for (int i = 0; i < 3615; ++i) { // 120.5 s of pictures at 30 fps
            const qint64 ptsUs = qint64(i) * 1000000 / 30;
            *fakeNow = start + std::chrono::microseconds(ptsUs);
            QCOMPARE(sink.pushVideoFrame(solidFrame(pool, 64, 64, uchar(i)), ptsUs), 0);
        }
        sink.close();
        QStringList segments = QDir(m_dir.path()).entryList({"timed_*.mp4"}, QDir::Files);
        std::sort(segments.begin(), segments.end(),
                  [](const QString &a, const QString &b) { return a.right(7) < b.right(7); });
        // The last half second goes into the second file, not into a file of its own.
        QCOMPARE(segments.size(), 2);
        const QList<double> expected{60.0, 60.5};
        for (int i = 0; i < 2; ++i) {
            const ProbedFile probed = probeFile(path(segments[i]));
            QVERIFY2(probed.ok, probed.errors.constData());
            QVERIFY(startsWithKeyFrame(path(segments[i])));
            QVERIFY2(std::abs(probed.duration - expected[i]) < 0.2,
                     qPrintable(segments[i] + " " + QString::number(probed.duration)));
        }
    }

    void diskFullInTheMiddleOfAFragmentHeader()
    {
        // The disk fills while the muxer writes a fragment: a tmpfs hands out whole pages, so
        // once it is full the next fragment gets exactly the rest of the file's last page. The
        // run waits for a fragment that ends so near a page's end that this rest is shorter than
        // a fragment header, then fills the disk; the twin, on another disk, has every packet.
        if (::geteuid() != 0)
            QSKIP("mounting a tmpfs needs root");
        const QString disk = path("small-disk");
        QDir().mkpath(disk);
        if (QProcess::execute("mount", {"-t", "tmpfs", "-o", "size=8m", "tmpfs", disk}) != 0)
            QSKIP("mounting a tmpfs is not allowed here");
        const auto unmount = qScopeGuard([&] { QProcess::execute("umount", {"-l", disk}); });
        auto fakeNow = std::make_shared<std::chrono::steady_clock::time_point>(
            std::chrono::steady_clock::now());
        FfmpegEncoderSink sink;
        sink.setClock([fakeNow] { return *fakeNow; });
        EncoderSettings s;
        s.fileEnabled = true;
        s.filePath = disk + "/cut.mp4";
        s.twinFilePath = path("cut_twin.mp4");
        s.encoderMode = EncoderSettings::Software;
        s.qualityPreset = EncoderSettings::Performance;
        s.keyframeSeconds = 2;
        s.bitrateKbps = 400;
        sink.setOutputSize(96, 64);
        QVERIFY(sink.open(s));
        QVERIFY(sink.hasAudio());
        FramePool pool(8, 96, 64);
        const auto start = *fakeNow;
        std::vector<std::int16_t> tone(2 * 1600);
        int frame = 0;
        const auto play = [&](int frames) {
            for (int end = frame + frames; frame < end; ++frame) {
                const qint64 ptsUs = qint64(frame) * 1000000 / 30;
                *fakeNow = start + std::chrono::microseconds(ptsUs);
                for (std::size_t i = 0; i < tone.size(); ++i)
                    tone[i] = std::int16_t(8000 * std::sin(double(frame * 1600 + int(i / 2)) * 2 *
                                                           M_PI * 440 / 48000));
                sink.pushAudio(tone.data(), 1600, ptsUs);
                if (sink.pushVideoFrame(noiseFrame(pool, 96, 64, quint32(frame)), ptsUs) < 0)
                    return false;
            }
            return true;
        };
        // Plays fragment after fragment into `file` until the rest of its last page falls in
        // the header of the next one (or, with inHeader false, in its pictures), then fills the
        // disk, plays on past the keyframe that writes that fragment, and frees the disk again.
        // Returns the file's size when the disk filled: up to there, every fragment is whole.
        const auto cutNextFragment = [&](const QString &file, bool inHeader) -> qint64 {
            for (int fragment = 0; fragment < 200; ++fragment) {
                if (!play(60))
                    return -1;
                const auto boxes = topLevelBoxes(file);
                if (boxes.isEmpty() || boxes.last().first != "mdat")
                    continue;
                qint64 moof = 0;
                for (const auto &[type, size] : boxes)
                    if (type == "moof")
                        moof = size;
                const qint64 size = QFileInfo(file).size();
                const qint64 rest = (4096 - size % 4096) % 4096;
                // In the header: past its first boxes (a reader skips a header cut before them)
                // and short of its end by a margin, for sound makes one fragment a few samples
                // longer than another. In the pictures: well past the header.
                if (moof == 0 || (inHeader ? rest <= 128 || rest + 64 >= moof : rest < moof + 256))
                    continue;
                fillDisk(disk);
                qInfo("%s full at %lld bytes: %lld bytes left, a fragment header takes about %lld",
                      qPrintable(QFileInfo(file).fileName()), size, rest, moof);
                const bool played = play(75);
                QFile::remove(disk + "/filler");
                return played ? size : -1;
            }
            return -1;
        };
        const QStringList files{disk + "/cut.mp4", disk + "/cut_1.mp4", disk + "/cut_2.mp4"};
        const qint64 headerCut = cutNextFragment(files[0], true);
        QVERIFY2(headerCut > 0, "no fragment ended near enough to a page's end");
        QVERIFY(play(60)); // a new file at the first keyframe a second later
        const qint64 pictureCut = cutNextFragment(files[1], false);
        QVERIFY(pictureCut > 0);
        QVERIFY(play(120));
        sink.close();

        // Every file reads back whole.
        const QStringList twin = videoPacketHashes(path("cut_twin.mp4"));
        QCOMPARE(twin.size(), frame);
        qsizetype next = 0;
        for (const QString &part : files) {
            const ProbedFile probed = probeFile(part);
            QVERIFY2(probed.ok, qPrintable(part + ": " + probed.errors));
            QVERIFY(probed.stream("h264") && probed.stream("aac"));
            const QByteArray errors = decodeErrors(part);
            QVERIFY2(errors.isEmpty(), qPrintable(part + ": " + errors));
            // Its pictures are the encoder's, in order, none missing up to its end, and later
            // than those of the file before.
            const QStringList packets = videoPacketHashes(part);
            QCOMPARE(packets.size(), probed.stream("h264")->frames);
            const qsizetype first = twin.indexOf(packets.value(0));
            QVERIFY(part == files[0] ? first == 0 : first > next);
            QCOMPARE(packets, twin.mid(first, packets.size()));
            next = first + packets.size();
        }
        // The cut files end with their last whole fragment: nothing of the torn one is left.
        QCOMPARE(QFileInfo(files[0]).size(), headerCut);
        QCOMPARE(QFileInfo(files[1]).size(), pictureCut);
    }

    void deadTargetBacksOffToNinetySeconds()
    {
        // Real encoder parameters, a real connection attempt each time, a fake clock for waiting.
        EncoderSettings s;
        s.encoderMode = EncoderSettings::Software;
        s.livePublish = true;
        selvane::encoder::OpenedEncoder opened;
        QVERIFY(selvane::encoder::openVideoEncoder(s, 64, 64, true, &opened));
        auto streams = std::make_shared<selvane::EncodedStreams>();
        streams->video.reset(avcodec_parameters_alloc());
        QVERIFY(avcodec_parameters_from_context(streams->video.get(), opened.context.get()) >= 0);
        streams->videoTimeBase = opened.context->time_base;

        std::mutex mutex;
        auto fakeNow = std::chrono::steady_clock::now();
        QStringList words;
        const quint16 deadPort = freeTcpPort();
        selvane::StreamPublisher output(
            QStringLiteral("rtmp://127.0.0.1:%1/live/key").arg(deadPort), "original", "flv", 0,
            streams,
            [&](int, const QString &word) {
                std::lock_guard lock(mutex);
                words << word;
            },
            [&] {
                std::lock_guard lock(mutex);
                return fakeNow;
            });
        // The first connection is the worker's too: open() never waits for the network.
        QVERIFY(output.open());
        output.startWorker();
        QTRY_VERIFY_WITH_TIMEOUT(output.reopenAttempts() == 1, 5000);
        QList<qint64> delaysMs;
        for (int i = 0; i < 10; ++i) {
            const int attempts = output.reopenAttempts();
            const auto next = output.nextRetryAt();
            {
                std::lock_guard lock(mutex);
                delaysMs << std::chrono::duration_cast<std::chrono::milliseconds>(next - fakeNow)
                                .count();
                fakeNow = next;
            }
            QTRY_VERIFY_WITH_TIMEOUT(output.reopenAttempts() == attempts + 1, 5000);
        }
        output.close();
        QCOMPARE(delaysMs,
                 (QList<qint64>{1000, 2000, 4000, 8000, 16000, 32000, 64000, 90000, 90000, 90000}));
        QCOMPARE(words.first(), QString("connecting"));
        QCOMPARE(words.count("reconnecting"), 11);
        QCOMPARE(words.last(), QString("stopped"));
    }
};

QTEST_GUILESS_MAIN(TestRecording)
#include "test_recording.moc"
