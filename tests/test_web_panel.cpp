// The web panel in a real browser (headless Chromium) against a real headless show that
// records and streams to nginx: an operator signs in, stops and starts the outputs, moves a
// fader, switches a text overlay and cuts between channels by tapping and by keys; each effect is
// checked where it lands (the recording's pictures, the stream at nginx, the status, the meters),
// and the time from each tap to the recording is measured. Other sites' pages, wrong tokens and
// spent event tickets are refused. Screenshots at phone and tablet sizes in both languages.

#include "BrowserSupport.h"
#include "LiveSupport.h"

#include <QImage>
#include <QNetworkAccessManager>
#include <QNetworkReply>
#include <QWebSocket>
#include <QWebSocketHandshakeOptions>
#include <QtTest>
#include <algorithm>

using namespace testsupport;

namespace {

const QString kBinary = testsupport::builtProgram("SELVANE_BINARY");
const QByteArray kToken = RemoteShow::kToken;
constexpr double kFps = 30.0;

// Each picture's time (seconds from the first) and whether its lower band shows the yellow
// box of the text overlay.
struct Pictures
{
    std::vector<double> seconds;
    std::string colours; // see readColours
    std::vector<bool> yellowBand;
};

Pictures readPictures(const QString &file)
{
    Pictures pictures;
    const ProcessResult probe =
        runProcess("ffprobe",
                   {"-v", "error", "-select_streams", "v", "-show_entries",
                    "frame=best_effort_timestamp_time", "-of", "csv=p=0", file},
                   QProcessEnvironment::systemEnvironment(), 60000);
    for (const QByteArray &line : probe.out.split('\n'))
        if (!line.trimmed().isEmpty())
            pictures.seconds.push_back(line.trimmed().toDouble());
    if (!pictures.seconds.empty()) {
        const double first = pictures.seconds.front();
        for (double &s : pictures.seconds)
            s -= first;
    }
    pictures.colours = readColours(file, true);
    QProcess ffmpeg;
    ffmpeg.start("ffmpeg",
                 {"-v", "error", "-i", file, "-vf", "crop=iw:ih/4:0:ih*3/4,scale=16:2:flags=area",
                  "-fps_mode", "passthrough", "-f", "rawvideo", "-pix_fmt", "rgb24", "-"});
    ffmpeg.waitForFinished(60000);
    const QByteArray rgb = ffmpeg.readAllStandardOutput();
    for (qsizetype at = 0; at + 96 <= rgb.size(); at += 96) {
        int yellow = 0;
        for (qsizetype i = at; i < at + 96; i += 3)
            if (uchar(rgb[i]) > 170 && uchar(rgb[i + 1]) > 170 && uchar(rgb[i + 2]) < 90)
                ++yellow;
        pictures.yellowBand.push_back(yellow >= 2);
    }
    return pictures;
}

QString headerOf(QNetworkReply *reply, const char *name)
{
    return QString::fromLatin1(reply->rawHeader(name));
}

} // namespace

class TestWebPanel : public QObject
{
    Q_OBJECT

    QTemporaryDir m_dir;
    RtmpServer m_rtmp;
    RemoteShow m_show;
    Browser m_browser;
    QDir m_shots;

