#include "control/ControlStatus.h"

#include "control/FailoverJson.h"
#include "engine/CaptureSources.h"
#include "engine/Engine.h"
#include "engine/OutputMomentText.h"
#include "media/TransitionWords.h"

#include <QJsonArray>
#include <algorithm>
#include <cmath>

namespace selvane::control {

namespace {

double rounded(double value)
{
    return std::round(value * 10000.0) / 10000.0;
}

QJsonObject levelJson(const Level &level)
{
    return {{"peak", rounded(level.peak)}, {"rms", rounded(level.rms)}};
}

QJsonValue channelNumber(int channel)
{
    return channel >= 0 ? QJsonValue(channel + 1) : QJsonValue(QJsonValue::Null);
}

QJsonObject channelJson(const Engine &engine, int c, const ChannelStats &s)
{
    QJsonObject channel{{"number", c + 1},
                        {"state", channelStateWord(s.state, s.live)},
                        {"source", s.source},
                        {"width", std::max(0, s.size.width())},
                        {"height", std::max(0, s.size.height())},
                        {"fps", rounded(s.fps)},
                        {"positionMs", s.positionMs},
                        {"durationMs", s.durationMs},
                        {"live", s.live},
                        {"loop", s.loop},
                        {"framesDelivered", s.framesDelivered},
                        {"framesDropped", s.framesDropped},
                        {"picturesSkipped", s.picturesSkipped},
                        {"repeatedTicks", s.repeatedTicks},
                        {"reanchors", s.reanchors},
                        {"reconnects", s.reconnects},
                        {"volume", rounded(engine.channelVolume(c))},
                        {"mute", engine.channelMuted(c)},
                        {"audio", levelJson(s.audio)}};
    if (s.lastError != SourceError::None)
        channel.insert("error", sourceErrorLogText(s.lastError));
    return channel;
}

QJsonObject outputJson(const OutputStats &o)
{
    QJsonArray targets;
    for (int i = 0; i < o.targets.size(); ++i) {
        const TargetStats &t = o.targets[i];
        targets.append(QJsonObject{{"number", i + 1},
                                   {"url", t.url},
                                   {"status", t.status},
                                   {"kbps", rounded(t.kbps)},
                                   {"bytes", t.bytes},
                                   {"reconnects", t.reconnects},
                                   {"packetsDropped", t.packetsDropped},
                                   {"profile", t.profile}});
    }
    // Every encoder of the run: its profile, what it shows, its bitrate as set and now.
    QJsonArray encodes;
    for (const EncodeStats &e : o.encodes)
        encodes.append(
            QJsonObject{{"profile", e.profile},
                        {"source", e.source},
                        {"size", QStringLiteral("%1x%2").arg(e.size.width()).arg(e.size.height())},
                        {"fps", e.fps},
                        {"adaptive", e.adaptive},
                        {"setKbps", e.setKbps},
                        {"currentKbps", e.currentKbps},
                        {"bitrateSteps", e.bitrateSteps},
                        {"framesWritten", e.framesWritten},
                        {"encoderDrops", e.encoderDrops},
                        {"encoder", e.encoder},
                        {"failed", e.failed}});
    const auto fileJson = [](const RecordingStats &stats) {
        QJsonObject file{{"path", stats.path},
                         {"bytes", stats.bytes},
                         {"failed", stats.failed},
                         {"diskWarning", stats.diskWarning}};
        if (stats.failed)
            file.insert("reason", stats.failureReason);
        if (stats.freeBytes >= 0)
            file.insert("freeBytes", stats.freeBytes);
        if (stats.secondsLeft >= 0)
            file.insert("secondsLeft", stats.secondsLeft);
        return file;
    };
    const QJsonObject file = fileJson(o.file);
    QJsonArray iso;
    for (const IsoStats &i : o.isoRecordings) {
        QJsonObject entry = fileJson(i.file);
        entry.insert("channel", i.channel);
        entry.insert("profile", i.profile);
        iso.append(entry);
    }
    return {{"running", o.running},
            {"stopping", o.stopping},
            {"elapsedMs", o.elapsedMs},
            {"startedAtMs", o.startedAtMs},
            {"encoder", o.encoder},
            {"framesWritten", o.framesWritten},
            {"kbps", rounded(o.kbps)},
            {"encoderDrops", o.encoderDrops},
            {"recording", o.recording},
            {"file", file},
            {"twin", o.twinRecording ? QJsonValue(fileJson(o.twin)) : QJsonValue()},
            {"targets", targets},
            {"encodes", encodes},
            {"iso", iso},
            {"timecode", o.timecode},
            {"startsInMs", o.startsInMs},
            {"stopsInMs", o.stopsInMs}};
}

} // namespace

QJsonObject overlaysJson(const Engine &engine)
{
    QJsonArray texts;
    for (const TextOverlayData &text : engine.textOverlays())
        texts.append(QJsonObject{{"id", text.id},
                                 {"text", text.text},
                                 {"enabled", text.enabled},
                                 {"record", text.toJson()}}); // what PUT takes back whole
    QJsonArray media;
    for (const MediaOverlayRecord &m : engine.mediaOverlays())
        media.append(
            QJsonObject{{"id", m.id},
                        {"kind", m.kind == MediaOverlayRecord::OverlayVideo ? "video" : "image"},
                        {"path", m.filePath},
                        {"x", m.rect.x()},
                        {"y", m.rect.y()},
                        {"w", m.rect.width()},
                        {"h", m.rect.height()},
                        {"opacity", m.opacity},
                        {"visible", m.visible},
                        {"loop", m.loop}});
    return {{"text", texts}, {"media", media}};
}

QJsonObject statusJson(const Engine &engine)
{
    const EngineStats stats = engine.stats();
    QJsonArray channels;
    for (int c = 0; c < kChannelCount; ++c)
        channels.append(channelJson(engine, c, stats.channels[std::size_t(c)]));
    const ProgramStats &p = stats.program;
    const QJsonObject program{{"channel", channelNumber(p.channel)},
                              {"still", p.still},
                              {"width", std::max(0, p.size.width())},
                              {"height", std::max(0, p.size.height())},
                              {"fps", rounded(p.fps)},
                              {"frames", p.frames},
                              {"repeated", p.repeated},
                              {"skippedTicks", p.skippedTicks},
                              {"volume", rounded(engine.programVolume())},
                              {"mute", engine.programMuted()},
                              {"audio", levelJson(p.audio)}};
    QJsonObject overlays = overlaysJson(engine);
    QJsonObject overlayAudio;
    for (auto it = stats.overlayAudio.cbegin(); it != stats.overlayAudio.cend(); ++it)
        overlayAudio.insert(QString::number(it.key()), levelJson(it.value()));
    overlays.insert("audio", overlayAudio);
    const ProgramArrangement loaded = engine.schedule();
    const QJsonObject schedule{{"running", stats.scheduleRunning},
                               {"clip", stats.scheduleBaseClip},
                               {"scheduleMs", stats.scheduleMs},
                               {"sceneClips", loaded.sceneClips.size()},
                               {"overlayClips", loaded.overlayClips.size()}};
    return {{"program", program},
            {"production", productionJson(engine)},
            {"failover", failoverJson(engine)},
            {"channels", channels},
            {"overlays", overlays},
            {"outputs", outputJson(stats.output)},
            {"outputTimes", outputTimesJson(engine, stats.output)},
            {"schedule", schedule}};
}

QJsonObject outputTimesJson(const Engine &engine, const OutputStats &stats)
{
    const OutputTimes times = engine.outputTimes();
    return {{"start", outputMomentText(times.start)},
            {"stop", outputMomentText(times.stop)},
            {"startsInMs", stats.startsInMs},
            {"stopsInMs", stats.stopsInMs}};
}

QJsonObject productionJson(const Engine &engine)
{
    const auto channelValue = [](int channel) {
        return channel >= 0 ? QJsonValue(channel + 1) : QJsonValue(QJsonValue::Null);
    };
    QJsonObject production{{"preview", channelValue(engine.previewChannel())},
                           {"program", channelValue(engine.programChannel())},
                           {"transitionTo", channelValue(engine.transitionTarget())},
                           {"transition", transitions::toJson(engine.transition())},
                           {"directTakes", engine.directTakesUseTransition()},
                           {"tbar", engine.tbar()},
                           {"fadeToBlack", engine.fadedToBlack()}};
    const Transition transition = engine.transition();
    if (!transition.stingerFile.isEmpty()) {
        // Whether the stinger's clip is in memory: a take before it is ready is a cut.
        const StingerInfo info = engine.stingerInfo(transition.stingerFile, transition.cutMs);
        QJsonObject stinger{{"state", info.state}};
        if (info.state == QLatin1String("ready")) {
            stinger.insert("durationMs", info.durationMs);
            stinger.insert("cutMs", info.cutMs);
            stinger.insert("alpha", info.hasAlpha);
        } else if (!info.failure.isEmpty()) {
            stinger.insert("failure", info.failure);
        }
        production.insert("stinger", stinger);
    }
    return production;
}

QJsonObject levelsJson(const EngineStats &stats)
{
    QJsonArray channels;
    for (const ChannelStats &channel : stats.channels)
        channels.append(levelJson(channel.audio));
    QJsonObject overlays;
    for (auto it = stats.overlayAudio.cbegin(); it != stats.overlayAudio.cend(); ++it)
        overlays.insert(QString::number(it.key()), levelJson(it.value()));
    return {{"type", "levels"},
            {"program", levelJson(stats.program.audio)},
            {"channels", channels},
            {"overlays", overlays}};
}

int httpStatusFor(const Problem &problem)
{
    switch (problem.kind) {
    case ProblemKind::OutputsActive:
    case ProblemKind::SourceIsRecording:
    case ProblemKind::SourceIsTarget:
    case ProblemKind::TooManyTexts:
    case ProblemKind::TooManyMedia:
    case ProblemKind::ChannelHasNoSource:
        return 409;
    case ProblemKind::NoSuchOverlay:
    case ProblemKind::ChannelOutOfRange:
        return 404;
    default:
        return 400;
    }
}

QJsonObject sourcesJson()
{
    QJsonArray displays;
    for (const CaptureTarget &display : CaptureSources::displays())
        displays.append(QJsonObject{{"address", display.address},
                                    {"name", display.name},
                                    {"x", display.geometry.x()},
                                    {"y", display.geometry.y()},
                                    {"width", display.geometry.width()},
                                    {"height", display.geometry.height()}});
    QJsonArray windows;
    for (const CaptureTarget &window : CaptureSources::windows())
        windows.append(QJsonObject{
            {"address", window.address}, {"title", window.name}, {"label", window.label}});
    const auto devices = [](const QList<CaptureDevice> &list) {
        QJsonArray out;
        for (const CaptureDevice &device : list)
            out.append(QJsonObject{{"name", device.name}, {"device", device.deviceId}});
        return out;
    };
    return {{"displays", displays},
            {"windows", windows},
            {"cameras", devices(CaptureSources::cameras())},
            {"microphones", devices(CaptureSources::microphones())}};
}

} // namespace selvane::control
