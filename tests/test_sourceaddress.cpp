// Source address grammar, classification and the demuxer open options of each kind.

#include "TestSupport.h"
#include "input/PictureConverter.h"
#include "input/SourceAddress.h"
#include "media/FfmpegTypes.h"

#include <QSettings>
#include <QtTest>

extern "C" {
#include <libavformat/avformat.h>
}

using namespace selvane;

namespace {

QMap<QString, QString> optionsFor(const QString &address)
{
    ffsupport::Dictionary dict;
    buildInputOptions(SourceAddress(address), dict.address(), false);
    QMap<QString, QString> map;
    const AVDictionaryEntry *entry = nullptr;
    while ((entry = av_dict_get(dict.get(), "", entry, AV_DICT_IGNORE_SUFFIX)))
        map.insert(entry->key, entry->value);
    return map;
}

} // namespace

class TestSourceAddress : public QObject
{
    Q_OBJECT

private slots:
    void init() { QSettings("Ostrel", "Selvane").clear(); }

    void kindsInTheirOrder_data()
    {
        QTest::addColumn<QString>("address");
        QTest::addColumn<int>("kind");
        QTest::newRow("window") << "WGC://capture?hwnd=1" << int(SourceKind::WindowCapture);
        QTest::newRow("display") << "desktop://capture?monitor=1"
                                 << int(SourceKind::DisplayCapture);
        QTest::newRow("camera") << "DSHOW://capture?video=Cam" << int(SourceKind::CaptureDevice);
        QTest::newRow("microphone only is no device")
            << "dshow://capture?audio=Mic" << int(SourceKind::NetworkStream);
        QTest::newRow("test signal") << "lavfi://testsrc2" << int(SourceKind::TestSignal);
        QTest::newRow("file url") << "file:///tmp/a.mp4" << int(SourceKind::LocalFile);
        QTest::newRow("path") << "/tmp/a b.mp4" << int(SourceKind::LocalFile);
        QTest::newRow("stream, padded") << "  srt://h:9000  " << int(SourceKind::NetworkStream);
    }

    void kindsInTheirOrder()
    {
        QFETCH(QString, address);
        QFETCH(int, kind);
        QCOMPARE(int(SourceAddress(address).kind()), kind);
    }

    // What the decoder and the capture code read from an address is decided when it is parsed.
    void partsParsedOnce()
    {
        const SourceAddress window("wgc://capture?hwnd=0x1A2b&cursor=0");
        QCOMPARE(window.window(), quint64(0x1a2b));
        QVERIFY(!window.drawsCursor());
        QVERIFY(window.isScreenCapture());
        QCOMPARE(SourceAddress("wgc://capture?hwnd=nope").window(), quint64(0));

        const SourceAddress display("desktop://capture?monitor=2&wgc=true");
        QCOMPARE(display.monitor(), 2);
        QVERIFY(display.systemCapture());
        QVERIFY(display.drawsCursor());
        QCOMPARE(SourceAddress("desktop://capture?monitor=-3").monitor(), 0);

        const SourceAddress camera("dshow://capture?video=USB%20Cam%3A1&audio=Mic%20(2)");
        QCOMPARE(camera.camera(), QString("USB Cam:1"));
        QCOMPARE(camera.microphone(), QString("Mic (2)"));
        QCOMPARE(buildDshowDeviceSpec(camera.camera(), camera.microphone()),
                 QByteArray("video=USB Cam\\:1:audio=Mic (2)"));

        QCOMPARE(SourceAddress("lavfi://testsrc2%3Dsize%3D64x36").testGraph(),
                 QString("testsrc2=size=64x36"));
        QCOMPARE(SourceAddress("file:///tmp/a%20b.mp4").localPath(), QString("/tmp/a b.mp4"));
        QCOMPARE(SourceAddress(" /tmp/x.mp4 ").localPath(), QString("/tmp/x.mp4"));
        QVERIFY(SourceAddress("srt://h:9000").localPath().isEmpty());

        const SourceAddress stream("RTMPS://Host.example:443/app/key");
        QCOMPARE(stream.scheme(), QString("rtmps"));
        QCOMPARE(stream.host(), QString("host.example"));
        QVERIFY(stream.isTls() && stream.isRealTimeStream() && stream.isNetwork());
        QVERIFY(SourceAddress().isEmpty());
        QVERIFY(SourceAddress("   ").isEmpty());
    }

