// The remote control against a real headless show (the selvane binary with --control-port):
// cuts, overlays, outputs, stream reconnects and schedules driven over HTTP and followed over the
// event WebSocket, each effect checked in the recording's colours or in the events; requests
// that must be refused, refused with 4xx while the program keeps its frames; the token file.

#include "LiveSupport.h"
#include "compose/TextOverlayData.h"

#include <QImage>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QNetworkAccessManager>
#include <QNetworkReply>
#include <QRandomGenerator>
#include <QWebSocket>
#include <QtTest>
#include <functional>

using namespace testsupport;

namespace {

const QString kBinary = testsupport::builtProgram("SELVANE_BINARY");
const QByteArray kToken = RemoteShow::kToken;

QString colourSource(const char *colour)
{
    return QStringLiteral("lavfi://color=c=%1:size=320x180:rate=30").arg(colour);
}

// The dominant colour every 0.2 s of a recording ('r', 'g', 'b'), repeats folded into one.
QString colourRun(const QString &file)
{
    QProcess ffmpeg;
    ffmpeg.start("ffmpeg", {"-v", "error", "-i", file, "-vf", "fps=5,scale=1:1:flags=area", "-f",
                            "rawvideo", "-pix_fmt", "rgb24", "-"});
    ffmpeg.waitForFinished(30000);
    const QByteArray rgb = ffmpeg.readAllStandardOutput();
    QString run;
    for (qsizetype i = 0; i + 2 < rgb.size(); i += 3) {
        const int c[3] = {uchar(rgb[i]), uchar(rgb[i + 1]), uchar(rgb[i + 2])};
        for (int k = 0; k < 3; ++k)
            if (c[k] > 150 && c[(k + 1) % 3] < 90 && c[(k + 2) % 3] < 90 &&
                !run.endsWith(QChar("rgb"[k])))
                run += QChar("rgb"[k]);
    }
    return run;
}

// The event WebSocket, every message kept.
class Events : public QObject
{
public:
    bool open(const RemoteShow &show, const QByteArray &token = kToken)
    {
        QNetworkRequest request(QUrl(show.url("events").replace("http:", "ws:")));
        request.setRawHeader("Authorization", "Bearer " + token);
        connect(&m_socket, &QWebSocket::textMessageReceived, this, [this](const QString &text) {
            m_events << QJsonDocument::fromJson(text.toUtf8()).object();
        });
        m_socket.open(request);
        return QTest::qWaitFor([&] { return m_socket.state() == QAbstractSocket::ConnectedState; },
                               3000);
    }
    // Waits for an event of this type (that `also` accepts) after the first `from` events.
    std::optional<QJsonObject> next(const QString &type, qsizetype *from,
                                    const std::function<bool(const QJsonObject &)> &also = {},
                                    int timeoutMs = 5000)
    {
        std::optional<QJsonObject> found;
        (void)QTest::qWaitFor(
            [&] {
                for (qsizetype i = *from; i < m_events.size(); ++i) {
                    if (m_events[i].value("type").toString() == type &&
                        (!also || also(m_events[i]))) {
                        found = m_events[i];
                        *from = i + 1;
                        return true;
                    }
                }
                return false;
            },
            timeoutMs);
        return found;
    }
    qsizetype count() const { return m_events.size(); }

private:
    QWebSocket m_socket;
    QList<QJsonObject> m_events;
};

} // namespace

class TestControl : public QObject
{
    Q_OBJECT

    QTemporaryDir m_dir;
    RemoteShow m_show;
    RtmpServer m_rtmp;

    Answer call(const QByteArray &method, const QString &path, const QByteArray &body = {},
                const QByteArray &token = kToken)
    {
        return m_show.call(method, path, body, token);
    }
    Answer call(const QByteArray &method, const QString &path, const QJsonObject &body)
    {
        return m_show.call(method, path, body);
    }
    qint64 programFrames() { return call("GET", "status").json()["program"]["frames"].toInteger(); }

private slots:
    void initTestCase()
    {
        QVERIFY(runFfmpeg({"-f", "lavfi", "-i", "color=c=0x00ff00:size=320x180", "-frames:v", "1",
                           m_dir.filePath("green.png")}));
        QVERIFY(m_rtmp.start());
        QVERIFY2(m_show.start(kBinary, {"--channel", "1=" + colourSource("red"), "--channel",
                                        "2=" + colourSource("blue"), "--encoder", "software",
                                        "--preset", "performance", "--duration", "120"}),
                 m_show.output().constData());
        // The start-up line says where the token is, never what it is.
        QVERIFY(m_show.output().contains("token from SELVANE_CONTROL_TOKEN"));
        QVERIFY(!m_show.output().contains(kToken));
        QVERIFY(QTest::qWaitFor([&] { return programFrames() > 10; }, 5000));
    }

