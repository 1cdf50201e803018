#include "input/SourceAddress.h"

#include "net/ProxySettings.h"

#include <QDebug>
#include <QUrl>
#include <QUrlQuery>

extern "C" {
#include <libavformat/avformat.h>
#include <libavutil/dict.h>
}

namespace selvane {

namespace {

QString schemeOf(const QString &address)
{
    return QUrl(address, QUrl::TolerantMode).scheme().toLower();
}

bool startsWithAny(const QString &lower, std::initializer_list<const char *> prefixes)
{
    for (const char *prefix : prefixes)
        if (lower.startsWith(QLatin1String(prefix)))
            return true;
    return false;
}

} // namespace

SourceKind classifySource(const QString &address)
{
    const QString scheme = schemeOf(address);
    if (scheme == "wgc")
        return SourceKind::WindowCapture;
    if (scheme == "desktop")
        return SourceKind::DisplayCapture;
    QString video;
    if (address.startsWith("dshow://", Qt::CaseInsensitive) &&
        parseDshowAddress(address, &video, nullptr) && !video.isEmpty())
        return SourceKind::CaptureDevice;
    if (address.startsWith("lavfi://", Qt::CaseInsensitive))
        return SourceKind::TestSignal;
    if (address.contains("://") && !address.startsWith("file:", Qt::CaseInsensitive))
        return SourceKind::NetworkStream;
    return SourceKind::LocalFile;
}

bool isLiveSource(const QString &address, const AVFormatContext *openedFormat)
{
    const QString lower = address.toLower();
    if (startsWithAny(lower, {"dshow://", "rtmp://", "rtmps://", "rtmpt://", "rtsp://", "rtsps://",
                              "rtp:", "udp:", "srtp:"}))
        return true;
    // A generator runs as fast as it is read: it is paced against the clock like a file.
    if (lower.startsWith("lavfi://"))
        return false;
    if (address.contains("://") && openedFormat)
        return openedFormat->duration <= 0 || openedFormat->duration == AV_NOPTS_VALUE;
    return false;
}

bool isSegmentedStream(const AVFormatContext *openedFormat)
{
    if (!openedFormat || !openedFormat->iformat || !openedFormat->iformat->name)
        return false;
    const QByteArray name(openedFormat->iformat->name);
    return name == "hls" || name == "dash";
}

bool usesHttpProxy(const QString &address)
{
    return startsWithAny(address.trimmed().toLower(), {"http://", "https://", "rtmpt://"});
}

bool isTcpCarriedUrl(const QString &address)
{
    return startsWithAny(address.trimmed().toLower(),
                         {"rtmpt://", "rtmp://", "rtmpe://", "rtsp://", "tcp://"});
}

bool parseDshowAddress(const QString &address, QString *video, QString *audio)
{
    const QUrl url(address, QUrl::TolerantMode);
    if (url.scheme().compare("dshow", Qt::CaseInsensitive) != 0)
        return false;
    const QUrlQuery query(url);
    const QString v = query.queryItemValue("video", QUrl::FullyDecoded);
    const QString a = query.queryItemValue("audio", QUrl::FullyDecoded);
    if (video)
        *video = v;
    if (audio)
        *audio = a;
    return !v.isEmpty() || !a.isEmpty();
}

QString escapeDshowDeviceName(const QString &name)
{
    QString escaped = name;
    escaped.replace("\\", "\\\\");
    escaped.replace(":", "\\:");
    return escaped;
}

QByteArray buildDshowDeviceSpec(const QString &video, const QString &audio)
{
    const QString v = escapeDshowDeviceName(video).trimmed();
    const QString a = escapeDshowDeviceName(audio).trimmed();
    if (!v.isEmpty() && !a.isEmpty())
        return QStringLiteral("video=%1:audio=%2").arg(v, a).toUtf8();
    if (!v.isEmpty())
        return QStringLiteral("video=%1").arg(v).toUtf8();
    if (!a.isEmpty())
        return QStringLiteral("audio=%1").arg(a).toUtf8();
    return {};
}

void buildInputOptions(const QString &address, AVDictionary **dictionary, bool skipProxies)
{
    if (!address.contains("://") || address.startsWith("dshow://", Qt::CaseInsensitive))
        return;
    const QString lower = address.toLower();
    // A real-time stream silent this long is lost and opened again; a segmented one (HLS,
    // DASH) may take longer over a slow link.
    const bool realTime = startsWithAny(lower, {"rtmp://", "rtmps://", "rtmpt://", "rtsp://",
                                                "rtsps://", "srt://", "udp://", "rtp://"});
    const char *timeout = realTime ? "5000000" : "30000000";
    av_dict_set(dictionary, "rw_timeout", timeout, 0);
    av_dict_set(dictionary, "stimeout", timeout, 0);
    if (skipProxies) {
        av_dict_set(dictionary, "rtsp_transport", "tcp", 0);
    } else {
        const QString host = QUrl(address.trimmed()).host();
        if (usesHttpProxy(address)) {
            const proxy::Server http =
                proxy::httpProxyFor(host, lower.trimmed().startsWith("https://"), false);
            if (http.isValid()) {
                av_dict_set(dictionary, "http_proxy", http.url().toUtf8().constData(), 0);
                qInfo().noquote() << "FFmpegVideoDecoder: http_proxy for HTTP(S) input"
                                  << http.endpoint();
            }
        }
        // For the record: the connection itself goes through the local relay (input/MediaOpen).
        if (lower.startsWith("rtmps://") || lower.startsWith("rtsps://")) {
            const proxy::Server socks = proxy::socksProxyFor(host, false);
            if (socks.isValid())
                av_dict_set(dictionary, "socks_proxy",
                            ("socks5://" + socks.endpoint()).toUtf8().constData(), 0);
        }
    }
    if (startsWithAny(lower, {"rtmp://", "rtmps://", "rtmpt://"})) {
        av_dict_set(dictionary, "rtmp_live", "live", 0);
        av_dict_set(dictionary, "buffer_size", "2097152", 0);
    }
    if (lower.startsWith("rtsp://") || lower.startsWith("rtsps://"))
        av_dict_set(dictionary, "rtsp_transport", "tcp", 0);
}

int parseMonitorIndex(const QString &value)
{
    bool ok = false;
    const int index = value.toInt(&ok, 10);
    return ok && index >= 0 ? index : 0;
}

bool parseWgcFlag(const QString &value)
{
    return value == "1" || value.compare("true", Qt::CaseInsensitive) == 0;
}

std::optional<quint64> parseWindowHandle(const QString &value)
{
    bool ok = false;
    quint64 handle = 0;
    if (value.startsWith("0x", Qt::CaseInsensitive))
        handle = value.mid(2).toULongLong(&ok, 16);
    else
        handle = value.toULongLong(&ok, 10);
    if (!ok)
        return std::nullopt;
    return handle;
}

QString testSignalGraph(const QString &address)
{
    const qsizetype start = address.indexOf("://");
    if (start < 0)
        return {};
    return QUrl::fromPercentEncoding(address.mid(start + 3).toUtf8());
}

} // namespace selvane
