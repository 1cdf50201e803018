// Failover judged by a real recording: a red RTMP channel whose publisher dies or whose server
// hangs goes to its backup (a green file with its own tone, another channel, the slate) and
// comes back once it delivers steadily again.

#include "TestSupport.h"
#include "engine/Engine.h"
#include "schedule/ProgramArrangement.h"

#include <QJsonObject>
#include <QSignalSpy>
#include <QtTest>

using namespace testsupport;
using namespace selvane;

namespace {

// A red picture with a 400 Hz tone, published to nginx in real time.
class RedPublisher
{
public:
    ~RedPublisher() { stop(); }
    void start(const QString &url)
    {
        m_process.start(
            "ffmpeg", {"-nostdin", "-v",          "error",   "-re",
                       "-f",       "lavfi",       "-i",      "color=c=red:size=320x240:rate=30",
                       "-f",       "lavfi",       "-i",      "sine=frequency=400:sample_rate=48000",
                       "-c:v",     "libx264",     "-preset", "ultrafast",
                       "-tune",    "zerolatency", "-g",      "15",
                       "-pix_fmt", "yuv420p",     "-c:a",    "aac",
                       "-f",       "flv",         url});
        m_process.waitForStarted(5000);
    }
    void stop()
    {
        if (m_process.state() == QProcess::NotRunning)
            return;
        m_process.kill();
        m_process.waitForFinished(5000);
    }

private:
    QProcess m_process;
};

} // namespace

class TestFailover : public QObject
{
    Q_OBJECT

    QTemporaryDir m_dir;

    QString path(const QString &name) const { return QDir(m_dir.path()).filePath(name); }

    static bool startRecording(Engine &engine, const QString &file)
    {
        OutputSettings settings;
        settings.encoder.fileEnabled = true;
        settings.encoder.filePath = file;
        settings.encoder.qualityPreset = EncoderSettings::Performance;
        settings.size = {true, QSize(320, 240)};
        QSignalSpy started(&engine, &Engine::outputsStarted);
        return !engine.startOutputs(settings) && started.wait(10000);
    }