    void cutsOverlaysAndOutputsReachTheRecording()
    {
        Events events;
        QVERIFY(events.open(m_show));
        qsizetype at = 0;
        QVERIFY(events.next("hello", &at));
        const QString file = m_dir.filePath("show.mp4");
        const QString dead = QStringLiteral("rtmp://127.0.0.1:%1/live/gone").arg(freeTcpPort());
        const Answer started =
            call("POST", "outputs/start",
                 QJsonObject{{"record", file},
                             {"streams", QJsonArray{m_rtmp.url("control"), dead}},
                             {"size", "320x180"}});
        QCOMPARE(started.status, 202);
        QVERIFY(events.next("outputsStarted", &at));
        QCOMPARE(call("POST", "outputs/start", QJsonObject{{"record", file}}).status, 409);

        // Red (channel 1), then a cut to blue, then a green picture over the whole scene.
        QTest::qWait(1500);
        QCOMPARE(call("POST", "program/cut", QJsonObject{{"channel", 2}}).status, 200);
        QVERIFY(events.next("cut", &at, [](const QJsonObject &e) { return e["channel"] == 2; }));
        QTest::qWait(1500);
        QCOMPARE(call("PUT", "overlays/media/5",
                      QJsonObject{{"path", m_dir.filePath("green.png")},
                                  {"kind", "image"},
                                  {"x", 0},
                                  {"y", 0},
                                  {"w", 640},
                                  {"h", 360}})
                     .status,
                 200);
        QCOMPARE(call("PUT", "overlays/text/7",
                      QJsonObject{{"text", "from the desk"}, {"fontPointSize", 40}})
                     .status,
                 200);
        QVERIFY(events.next("overlays", &at, [](const QJsonObject &e) {
            return e["text"].toArray().size() == 1 && e["media"].toArray().size() == 1;
        }));
        QTest::qWait(1000);
        const Answer snapshot = call("GET", "program/snapshot.jpg");
        QCOMPARE(snapshot.status, 200);
        const QImage still = QImage::fromData(snapshot.body, "JPEG");
        QCOMPARE(still.size(), QSize(640, 360));
        const QColor centre = still.pixelColor(320, 250);
        QVERIFY2(centre.green() > 200 && centre.red() < 60 && centre.blue() < 60,
                 qPrintable(centre.name()));

        // Reconnect now: the dead target tries again at once instead of after its backoff; a
        // target that is online is not waiting.
        const auto target2 = [](const QJsonObject &e) {
            return e["target"] == 2;
        };
        QVERIFY(events.next("stream", &at, [&](const QJsonObject &e) {
            return target2(e) && e["status"] == "reconnecting";
        }));
        QElapsedTimer sinceFailure;
        sinceFailure.start();
        QTest::qWait(300);
        QCOMPARE(call("POST", "outputs/targets/2/reconnect").status, 200);
        QVERIFY(events.next("stream", &at, target2, 1500));
        QVERIFY2(sinceFailure.elapsed() < 1800, "the retry waited out its backoff");
        QVERIFY(QTest::qWaitFor(
            [&] {
                return call("GET", "status").json()["outputs"]["targets"][0]["status"] == "online";
            },
            5000));
        QCOMPARE(call("POST", "outputs/targets/1/reconnect").status, 409);
        QCOMPARE(call("POST", "outputs/targets/3/reconnect").status, 404);

        QCOMPARE(call("POST", "outputs/stop").status, 200);
        QVERIFY(events.next("outputsStopped", &at));
        QCOMPARE(colourRun(file), QString("rbg"));
        QVERIFY(events.next("levels", &at));

        // A stop time from the desk ends outputs started by hand; times that cannot be are
        // refused.
        QCOMPARE(call("POST", "outputs/start", QJsonObject{{"record", m_dir.filePath("timed.mp4")}})
                     .status,
                 202);
        QVERIFY(events.next("outputsStarted", &at));
        const QString stopAt =
            QDateTime::currentDateTime().addSecs(2).toString("yyyy-MM-ddTHH:mm:ss");
        const Answer times = call("PUT", "outputs/times", QJsonObject{{"stop", stopAt}});
        QCOMPARE(times.status, 200);
        QCOMPARE(times.json()["stop"].toString(), stopAt);
        QVERIFY(times.json()["stopsInMs"].toInteger() > 0);
        QVERIFY(events.next("outputsStopped", &at, {}, 6000));
        QCOMPARE(call("PUT", "outputs/times", QJsonObject{{"start", "teatime"}}).status, 400);
        QCOMPARE(call("PUT", "outputs/times", QJsonObject{{"stop", "2020-01-01T00:00"}}).status,
                 400);

        // Profiles, a channel's own recording and an HLS target on the low profile.
        const QString hls = m_dir.filePath("web/low.m3u8");
        const QJsonObject profiled{
            {"record", m_dir.filePath("profiled.mp4")},
            {"profiles", QJsonArray{QJsonObject{{"name", "low"}, {"size", "160x90"},
                                                {"bitrate", 300}, {"adaptive", true}}}},
            {"iso", QJsonArray{QJsonObject{{"channel", 2}, {"profile", "low"}}}},
            {"streams", QJsonArray{QJsonObject{{"url", hls}, {"profile", "low"},
                                               {"hlsSegment", 1}}}}};
        QCOMPARE(call("POST", "outputs/start", profiled).status, 202);
        QVERIFY(events.next("outputsStarted", &at));
        QTRY_VERIFY_WITH_TIMEOUT(QFileInfo::exists(hls), 8000);
        const QJsonObject outputs = call("GET", "status").json()["outputs"].toObject();
        QCOMPARE(outputs["encodes"].toArray().size(), 3);
        QCOMPARE(outputs["targets"].toArray()[0].toObject()["profile"].toString(), "low");
        QCOMPARE(outputs["iso"].toArray()[0].toObject()["channel"].toInt(), 2);
        QCOMPARE(call("POST", "outputs/stop").status, 200);
        QVERIFY(events.next("outputsStopped", &at, {}, 10000));
        const QString iso = m_dir.filePath("profiled_iso2.mp4");
        const ProcessResult size = runProcess(
            "ffprobe",
            {"-v", "error", "-show_entries", "stream=width,height", "-of", "csv=p=0", iso},
            QProcessEnvironment::systemEnvironment(), 20000);
        QVERIFY2(size.out.startsWith("160,90"), size.out.constData());
        for (const QJsonObject &bad :
             {QJsonObject{{"profiles", QJsonArray{QJsonObject{{"name", "a b"}, {"size", "64x64"},
                                                              {"bitrate", 300}}}}},
              QJsonObject{{"iso", QJsonArray{7}}},
              QJsonObject{{"streams", QJsonArray{QJsonObject{{"url", hls}, {"profile", "nope"}}}}}})
            QCOMPARE(call("POST", "outputs/start", bad).status, 400);

        QCOMPARE(call("DELETE", "overlays/media/5").status, 200);
        QCOMPARE(call("DELETE", "overlays/text/7").status, 200);
        QCOMPARE(call("DELETE", "overlays/text/7").status, 404);
    }