    QString panel(const QString &host = QStringLiteral("127.0.0.1")) const
    {
        return QStringLiteral("http://%1:%2/").arg(host).arg(m_show.port());
    }
    const QJsonObject status() { return m_show.status(); }
    bool waitStatus(const std::function<bool(const QJsonObject &)> &wanted, int ms = 5000)
    {
        return QTest::qWaitFor([&] { return wanted(status()); }, ms);
    }
    double jsNumber(const QString &script) { return m_browser.js(script).toDouble(-1); }
    // Console errors since the last look, as text (empty: none).
    QString consoleErrors(Browser &browser)
    {
        QStringList errors;
        for (const QJsonValue entry : browser.log())
            if (entry["level"].toString() == "SEVERE")
                errors << entry["message"].toString();
        return errors.join('\n');
    }
    bool signIn(Browser &browser, const QByteArray &token)
    {
        return browser.waitVisible("#token") && browser.keys("#token", {QString(token)}) &&
               browser.click("#signin");
    }

private slots:
    void initTestCase()
    {
        m_shots.setPath(QDir::current().filePath("screenshots"));
        m_shots.mkpath(".");
        // Channel 1 red with a tone, channel 2 blue and silent: the program's meter is the
        // red channel's sound.
        QVERIFY(makeClip(m_dir.filePath("red.mp4"), "color=c=red:size=320x180:rate=30",
                         "sine=f=440:sample_rate=48000", 20,
                         {"-c:v", "libx264", "-preset", "ultrafast", "-c:a", "aac"}));
        QVERIFY(makeClip(m_dir.filePath("blue.mp4"), "color=c=blue:size=320x180:rate=30", {}, 20,
                         {"-c:v", "libx264", "-preset", "ultrafast"}));
        QVERIFY(m_rtmp.start());
        QVERIFY2(m_show.start(kBinary, {"--channel", "1=" + m_dir.filePath("red.mp4"), "--channel",
                                        "2=" + m_dir.filePath("blue.mp4"), "--record",
                                        m_dir.filePath("show.mp4"), "--stream", m_rtmp.url("panel"),
                                        "--size", "320x180", "--encoder", "software", "--preset",
                                        "performance", "--duration", "300"}),
                 m_show.output().constData());
        QVERIFY(waitStatus([](const QJsonObject &s) { return s["outputs"]["running"].toBool(); }));
        QVERIFY(m_show
                    .call("PUT", "overlays/text/1",
                          QJsonObject{{"text", "ON AIR"},
                                      {"enabled", false},
                                      {"fontPointSize", 40},
                                      {"fontColor", QJsonObject{{"rgba", 4278190080.0}}},
                                      {"backgroundEnabled", true},
                                      {"backgroundColor", QJsonObject{{"rgba", 4294967040.0}}},
                                      {"backgroundPadding", 30},
                                      {"posX", 0.05},
                                      {"posY", 0.8}})
                    .status == 200);
        QVERIFY2(m_browser.start(), qPrintable(m_browser.error()));
    }

    void thePageKeepsToItself()
    {
        QNetworkAccessManager net;
        std::unique_ptr<QNetworkReply> page(net.get(QNetworkRequest(QUrl(panel()))));
        QVERIFY(QSignalSpy(page.get(), &QNetworkReply::finished).wait(5000));
        QCOMPARE(page->attribute(QNetworkRequest::HttpStatusCodeAttribute).toInt(), 200);
        const QString policy = headerOf(page.get(), "Content-Security-Policy");
        QVERIFY2(policy.contains("default-src 'none'") && policy.contains("script-src 'self'") &&
                     !policy.contains("unsafe"),
                 qPrintable(policy));
        QCOMPARE(headerOf(page.get(), "X-Content-Type-Options"), QString("nosniff"));
        QCOMPARE(headerOf(page.get(), "Referrer-Policy"), QString("no-referrer"));

        // Another site's page (here: the same server under another name) may not drive the
        // show, with or without the token: the browser's request is refused before it acts.
        QVERIFY(m_browser.open(panel("localhost")));
        (void)m_browser.js(
            QStringLiteral("window.crossResult = 'pending';"
                           "fetch('%1api/v1/program/cut', {method: 'POST', body: "
                           "'{\"channel\": 2}'}).then(r => window.crossResult = r.status,"
                           "  e => window.crossResult = 'blocked');")
                .arg(panel()));
        QVERIFY(QTest::qWaitFor(
            [&] { return m_browser.js("return window.crossResult") != "pending"; }, 5000));
        QTest::qWait(300);
        QCOMPARE(status()["program"]["channel"].toInt(), 1);
        (void)m_browser.log(); // the refusals are on the console, as they should be

        // An event ticket opens the stream once; the token never travels in a URL.
        const Answer ticket = m_show.call("POST", "events/ticket");
        QCOMPARE(ticket.status, 200);
        const QString value = ticket.json()["ticket"].toString();
        QCOMPARE(value.size(), 32);
        for (const int attempt : {1, 2}) {
            QWebSocket socket;
            QWebSocketHandshakeOptions options;
            options.setSubprotocols({"selvane-events", "ticket." + value});
            QSignalSpy message(&socket, &QWebSocket::textMessageReceived);
            socket.open(QUrl(m_show.url("events").replace("http:", "ws:")), options);
            if (attempt == 1) {
                QVERIFY(message.wait(5000));
                QCOMPARE(socket.subprotocol(), QString("selvane-events"));
                QVERIFY(message.first().first().toString().contains("\"hello\""));
            } else {
                QVERIFY(!message.wait(1500)); // spent: refused
                QVERIFY(socket.state() != QAbstractSocket::ConnectedState);
            }
        }
    }

