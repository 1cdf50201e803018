// How live pictures land on the program's ticks. Senders of 30, 29.97, 59.94 and 60 pictures a
// second reach a 30 fps show over RTMP (nginx), SRT, UDP and HLS at once; over a window of steady
// running, and again after the RTMP publisher restarted, each channel's repeated ticks and
// skipped pictures are counted. A source as fast as the program shows every picture once; a
// slower or faster one repeats or skips only as often as the two rates imply.
//
// SELVANE_CADENCE_SECONDS sets the length of each window (default 8; scripts/cadence.sh runs a
// minute).

#include "LiveSupport.h"

#include <QJsonArray>
#include <QtTest>

using namespace testsupport;

namespace {

const QString kBinary = testsupport::builtProgram("SELVANE_BINARY");
const char *const kKinds[] = {"rtmp", "srt", "udp", "hls"};

struct Sample
{
    qint64 ticks = 0; // program frames
    std::array<qint64, 4> pictures{}, repeated{}, skipped{}, reanchors{};
};

Sample sample(RemoteShow &show)
{
    const QJsonObject status = show.status();
    Sample s;
    s.ticks = status["program"]["frames"].toInteger();
    const QJsonArray channels = status["channels"].toArray();
    for (int c = 0; c < 4 && c < channels.size(); ++c) {
        const QJsonObject channel = channels[c].toObject();
        s.pictures[std::size_t(c)] = channel["framesDelivered"].toInteger();
        s.repeated[std::size_t(c)] = channel["repeatedTicks"].toInteger();
        s.skipped[std::size_t(c)] = channel["picturesSkipped"].toInteger();
        s.reanchors[std::size_t(c)] = channel["reanchors"].toInteger();
    }
    return s;
}

int windowSeconds()
{
    const int seconds = qEnvironmentVariableIntValue("SELVANE_CADENCE_SECONDS");
    return seconds > 0 ? seconds : 8;
}

} // namespace

class TestCadence : public QObject
{
    Q_OBJECT

    // Repeated ticks and skipped pictures of each channel over a window of steady running,
    // against what the sender's rate and the ticks imply (segmented sources arrive in bursts, so
    // what arrived says less than the rate). A window in which a channel was put on the clock
    // again (its margin grew: a loaded machine) says nothing of its cadence: that channel is
    // judged on a later window. False, with the figures, when a channel strays by more than a
    // few.
    bool steady(RemoteShow &show, const QStringList &rates, const char *when)
    {
        std::array<bool, 4> judged{}, ok{};
        for (int window = 0;
             window < 5 && !std::all_of(judged.begin(), judged.end(), [](bool j) { return j; });
             ++window) {
            const Sample from = sample(show);
            QTest::qWait(windowSeconds() * 1000);
            const Sample to = sample(show);
            const qint64 ticks = to.ticks - from.ticks;
            for (std::size_t c = 0; c < 4; ++c) {
                if (judged[c] || to.reanchors[c] != from.reanchors[c])
                    continue;
                judged[c] = true;
                const qint64 delivered = to.pictures[c] - from.pictures[c];
                const QStringList fraction = rates[int(c)].split('/');
                const double rate =
                    fraction.value(0).toDouble() / fraction.value(1, "1").toDouble();
                const qint64 pictures = std::llround(double(ticks) * rate / 30.0);
                const qint64 repeated = to.repeated[c] - from.repeated[c];
                const qint64 skipped = to.skipped[c] - from.skipped[c];
                const qint64 wantRepeated = std::max<qint64>(0, ticks - pictures);
                const qint64 wantSkipped = std::max<qint64>(0, pictures - ticks);
                const double perMinute = 60.0 * 30.0 / double(std::max<qint64>(1, ticks));
                qInfo("%s %s at %s fps, %s (window %d): %lld ticks, %lld pictures, repeated %lld "
                      "(%.0f a minute, rates imply %lld), skipped %lld (%.0f a minute, rates "
                      "imply %lld)",
                      QTest::currentDataTag(), kKinds[c], qPrintable(rates[int(c)]), when,
                      window + 1, ticks, pictures, repeated, repeated * perMinute, wantRepeated,
                      skipped, skipped * perMinute, wantSkipped);
                // A few for the edges of the window: a picture in flight when a sample is taken.
                constexpr qint64 kSlack = 4;
                ok[c] = ticks > 0 && delivered >= ticks / 2 &&
                        std::abs(repeated - wantRepeated) <= kSlack &&
                        std::abs(skipped - wantSkipped) <= kSlack;
            }
        }
        for (std::size_t c = 0; c < 4; ++c)
            if (!judged[c])
                qInfo("%s %s: put on the clock again in every window", QTest::currentDataTag(),
                      kKinds[c]);
        return std::all_of(ok.begin(), ok.end(), [](bool o) { return o; });
    }

private slots:
    void everyTickShowsItsPicture_data()
    {
        QTest::addColumn<QStringList>("rates"); // RTMP, SRT, UDP, HLS
        QTest::newRow("30") << QStringList{"30", "30", "30", "30"};
        QTest::newRow("29.97") << QStringList{"30000/1001", "30000/1001", "30000/1001",
                                              "30000/1001"};
        QTest::newRow("60 and 59.94") << QStringList{"60", "60000/1001", "60000/1001", "60"};
    }