    void schedulesLoadStartAndStop()
    {
        Events events;
        QVERIFY(events.open(m_show));
        qsizetype at = 0;
        // Schedule files count channels from 0.
        const auto clip = [](const char *id, int startMs, int endMs, int channel) {
            return QJsonObject{{"id", id},
                               {"startMs", startMs},
                               {"endMs", endMs},
                               {"kind", "channel"},
                               {"channel", channel}};
        };
        QJsonObject schedule{
            {"format", "selvane_program_arrangement"},
            {"version", 3},
            {"sceneClips", QJsonArray{clip("first", 0, 1000, 0), clip("second", 1000, 0, 1)}}};
        QCOMPARE(call("PUT", "schedule", QByteArray("{\"format\": ")).status, 400);
        QJsonObject missing = schedule;
        missing["sceneClips"] = QJsonArray{QJsonObject{
            {"id", "pics"}, {"kind", "imageSequence"}, {"paths", m_dir.filePath("none.png")}}};
        const Answer refused = call("PUT", "schedule", missing);
        QCOMPARE(refused.status, 400);
        QVERIFY(!refused.json()["error"].toString().isEmpty());

        QCOMPARE(call("PUT", "schedule", schedule).status, 200);
        qsizetype cuts = at;
        QCOMPARE(call("POST", "schedule/start").status, 200);
        QVERIFY(events.next("schedule", &at,
                            [](const QJsonObject &e) { return e["running"] == true; }));
        QVERIFY(events.next("scheduleClip", &at,
                            [](const QJsonObject &e) { return e["id"] == "first"; }));
        QVERIFY(events.next("scheduleClip", &at,
                            [](const QJsonObject &e) { return e["id"] == "second"; }));
        QCOMPARE(call("GET", "status").json()["program"]["channel"].toInt(), 2);
        // The schedule's cuts reach the clients like the operator's.
        QVERIFY(events.next("cut", &cuts, [](const QJsonObject &e) { return e["channel"] == 2; }));
        QCOMPARE(call("POST", "schedule/start").status, 409);
        QCOMPARE(call("POST", "schedule/stop").status, 200);
        QVERIFY(events.next("schedule", &at,
                            [](const QJsonObject &e) { return e["running"] == false; }));
        QCOMPARE(call("POST", "schedule/stop").status, 409);
    }

