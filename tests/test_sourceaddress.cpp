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
    buildInputOptions(address, dict.address(), false);
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
    }

    void kindsInTheirOrder()
    {
        QFETCH(QString, address);
        QFETCH(int, kind);
        QCOMPARE(int(classifySource(address)), kind);
    }

    void liveness()
    {
        QVERIFY(isLiveSource("RTMP://host/app", nullptr));
        QVERIFY(isLiveSource("udp://239.0.0.1:1234", nullptr));
        QVERIFY(isLiveSource("dshow://capture?video=Cam", nullptr));
        QVERIFY(!isLiveSource("/tmp/file.mp4", nullptr));
        QVERIFY(!isLiveSource("lavfi://testsrc2", nullptr));
        AVFormatContext *context = avformat_alloc_context();
        context->duration = AV_NOPTS_VALUE;
        QVERIFY(isLiveSource("http://host/stream", context));
        context->duration = 0;
        QVERIFY(isLiveSource("https://host/stream", context));
        context->duration = 5 * AV_TIME_BASE;
        QVERIFY(!isLiveSource("https://host/clip.mp4", context));
        QVERIFY(!isLiveSource("http://host/clip.mp4", nullptr));
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