    void everyTickShowsItsPicture()
    {
        QFETCH(QStringList, rates);
        QTemporaryDir www;
        RtmpServer nginx;
        QVERIFY(nginx.start(0, www.path()));
        std::array<Publisher, 4> senders;
        const quint16 srtPort = freeTcpPort();
        const quint16 udpPort = freeTcpPort();
        const QStringList outputs[] = {
            {"-f", "flv", nginx.url("cadence")},
            {"-f", "mpegts", QStringLiteral("srt://127.0.0.1:%1?mode=listener").arg(srtPort)},
            {"-f", "mpegts", QStringLiteral("udp://127.0.0.1:%1?pkt_size=1316").arg(udpPort)},
            {"-f", "hls", "-hls_time", "1", "-hls_list_size", "6", "-hls_flags", "delete_segments",
             www.filePath("live.m3u8")}};
        for (std::size_t k = 0; k < 4; ++k) {
            const QString rate = rates[int(k)];
            senders[k].start(QStringList{"-re",
                                         "-f",
                                         "lavfi",
                                         "-i",
                                         "testsrc2=size=320x180:rate=" + rate,
                                         "-f",
                                         "lavfi",
                                         "-i",
                                         "sine=frequency=440:sample_rate=48000",
                                         "-c:v",
                                         "libx264",
                                         "-preset",
                                         "ultrafast",
                                         "-tune",
                                         "zerolatency",
                                         "-g",
                                         "60",
                                         "-pix_fmt",
                                         "yuv420p",
                                         "-c:a",
                                         "aac",
                                         "-b:a",
                                         "64k"} +
                             outputs[k]);
        }
        QTRY_VERIFY_WITH_TIMEOUT(readAll(www.filePath("live.m3u8")).count("#EXTINF") >= 3, 20000);

        QTemporaryDir dir;
        RemoteShow show;
        QVERIFY2(show.start(
                     kBinary,
                     {"--channel", "1=" + nginx.url("cadence"), "--channel",
                      QStringLiteral("2=srt://127.0.0.1:%1?mode=caller").arg(srtPort), "--channel",
                      QStringLiteral("3=udp://127.0.0.1:%1").arg(udpPort), "--channel",
                      QStringLiteral("4=http://127.0.0.1:%1/live.m3u8").arg(nginx.httpPort()),
                      "--size", "320x180", "--fps", "30", "--encoder", "software", "--preset",
                      "performance", "--record", dir.filePath("show.mp4")}),
                 show.output().constData());
        const auto allDelivering = [&] {
            const Sample s = sample(show);
            return std::all_of(s.pictures.begin(), s.pictures.end(),
                               [](qint64 n) { return n > 60; });
        };
        QTRY_VERIFY_WITH_TIMEOUT(allDelivering(), 30000);
        QTest::qWait(3000); // the live margins settle

        const bool first = steady(show, rates, "steady");
        // The RTMP publisher goes and comes back (nginx keeps the reader's session).
        const qint64 before = sample(show).pictures[0];
        senders[0].restartSender();
        QTRY_VERIFY_WITH_TIMEOUT(sample(show).pictures[0] > before + 90, 20000);
        QTest::qWait(3000);
        const bool second = steady(show, rates, "after the RTMP publisher restarted");
        QVERIFY(first);
        QVERIFY(second);
        QCOMPARE(show.stop(), 0);
    }
};

QTEST_GUILESS_MAIN(TestCadence)
#include "test_cadence.moc"