    void productionControlsReachTheRecording()
    {
        Events events;
        QVERIFY(events.open(m_show));
        qsizetype at = 0;
        QCOMPARE(call("POST", "program/cut", QJsonObject{{"channel", 1}}).status, 200);
        QCOMPARE(call("PUT", "program/preview", QJsonObject{{"channel", 0}}).status, 200);
        QCOMPARE(call("POST", "program/take").status, 409); // nothing on the preview bus
        QCOMPARE(call("PUT", "program/transition", QJsonObject{{"type", "spin"}}).status, 400);
        QCOMPARE(call("PUT", "program/transition", QJsonObject{{"durationMs", 50}}).status, 400);
        QCOMPARE(call("PUT", "program/tbar", QJsonObject{{"position", 1.5}}).status, 400);
        // A stinger needs its clip; one that cannot be read is reported, and takes cut.
        QCOMPARE(call("PUT", "program/transition", QJsonObject{{"type", "stinger"}}).status, 400);
        QCOMPARE(call("PUT", "program/transition",
                      QJsonObject{{"type", "stinger"}, {"file", m_dir.filePath("none.mov")}})
                     .status,
                 200);
        QVERIFY(events.next("stinger", &at, [](const QJsonObject &e) {
            return e["stinger"].toObject()["state"] == "failed";
        }));

        // Failover: what cannot work is refused; the slate goes on air by hand and off with a
        // cut.
        QCOMPARE(call("PUT", "failover", QJsonObject{{"backups", QJsonObject{{"1", "channel:1"}}}})
                     .status,
                 400);
        QCOMPARE(call("PUT", "failover", QJsonObject{{"retries", 1}}).status, 400);
        QCOMPARE(call("PUT", "failover", QJsonObject{{"failoverMs", 5}}).status, 400);
        const Answer failover =
            call("PUT", "failover",
                 QJsonObject{{"enabled", true}, {"backups", QJsonObject{{"1", "channel:2"}}}});
        QCOMPARE(failover.status, 200);
        QCOMPARE(failover.json()["backups"].toObject()["1"].toString(), QString("channel:2"));
        QCOMPARE(call("POST", "program/slate").status, 200);
        QVERIFY(events.next("slate", &at, [](const QJsonObject &e) { return e["onAir"] == true; }));
        QCOMPARE(call("GET", "status").json()["failover"]["slateOnAir"].toBool(), true);
        QCOMPARE(call("POST", "program/cut", QJsonObject{{"channel", 1}}).status, 200);
        QVERIFY(
            events.next("slate", &at, [](const QJsonObject &e) { return e["onAir"] == false; }));

        const QString file = m_dir.filePath("production.mp4");
        QCOMPARE(
            call("POST", "outputs/start", QJsonObject{{"record", file}, {"streams", QJsonArray{}}})
                .status,
            202);
        QVERIFY(events.next("outputsStarted", &at));
        QCOMPARE(call("PUT", "program/preview", QJsonObject{{"channel", 2}}).status, 200);
        QVERIFY(
            events.next("preview", &at, [](const QJsonObject &e) { return e["preview"] == 2; }));
        QCOMPARE(
            call("PUT", "program/transition", QJsonObject{{"type", "mix"}, {"durationMs", 300}})
                .status,
            200);
        QVERIFY(events.next("transition", &at));
        QTest::qWait(1000);
        // Take: blue mixes in; red goes to the preview.
        QCOMPARE(call("POST", "program/take").status, 200);
        QVERIFY(
            events.next("take", &at, [](const QJsonObject &e) { return e["transitionTo"] == 2; }));
        QVERIFY(events.next("cut", &at, [](const QJsonObject &e) { return e["channel"] == 2; }));
        QVERIFY(
            events.next("preview", &at, [](const QJsonObject &e) { return e["preview"] == 1; }));
        QTest::qWait(1000);
        // The T-bar half way back to red: the picture is half of each.
        QCOMPARE(call("PUT", "program/tbar", QJsonObject{{"position", 0.5}}).status, 200);
        QVERIFY(events.next("tbar", &at, [](const QJsonObject &e) { return e["tbar"] == 0.5; }));
        QTest::qWait(300);
        const QImage half = QImage::fromData(call("GET", "program/snapshot.jpg").body, "JPEG");
        const QColor blend = half.pixelColor(half.width() / 2, half.height() / 2);
        QVERIFY2(std::abs(blend.red() - blend.blue()) < 40 && blend.red() > 90,
                 qPrintable(blend.name()));
        QTest::qWait(700);
        QCOMPARE(call("PUT", "program/tbar", QJsonObject{{"position", 1}}).status, 200);
        QVERIFY(events.next("cut", &at, [](const QJsonObject &e) { return e["channel"] == 1; }));
        QTest::qWait(1000);
        // Fade to black, and the snapshot is black while the outputs run on.
        QCOMPARE(call("POST", "program/fade-to-black", QJsonObject{{"durationMs", 200}}).status,
                 200);
        QVERIFY(events.next("fadeToBlack", &at,
                            [](const QJsonObject &e) { return e["fadeToBlack"] == true; }));
        QTest::qWait(600);
        const QImage dark = QImage::fromData(call("GET", "program/snapshot.jpg").body, "JPEG");
        QVERIFY(qGray(dark.pixel(dark.width() / 2, dark.height() / 2)) < 20);
        const qint64 frames = programFrames();
        QTest::qWait(500);
        QVERIFY(programFrames() > frames + 10);
        QCOMPARE(call("POST", "program/fade-to-black").status, 200); // and back
        QVERIFY(events.next("fadeToBlack", &at,
                            [](const QJsonObject &e) { return e["fadeToBlack"] == false; }));
        QCOMPARE(call("POST", "outputs/stop").status, 200);
        QVERIFY(events.next("outputsStopped", &at));
        QCOMPARE(colourRun(file), QString("rbr"));
        QCOMPARE(call("PUT", "program/preview", QJsonObject{{"channel", 0}}).status, 200);
    }

