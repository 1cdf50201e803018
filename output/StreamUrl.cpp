#include "output/StreamUrl.h"

#include "net/SecretMask.h"
#include "output/EncoderSettings.h"

extern "C" {
#include <libavformat/avformat.h>
}

#include <QDir>
#include <QFileInfo>
#include <QTemporaryFile>
#include <QUrl>
#include <filesystem>

namespace selvane {

namespace {
constexpr auto kYouTubeRtmpHost = "rtmp.youtube.com";
constexpr auto kYouTubeRtmpsIngest = "a.rtmps.youtube.com";
constexpr int kYouTubeRtmpsPort = 443;
} // namespace

QString maskStreamUrl(const QString &url)
{
    return maskUrl(url);
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

namespace {

bool isMuxer(const QString &name)
{
    return !name.isEmpty() && av_guess_format(name.toUtf8().constData(), nullptr, nullptr);
}

QString impliedFormat(const QString &url)
{
    const QString lower = url.trimmed().toLower();
    if (lower.endsWith(QLatin1String(".m3u8")) && !lower.contains(QLatin1String("://")))
        return QStringLiteral("hls");
    if (isRtmpFamilyUrl(lower))
        return QStringLiteral("flv");
    for (const char *scheme : {"srt://", "udp://", "rtp://", "http://", "https://"})
        if (lower.startsWith(QLatin1String(scheme)))
            return QStringLiteral("mpegts");
    return {};
}

} // namespace

StreamTarget parseStreamTarget(const QString &text)
{
    StreamTarget target;
    const QString value = text.trimmed();
    const qsizetype hash = value.lastIndexOf('#');
    const QString named = hash > 0 ? value.mid(hash + 1).trimmed() : QString();
    if (isMuxer(named)) {
        target.url = value.left(hash).trimmed();
        target.formatName = named;
    } else {
        target.url = value;
        target.formatName = impliedFormat(value);
    }
    return target;
}

OutputProblem recordingProblem(const QString &path)
{
    const QByteArray name = QFileInfo(path).fileName().toUtf8();
    if (QFileInfo(path).suffix().isEmpty() || !av_guess_format(nullptr, name.constData(), nullptr))
        return OutputProblem::UnknownContainer;
    const QFileInfo folder(QFileInfo(path).absolutePath());
    if (!folder.isDir())
        return OutputProblem::FolderMissing;
    // Permission bits do not tell (root, read-only mounts, /proc): a file is tried.
    QTemporaryFile probe(QDir(folder.absoluteFilePath()).filePath("selvane_check_XXXXXX.tmp"));
    if (!probe.open())
        return OutputProblem::FolderNotWritable;
    return OutputProblem::None;
}

bool isHlsTarget(const StreamTarget &target)
{
    return target.formatName.trimmed().toLower() == QLatin1String("hls");
}

OutputProblem streamTargetProblem(const StreamTarget &target)
{
    if (isHlsTarget(target)) {
        // A folder on this machine (made when missing) that any web server serves.
        const QString path = target.url.trimmed();
        if (path.isEmpty() || path.contains(QLatin1String("://")) ||
            !path.toLower().endsWith(QLatin1String(".m3u8")))
            return OutputProblem::BadTargetUrl;
        return OutputProblem::None;
    }
    const QUrl url(target.url, QUrl::StrictMode);
    // UDP, RTP and SRT listeners may leave the host out ("srt://:9000?mode=listener").
    if (!url.isValid() || url.scheme().isEmpty() || !target.url.contains("://") ||
        (url.host().isEmpty() && url.port() < 0))
        return OutputProblem::BadTargetUrl;
    if (!isMuxer(target.formatName))
        return OutputProblem::NoTargetContainer;
    return OutputProblem::None;
}

QString unusedRecordingPath(const QString &path)
{
    // Only a regular file is a take; a pipe or a device is written as asked.
    std::error_code error;
    const auto taken = [&](const QString &candidate) {
        return std::filesystem::exists(candidate.toStdString(), error);
    };
    if (!taken(path) || !std::filesystem::is_regular_file(path.toStdString(), error))
        return path;
    const QFileInfo chosen(path);
    const QString suffix = chosen.suffix().isEmpty() ? QString() : "." + chosen.suffix();
    for (int n = 1;; ++n) {
        const QString candidate = chosen.dir().filePath(
            QStringLiteral("%1_%2%3").arg(chosen.completeBaseName()).arg(n).arg(suffix));
        if (!taken(candidate))
            return candidate;
    }
}

} // namespace selvane