    void liveness()
    {
        QVERIFY(SourceAddress("RTMP://host/app").isLive(nullptr));
        QVERIFY(SourceAddress("udp://239.0.0.1:1234").isLive(nullptr));
        QVERIFY(SourceAddress("dshow://capture?video=Cam").isLive(nullptr));
        QVERIFY(SourceAddress("desktop://capture?monitor=0").isLive(nullptr));
        QVERIFY(!SourceAddress("/tmp/file.mp4").isLive(nullptr));
        QVERIFY(!SourceAddress("lavfi://testsrc2").isLive(nullptr));
        AVFormatContext *context = avformat_alloc_context();
        context->duration = AV_NOPTS_VALUE;
        QVERIFY(SourceAddress("http://host/stream").isLive(context));
        context->duration = 0;
        QVERIFY(SourceAddress("https://host/stream").isLive(context));
        context->duration = 5 * AV_TIME_BASE;
        QVERIFY(!SourceAddress("https://host/clip.mp4").isLive(context));
        QVERIFY(!SourceAddress("http://host/clip.mp4").isLive(nullptr));
        avformat_free_context(context);
    }

    void openOptionsPerKind()
    {
        // Files and devices get no network options; every network read can time out.
        QVERIFY(optionsFor("/tmp/a.mp4").isEmpty());
        QVERIFY(optionsFor("dshow://capture?video=Cam").isEmpty());
        QVERIFY(optionsFor("srt://host:9000").contains("rw_timeout"));
        QCOMPARE(optionsFor("rtsps://cam/stream").value("rtsp_transport"), QString("tcp"));
    }

    void proxiesApplyByScheme()
    {
        QSettings settings("Ostrel", "Selvane");
        settings.setValue("proxy_mode", "manual");
        settings.setValue("proxy_http_url", "http://127.0.0.1:3128");
        settings.setValue("proxy_socks_url", "socks5://127.0.0.1:1080");
        settings.sync();
        QCOMPARE(optionsFor("https://host/live.m3u8").value("http_proxy"),
                 QString("http://127.0.0.1:3128"));
        QCOMPARE(optionsFor("rtmps://host/app/key").value("socks_proxy"),
                 QString("socks5://127.0.0.1:1080"));
        QVERIFY(!optionsFor("rtmp://host/app/key").contains("socks_proxy"));
        QVERIFY(!optionsFor("rtmp://host/app/key").contains("http_proxy"));
        settings.setValue("proxy_mode", "off");
        settings.sync();
        QVERIFY(!optionsFor("https://host/live.m3u8").contains("http_proxy"));
        QVERIFY(!optionsFor("rtmps://host/app/key").contains("socks_proxy"));
    }

    void rotationFromMetadataAndDisplayMatrix()
    {
        AVFormatContext *context = avformat_alloc_context();
        AVStream *stream = avformat_new_stream(context, nullptr);
        QCOMPARE(uprightRotationDegrees(stream), 0);
        av_dict_set(&stream->metadata, "rotate", "-90", 0);
        QCOMPARE(uprightRotationDegrees(stream), 270);
        av_dict_set(&stream->metadata, "rotate", "180.0", 0);
        QCOMPARE(uprightRotationDegrees(stream), 180);
        avformat_free_context(context);
    }
};

int main(int argc, char *argv[])
{
    static testsupport::IsolatedHome home;
    qputenv("XDG_CONFIG_HOME", home.path("config").toUtf8());
    for (const char *name :
         {"http_proxy", "https_proxy", "HTTP_PROXY", "HTTPS_PROXY", "all_proxy", "ALL_PROXY"})
        qunsetenv(name);
    QCoreApplication app(argc, argv);
    TestSourceAddress test;
    return QTest::qExec(&test, argc, argv);
}

#include "test_sourceaddress.moc"