    void badRequestsAreRefusedWhileTheShowGoesOn()
    {
        const qint64 framesBefore = programFrames();
        QElapsedTimer clock;
        clock.start();
        QCOMPARE(call("GET", "status", {}, "wrong-token-0000000000").status, 401);
        QCOMPARE(call("GET", "status", {}, {}).status, 401);
        QCOMPARE(call("POST", "program/cut", QByteArray("{\"channel\": 2,")).status, 400);
        QCOMPARE(call("POST", "program/cut", QJsonObject{{"channel", "two"}}).status, 400);
        QCOMPARE(call("POST", "program/cut", QJsonObject{{"channel", 5}}).status, 400);
        QCOMPARE(call("PUT", "channels/7", QJsonObject{{"address", colourSource("red")}}).status,
                 404);
        QCOMPARE(call("PUT", "channels/3", QJsonObject{{"address", "nothing://x"}}).status, 400);
        QCOMPARE(call("GET", "no/such/thing").status, 404);
        // What can be captured is listed even where there is nothing (no display here).
        const Answer sources = call("GET", "sources");
        QCOMPARE(sources.status, 200);
        QVERIFY(sources.json()["displays"].isArray() && sources.json()["windows"].isArray());
        QCOMPARE(call("DELETE", "overlays/media/42").status, 404);
        QCOMPARE(call("PUT", "audio/overlays/42", QJsonObject{{"volume", 1}}).status, 404);
        QCOMPARE(call("PUT", "audio/channels/1", QJsonObject{{"volume", 9}}).status, 400);
        QCOMPARE(call("GET", "program/cut").status, 405);
        QCOMPARE(call("POST", "outputs/stop").status, 409);
        QCOMPARE(call("POST", "outputs/targets/1/reconnect").status, 404);
        const Answer folder =
            call("POST", "outputs/start", QJsonObject{{"record", "/no/such/folder/a.mp4"}});
        QCOMPARE(folder.status, 400);
        QVERIFY(folder.json()["error"].toString().contains("does not exist"));
        QCOMPARE(call("PUT", "schedule", QByteArray(3 * 1024 * 1024, ' ')).status, 413);
        // Texts are held to the longest text the program shapes, as on the command line.
        const QString tooLong(TextOverlayData::kMaxTextLength + 1, QChar('x'));
        QCOMPARE(call("PUT", "overlays/text/3", QJsonObject{{"text", tooLong}}).status, 400);
        const QJsonObject longClip{{"id", "ticker"},
                                   {"overlayKind", "text"},
                                   {"mediaType", "text"},
                                   {"startMs", 0},
                                   {"textData", QJsonObject{{"text", tooLong}}}};
        const QJsonObject longSchedule{
            {"format", "selvane_program_arrangement"},
            {"version", 3},
            {"sceneClips", QJsonArray{QJsonObject{{"id", "a"}, {"kind", "channel"}}}},
            {"overlayClips", QJsonArray{longClip}}};
        const Answer longText = call("PUT", "schedule", longSchedule);
        QCOMPARE(longText.status, 400);
        QVERIFY2(longText.json()["error"].toString().contains("ticker"), longText.body);

        // Bytes that are no HTTP at all, and a head without end, over a plain socket.
        const auto raw = [&](const QByteArray &bytes) {
            QTcpSocket socket;
            socket.connectToHost("127.0.0.1", m_show.port());
            socket.waitForConnected(3000);
            socket.write(bytes);
            QByteArray answer;
            while (socket.waitForReadyRead(3000))
                answer += socket.readAll();
            return answer;
        };
        QByteArray noise(4096, Qt::Uninitialized);
        for (char &c : noise)
            c = char(QRandomGenerator::global()->bounded(256));
        QVERIFY(raw(noise).startsWith("HTTP/1.1 4"));
        QVERIFY(raw("GET /api/v1/status HTTP/1.1\r\nX-Pad: " + QByteArray(20000, 'a'))
                    .startsWith("HTTP/1.1 431"));
        // A body that comes in two pieces, the second a while after the head, is read whole.
        {
            const QByteArray body = R"({"channel": 1})";
            QTcpSocket socket;
            socket.connectToHost("127.0.0.1", m_show.port());
            QVERIFY(socket.waitForConnected(3000));
            socket.write("POST /api/v1/program/cut HTTP/1.1\r\nHost: x\r\nAuthorization: Bearer " +
                         kToken + "\r\nContent-Type: application/json\r\nContent-Length: " +
                         QByteArray::number(body.size()) + "\r\n\r\n" + body.left(5));
            socket.flush();
            QTest::qWait(300);
            socket.write(body.mid(5));
            QByteArray answer;
            while (!answer.contains("\r\n\r\n") && socket.waitForReadyRead(3000))
                answer += socket.readAll();
            QVERIFY2(answer.startsWith("HTTP/1.1 200"), answer.constData());
        }

        Events intruder;
        QVERIFY(!intruder.open(m_show, "wrong-token-0000000000"));

        // The program never waited: its frames kept their rate all along.
        const qint64 frames = programFrames() - framesBefore;
        const qint64 expected = clock.elapsed() * 30 / 1000;
        QVERIFY2(frames >= expected * 9 / 10,
                 qPrintable(QStringLiteral("%1 frames, %2 expected").arg(frames).arg(expected)));
    }

