#include "input/SourceAddress.h"

#include "net/ProxySettings.h"

#include <QDebug>
#include <QUrl>
#include <QUrlQuery>
#include <optional>

extern "C" {
#include <libavformat/avformat.h>
#include <libavutil/dict.h>
}

namespace selvane {

namespace {

bool startsWithAny(const QString &lower, std::initializer_list<const char *> prefixes)
{
    for (const char *prefix : prefixes)
        if (lower.startsWith(QLatin1String(prefix)))
            return true;
    return false;
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

} // namespace

SourceAddress::SourceAddress(const QString &text) : m_text(text.trimmed())
{
    if (m_text.isEmpty())
        return;
    const QUrl url(m_text, QUrl::TolerantMode);
    const QUrlQuery query(url);
    m_host = url.host();
    if (m_text.contains("://"))
        m_scheme = m_text.section("://", 0, 0).toLower();
    else if (m_text.startsWith("file:", Qt::CaseInsensitive))
        m_scheme = "file";

    if (m_scheme == "dshow") {
        m_camera = query.queryItemValue("video", QUrl::FullyDecoded);
        m_microphone = query.queryItemValue("audio", QUrl::FullyDecoded);
    }
    if (m_scheme == "wgc") {
        m_kind = SourceKind::WindowCapture;
        m_window = parseWindowHandle(query.queryItemValue("hwnd")).value_or(0);
    } else if (m_scheme == "desktop") {
        m_kind = SourceKind::DisplayCapture;
        bool ok = false;
        const int index = query.queryItemValue("monitor").toInt(&ok, 10);
        m_monitor = ok && index >= 0 ? index : 0;
        const QString wgc = query.queryItemValue("wgc");
        m_systemCapture = wgc == "1" || wgc.compare("true", Qt::CaseInsensitive) == 0;
    } else if (m_scheme == "dshow" && !m_camera.isEmpty()) {
        m_kind = SourceKind::CaptureDevice;
    } else if (m_scheme == "lavfi") {
        m_kind = SourceKind::TestSignal;
        m_testGraph = QUrl::fromPercentEncoding(m_text.mid(m_text.indexOf("://") + 3).toUtf8());
    } else if (m_text.contains("://") && m_scheme != "file") {
        m_kind = SourceKind::NetworkStream;
    }
    if (isScreenCapture())
        m_drawCursor = query.queryItemValue("cursor") != "0";
}

QString SourceAddress::localPath() const
{
    if (m_kind != SourceKind::LocalFile)
        return {};
    return m_text.startsWith("file:", Qt::CaseInsensitive) ? QUrl(m_text).toLocalFile() : m_text;
}

bool SourceAddress::isLive(const AVFormatContext *openedFormat) const
{
    if (m_kind == SourceKind::CaptureDevice || isScreenCapture())
        return true;
    const QString lower = m_text.toLower();
    if (startsWithAny(lower, {"dshow://", "rtmp://", "rtmps://", "rtmpt://", "rtsp://", "rtsps://",
                              "rtp:", "udp:", "srtp:"}))
        return true;
    // A generator runs as fast as it is read: it is paced against the clock like a file.
    if (m_kind == SourceKind::TestSignal)
        return false;
    if (m_text.contains("://") && openedFormat)
        return openedFormat->duration <= 0 || openedFormat->duration == AV_NOPTS_VALUE;
    return false;
}

bool SourceAddress::isRealTimeStream() const
{
    return startsWithAny(m_text.toLower(), {"rtmp://", "rtmps://", "rtmpt://", "rtsp://",
                                            "rtsps://", "srt://", "udp://", "rtp://"});
}

bool SourceAddress::usesHttpProxy() const
{
    return startsWithAny(m_text.toLower(), {"http://", "https://", "rtmpt://"});
}

bool SourceAddress::isTls() const
{
    return m_scheme == "rtmps" || m_scheme == "rtsps";
}

bool isSegmentedStream(const AVFormatContext *openedFormat)
{
    if (!openedFormat || !openedFormat->iformat || !openedFormat->iformat->name)
        return false;
    const QByteArray name(openedFormat->iformat->name);
    return name == "hls" || name == "dash";
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

void buildInputOptions(const SourceAddress &address, AVDictionary **dictionary, bool skipProxies)
{
    if (!address.text().contains("://") || address.scheme() == "dshow")
        return;
    const QString lower = address.text().toLower();
    // A real-time stream silent this long is lost and opened again; a segmented one (HLS,
    // DASH) may take longer over a slow link.
    const char *timeout = address.isRealTimeStream() ? "5000000" : "30000000";
    av_dict_set(dictionary, "rw_timeout", timeout, 0);
    av_dict_set(dictionary, "stimeout", timeout, 0);
    if (skipProxies) {
        av_dict_set(dictionary, "rtsp_transport", "tcp", 0);
    } else {
        if (address.usesHttpProxy()) {
            const proxy::Server http =
                proxy::httpProxyFor(address.host(), address.scheme() == "https", false);
            if (http.isValid()) {
                av_dict_set(dictionary, "http_proxy", http.url().toUtf8().constData(), 0);
                qInfo().noquote() << "FFmpegVideoDecoder: http_proxy for HTTP(S) input"
                                  << http.endpoint();
            }
        }
        // For the record: the connection itself goes through the local relay (input/MediaOpen).
        if (address.isTls()) {
            const proxy::Server socks = proxy::socksProxyFor(address.host(), false);
            if (socks.isValid())
                av_dict_set(dictionary, "socks_proxy",
                            ("socks5://" + socks.endpoint()).toUtf8().constData(), 0);
        }
    }
    if (startsWithAny(lower, {"rtmp://", "rtmps://", "rtmpt://"})) {
        av_dict_set(dictionary, "rtmp_live", "live", 0);
        av_dict_set(dictionary, "buffer_size", "2097152", 0);
    }
    if (address.scheme() == "rtsp" || address.scheme() == "rtsps")
        av_dict_set(dictionary, "rtsp_transport", "tcp", 0);
}

} // namespace selvane
