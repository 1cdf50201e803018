// Recording the program: a real headless run read back with ffprobe, a copy taken while the
// file is written, a process killed mid-recording, segments by size and by time (fake clock),
// and the reopen backoff of a stream target against a dead port (fake clock).

#include "TestSupport.h"
#include "media/FramePool.h"
#include "output/FfmpegEncoderSink.h"
#include "output/StreamPublisher.h"
#include "output/VideoEncoderChoice.h"

#include <QRegularExpression>
#include <QtTest>
#include <csignal>

using namespace testsupport;

namespace {

const QString kBinary = testsupport::builtProgram("SELVANE_BINARY");
const QString kSignal = "1=lavfi://testsrc2=size=640x360:rate=30[out0];sine=frequency=1000[out1]";

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
