#include "output/StreamUrl.h"

#include <QUrl>

namespace selvane {

namespace {
constexpr auto kYouTubeRtmpHost = "rtmp.youtube.com";
constexpr auto kYouTubeRtmpsIngest = "a.rtmps.youtube.com";
constexpr int kYouTubeRtmpsPort = 443;
} // namespace

QString maskStreamUrl(const QString &url)
{
    const QString lower = url.toLower();
    bool maskable = false;
    for (const char *prefix : {"rtmp://", "rtmps://", "rtmpt://", "http://", "https://"})
        maskable = maskable || lower.startsWith(QLatin1String(prefix));
    if (!maskable)
        return url;
    const qsizetype afterScheme = url.indexOf("://") + 3;
    const qsizetype lastSlash = url.lastIndexOf('/');
    if (lastSlash < afterScheme)
        return url;
    return url.left(lastSlash + 1) + "***";
}

QString rewriteYouTubeRtmp(const QString &url, bool *rewritten)
{
    if (rewritten)
        *rewritten = false;
    if (!url.toLower().startsWith("rtmp://"))
        return url;
    QUrl parsed(url);
    const QString host = parsed.host().toLower();
    if (host != kYouTubeRtmpHost && !host.endsWith(QStringLiteral(".") + kYouTubeRtmpHost))
        return url;
    parsed.setScheme("rtmps");
    parsed.setHost(kYouTubeRtmpsIngest);
    parsed.setPort(kYouTubeRtmpsPort);
    if (rewritten)
        *rewritten = true;
    return parsed.toString();
}

bool isRtmpFamilyUrl(const QString &url)
{
    const QString lower = url.trimmed().toLower();
    for (const char *prefix : {"rtmp://", "rtmps://", "rtmpt://", "rtmpe://"})
        if (lower.startsWith(QLatin1String(prefix)))
            return true;
    return false;
}

bool isFlvTarget(const QString &url, const QString &formatName)
{
    const QString name = formatName.trimmed().toLower();
    return name == "flv" || name == "live_flv" || isRtmpFamilyUrl(url);
}

QString streamContainerName(const QString &url, const QString &formatName)
{
    if (isFlvTarget(url, formatName))
        return "flv";
    const QString name = formatName.trimmed().toLower();
    if (name == "mpegts" || name == "m2ts")
        return "mpegts";
    return name;
}

} // namespace selvane
