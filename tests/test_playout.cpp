// Unattended playout: a schedule file of a colour-bar channel (0-4 s), an image slideshow
// (4-8 s), a video clip (8-12 s) and a text overlay (2-10 s) played by the headless face into a
// recording; frames read back at every switch land where the schedule says. Also the schedule
// check on the command line and the built-in demo.

#include "TestSupport.h"

#include <QImage>
#include <QJsonDocument>
#include <QJsonObject>
#include <QtTest>

using namespace testsupport;

namespace {

const QString kBinary = testsupport::builtProgram("SELVANE_BINARY");

struct FrameStats
{
    double t = 0;
    double y = 0, u = 0, v = 0;
};

// Average Y, U, V of a region of every picture, with its time.
QList<FrameStats> regionStats(const QString &file, const QString &crop)
{
    QProcess probe;
    probe.start("ffprobe",
                {"-v", "error", "-f", "lavfi", "-i",
                 QStringLiteral("movie=%1,crop=%2,signalstats").arg(file, crop), "-show_entries",
                 "frame=pts_time:frame_tags=lavfi.signalstats.YAVG,lavfi.signalstats.UAVG,"
                 "lavfi.signalstats.VAVG",
                 "-of", "csv=p=0"});
    probe.waitForFinished(60000);
    QList<FrameStats> stats;
    for (const QByteArray &line : probe.readAllStandardOutput().split('\n')) {
        const QList<QByteArray> f = line.trimmed().split(',');
        if (f.size() >= 4)
            stats.append({f[0].toDouble(), f[1].toDouble(), f[2].toDouble(), f[3].toDouble()});
    }
    return stats;
}

QString classify(const FrameStats &s)
{
    const auto near = [&](double y, double u, double v) {
        return std::abs(s.y - y) < 25 && std::abs(s.u - u) < 25 && std::abs(s.v - v) < 25;
    };
    if (near(81, 90, 240))
        return "red";
    if (near(145, 54, 34))
        return "green";
    if (near(41, 240, 110))
        return "blue";
    if (near(16, 128, 128))
        return "black";
    return "bars";
}

// The time of the first picture of `kind` after `from` seconds.
double firstOf(const QList<FrameStats> &stats, const QString &kind, double from)
{
    for (const FrameStats &s : stats)
        if (s.t >= from && classify(s) == kind)
            return s.t;
    return -1;
}

double meanY(const QList<FrameStats> &stats, double from, double to)
{
    double sum = 0;
    int n = 0;
    for (const FrameStats &s : stats)
        if (s.t >= from && s.t < to) {
            sum += s.y;
            ++n;
        }
    return n ? sum / n : -1;
}

} // namespace

class TestPlayout : public QObject
{
    Q_OBJECT

    QTemporaryDir m_dir;
    QString path(const QString &name) const { return QDir(m_dir.path()).filePath(name); }

    QString writeSchedule()
    {
        QDir(m_dir.path()).mkpath("slides");
        for (const auto &[name, color] : {std::pair{"1_red.png", QColor(255, 0, 0)},
                                          std::pair{"2_green.png", QColor(0, 255, 0)}}) {
            QImage image(640, 360, QImage::Format_RGB32);
            image.fill(color);
            image.save(QDir(path("slides")).filePath(name));
        }
        QByteArray log;
        if (!makeClip(
                path("blue.mp4"), "color=c=blue:size=640x360:rate=30", "sine=frequency=500", 6.0,
                {"-c:v", "libx264", "-preset", "ultrafast", "-pix_fmt", "yuv420p", "-c:a", "aac"},
                &log))
            return {};
        const QString json = QStringLiteral(R"({
          "format": "selvane_program_arrangement", "version": 3,
          "sceneClips": [
            {"id": "bars", "startMs": 0, "endMs": 4000, "kind": "channel", "channel": 0},
            {"id": "slides", "startMs": 4000, "endMs": 8000, "kind": "imagePlay",
             "imageDirectory": "%1", "intervalMs": 2000, "imageLoop": true},
            {"id": "clip", "startMs": 8000, "endMs": 12000, "kind": "sceneVideo",
             "sceneVideoPath": "%2", "sceneVideoLoop": false}
          ],
          "overlayClips": [
            {"id": "caption", "startMs": 2000, "endMs": 10000, "overlayKind": "text",
             "mediaType": "text", "x": 0, "y": 0, "w": 1, "h": 1, "opacity": 1,
             "textData": {"text": "ON AIR", "fontPointSize": 40, "fontColor": {"rgba": 4294967295},
                          "backgroundEnabled": true, "backgroundColor": {"rgba": 4278190080},
                          "posX": 0.02, "posY": 0.75}}
          ]})")
                                 .arg(path("slides"), path("blue.mp4"));
        const QString file = path("show.json");
        QFile out(file);
        out.open(QIODevice::WriteOnly);
        out.write(json.toUtf8());
        return file;
    }