    void anOperatorRunsTheShowFromThePage()
    {
        QVERIFY(m_browser.size(1280, 900));
        QVERIFY(m_browser.open(panel()));
        QVERIFY(signIn(m_browser, "not-the-token-at-all"));
        QVERIFY(m_browser.waitVisible("#signin-error"));
        QVERIFY(!m_browser.text("#signin-error").isEmpty());
        (void)m_browser.log(); // the 401 of the wrong token
        QVERIFY(m_browser.keys("#token", {"CONTROL", "a"}));
        QVERIFY(signIn(m_browser, kToken));
        QVERIFY2(
            QTest::qWaitFor(
                [&] { return m_browser.js("return document.body.dataset.ready") == "1"; }, 10000),
            qPrintable(m_browser.error()));
        QVERIFY(m_browser
                    .js("return sessionStorage.length > 0 && localStorage.length == 0 && "
                        "!location.href.includes('" +
                        QString(kToken) + "')")
                    .toBool());

        // Stop and start again from the page; the target is online at nginx again.
        const QString firstFile = status()["outputs"]["file"]["path"].toString();
        QVERIFY(m_browser.click("#outputs-stop"));
        QVERIFY(waitStatus([](const QJsonObject &s) { return !s["outputs"]["running"].toBool(); },
                           10000));
        QVERIFY(m_browser.click("#outputs-start"));
        QVERIFY(waitStatus(
            [](const QJsonObject &s) {
                return s["outputs"]["running"].toBool() &&
                       s["outputs"]["targets"][0]["status"] == "online";
            },
            10000));
        QVERIFY(QTest::qWaitFor(
            [&] { return m_browser.text("#target-1 .status").contains("online"); }, 5000));
        const ProcessResult atNginx =
            runProcess("ffprobe",
                       {"-v", "error", "-rw_timeout", "5000000", "-show_entries",
                        "stream=codec_type", "-of", "csv=p=0", m_rtmp.url("panel")},
                       QProcessEnvironment::systemEnvironment(), 15000);
        QVERIFY2(atNginx.out.contains("video"), atNginx.err.constData());
        const QJsonObject running = status()["outputs"].toObject();
        const QString file = running["file"]["path"].toString();
        QVERIFY(file != firstFile && QFileInfo::exists(firstFile));
        const double startedAtMs = running["startedAtMs"].toDouble();
        QVERIFY(startedAtMs > 0);
        QVERIFY(QTest::qWaitFor(
            [&] { return m_browser.text("#rec-file").contains(QFileInfo(file).fileName()); },
            5000));

        // The program's fader: twenty steps down by keys is -20 dB, a tenth of the sound; the
        // program's meter, fed by the event stream, follows. A channel's fader is its volume on
        // the speakers; its meter shows the channel's own sound.
        const auto peak = [&](const char *meter) {
            return jsNumber(
                QStringLiteral("return +document.querySelector('#meter-%1').dataset.peak")
                    .arg(meter));
        };
        QVERIFY(QTest::qWaitFor([&] { return peak("program") > 0.1 && peak("1") > 0.1; }, 5000));
        const double loud = peak("program");
        QStringList steps;
        for (int i = 0; i < 20; ++i)
            steps << "ARROW_LEFT";
        QVERIFY(m_browser.keys("#fader-program", steps));
        QCOMPARE(jsNumber("return +document.querySelector('#fader-program').value"), -20.0);
        QVERIFY2(waitStatus([&](const QJsonObject &s) {
                     return std::abs(s["program"]["volume"].toDouble() - 0.1) < 0.005;
                 }),
                 qPrintable(QString::number(status()["program"]["volume"].toDouble())));
        QVERIFY2(QTest::qWaitFor([&] { return peak("program") < loud * 0.2; }, 3000),
                 qPrintable(QStringLiteral("meter %1 -> %2").arg(loud).arg(peak("program"))));
        QVERIFY(m_browser.keys("#fader-1", {"ARROW_RIGHT", "ARROW_RIGHT"}));
        QVERIFY(waitStatus(
            [](const QJsonObject &s) { return s["channels"][0]["volume"].toDouble() > 0; }));
        QVERIFY(peak("1") > 0.1);

        // The text overlay on for a second and a half, then off; its text edited.
        QVERIFY(m_browser.waitVisible("#text-1"));
        const double onMs = QDateTime::currentMSecsSinceEpoch();
        QVERIFY(m_browser.click("#text-1-on"));
        QVERIFY(waitStatus(
            [](const QJsonObject &s) { return s["overlays"]["text"][0]["enabled"].toBool(); }));
        QTest::qWait(1500);
        const double offMs = QDateTime::currentMSecsSinceEpoch();
        QVERIFY(m_browser.click("#text-1-on"));
        QVERIFY(waitStatus(
            [](const QJsonObject &s) { return !s["overlays"]["text"][0]["enabled"].toBool(); }));
        QVERIFY(m_browser.keys("#text-1-input", {"CONTROL", "a"}));
        QVERIFY(m_browser.keys("#text-1-input", {"BACK IN FIVE"}));
        QVERIFY(m_browser.click("#text-1-save"));
        QVERIFY(waitStatus([](const QJsonObject &s) {
            const QJsonObject text = s["overlays"]["text"][0].toObject();
            // The rest of the record (the yellow box) stays as it was.
            return text["text"] == "BACK IN FIVE" && text["record"]["backgroundEnabled"].toBool();
        }));

        // Cuts by tapping: each tap's time is the browser's own event time.
        QList<QPair<double, char>> taps;
        for (const auto &[button, colour] :
             {QPair<QString, char>{"#cut-2", 'b'}, {"#cut-1", 'r'}, {"#cut-2", 'b'}}) {
            QTest::qWait(700);
            QVERIFY(m_browser.click(button));
            taps.append({m_browser.js("return window.selvaneLastTap").toDouble(), colour});
            const int channel = colour == 'b' ? 2 : 1;
            QVERIFY(waitStatus(
                [&](const QJsonObject &s) { return s["program"]["channel"] == channel; }));
            QVERIFY(QTest::qWaitFor(
                [&] {
                    return m_browser
                        .js(QStringLiteral("return "
                                           "document.querySelector('#tile-%1').classList.contains('"
                                           "tally-program')")
                                .arg(channel))
                        .toBool();
                },
                3000));
        }
        // And by keys on a desktop: 1 cuts to channel 1.
        QTest::qWait(700);
        QVERIFY(m_browser.press({"1"}));
        QVERIFY(waitStatus([](const QJsonObject &s) { return s["program"]["channel"] == 1; }));
        QTest::qWait(700);
        QCOMPARE(consoleErrors(m_browser), QString());

        QVERIFY(m_browser.click("#outputs-stop"));
        QVERIFY(waitStatus([](const QJsonObject &s) { return !s["outputs"]["running"].toBool(); },
                           10000));
        const Pictures pictures = readPictures(file);
        QVERIFY(pictures.seconds.size() > 60);
        QCOMPARE(pictures.colours.size(), pictures.seconds.size());
        QCOMPARE(pictures.yellowBand.size(), pictures.seconds.size());
        const auto wallMs = [&](std::size_t i) {
            return startedAtMs + pictures.seconds[i] * 1000;
        };

        // Each tap to the first picture of its channel in the recording.
        QList<double> latencies;
        for (const auto &[tapMs, colour] : taps) {
            std::size_t i = 0;
            while (i < pictures.seconds.size() && wallMs(i) < tapMs - 200)
                ++i;
            // Just before the tap the other channel is on air.
            QVERIFY(i < pictures.seconds.size() && pictures.colours[i] != colour);
            while (i < pictures.seconds.size() && pictures.colours[i] != colour)
                ++i;
            QVERIFY(i < pictures.seconds.size());
            latencies << wallMs(i) - tapMs;
        }
        qInfo().noquote() << "tap to air (ms):" << latencies;
        for (const double ms : latencies) {
            // Not before the tap; the budget is 100 ms and a frame on a quiet machine (see the
            // README's figure), loose here for a loaded one.
            QVERIFY2(ms > -1000 / kFps, qPrintable(QString::number(ms)));
            QVERIFY2(ms < 600, qPrintable(QString::number(ms)));
        }

        // The overlay is in the recording while it was on, and only then.
        int onPictures = 0, strayPictures = 0;
        for (std::size_t i = 0; i < pictures.yellowBand.size(); ++i) {
            const double at = wallMs(i);
            if (at > onMs + 400 && at < offMs)
                onPictures += pictures.yellowBand[i] ? 1 : 0;
            else if ((at < onMs - 100 || at > offMs + 800) && pictures.yellowBand[i])
                ++strayPictures;
        }
        QVERIFY2(
            onPictures > 25 && strayPictures == 0,
            qPrintable(QStringLiteral("%1 with, %2 stray").arg(onPictures).arg(strayPictures)));
    }

