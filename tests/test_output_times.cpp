// Outputs that start and stop by themselves, judged by real recordings: a schedule's stretches
// for them land on their frames (the colours of the schedule's clips show where the recording
// began and ended), date-times do, and starts that cannot work are told at their time.

#include "TestSupport.h"
#include "engine/Engine.h"
#include "schedule/ProgramArrangement.h"

#include <QSignalSpy>
#include <QtTest>

using namespace testsupport;
using namespace selvane;

class TestOutputTimes : public QObject
{
    Q_OBJECT

    QTemporaryDir m_dir;

    QString path(const QString &name) const { return QDir(m_dir.path()).filePath(name); }

    static OutputSettings recordingTo(const QString &file)
    {
        OutputSettings settings;
        settings.encoder.fileEnabled = true;
        settings.encoder.filePath = file;
        settings.encoder.qualityPreset = EncoderSettings::Performance;
        settings.size = {true, QSize(320, 240)};
        return settings;
    }

    static void colourChannels(Engine &engine)
    {
        const char *colours[] = {"red", "green", "blue"};
        for (int c = 0; c < 3; ++c)
            engine.setChannelSource(
                c, QStringLiteral("lavfi://color=c=%1:size=320x240:rate=30").arg(colours[c]));
        QTRY_VERIFY_WITH_TIMEOUT(engine.stats().channels[2].framesDelivered > 10, 10000);
    }

private slots:
    void scheduleStretchesLandOnTheirFrames()
    {
        // Red from 0, green from 4 s, blue from 8 s; the outputs run from 3 s to 9 s and again
        // from 9 s to 10 s: 30 red, 120 green and 30 blue pictures, then up to 30 blue (the
        // second stretch begins once the first has closed, a little late, and the schedule
        // runs on rather than starting again).
        const QByteArray schedule = R"({"format": "selvane_program_arrangement", "version": 3,
            "sceneClips": [{"id": "r", "kind": "channel", "channel": 0, "startMs": 0},
                           {"id": "g", "kind": "channel", "channel": 1, "startMs": 4000},
                           {"id": "b", "kind": "channel", "channel": 2, "startMs": 8000}],
            "outputs": [{"startMs": 3000, "endMs": 9000}, {"startMs": 9000, "endMs": 10000}]})";
        QString error;
        const ProgramArrangement arrangement = arrangement::fromJson(schedule, &error);
        QVERIFY2(error.isEmpty(), qPrintable(error));
        QVERIFY(arrangement::toJson(arrangement).contains("\"endMs\": 10000"));

        Engine engine;
        engine.startAudio();
        colourChannels(engine);
        const QString file = path("stretch.mkv");
        engine.setPreparedOutputs(recordingTo(file));
        QSignalSpy started(&engine, &Engine::outputsStarted);
        QSignalSpy stopped(&engine, &Engine::outputsStopped);
        QSignalSpy failed(&engine, &Engine::outputsFailed);
        QVERIFY(engine.loadSchedule(arrangement).ok);
        QElapsedTimer clock;
        clock.start();
        QVERIFY2(engine.startSchedule(&error), qPrintable(error));
        QVERIFY(!engine.outputsActive());
        QTRY_VERIFY(engine.stats().output.startsInMs > 2000);
        // Opened ahead of their time.
        QVERIFY(started.wait(5000));
        QVERIFY2(clock.elapsed() < 3000, qPrintable(QString::number(clock.elapsed())));
        QTRY_VERIFY_WITH_TIMEOUT(stopped.size() == 2, 20000);
        QVERIFY(failed.isEmpty());
        engine.stopSchedule();

        const std::string first = readColours(file);
        const std::vector<ColourRun> runs = runsOf(first, 1);
        QVERIFY2(sequence(runs) == "rgb", first.c_str());
        QVERIFY2(std::abs(runs[0].length - 30) <= 1 && std::abs(runs[1].length - 120) <= 1 &&
                     std::abs(int(first.size()) - 180) <= 1,
                 first.c_str());
        // The sound is cut with the pictures.
        std::vector<std::int16_t> sound;
        double soundStart = 0;
        QVERIFY(decodeAudio(file, &sound, &soundStart));
        const double soundEnd = soundStart + double(sound.size()) / 48000;
        QVERIFY2(std::abs(soundEnd - 6.0) < 0.05, qPrintable(QString::number(soundEnd)));
        qInfo("first stretch: %d red, %d green, %d pictures in all; sound ends at %.3f s",
              runs[0].length, runs[1].length, int(first.size()), soundEnd);

        // The second stretch went to a file of its own beside the first.
        const QStringList files = QDir(m_dir.path()).entryList({"stretch*.mkv"}, QDir::Files);
        QCOMPARE(files.size(), 2);
        const QString second =
            QDir(m_dir.path()).filePath(files.at(1) == "stretch.mkv" ? files.at(0) : files.at(1));
        const std::string blue = readColours(second);
        QVERIFY2(blue.size() >= 15 && blue.size() <= 31 &&
                     blue.find_first_not_of('b') == std::string::npos,
                 blue.c_str());
        qInfo("second stretch: %d pictures", int(blue.size()));
    }

    void datesStartAndStopTheOutputs()
    {
        Engine engine;
        engine.startAudio();
        colourChannels(engine);
        engine.cutTo(0);
        const QString file = path("dated.mkv");
        engine.setPreparedOutputs(recordingTo(file));
        const QDateTime now = QDateTime::currentDateTime();
        // Times that cannot work are refused and change nothing.
        OutputTimes times;
        times.start = {OutputMoment::Kind::Clock, 0, now.addSecs(-60)};
        QCOMPARE(engine.setOutputTimes(times).kind, ProblemKind::OutputTimePassed);
        times.start.at = now.addSecs(10);
        times.stop = {OutputMoment::Kind::Clock, 0, now.addSecs(5)};
        QCOMPARE(engine.setOutputTimes(times).kind, ProblemKind::OutputStopBeforeStart);
        QVERIFY(!engine.outputTimesPlanned());

        times.start.at = now.addMSecs(2500);
        times.stop.at = now.addMSecs(4500);
        QSignalSpy stopped(&engine, &Engine::outputsStopped);
        QVERIFY(!engine.setOutputTimes(times));
        QVERIFY(engine.outputTimesPlanned());
        QTRY_VERIFY_WITH_TIMEOUT(stopped.size() == 1, 15000);
        QVERIFY(QDateTime::currentDateTime() >= times.stop.at);
        const std::string colours = readColours(file);
        QVERIFY2(std::abs(int(colours.size()) - 60) <= 1 &&
                     colours.find_first_not_of('r') == std::string::npos,
                 colours.c_str());
        QVERIFY(!engine.outputTimesPlanned());

        // Started by hand with a stop set: they stop at it.
        times.start = {};
        times.stop = {OutputMoment::Kind::Clock, 0, QDateTime::currentDateTime().addMSecs(2000)};
        QVERIFY(!engine.setOutputTimes(times));
        const QString byHand = path("by-hand.mkv");
        QVERIFY(!engine.startOutputs(recordingTo(byHand)));
        QTRY_VERIFY_WITH_TIMEOUT(stopped.size() == 2, 10000);
        QVERIFY(QDateTime::currentDateTime() >= times.stop.at);
    }

    void aStartThatCannotWorkIsToldAtItsTime()
    {
        Engine engine;
        engine.startAudio();
        colourChannels(engine);
        OutputSettings settings = recordingTo(path("no-such-folder/take.mkv"));
        settings.makeRecordingFolder = false;
        engine.setPreparedOutputs(settings);
        OutputTimes times;
        times.start = {OutputMoment::Kind::Clock, 0, QDateTime::currentDateTime().addMSecs(2500)};
        QSignalSpy failed(&engine, &Engine::outputsFailed);
        QVERIFY(!engine.setOutputTimes(times));
        QElapsedTimer clock;
        clock.start();
        QVERIFY(failed.wait(6000));
        // Told when it was opened, ahead of its time, and not before.
        QVERIFY2(clock.elapsed() >= 400, qPrintable(QString::number(clock.elapsed())));
        QCOMPARE(failed.at(0).at(0).value<Problem>().kind, ProblemKind::RecordingFolderMissing);
        QVERIFY(!engine.outputsActive());
        QVERIFY(!engine.outputTimesPlanned());

        // A schedule whose outputs overlap, or stop before they start, is refused.
        ProgramArrangement arrangement;
        SceneClip clip;
        clip.id = "a";
        arrangement.sceneClips << clip;
        arrangement.outputs = {{1000, 5000}, {4000, 6000}};
        QVERIFY(!arrangement::validate(arrangement).ok);
        arrangement.outputs = {{1000, 500}};
        QVERIFY(!arrangement::validate(arrangement).ok);
        arrangement.outputs = {{1000, 0}, {4000, 6000}};
        QVERIFY(!arrangement::validate(arrangement).ok);
        arrangement.outputs = {{1000, 2000}, {2000, 0}};
        QVERIFY(arrangement::validate(arrangement).ok);
    }
};

QTEST_MAIN(TestOutputTimes)
#include "test_output_times.moc"
