#include "schedule/ProgramArrangement.h"

#include "media/TransitionWords.h"

#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>
#include <QHash>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QSet>
#include <algorithm>
#include <cctype>

namespace arrangement {

namespace {

QString tr(const char *text)
{
    return QCoreApplication::translate("arrangement", text);
}

const char *sceneKindName(int kind)
{
    switch (kind) {
    case SceneClip::ImagePlay:
        return "imagePlay";
    case SceneClip::SceneVideo:
        return "sceneVideo";
    default:
        return "channel";
    }
}

const char *overlayKindName(int kind)
{
    switch (kind) {
    case OverlayClip::Text:
        return "text";
    case OverlayClip::Video:
        return "video";
    default:
        return "image";
    }
}

// "video" and "text" decide; any other word of four or five letters means an image; anything
// else leaves the decision open (-1).
int overlayKindFromWord(const QString &word)
{
    if (word == "video")
        return OverlayClip::Video;
    if (word == "text")
        return OverlayClip::Text;
    if (word.size() == 4 || word.size() == 5)
        return OverlayClip::Image;
    return -1;
}

qint64 readMs(const QJsonObject &object, const char *key)
{
    return qint64(object.value(key).toDouble(0.0)); // written as doubles, read back truncated
}

SceneClip readSceneClip(const QJsonObject &o, QStringList *warnings)
{
    SceneClip clip;
    clip.id = o.value("id").toString();
    clip.startMs = readMs(o, "startMs");
    clip.endMs = readMs(o, "endMs");
    const QString kind = o.value("kind").toString();
    clip.kind = kind == "imagePlay" || kind == "imageSequence" ? SceneClip::ImagePlay
                : kind == "sceneVideo"                         ? SceneClip::SceneVideo
                                                               : SceneClip::Channel;
    // The file counts channels from 0; the operator sees them as 1 to 4.
    const int fileChannel = o.value("channel").toInt(0);
    clip.channel = std::clamp(fileChannel, 0, 3);
    if (clip.kind == SceneClip::Channel && clip.channel != fileChannel && warnings)
        *warnings << tr("Base clip %1: channel %2 does not exist; channel %3 plays instead.")
                         .arg(clip.id)
                         .arg(fileChannel + 1)
                         .arg(clip.channel + 1);
    clip.paths = o.value("paths").toString().split('|', Qt::SkipEmptyParts);
    clip.intervalMs = o.value("intervalMs").toInt(2000);
    clip.imageLoop = o.value("imageLoop").toBool(true);
    clip.sceneVideoPath = o.value("sceneVideoPath").toString();
    clip.sceneVideoLoop = o.value("sceneVideoLoop").toBool(false);
    clip.imageDirectory = o.value("imageDirectory").toString();
    if (clip.kind == SceneClip::ImagePlay && clip.paths.isEmpty() && !clip.imageDirectory.isEmpty())
        clip.paths = imagesInDirectory(clip.imageDirectory);
    if (o.value("transition").isObject()) {
        QString error;
        clip.transition =
            selvane::transitions::fromJson(o.value("transition").toObject(), {}, &error);
        if (!clip.transition && warnings)
            *warnings << tr("Base clip %1: %2; it cuts instead.").arg(clip.id, error);
        if (!clip.transition)
            clip.transition = selvane::Transition{};
    }
    return clip;
}

OverlayClip readOverlayClip(const QJsonObject &o, int version)
{
    OverlayClip clip;
    clip.textData.fontFamily = "Arial";
    clip.textData.fontPointSize = 28;
    clip.opacity = 1.0;
    clip.id = o.value("id").toString();
    clip.startMs = readMs(o, "startMs");
    clip.endMs = readMs(o, "endMs");
    clip.path = o.value("path").toString();
    clip.imageDirectory = o.value("imageDirectory").toString();
    int kind = overlayKindFromWord(o.value("mediaType").toString());
    if (kind < 0)
        kind = overlayKindFromWord(o.value("overlayKind").toString());
    clip.kind = kind < 0 ? OverlayClip::Image : kind;
    clip.x = o.value("x").toDouble(0.0);
    clip.y = o.value("y").toDouble(0.0);
    if (version >= 3) {
        clip.w = o.value("w").toDouble(0.5);
        clip.h = o.value("h").toDouble(0.5);
    } else {
        // Older files kept pixels of the 1920x1080 canvas, with a 320x180 box by default.
        clip.w = o.value("w").toDouble(320.0) / kCanvasWidth;
        clip.h = o.value("h").toDouble(180.0) / kCanvasHeight;
        clip.x /= kCanvasWidth;
        clip.y /= kCanvasHeight;
    }
    clip.opacity = o.value("opacity").toDouble(1.0);
    if (o.value("textData").isObject())
        clip.textData = TextOverlayData::fromJson(o.value("textData").toObject(), version);
    if (clip.kind == OverlayClip::Text && clip.textData.text.isEmpty())
        clip.textData.text = o.value("overlayText").toString(QString::fromUtf8("字幕"));
    return clip;
}

// What the reader expected where it stopped, in the operator's words.
QString expectedText(QJsonParseError::ParseError error)
{
    switch (error) {
    case QJsonParseError::UnterminatedObject:
        return tr("an object is not closed: expected \",\" or \"}\"");
    case QJsonParseError::MissingNameSeparator:
        return tr("expected \":\" after a key");
    case QJsonParseError::UnterminatedArray:
        return tr("a list is not closed: expected \",\" or \"]\"");
    case QJsonParseError::MissingValueSeparator:
        return tr("expected \",\" between two values");
    case QJsonParseError::IllegalValue:
        return tr("expected a value: a string, a number, an object, a list, true, false or null");
    case QJsonParseError::TerminationByNumber:
        return tr("the text ends in the middle of a number");
    case QJsonParseError::IllegalNumber:
        return tr("a number that cannot be read");
    case QJsonParseError::IllegalEscapeSequence:
        return tr("an escape sequence JSON does not have");
    case QJsonParseError::IllegalUTF8String:
        return tr("text that is not UTF-8");
    case QJsonParseError::UnterminatedString:
        return tr("a string is not closed: expected \"");
    case QJsonParseError::MissingObject:
        return tr("expected an object ({...}) at the top");
    case QJsonParseError::DeepNesting:
        return tr("objects and lists nested too deep");
    case QJsonParseError::DocumentTooLarge:
        return tr("the document is too large");
    case QJsonParseError::GarbageAtEnd:
        return tr("more text after the end of the document");
    default:
        return tr("not JSON");
    }
}

} // namespace

QString parseErrorText(const QByteArray &bytes, const QJsonParseError &error)
{
    if (bytes.trimmed().isEmpty())
        return tr("the file is empty: expected a schedule document ({...})");
    // Line and column (in characters) of the byte offset where the reader stopped.
    const qsizetype at = std::clamp<qsizetype>(error.offset, 0, bytes.size());
    const qsizetype lineStart = bytes.lastIndexOf('\n', at - 1) + 1;
    const qsizetype line = bytes.left(at).count('\n') + 1;
    const qsizetype column = QString::fromUtf8(bytes.mid(lineStart, at - lineStart)).size() + 1;
    QString text =
        tr("line %1, column %2: %3").arg(line).arg(column).arg(expectedText(error.error));
    qsizetype end = bytes.size(); // past the last character that is not white space
    while (end > 0 && std::isspace(uchar(bytes[end - 1])))
        --end;
    if (at >= end && error.error != QJsonParseError::GarbageAtEnd)
        text += tr(" (the text ends there: is the file cut short?)");
    return text;
}

QStringList unsourcedChannelWarnings(const ProgramArrangement &a,
                                     const std::array<bool, 4> &hasSource)
{
    QStringList warnings;
    for (const SceneClip &c : a.sceneClips)
        if (c.kind == SceneClip::Channel && !hasSource[std::size_t(std::clamp(c.channel, 0, 3))])
            warnings << tr("Base clip %1 shows channel %2, which has no source.")
                            .arg(c.id)
                            .arg(c.channel + 1);
    return warnings;
}

QStringList imagesInDirectory(const QString &directory)
{
    QStringList paths;
    const QDir dir(directory);
    for (const QString &name :
         dir.entryList({"*.png", "*.jpg", "*.jpeg", "*.bmp", "*.webp"}, QDir::Files, QDir::Name))
        paths << dir.filePath(name);
    return paths;
}

QByteArray toJson(const ProgramArrangement &a)
{
    QJsonObject root;
    root.insert("format", QString::fromLatin1(kFormatMarker));
    root.insert("version", kCurrentVersion);
    root.insert("coordinateSystem", "normalized");
    root.insert("canvas", QJsonObject{{"width", kCanvasWidth}, {"height", kCanvasHeight}});
    QJsonArray scenes;
    for (const SceneClip &c : a.sceneClips) {
        QJsonObject o;
        o.insert("id", c.id);
        o.insert("startMs", double(c.startMs));
        o.insert("endMs", double(c.endMs));
        o.insert("kind", sceneKindName(c.kind));
        o.insert("channel", c.channel);
        o.insert("paths", c.paths.join('|'));
        o.insert("intervalMs", c.intervalMs);
        o.insert("imageLoop", c.imageLoop);
        o.insert("sceneVideoPath", c.sceneVideoPath);
        o.insert("sceneVideoLoop", c.sceneVideoLoop);
        o.insert("imageDirectory", c.imageDirectory);
        if (c.transition)
            o.insert("transition", selvane::transitions::toJson(*c.transition));
        scenes.append(o);
    }
    root.insert("sceneClips", scenes);
    if (!a.timelineZero.isEmpty())
        root.insert("timelineZero", a.timelineZero);
    QJsonArray overlays;
    for (const OverlayClip &c : a.overlayClips) {
        QJsonObject o;
        o.insert("id", c.id);
        o.insert("startMs", double(c.startMs));
        o.insert("endMs", double(c.endMs));
        o.insert("path", c.path);
        o.insert("imageDirectory", c.imageDirectory);
        o.insert("overlayKind", overlayKindName(c.kind));
        o.insert("mediaType", overlayKindName(c.kind));
        o.insert("x", c.x);
        o.insert("y", c.y);
        o.insert("w", c.w);
        o.insert("h", c.h);
        o.insert("opacity", c.opacity);
        if (c.kind == OverlayClip::Text)
            o.insert("textData", c.textData.toJson());
        overlays.append(o);
    }
    root.insert("overlayClips", overlays);
    if (!a.failover.isEmpty())
        root.insert("failover", a.failover);
    if (!a.outputs.isEmpty()) {
        QJsonArray spans;
        for (const OutputSpan &span : a.outputs) {
            QJsonObject o{{"startMs", double(span.startMs)}};
            if (span.endMs > 0)
                o.insert("endMs", double(span.endMs));
            spans.append(o);
        }
        root.insert("outputs", spans);
    }
    return QJsonDocument(root).toJson(QJsonDocument::Indented);
}

ProgramArrangement fromJson(const QByteArray &bytes, QString *error, QStringList *warnings)
{
    QJsonParseError parse{};
    const QJsonDocument document = QJsonDocument::fromJson(bytes, &parse);
    if (parse.error != QJsonParseError::NoError || !document.isObject()) {
        if (error)
            *error = parse.error != QJsonParseError::NoError
                         ? parseErrorText(bytes, parse)
                         : tr("line 1, column 1: expected an object ({...}) at the top");
        return {};
    }
    const QJsonObject root = document.object();
    if (root.value("format").toString() != QLatin1String(kFormatMarker)) {
        if (error)
            *error = tr("not a Selvane schedule file (its \"format\" is not \"%1\")")
                         .arg(QLatin1String(kFormatMarker));
        return {};
    }
    ProgramArrangement result;
    const int version = root.value("version").toInt(1);
    result.version = kCurrentVersion; // what this system writes; the file's version drove reading
    result.timelineZero = root.value("timelineZero").toString();
    for (const QJsonValue &value : root.value("sceneClips").toArray())
        if (value.isObject())
            result.sceneClips << readSceneClip(value.toObject(), warnings);
    for (const QJsonValue &value : root.value("overlayClips").toArray())
        if (value.isObject())
            result.overlayClips << readOverlayClip(value.toObject(), version);
    result.failover = root.value("failover").toObject();
    // Readers that know nothing of "outputs" run the rest of the file as it is. A time that is
    // not a number is kept as -1 for the check to name.
    for (const QJsonValue &value : root.value("outputs").toArray()) {
        const QJsonObject o = value.toObject();
        const QJsonValue start = o.value("startMs"), end = o.value("endMs");
        result.outputs << OutputSpan{
            start.isDouble() ? qint64(start.toDouble()) : -1,
            end.isUndefined() || end.isNull() ? 0 : (end.isDouble() ? qint64(end.toDouble()) : -1)};
    }
    return result;
}

Validation validate(const ProgramArrangement &a)
{
    const auto invalid = [](const QString &message) {
        return Validation{false, tr("Invalid Schedule"), message};
    };
    const auto missing = [](const QString &message) {
        return Validation{false, tr("Missing Media"), message};
    };
    // Linear in the number of clips: IDs in a set, each file looked at once.
    QSet<QString> seen;
    QHash<QString, bool> exists;
    const auto fileExists = [&](const QString &path) {
        auto it = exists.find(path);
        if (it == exists.end())
            it = exists.insert(path, QFileInfo::exists(path));
        return it.value();
    };
    QHash<QString, bool> isDir;
    const auto dirExists = [&](const QString &path) {
        auto it = isDir.find(path);
        if (it == isDir.end())
            it = isDir.insert(path, QFileInfo(path).isDir());
        return it.value();
    };
    for (const SceneClip &c : a.sceneClips) {
        if (c.id.isEmpty())
            return invalid(tr("Every base clip needs an ID."));
        if (seen.contains(c.id))
            return invalid(tr("Duplicate base clip ID: %1").arg(c.id));
        seen.insert(c.id);
        if (c.endMs != 0 && c.endMs <= c.startMs)
            return invalid(tr("End time must be later than start time."));
        if (c.kind == SceneClip::ImagePlay && c.imageDirectory.isEmpty())
            return invalid(tr("Select an image directory."));
        if (c.kind == SceneClip::SceneVideo && c.sceneVideoPath.isEmpty())
            return invalid(tr("Select a video for the channel."));
        if (c.kind == SceneClip::SceneVideo && !fileExists(c.sceneVideoPath))
            return missing(tr("Base video was not found: %1").arg(c.sceneVideoPath));
        if (c.kind == SceneClip::ImagePlay && !c.imageDirectory.isEmpty() &&
            !dirExists(c.imageDirectory))
            return missing(tr("Image directory was not found: %1").arg(c.imageDirectory));
    }
    seen.clear();
    for (const OverlayClip &c : a.overlayClips) {
        if (c.id.isEmpty())
            return invalid(tr("Every overlay clip needs an ID."));
        if (seen.contains(c.id))
            return invalid(tr("Duplicate overlay clip ID: %1").arg(c.id));
        seen.insert(c.id);
        if (c.endMs != 0 && c.endMs <= c.startMs)
            return invalid(tr("End time must be later than start time."));
        if (c.kind == OverlayClip::Text && c.textData.text.isEmpty())
            return invalid(tr("Overlay text cannot be empty."));
        if (c.kind == OverlayClip::Text && c.textData.text.size() > TextOverlayData::kMaxTextLength)
            return invalid(tr("Overlay clip %1: its text has %2 characters; a text holds at most "
                              "%3.")
                               .arg(c.id)
                               .arg(c.textData.text.size())
                               .arg(TextOverlayData::kMaxTextLength));
        if (c.kind == OverlayClip::Image && c.path.isEmpty())
            return invalid(tr("Select an overlay image file."));
        if (c.kind == OverlayClip::Image && !fileExists(c.path))
            return missing(tr("Overlay image was not found: %1").arg(c.path));
        if (c.kind == OverlayClip::Video && c.path.isEmpty())
            return invalid(tr("Select an overlay video."));
        if (c.kind == OverlayClip::Video && !fileExists(c.path))
            return missing(tr("Overlay video was not found: %1").arg(c.path));
    }
    if (a.sceneClips.isEmpty())
        return invalid(tr("Add at least one valid base clip."));
    qint64 freeFrom = 0; // where the outputs' last stretch ended
    for (qsizetype i = 0; i < a.outputs.size(); ++i) {
        const OutputSpan &span = a.outputs[i];
        if (span.startMs < 0 || span.endMs < 0)
            return invalid(tr("Outputs entry %1: \"startMs\" and \"endMs\" are milliseconds "
                              "of 0 or more.")
                               .arg(i + 1));
        if (span.endMs != 0 && span.endMs <= span.startMs)
            return invalid(tr("Outputs entry %1: it must stop after it starts.").arg(i + 1));
        if (i > 0 && (span.startMs < freeFrom || a.outputs[i - 1].endMs == 0))
            return invalid(tr("Outputs entry %1 starts before entry %2 has stopped: the outputs "
                              "run one stretch at a time, in order.")
                               .arg(i + 1)
                               .arg(i));
        freeFrom = span.endMs;
    }
    return {};
}

} // namespace arrangement