    void screenshotsAtPhoneAndTabletSizes()
    {
        Browser chinese;
        QVERIFY2(chinese.start("zh-CN"), qPrintable(chinese.error()));
        QVERIFY(QTest::qWaitFor(
            [&] { return m_browser.js("return document.body.dataset.ready") == "1"; }, 5000));
        QVERIFY(chinese.open(panel()));
        QVERIFY(signIn(chinese, kToken));
        QVERIFY(QTest::qWaitFor(
            [&] { return chinese.js("return document.body.dataset.ready") == "1"; }, 10000));
        // The browser's language chose the page's.
        QVERIFY(chinese.js("return document.documentElement.lang").toString().startsWith("zh"));
        QVERIFY(
            chinese.text("#outputs-start").contains(QRegularExpression("[\\x{4e00}-\\x{9fff}]")));
        for (auto *browser : {&m_browser, &chinese}) {
            const QString language = browser == &chinese ? "zh" : "en";
            for (const auto &[name, width, height] :
                 {std::tuple{"phone", 390, 844}, std::tuple{"tablet", 1024, 768}}) {
                QVERIFY(browser->size(width, height));
                (void)browser->js("window.scrollTo(0, 0)");
                QTest::qWait(1200); // thumbnails and meters come in
                // Nothing wider than the screen.
                QVERIFY(
                    browser
                        ->js("return document.documentElement.scrollWidth <= window.innerWidth + 1")
                        .toBool());
                QVERIFY(browser->shot(
                    m_shots.filePath(QStringLiteral("web_%1_%2.png").arg(name, language))));
            }
            // Every control has a name a screen reader can say.
            const QString unnamed =
                browser
                    ->js("return [...document.querySelectorAll('button, input, select, textarea')]"
                         ".filter(e => e.offsetParent && !(e.getAttribute('aria-label') || "
                         "e.labels?.length || e.textContent.trim() || e.title))"
                         ".map(e => e.id || e.outerHTML.slice(0, 60)).join(', ')")
                    .toString();
            QVERIFY2(unnamed.isEmpty(), qPrintable(unnamed));
            QCOMPARE(consoleErrors(*browser), QString());
        }
        const QImage phone(m_shots.filePath("web_phone_zh.png"));
        QVERIFY(!phone.isNull() && phone.width() >= 390);
    }