    static void stopRecording(Engine &engine)
    {
        QSignalSpy stopped(&engine, &Engine::outputsStopped);
        engine.stopOutputs();
        QVERIFY(stopped.wait(15000));
    }

private slots:
    void scheduleCarriesItsFailover()
    {
        const QByteArray schedule = R"({"format": "selvane_program_arrangement", "version": 3,
            "sceneClips": [{"id": "a", "kind": "channel", "channel": 1, "startMs": 0}],
            "failover": {"backups": {"1": "channel:2"}, "failoverMs": 1500}})";
        QString error;
        const ProgramArrangement arrangement = arrangement::fromJson(schedule, &error);
        QVERIFY2(error.isEmpty(), qPrintable(error));
        QVERIFY(arrangement::toJson(arrangement).contains("\"failoverMs\": 1500"));
        Engine engine;
        QVERIFY(engine.loadSchedule(arrangement).ok);
        QVERIFY(!engine.failover().enabled); // applied when the schedule starts
        QVERIFY2(engine.startSchedule(&error), qPrintable(error));
        QVERIFY(engine.failover().enabled);
        QCOMPARE(engine.failover().backups[0], QString("channel:2"));
        QCOMPARE(engine.failover().failoverMs, 1500);
        engine.stopSchedule();
        // A field that is none, or a backup that cannot work, and the schedule is refused.
        ProgramArrangement bad = arrangement;
        bad.failover = QJsonObject{{"retries", 3}};
        QVERIFY(!engine.loadSchedule(bad).ok);
        bad.failover = QJsonObject{{"backups", QJsonObject{{"2", "channel:2"}}}};
        QVERIFY(engine.loadSchedule(bad).ok);
        QVERIFY(!engine.startSchedule(&error));
        QVERIFY2(error.contains("channel 2"), qPrintable(error));
    }

    void failsOverToItsBackupAndComesBack()
    {
        RtmpServer nginx;
        QVERIFY(nginx.start());
        RedPublisher red;
        red.start(nginx.url("red"));
        const QString green = path("green.mp4");
        QVERIFY(makeClip(
            green, "color=c=green:size=320x240:rate=30", "sine=frequency=1000:sample_rate=48000", 4,
            {"-c:v", "libx264", "-preset", "ultrafast", "-pix_fmt", "yuv420p", "-c:a", "aac"}));

        Engine engine;
        engine.startAudio();
        FailoverSettings failover;
        failover.enabled = true;
        failover.backups[0] = green;
        QVERIFY(!engine.setFailover(failover));
        engine.setTransition({TransitionKind::Mix, 300});
        engine.setChannelSource(1, "lavfi://color=c=blue:size=320x240:rate=30");
        engine.setChannelSource(0, nginx.url("red"));
        engine.cutTo(0);
        QTRY_VERIFY_WITH_TIMEOUT(engine.stats().channels[0].framesDelivered > 30, 15000);
        const QString file = path("failover.mkv");
        QVERIFY(startRecording(engine, file));
        QTest::qWait(1500);

        // The publisher dies: the backup file stands in, with its sound.
        QSignalSpy failed(&engine, &Engine::failedOver);
        QSignalSpy back(&engine, &Engine::returnedToAir);
        QElapsedTimer outage;
        outage.start();
        red.stop();
        QVERIFY(failed.wait(5000));
        const qint64 toBackupMs = outage.elapsed();
        QCOMPARE(failed.last().at(0).toInt(), 0);
        QCOMPARE(failed.last().at(1).toString(), QString("backup"));
        QCOMPARE(engine.programChannel(), 0); // the operator's choice stands
        QCOMPARE(engine.stats().program.failedChannel, 0);
        QTest::qWait(2500);

        // It comes back, and goes on air once it has played steadily for 3 s.
        red.start(nginx.url("red"));
        QTRY_COMPARE_WITH_TIMEOUT(engine.stats().channels[0].state, ChannelState::Playing, 15000);
        QElapsedTimer steady;
        steady.start();
        QVERIFY(back.wait(10000));
        const qint64 toReturnMs = steady.elapsed();
        QVERIFY2(toReturnMs >= 2500, qPrintable(QString::number(toReturnMs)));
        QCOMPARE(engine.stats().program.failedChannel, -1);
        QTest::qWait(1500);

        // The server hangs (TCP open, nothing comes): after 2 s, channel 2 stands in.
        failover.backups[0] = "channel:2";
        QVERIFY(!engine.setFailover(failover));
        QElapsedTimer hang;
        hang.start();
        nginx.freeze();
        QVERIFY(failed.wait(6000));
        const qint64 toChannelMs = hang.elapsed();
        QCOMPARE(failed.last().at(1).toString(), QString("channel 2"));
        QTest::qWait(1500);
        nginx.thaw();
        QVERIFY(back.wait(15000));
        QTest::qWait(1500);
        const EngineStats stats = engine.stats();
        stopRecording(engine);
        red.stop();
        qInfo("failover after %lld ms (publisher gone), %lld ms (server hung); back %lld ms "
              "after the channel played again",
              toBackupMs, toChannelMs, toReturnMs);
        QCOMPARE(stats.program.failovers, 2);
        QCOMPARE(stats.program.returns, 2);
        QCOMPARE(stats.program.skippedTicks, 0);
        // A hung server is noticed by its silence: 2 s and a frame, and what the decoder had
        // buffered; a dead publisher at once.
        QVERIFY2(toChannelMs >= 1900 && toChannelMs <= 2033 + 300,
                 qPrintable(QString::number(toChannelMs)));
        QVERIFY2(toBackupMs <= 2033 + 300, qPrintable(QString::number(toBackupMs)));

        // The recording: red, the green backup, red again, blue channel 2, red; each switch a
        // 300 ms mix (m), and no black anywhere.
        const std::string colours = readColours(file);
        const std::vector<ColourRun> runs = runsOf(colours);
        QVERIFY2(sequence(runs) == "rmgmrmbmr", colours.c_str());
        QVERIFY(colours.find('k') == std::string::npos);
        for (std::size_t mix = 1; mix < runs.size(); mix += 2)
            QVERIFY2(runs[mix].length >= 5 && runs[mix].length <= 10,
                     qPrintable(QString::number(runs[mix].length)));
        // Sound follows: the backup's 1 kHz while it stands in, 400 Hz once red is back (taken
        // just after each switch: a stalled channel is silent before its failover).
        std::vector<std::int16_t> samples;
        double audioStart = 0;
        QVERIFY(decodeAudio(file, &samples, &audioStart));
        const auto tone = [&](int picture, double hz) {
            return toneDb(samples, qint64((picture / 30.0 - audioStart) * 48000), 4800, hz);
        };
        for (int run : {2, 4}) {
            const int picture = runs[std::size_t(run)].first + 10;
            const bool backup = run == 2;
            const double wanted = tone(picture, backup ? 1000 : 400);
            const double other = tone(picture, backup ? 400 : 1000);
            qInfo("run %d: the wanted tone %.1f dB, the other %.1f dB", run, wanted, other);
            QVERIFY(wanted > other + 20);
        }
    }

    void slateStandsInWithoutABackup()
    {
        RtmpServer nginx;
        QVERIFY(nginx.start());
        RedPublisher red;
        red.start(nginx.url("red"));
        QImage yellow(64, 48, QImage::Format_RGB32);
        yellow.fill(Qt::yellow);
        const QString slate = path("slate.png");
        QVERIFY(yellow.save(slate));

        Engine engine;
        engine.startAudio();
        // What cannot work is refused, and changes nothing.
        FailoverSettings bad;
        bad.enabled = true;
        bad.backups[0] = "channel:1";
        QCOMPARE(engine.setFailover(bad).kind, ProblemKind::BadBackup);
        bad.backups[0] = "channel:7";
        QCOMPARE(engine.setFailover(bad).kind, ProblemKind::BadBackup);
        bad.backups[0] = path("missing.mp4");
        QCOMPARE(engine.setFailover(bad).kind, ProblemKind::BadBackup);
        bad.backups[0].clear();
        bad.failoverMs = 50;
        QCOMPARE(engine.setFailover(bad).kind, ProblemKind::BadFailoverTime);
        bad.failoverMs = 2000;
        bad.slatePath = path("missing.png");
        QCOMPARE(engine.setFailover(bad).kind, ProblemKind::SlateUnreadable);
        QVERIFY(!engine.failover().enabled);

        FailoverSettings failover;
        failover.enabled = true;
        failover.slatePath = slate;
        failover.slateText = "Back soon";
        QVERIFY(!engine.setFailover(failover));
        engine.setChannelSource(1, "lavfi://color=c=blue:size=320x240:rate=30");
        engine.setChannelSource(0, nginx.url("red"));
        engine.cutTo(0);
        QTRY_VERIFY_WITH_TIMEOUT(engine.stats().channels[0].framesDelivered > 30, 15000);
        const QString file = path("slate.mkv");
        QVERIFY(startRecording(engine, file));
        QTest::qWait(1000);
        QSignalSpy failed(&engine, &Engine::failedOver);
        red.stop();
        QVERIFY(failed.wait(5000));
        QCOMPARE(failed.last().at(1).toString(), QString("slate"));
        QTest::qWait(1500);
        // The operator takes channel 2 while the slate stands in: the failover is over.
        engine.cutTo(1);
        QTest::qWait(1000);
        QCOMPARE(engine.stats().program.failedChannel, -1);
        // The built-in card by hand, then back to channel 2.
        failover.slatePath.clear();
        failover.slateText.clear();
        QVERIFY(!engine.setFailover(failover));
        QSignalSpy slateChanged(&engine, &Engine::slateChanged);
        engine.showSlate();
        QVERIFY(engine.slateOnAir());
        QCOMPARE(engine.programChannel(), -1);
        QTest::qWait(1000);
        engine.cutTo(1);
        QTRY_VERIFY_WITH_TIMEOUT(!engine.slateOnAir(), 2000);
        QTest::qWait(1000);
        stopRecording(engine);

        // Red, the yellow slate (with its words in a band), blue, the dark card, blue.
        const std::string colours = readColours(file);
        const std::vector<ColourRun> runs = runsOf(colours);
        QVERIFY2(sequence(runs) == "rybkb", colours.c_str());
        QCOMPARE(slateChanged.count(), 2);
    }
};

QTEST_MAIN(TestFailover)
#include "test_failover.moc"
