// The outputs as a start request gives them: the recording, the stream targets (addresses, or
// objects naming a profile or an HLS folder's shape), the default profile's encoding, the named
// profiles and the channels recorded on their own.

#include "control/OutputRequest.h"

#include "engine/OutputRules.h"
#include "output/EncodeProfiles.h"

#include <QJsonArray>

namespace selvane::control {

namespace {

// "profiles": [{"name", "size": "WxH", "fps", "bitrate", "preset", "keyframeSeconds",
// "adaptive", "floor", "multiview"}]; the engine checks names and references when it starts.
void readProfiles(Fields &f, OutputRequest *out)
{
    if (!f.ok() || !f.has("profiles"))
        return;
    const QJsonValue value = f.value("profiles");
    if (!value.isArray() || value.toArray().size() > 8) {
        f.fail(QStringLiteral("\"profiles\" must be an array of at most 8 profiles"));
        return;
    }
    QList<EncodeProfile> list;
    for (const QJsonValue &entry : value.toArray()) {
        Fields p(entry.toObject());
        EncodeProfile profile;
        profile.name = p.string("name", 32, true).value_or(QString()).trimmed();
        const QString size = p.string("size", 16, true).value_or(QString()).toLower();
        profile.fps = p.number("fps", 1, 120).value_or(0);
        profile.bitrateKbps = int(p.integer("bitrate", 100, 400000, true).value_or(0));
        profile.qualityPreset =
            p.word("preset", {"performance", "balanced", "quality"}).value_or(1);
        profile.keyframeSeconds = int(p.integer("keyframeSeconds", 1, 20).value_or(2));
        profile.adaptive = p.boolean("adaptive").value_or(false);
        profile.floorPercent = int(p.integer("floor", 5, 100).value_or(30));
        profile.multiview = p.boolean("multiview").value_or(false);
        if (!entry.isObject() || !p.ok()) {
            f.fail(QStringLiteral("a profile: ") +
                   (p.ok() ? QStringLiteral("must be an object") : p.refusal().message));
            return;
        }
        const QStringList parts = size.split('x');
        profile.size = QSize(parts.value(0).toInt(), parts.value(1).toInt());
        if (parts.size() != 2 || profile.size.isEmpty()) {
            f.fail(QStringLiteral("a profile's \"size\" must be WIDTHxHEIGHT"));
            return;
        }
        list << profile;
    }
    out->profiles = list;
}

// "iso": [N, ...] or [{"channel": N, "profile": NAME}, ...], channels 1-4.
void readIso(Fields &f, OutputRequest *out)
{
    if (!f.ok() || !f.has("iso"))
        return;
    const QJsonValue value = f.value("iso");
    if (!value.isArray()) {
        f.fail(QStringLiteral("\"iso\" must be an array of channels"));
        return;
    }
    QList<IsoRecording> list;
    for (const QJsonValue &entry : value.toArray()) {
        IsoRecording iso;
        if (entry.isObject()) {
            Fields i(entry.toObject());
            iso.channel = int(i.integer("channel", 1, 4, true).value_or(0)) - 1;
            const QString profile = i.string("profile", 32).value_or(QString()).trimmed();
            iso.profile = profiles::isDefault(profile) ? QString() : profile;
            if (!i.ok()) {
                f.fail(QStringLiteral("a channel recording: ") + i.refusal().message);
                return;
            }
        } else if (entry.isDouble() && entry.toDouble() >= 1 && entry.toDouble() <= 4 &&
                   entry.toDouble() == std::floor(entry.toDouble())) {
            iso.channel = entry.toInt() - 1;
        } else {
            f.fail(QStringLiteral("\"iso\" holds channels from 1 to 4"));
            return;
        }
        list << iso;
    }
    out->iso = list;
}

} // namespace

void readOutputFields(Fields &f, OutputRequest *out)
{
    if (f.has("record")) {
        if (f.value("record").isNull())
            out->record = QString();
        else if (const auto path = f.string("record", 4096))
            out->record = path->trimmed();
    }
    if (f.has("twin")) {
        if (f.value("twin").isNull())
            out->twin = QString();
        else if (const auto path = f.string("twin", 4096))
            out->twin = path->trimmed();
    }
    if (f.has("streams")) {
        const QJsonValue streams = f.value("streams");
        if (!streams.isArray()) {
            f.fail(QStringLiteral("\"streams\" must be an array of URLs"));
            return;
        }
        const QJsonArray list = streams.toArray();
        if (list.size() > 16) {
            f.fail(QStringLiteral("at most 16 stream targets"));
            return;
        }
        QList<StreamTarget> targets;
        for (const QJsonValue &entry : list) {
            if (entry.isObject()) {
                // {"url", "profile", "hlsSegment", "hlsWindow"}
                Fields target(entry.toObject());
                const auto url = target.string("url", 4096, true);
                const auto profile = target.string("profile", 32);
                const auto segment = target.integer("hlsSegment", 1, 6);
                const auto window = target.integer("hlsWindow", 2, 60);
                if (!target.ok()) {
                    f.fail(QStringLiteral("a stream target: ") + target.refusal().message);
                    return;
                }
                StreamTarget t = OutputRules::parseStreamTarget(url->trimmed());
                if (t.url.isEmpty()) {
                    f.fail(QStringLiteral("a stream target's \"url\" is empty"));
                    return;
                }
                t.profile = profiles::isDefault(profile.value_or(QString())) ? QString() : *profile;
                t.hlsSegmentSeconds = int(segment.value_or(t.hlsSegmentSeconds));
                t.hlsWindow = int(window.value_or(t.hlsWindow));
                targets << t;
                continue;
            }
            const QString text = entry.toString().trimmed();
            if (!entry.isString() || text.isEmpty() || text.size() > 4096) {
                f.fail(QStringLiteral("\"streams\" must be an array of URLs or target objects"));
                return;
            }
            targets << OutputRules::parseStreamTarget(text);
        }
        out->streams = targets;
    }
    if (const auto size = f.string("size", 32)) {
        const QString text = size->trimmed().toLower();
        const QStringList parts = text.split('x');
        bool okW = false;
        bool okH = false;
        const int w = parts.value(0).toInt(&okW);
        const int h = parts.value(1).toInt(&okH);
        if (text == QLatin1String("program"))
            out->size = QSize();
        else if (parts.size() == 2 && okW && okH && w >= 2 && h >= 2 && w <= 8192 && h <= 8192 &&
                 w % 2 == 0 && h % 2 == 0)
            out->size = QSize(w, h);
        else
            f.fail(QStringLiteral("\"size\" must be \"program\" or WIDTHxHEIGHT, even, "
                                  "2 to 8192"));
    }
    if (const auto fps = f.integer("fps", 30, 60)) {
        if (*fps != 30 && *fps != 60)
            f.fail(QStringLiteral("\"fps\" must be 30 or 60"));
        out->fps = double(*fps);
    }
    if (const auto bitrate = f.integer("bitrate", 0, 400000)) {
        if (*bitrate != 0 && *bitrate < 100)
            f.fail(QStringLiteral("\"bitrate\" must be 0 (automatic) or 100 to 400000 kbit/s"));
        out->bitrateKbps = int(*bitrate);
    }
    out->encoderMode = f.word("encoder", {"auto", "hardware", "software"});
    out->qualityPreset = f.word("preset", {"performance", "balanced", "quality"});
    out->adaptive = f.boolean("adaptive");
    if (const auto floor = f.integer("adaptiveFloor", 5, 100))
        out->adaptiveFloor = int(*floor);
    if (const auto profile = f.string("recordProfile", 32))
        out->recordProfile =
            profiles::isDefault(profile->trimmed()) ? QString() : profile->trimmed();
    readProfiles(f, out);
    readIso(f, out);
}

OutputSettings applyOutputRequest(const OutputRequest &request, OutputSettings settings)
{
    EncoderSettings &e = settings.encoder;
    if (request.record) {
        e.filePath = *request.record;
        e.fileEnabled = !request.record->isEmpty();
        if (!e.fileEnabled)
            e.segmentEnabled = false;
    }
    if (request.twin)
        e.twinFilePath = *request.twin;
    if (!e.fileEnabled)
        e.twinFilePath.clear();
    if (request.streams)
        e.streamTargets = *request.streams;
    if (request.size)
        settings.size = {request.size->isValid(), *request.size};
    if (request.fps)
        e.fps = *request.fps;
    if (request.bitrateKbps)
        e.bitrateKbps = *request.bitrateKbps;
    if (request.encoderMode)
        e.encoderMode = *request.encoderMode;
    if (request.qualityPreset)
        e.qualityPreset = *request.qualityPreset;
    if (request.adaptive)
        e.adaptiveBitrate = *request.adaptive;
    if (request.adaptiveFloor)
        e.adaptiveFloorPercent = *request.adaptiveFloor;
    if (request.profiles)
        e.profiles = *request.profiles;
    if (request.recordProfile)
        e.fileProfile = *request.recordProfile;
    if (request.iso)
        e.isoRecordings = *request.iso;
    return settings;
}

} // namespace selvane::control