    void guessingTheTokenLocksTheAddressOut()
    {
        RemoteShow show;
        QVERIFY2(show.start(kBinary, {"--duration", "60"}), show.output().constData());
        Browser browser;
        QVERIFY2(browser.start(), qPrintable(browser.error()));
        QVERIFY(browser.open(QStringLiteral("http://127.0.0.1:%1/").arg(show.port())));
        for (int i = 0; i < 5; ++i) {
            QVERIFY(browser.js("sessionStorage.clear(); return 1").toInt() == 1);
            QVERIFY(browser.waitVisible("#token"));
            QVERIFY(browser.keys("#token", {"CONTROL", "a"}));
            QVERIFY(signIn(browser, "guess-" + QByteArray::number(i)));
            QVERIFY(
                QTest::qWaitFor([&] { return !browser.text("#signin-error").isEmpty(); }, 3000));
            (void)browser.js("document.querySelector('#signin-error').textContent = ''; return 1");
        }
        // Now even the right token is refused for a minute, from this address.
        QVERIFY(browser.keys("#token", {"CONTROL", "a"}));
        QVERIFY(signIn(browser, kToken));
        QVERIFY(QTest::qWaitFor([&] { return !browser.text("#signin-error").isEmpty(); }, 3000));
        QVERIFY(browser.js("return document.body.dataset.ready") != "1");
        const Answer refused = show.call("GET", "status");
        QCOMPARE(refused.status, 429);
        QVERIFY(QTest::qWaitFor(
            [&] { return show.errors().contains("wrong tokens from 127.0.0.1"); }, 3000));
        QVERIFY(!show.errors().contains("guess-"));
    }

    void cleanupTestCase()
    {
        m_browser.quit();
        QCOMPARE(m_show.stop(), 0);
        QVERIFY(!m_show.output().contains(kToken));
    }
};

QTEST_GUILESS_MAIN(TestWebPanel)
#include "test_web_panel.moc"
