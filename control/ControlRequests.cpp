#include "control/ControlRequests.h"

#include "control/RequestFields.h"
#include "engine/Engine.h"
#include "engine/OutputRules.h"

#include <QColor>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QJsonParseError>
#include <cmath>
#include <utility>

namespace selvane::control {

namespace {

constexpr qsizetype kMaxMethodBytes = 16;
constexpr qsizetype kMaxTargetBytes = 8 * 1024;
constexpr int kMaxHeaders = 100;

Refusal refuse(int status, const QString &message, const QByteArray &allow = {})
{
    return {status, message, allow};
}

bool isUpper(char c)
{
    return c >= 'A' && c <= 'Z';
}

bool isVisible(char c)
{
    return c > 0x20 && c < 0x7f;
}

bool isTokenChar(char c)
{
    static constexpr std::string_view extra = "!#$%&'*+-.^_`|~";
    return (c >= '0' && c <= '9') || (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') ||
           extra.find(c) != std::string_view::npos;
}

QByteArrayView trimmed(QByteArrayView text)
{
    while (!text.isEmpty() && (text.front() == ' ' || text.front() == '\t'))
        text = text.sliced(1);
    while (!text.isEmpty() && (text.back() == ' ' || text.back() == '\t'))
        text.chop(1);
    return text;
}

bool equalsNoCase(QByteArrayView a, QByteArrayView b)
{
    return a.compare(b, Qt::CaseInsensitive) == 0;
}

// The request line, whole or (while it arrives) in part: METHOD SP TARGET SP HTTP/1.x.
Refusal checkRequestLine(QByteArrayView line, bool complete, RequestHead *head)
{
    const Refusal notHttp = refuse(400, QStringLiteral("not an HTTP/1.x request"));
    qsizetype i = 0;
    while (i < line.size() && isUpper(line[i]))
        ++i;
    if (i > kMaxMethodBytes)
        return notHttp;
    if (i == line.size())
        return complete ? notHttp : Refusal{};
    if (line[i] != ' ' || i == 0)
        return notHttp;
    const qsizetype methodEnd = i++;
    const qsizetype targetStart = i;
    while (i < line.size() && isVisible(line[i]))
        ++i;
    if (i - targetStart > kMaxTargetBytes)
        return refuse(414, QStringLiteral("the request target is too long"));
    if (i == line.size())
        return complete ? notHttp : Refusal{};
    if (line[i] != ' ' || i == targetStart || line[targetStart] != '/')
        return notHttp;
    const qsizetype targetEnd = i++;
    const QByteArrayView version = line.sliced(i);
    static constexpr QByteArrayView http11("HTTP/1.1");
    static constexpr QByteArrayView http10("HTTP/1.0");
    if (!complete) {
        const auto prefixOf = [&](QByteArrayView whole) {
            return version.size() <= whole.size() && whole.first(version.size()) == version;
        };
        return prefixOf(http11) || prefixOf(http10) ? Refusal{} : notHttp;
    }
    if (version != http11 && version != http10)
        return notHttp;
    head->method = line.first(methodEnd).toByteArray();
    QByteArrayView target = line.sliced(targetStart, targetEnd - targetStart);
    const qsizetype query = target.indexOf('?');
    if (query >= 0)
        target = target.first(query);
    const qsizetype fragment = target.indexOf('#');
    if (fragment >= 0)
        target = target.first(fragment);
    head->path = target.toByteArray();
    return {};
}

Refusal readHeaders(QByteArrayView block, RequestHead *head)
{
    bool haveLength = false;
    qsizetype start = 0;
    while (start < block.size()) {
        qsizetype end = block.indexOf("\r\n", start);
        if (end < 0)
            end = block.size();
        const QByteArrayView line = block.sliced(start, end - start);
        start = end + 2;
        if (line.isEmpty())
            continue;
        if (head->headers.size() >= kMaxHeaders)
            return refuse(431, QStringLiteral("too many headers"));
        const qsizetype colon = line.indexOf(':');
        if (colon <= 0)
            return refuse(400, QStringLiteral("a header line without a name"));
        const QByteArrayView name = line.first(colon);
        for (char c : name)
            if (!isTokenChar(c))
                return refuse(400,
                              QStringLiteral("a header name with a character it may not have"));
        const QByteArrayView value = trimmed(line.sliced(colon + 1));
        for (char c : value)
            if (c == '\r' || c == '\n' || c == '\0')
                return refuse(400, QStringLiteral("a header value with a line break"));
        head->headers.append({name.toByteArray().toLower(), value.toByteArray()});
        if (equalsNoCase(name, "content-length")) {
            bool ok = value.size() <= 18 && !value.isEmpty();
            for (char c : value)
                ok = ok && c >= '0' && c <= '9';
            const qint64 length = ok ? value.toLongLong(&ok) : -1;
            if (!ok || (haveLength && length != head->contentLength))
                return refuse(400, QStringLiteral("Content-Length is not a number"));
            head->contentLength = length;
            haveLength = true;
        } else if (equalsNoCase(name, "transfer-encoding")) {
            head->chunked = true;
        } else if (equalsNoCase(name, "expect")) {
            head->expectContinue = equalsNoCase(value, "100-continue");
        } else if (equalsNoCase(name, "upgrade")) {
            head->webSocket = value.toByteArray().toLower().contains("websocket");
        }
    }
    return {};
}

// ---- the path ----

// Digits only, from `low` to `high`; -1 otherwise.
int numberIn(QByteArrayView text, int low, int high)
{
    if (text.isEmpty() || text.size() > 7)
        return -1;
    int value = 0;
    for (char c : text) {
        if (c < '0' || c > '9')
            return -1;
        value = value * 10 + (c - '0');
    }
    return value >= low && value <= high ? value : -1;
}

struct Route
{
    QList<std::pair<QByteArrayView, Command>> methods;
    QString missing; // why nothing is here (404), when `methods` is empty
};

Route route(const QList<QByteArrayView> &s, ControlCommand *c)
{
    const auto count = s.size();
    const auto is = [&](qsizetype i, QByteArrayView word) {
        return i < count && s[i] == word;
    };
    const auto unknown = [](const QString &what) {
        return Route{{}, what};
    };
    const QString noPath = QStringLiteral("no such path");
    if (count == 1 && is(0, "status"))
        return {{{"GET", Command::Status}}, {}};
    if (count == 1 && is(0, "sources"))
        return {{{"GET", Command::Sources}}, {}};
    if (count == 1 && is(0, "events"))
        return {{{"GET", Command::Events}}, {}};
    if (count == 2 && is(0, "events") && is(1, "ticket"))
        return {{{"POST", Command::EventTicket}}, {}};
    if (is(0, "channels") && (count == 2 || count == 3)) {
        c->channel = numberIn(s[1], 1, kChannelCount) - 1;
        if (c->channel < 0)
            return unknown(QStringLiteral("channels are 1 to %1").arg(kChannelCount));
        if (count == 2)
            return {{{"PUT", Command::SetChannel}, {"DELETE", Command::ClearChannel}}, {}};
        if (is(2, "snapshot.jpg"))
            return {{{"GET", Command::ChannelSnapshot}}, {}};
        if (is(2, "pause"))
            return {{{"POST", Command::PauseChannel}}, {}};
        if (is(2, "resume"))
            return {{{"POST", Command::ResumeChannel}}, {}};
        if (is(2, "seek"))
            return {{{"POST", Command::SeekChannel}}, {}};
        return unknown(noPath);
    }
    if (count == 2 && is(0, "program")) {
        if (is(1, "cut"))
            return {{{"POST", Command::Cut}}, {}};
        if (is(1, "preview"))
            return {{{"PUT", Command::SetPreview}}, {}};
        if (is(1, "take"))
            return {{{"POST", Command::Take}}, {}};
        if (is(1, "transition"))
            return {{{"PUT", Command::SetTransition}}, {}};
        if (is(1, "tbar"))
            return {{{"PUT", Command::SetTBar}}, {}};
        if (is(1, "fade-to-black"))
            return {{{"POST", Command::FadeToBlack}}, {}};
        if (is(1, "slate"))
            return {{{"POST", Command::ShowSlate}}, {}};
    }
    if (count == 2 && is(0, "program") && is(1, "snapshot.jpg"))
        return {{{"GET", Command::Snapshot}}, {}};
    if (count == 3 && is(0, "overlays") && (is(1, "text") || is(1, "media"))) {
        c->id = numberIn(s[2], 0, kMaxOverlayId);
        if (c->id < 0)
            return unknown(QStringLiteral("overlay ids are 0 to %1").arg(kMaxOverlayId));
        if (is(1, "text"))
            return {{{"PUT", Command::SetText}, {"DELETE", Command::RemoveText}}, {}};
        return {{{"PUT", Command::SetMedia}, {"DELETE", Command::RemoveMedia}}, {}};
    }
    if (is(0, "audio")) {
        if (count == 2 && is(1, "program"))
            return {{{"PUT", Command::ProgramAudio}}, {}};
        if (count == 3 && is(1, "channels")) {
            c->channel = numberIn(s[2], 1, kChannelCount) - 1;
            if (c->channel < 0)
                return unknown(QStringLiteral("channels are 1 to %1").arg(kChannelCount));
            return {{{"PUT", Command::ChannelAudio}}, {}};
        }
        if (count == 3 && is(1, "overlays")) {
            c->id = numberIn(s[2], 0, kMaxOverlayId);
            if (c->id < 0)
                return unknown(QStringLiteral("overlay ids are 0 to %1").arg(kMaxOverlayId));
            return {{{"PUT", Command::OverlayAudio}}, {}};
        }
        return unknown(noPath);
    }
    if (is(0, "outputs")) {
        if (count == 2 && is(1, "start"))
            return {{{"POST", Command::StartOutputs}}, {}};
        if (count == 2 && is(1, "stop"))
            return {{{"POST", Command::StopOutputs}}, {}};
        if (count == 2 && is(1, "times"))
            return {{{"PUT", Command::SetOutputTimes}}, {}};
        if (count == 4 && is(1, "targets") && is(3, "reconnect")) {
            c->id = numberIn(s[2], 1, 999) - 1;
            if (c->id < 0)
                return unknown(QStringLiteral("stream targets are numbered from 1"));
            return {{{"POST", Command::ReconnectTarget}}, {}};
        }
        return unknown(noPath);
    }
    if (count == 1 && is(0, "failover"))
        return {{{"PUT", Command::SetFailover}}, {}};
    if (count == 1 && is(0, "schedule"))
        return {{{"GET", Command::GetSchedule}, {"PUT", Command::LoadSchedule}}, {}};
    if (count == 2 && is(0, "schedule") && is(1, "start"))
        return {{{"POST", Command::StartSchedule}}, {}};
    if (count == 2 && is(0, "schedule") && is(1, "stop"))
        return {{{"POST", Command::StopSchedule}}, {}};
    return unknown(noPath);
}

// ---- the body ----

// The body as one JSON object; an empty body is an empty object when `emptyIsObject`.
bool readObject(const QByteArray &body, bool emptyIsObject, QJsonObject *object, Refusal *refusal)
{
    if (emptyIsObject && body.trimmed().isEmpty()) {
        *object = {};
        return true;
    }
    QJsonParseError error;
    const QJsonDocument document = QJsonDocument::fromJson(body, &error);
    if (error.error != QJsonParseError::NoError) {
        *refusal = refuse(400, QStringLiteral("malformed JSON: %1 at offset %2")
                                   .arg(error.errorString())
                                   .arg(error.offset));
        return false;
    }
    if (!document.isObject()) {
        *refusal = refuse(400, QStringLiteral("the body must be a JSON object"));
        return false;
    }
    *object = document.object();
    return true;
}

// The text record's keys with their types and the ranges the text editor allows.
void checkTextFields(Fields &f)
{
    for (const char *key : {"enabled", "bold", "italic", "underline", "strikeOut",
                            "backgroundEnabled", "outline", "shadow", "scrollable"})
        f.boolean(key);
    f.string("text", TextOverlayData::kMaxTextLength);
    f.string("fontFamily", 200);
    for (const char *key : {"fontColor", "backgroundColor", "outlineColor", "shadowColor"})
        f.colour(key);
    f.integer("fontPointSize", TextOverlayData::kMinPointSize, TextOverlayData::kMaxPointSize);
    f.number("posX", -1, 2);
    f.number("posY", -1, 2);
    f.integer("zIndex", -1000, 1000);
    f.integer("opacity", 0, TextOverlayData::kMaxOpacity);
    f.integer("backgroundPadding", 0, 200);
    f.integer("outlineWidth", TextOverlayData::kMinOutlineWidth, TextOverlayData::kMaxOutlineWidth);
    f.integer("shadowOffsetX", -100, 100);
    f.integer("shadowOffsetY", -100, 100);
    f.integer("scrollDirection", TextOverlayData::ScrollNone, TextOverlayData::ScrollRightToLeft);
    f.integer("scrollStep", TextOverlayData::kMinScrollStep, TextOverlayData::kMaxScrollStep);
    f.integer("scrollTimes", TextOverlayData::kMinScrollTimes, TextOverlayData::kMaxScrollTimes);
    f.number("scrollViewportWidth", -1, 10000);
    f.number("scrollViewportHeight", -1, 10000);
}

Refusal readBody(const QByteArray &body, ControlCommand *c)
{
    Refusal refusal;
    QJsonObject object;
    switch (c->command) {
    case Command::Status:
    case Command::Sources:
    case Command::ClearChannel:
    case Command::PauseChannel:
    case Command::ResumeChannel:
    case Command::Snapshot:
    case Command::ChannelSnapshot:
    case Command::EventTicket:
    case Command::RemoveText:
    case Command::RemoveMedia:
    case Command::StopOutputs:
    case Command::ReconnectTarget:
    case Command::GetSchedule:
    case Command::StartSchedule:
    case Command::StopSchedule:
    case Command::Events:
    case Command::ShowSlate:
        return {};
    case Command::LoadSchedule:
        if (!readObject(body, false, &object, &refusal))
            return refusal;
        c->schedule = body;
        return {};
    default:
        break;
    }
    // A body may be left out where every field has a default.
    const bool optionalBody = c->command == Command::StartOutputs || c->command == Command::Take ||
                              c->command == Command::FadeToBlack;
    if (!readObject(body, optionalBody, &object, &refusal))
        return refusal;
    Fields f(object);
    switch (c->command) {
    case Command::SetChannel:
        if (const auto address = f.string("address", 8192, true))
            c->address = address->trimmed();
        if (f.ok() && c->address.isEmpty())
            f.fail(QStringLiteral("\"address\" is empty (DELETE clears a channel)"));
        c->loop = f.boolean("loop").value_or(true);
        break;
    case Command::SeekChannel:
        c->positionMs = f.integer("positionMs", 0, 1e12, true).value_or(0);
        break;
    case Command::Cut:
        c->channel = int(f.integer("channel", 1, kChannelCount, true).value_or(0)) - 1;
        break;
    case Command::SetPreview: // 0: none
        c->channel = int(f.integer("channel", 0, kChannelCount, true).value_or(0)) - 1;
        break;
    case Command::Take:
        c->takeAtOnce = f.boolean("cut").value_or(false);
        break;
    case Command::SetFailover:
    case Command::SetOutputTimes:
        c->fields = object; // read against the engine's settings by the dispatcher
        break;
    case Command::SetTransition:
        c->transition = object; // read against the engine's transition by the dispatcher
        c->directTakes = f.boolean("directTakes");
        break;
    case Command::SetTBar:
        c->position = f.number("position", 0, 1, true).value_or(0);
        break;
    case Command::FadeToBlack:
        c->black = f.boolean("black");
        if (const auto ms = f.integer("durationMs", 0, Transition::kMaxMs))
            c->durationMs = int(*ms);
        break;
    case Command::SetText:
        checkTextFields(f);
        c->text = TextOverlayData::fromJson(object, arrangement::kCurrentVersion);
        c->text.id = c->id;
        break;
    case Command::SetMedia: {
        c->media.id = c->id;
        if (const auto path = f.string("path", 4096, true))
            c->media.filePath = path->trimmed();
        if (f.ok() && c->media.filePath.isEmpty())
            f.fail(QStringLiteral("\"path\" is empty"));
        const auto kind = f.word("kind", {"image", "video"}, true);
        c->media.kind = kind.value_or(0) == 1 ? MediaOverlayRecord::OverlayVideo
                                              : MediaOverlayRecord::StillImage;
        const double x = f.number("x", -6400, 6400, true).value_or(0);
        const double y = f.number("y", -6400, 6400, true).value_or(0);
        const double w = f.number("w", 0, 6400, true).value_or(0);
        const double h = f.number("h", 0, 6400, true).value_or(0);
        if (f.ok() && (w <= 0 || h <= 0))
            f.fail(QStringLiteral("\"w\" and \"h\" must be above 0"));
        c->media.rect = QRectF(x, y, w, h);
        c->media.opacity = f.number("opacity", 0, 1).value_or(1.0);
        c->media.visible = f.boolean("visible").value_or(true);
        c->media.loop = f.boolean("loop").value_or(true);
        break;
    }
    case Command::ChannelAudio:
    case Command::OverlayAudio:
    case Command::ProgramAudio: {
        if (const auto volume = f.number("volume", 0, 4))
            c->volume = float(*volume);
        if (const auto mute = f.boolean("mute"))
            c->mute = *mute;
        if (c->command == Command::OverlayAudio) {
            if (const auto preview = f.number("previewVolume", 0, 4))
                c->previewVolume = float(*preview);
            if (const auto onProgram = f.boolean("onProgram"))
                c->onProgram = *onProgram;
        }
        if (c->command == Command::ProgramAudio) {
            if (const auto gain = f.number("gain", 0, 1000))
                c->gain = float(*gain / 100.0);
        }
        if (f.ok() && !c->volume && !c->mute && !c->previewVolume && !c->onProgram && !c->gain)
            f.fail(QStringLiteral("nothing to change: give \"volume\" or \"mute\""));
        break;
    }
    case Command::StartOutputs:
        readOutputFields(f, &c->outputs);
        break;
    default:
        break;
    }
    return f.refusal();
}

} // namespace

QByteArray RequestHead::header(QByteArrayView name) const
{
    for (const auto &[key, value] : headers)
        if (equalsNoCase(key, name))
            return value;
    return {};
}

HeadScan scanHead(QByteArrayView received)
{
    HeadScan scan;
    const qsizetype lineEnd = received.indexOf("\r\n");
    const QByteArrayView line = lineEnd >= 0 ? received.first(lineEnd) : received;
    scan.refusal = checkRequestLine(line, lineEnd >= 0, &scan.head);
    if (!scan.refusal.ok()) {
        scan.state = HeadScan::Refused;
        return scan;
    }
    const qsizetype end = lineEnd >= 0 ? received.indexOf("\r\n\r\n", lineEnd) : -1;
    if (end < 0 || end + 4 > kMaxHeadBytes) {
        if (received.size() >= kMaxHeadBytes) {
            scan.state = HeadScan::Refused;
            scan.refusal =
                refuse(431, QStringLiteral("the request head is over %1 bytes").arg(kMaxHeadBytes));
        }
        return scan;
    }
    scan.refusal = readHeaders(received.sliced(lineEnd + 2, end + 2 - (lineEnd + 2)), &scan.head);
    scan.state = scan.refusal.ok() ? HeadScan::Complete : HeadScan::Refused;
    scan.headBytes = end + 4;
    return scan;
}

bool bearerMatches(QByteArrayView authorization, QByteArrayView token)
{
    authorization = trimmed(authorization);
    static constexpr QByteArrayView scheme("Bearer");
    if (token.isEmpty() || authorization.size() <= scheme.size() ||
        !equalsNoCase(authorization.first(scheme.size()), scheme) ||
        (authorization[scheme.size()] != ' ' && authorization[scheme.size()] != '\t'))
        return false;
    const QByteArrayView given = trimmed(authorization.sliced(scheme.size()));
    // Every byte of the token is looked at whatever the credentials hold.
    unsigned difference = given.size() == token.size() ? 0u : 1u;
    for (qsizetype i = 0; i < token.size(); ++i) {
        const char mine = token[i];
        const char theirs = i < given.size() ? given[i] : char(~mine);
        difference |= unsigned(uchar(mine ^ theirs));
    }
    return difference == 0;
}

Refusal admitHead(const RequestHead &head, QByteArrayView token, bool ticketed)
{
    ControlCommand command;
    const Refusal routed =
        routeRequest(head.method, head.path, head.headers, token, &command, ticketed);
    if (!routed.ok())
        return routed;
    if (head.chunked)
        return refuse(411, QStringLiteral("a body needs a Content-Length"));
    if (head.contentLength > kMaxBodyBytes)
        return refuse(413, QStringLiteral("the body is over %1 bytes").arg(kMaxBodyBytes));
    return {};
}

Refusal routeRequest(QByteArrayView method, QByteArrayView path, const Headers &headers,
                     QByteArrayView token, ControlCommand *command, bool ticketed)
{
    QByteArray authorization;
    QByteArray upgrade;
    for (const auto &[key, value] : headers) {
        if (authorization.isNull() && equalsNoCase(key, "authorization"))
            authorization = value;
        if (upgrade.isNull() && equalsNoCase(key, "upgrade"))
            upgrade = value;
    }
    if (!ticketed && !bearerMatches(authorization, token))
        return refuse(401, QStringLiteral("missing or wrong bearer token"));
    const qsizetype query = path.indexOf('?');
    if (query >= 0)
        path = path.first(query);
    static constexpr QByteArrayView prefix("/api/v1/");
    if (!path.startsWith(prefix))
        return refuse(404, QStringLiteral("no such path; the API is under /api/v1/"));
    QByteArrayView rest = path.sliced(prefix.size());
    if (rest.endsWith('/'))
        rest.chop(1);
    QList<QByteArrayView> segments;
    for (qsizetype start = 0; start <= rest.size() && segments.size() <= 8;) {
        qsizetype slash = rest.indexOf('/', start);
        if (slash < 0)
            slash = rest.size();
        segments << rest.sliced(start, slash - start);
        start = slash + 1;
    }
    for (const QByteArrayView &segment : segments)
        if (segment.isEmpty() || segments.size() > 8)
            return refuse(404, QStringLiteral("no such path"));
    const Route found = route(segments, command);
    if (found.methods.isEmpty())
        return refuse(404, found.missing);
    QByteArray allow;
    bool matched = false;
    for (const auto &[name, kind] : found.methods) {
        allow += (allow.isEmpty() ? "" : ", ") + name.toByteArray();
        if (name == method) {
            command->command = kind;
            matched = true;
        }
    }
    // A ticket opens the event stream and nothing else.
    if (matched && ticketed && command->command != Command::Events)
        return refuse(401, QStringLiteral("missing or wrong bearer token"));
    if (!matched)
        return refuse(405,
                      QStringLiteral("%1 takes %2")
                          .arg(QString::fromLatin1(path), QString::fromLatin1(allow)),
                      allow);
    const bool webSocket = upgrade.toLower().contains("websocket");
    if (command->command == Command::Events && !webSocket)
        return refuse(426, QStringLiteral("the events come over a WebSocket"));
    if (command->command != Command::Events && webSocket)
        return refuse(400, QStringLiteral("only /api/v1/events is a WebSocket"));
    return {};
}

ParsedRequest parseRequest(QByteArrayView method, QByteArrayView path, const Headers &headers,
                           const QByteArray &body, QByteArrayView token)
{
    ParsedRequest parsed;
    parsed.refusal = routeRequest(method, path, headers, token, &parsed.command);
    if (!parsed.refusal.ok())
        return parsed;
    if (body.size() > kMaxBodyBytes) {
        parsed.refusal =
            refuse(413, QStringLiteral("the body is over %1 bytes").arg(kMaxBodyBytes));
        return parsed;
    }
    parsed.refusal = readBody(body, &parsed.command);
    return parsed;
}

} // namespace selvane::control