    void cleanupTestCase()
    {
        QCOMPARE(m_show.stop(), 0);
        QVERIFY(!m_show.output().contains(kToken));
    }

    void tokenIsMadeOnceAndKeptPrivate()
    {
        RemoteShow show;
        QVERIFY(show.start(kBinary, {"--duration", "10"}, false));
        const QString file = show.home().path("config/Ostrel/selvane_control_token");
        QVERIFY2(show.output().contains(file.toUtf8()), show.output().constData());
        QCOMPARE(QFile::permissions(file) & ~(QFile::ReadUser | QFile::WriteUser),
                 QFile::ReadOwner | QFile::WriteOwner);
        const QByteArray token = readAll(file).trimmed();
        QVERIFY(token.size() >= 32);
        QVERIFY(!show.output().contains(token));
        QCOMPARE(show.call("GET", "status", {}, token).status, 200);
        QCOMPARE(show.stop(), 0);

        // Bad values are refused before anything starts.
        for (const QStringList &bad :
             {QStringList{"--control-port", "0"}, QStringList{"--control-port", "70000"},
              QStringList{"--control-port", "80", "--control-bind", "x"}}) {
            const ProcessResult r =
                runProcess(kBinary, QStringList{"--headless"} + bad, show.home().environment());
            QCOMPARE(r.exitCode, 1);
        }
    }
};

QTEST_MAIN(TestControl)
#include "test_control.moc"