private slots:
    void scheduleSwitchesLandOnTime()
    {
        const QString schedule = writeSchedule();
        QVERIFY(!schedule.isEmpty());
        IsolatedHome home;
        const QString recording = path("playout.mp4");
        const ProcessResult r =
            runProcess(kBinary,
                       {"--headless", "--schedule", schedule, "--channel",
                        "1=lavfi://smptebars=size=640x360:rate=30[out0];sine=frequency=1000[out1]",
                        "--duration", "13", "--record", recording},
                       home.environment(), 60000);
        QCOMPARE(r.exitCode, 0);
        QVERIFY2(r.out.contains("schedule: slides"), r.out.constData());
        const ProbedFile probed = probeFile(recording);
        QVERIFY2(probed.ok && probed.stream("h264") && probed.stream("aac"),
                 probed.errors.constData());

        const QList<FrameStats> top = regionStats(recording, "iw:ih/2:0:0");
        QVERIFY(top.size() > 300);
        QCOMPARE(classify(*std::find_if(top.begin(), top.end(),
                                        [](const FrameStats &s) { return s.t > 1.0; })),
                 QString("bars"));
        // The schedule follows the video clip's playback: the clip is on air for its whole
        // 4 s, counted from its first picture.
        const QList<std::pair<QString, double>> switches{
            {"red", 4.0}, {"green", 6.0}, {"blue", 8.0}, {"black", 4.0}};
        double blueSeen = 0;
        for (auto [kind, at] : switches) {
            if (kind == "black")
                at += blueSeen;
            const double seen = firstOf(top, kind, at - 1.0);
            if (kind == "blue")
                blueSeen = seen;
            qInfo("%s expected at %.3f s, first seen at %.3f s", qPrintable(kind), at, seen);
            QVERIFY2(std::abs(seen - at) <= 2.0 / 30 + 0.001, qPrintable(kind));
        }
        // The caption's black box covers part of the bars' white block in the lower left between
        // 2 s and 10 s, and the blue clip after 10 s.
        const QList<FrameStats> caption = regionStats(recording, "iw*0.11:ih*0.1:iw*0.2:ih*0.76");
        const double before = meanY(caption, 0.5, 1.8);
        const double during = meanY(caption, 2.2, 3.8);
        qInfo("caption region brightness: %.0f before, %.0f with the caption", before, during);
        QVERIFY(before - during > 60);
        QVERIFY(std::abs(meanY(caption, 10.2, 11.8) - meanY(caption, 8.2, 9.8)) > 10);
    }

    void checkScheduleOnTheCommandLine()
    {
        const QString schedule = writeSchedule();
        IsolatedHome home;
        const ProcessResult ok =
            runProcess(kBinary, {"--check-schedule", schedule, "--channel", "1=lavfi://testsrc2"},
                       home.environment());
        QCOMPARE(ok.exitCode, 0);
        QCOMPARE(QJsonDocument::fromJson(ok.out).object().value("sceneClips").toArray().size(), 3);
        QVERIFY2(!ok.err.contains("warning"), ok.err.constData());
        // Without a source for channel 1, its clip is a warning; the check still passes.
        const ProcessResult unsourced =
            runProcess(kBinary, {"--check-schedule", schedule}, home.environment());
        QCOMPARE(unsourced.exitCode, 0);
        QVERIFY2(unsourced.err.contains("warning: Base clip bars shows channel 1, which has no "
                                        "source."),
                 unsourced.err.constData());

        // A channel the file counts as 7 does not exist: the check says which one plays instead
        // (in the operator's numbering, 1 to 4) and still passes.
        // The schedule with one text replaced, as a file of its own.
        const auto variant = [&](const QString &name, const QByteArray &from,
                                 const QByteArray &to) {
            QFile out(path(name));
            if (out.open(QIODevice::WriteOnly))
                out.write(readAll(schedule).replace(from, to));
            return out.fileName();
        };
        const ProcessResult warned = runProcess(
            kBinary,
            {"--check-schedule", variant("clamped.json", "\"channel\": 0", "\"channel\": 7")},
            home.environment());
        QCOMPARE(warned.exitCode, 0);
        QVERIFY2(warned.err.contains(
                     "Base clip bars: channel 8 does not exist; channel 4 plays instead."),
                 warned.err.constData());
        QCOMPARE(QJsonDocument::fromJson(warned.out)["sceneClips"][0]["channel"].toInt(), 3);

        variant("broken.json", "\"id\": \"slides\"", "\"id\": \"bars\"");
        for (const QStringList &args :
             {QStringList{"--check-schedule", path("broken.json")},
              QStringList{"--headless", "--schedule", path("broken.json")}}) {
            const ProcessResult bad = runProcess(kBinary, args, home.environment());
            QCOMPARE(bad.exitCode, 1);
            QVERIFY2(bad.err.contains("bars"), bad.err.constData()); // names the duplicate
        }
    }

    void badFilesSayWhereAndWhat_data()
    {
        QTest::addColumn<QByteArray>("json");
        QTest::addColumn<QString>("said"); // what the reason must name
        QTest::newRow("empty") << QByteArray() << "the file is empty";
        QTest::newRow("cut short")
            << QByteArray("{\"format\": \"selvane_program_arrangement\",\n  \"sceneClips\": [")
            << "line 2, column 18: a list is not closed";
        QTest::newRow("garbage") << QByteArray("\n\nPK\x03\x04 not a schedule") << "line 3, column";
        // A text of 50 MB: held to the longest text where it enters, before anything shapes it.
        QByteArray huge =
            "{\"format\": \"selvane_program_arrangement\", \"version\": 3, "
            "\"sceneClips\": [{\"id\": \"a\", \"kind\": \"channel\", \"channel\": 0}], "
            "\"overlayClips\": [{\"id\": \"ticker\", \"startMs\": 1000, "
            "\"overlayKind\": \"text\", \"mediaType\": \"text\", \"textData\": {\"text\": \"";
        huge += QByteArray(50 * 1024 * 1024, 'x') + "\"}}]}";
        QTest::newRow("50 MB text") << huge << "Overlay clip ticker: its text has 52428800";
    }

    void badFilesSayWhereAndWhat()
    {
        QFETCH(QByteArray, json);
        QFETCH(QString, said);
        QFile file(path(QString(QTest::currentDataTag()).replace(' ', '_') + ".json"));
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.write(json);
        file.close();
        IsolatedHome home;
        // Checked, and refused by a show, in seconds, naming the file and the place or clip.
        for (const QStringList &args :
             {QStringList{"--check-schedule", file.fileName()},
              QStringList{"--headless", "--schedule", file.fileName(), "--channel",
                          "1=lavfi://testsrc2=size=320x180", "--duration", "5"}}) {
            const ProcessResult r = runProcess(kBinary, args, home.environment(), 30000);
            QVERIFY2(r.finished, qPrintable(args.join(' ')));
            QCOMPARE(r.exitCode, 1);
            const QString err = QString::fromUtf8(r.err);
            QVERIFY2(err.contains(file.fileName()) && err.contains(said), qPrintable(err));
        }
    }

    void aQuarterMillionClipsCheckInSeconds()
    {
        // Reading and checking are linear in the number of clips (they once took minutes).
        QByteArray json = "{\"format\": \"selvane_program_arrangement\", \"version\": 3, "
                          "\"sceneClips\": [";
        for (int i = 0; i < 250000; ++i)
            json += QStringLiteral("{\"id\": \"c%1\", \"startMs\": %2, \"endMs\": %3, "
                                   "\"kind\": \"channel\", \"channel\": 0}%4")
                        .arg(i)
                        .arg(i * 1000LL)
                        .arg(i * 1000LL + 1000)
                        .arg(i + 1 < 250000 ? "," : "]}")
                        .toUtf8();
        QFile file(path("huge.json"));
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.write(json);
        file.close();
        IsolatedHome home;
        const ProcessResult r =
            runProcess(kBinary, {"--check-schedule", file.fileName()}, home.environment(), 60000);
        QVERIFY(r.finished);
        QCOMPARE(r.exitCode, 0);
        QVERIFY2(r.elapsedMs < 20000, QByteArray::number(r.elapsedMs));
    }

    void demoRecordsAPlayableShow()
    {
        IsolatedHome home;
        const QString recording = path("demo.mp4");
        const ProcessResult r =
            runProcess(kBinary, {"--demo", "--duration", "6", "--record", recording},
                       home.environment(), 60000);
        QCOMPARE(r.exitCode, 0);
        QVERIFY2(r.out.contains("schedule: test-signal"), r.out.constData());
        const ProbedFile probed = probeFile(recording);
        QVERIFY2(probed.ok, probed.errors.constData());
        QVERIFY(probed.stream("h264") && probed.stream("h264")->frames >= 170);
        QVERIFY(probed.stream("aac"));
    }
};

QTEST_GUILESS_MAIN(TestPlayout)
#include "test_playout.moc"
