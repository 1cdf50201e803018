#include "control/ControlDispatch.h"

#include "control/ControlStatus.h"
#include "control/FailoverJson.h"
#include "engine/CaptureSources.h"
#include "engine/Engine.h"
#include "engine/OutputMomentText.h"
#include "engine/ScheduleFiles.h"
#include "media/TransitionWords.h"

#include <QJsonArray>
#include <QJsonObject>

namespace selvane::control {

ControlDispatch::ControlDispatch(Engine &engine) : m_engine(engine) {}

Reply ControlDispatch::execute(const ControlCommand &c)
{
    Engine &engine = m_engine;
    const auto failed = errorReply;
    const auto ok = [](QJsonObject object = {}) {
        return okReply(std::move(object));
    };
    // The engine's refusals, in its own words.
    const auto refused = [&failed](const Problem &problem, const QString &field = {}) {
        return failed(httpStatusFor(problem),
                      field + problemText(problem, ProblemLanguage::English));
    };
    const QJsonValue channelNumber = c.channel + 1;
    const auto hasSource = [&] {
        return !engine.stats().channels[std::size_t(c.channel)].source.isEmpty();
    };
    switch (c.command) {
    case Command::Status:
        return {200, jsonBytes(statusJson(engine))};
    case Command::Sources:
        return {200, jsonBytes(sourcesJson())};
    case Command::SetChannel: {
        if (const Problem bad = CaptureSources::checkAddress(c.address))
            return refused(bad, QStringLiteral("\"address\": "));
        if (const Problem problem = engine.setChannelSource(c.channel, c.address))
            return refused(problem);
        engine.setChannelLoop(c.channel, c.loop);
        return ok({{"channel", channelNumber}});
    }
    case Command::ClearChannel:
        engine.clearChannel(c.channel);
        return ok({{"channel", channelNumber}});
    case Command::PauseChannel:
    case Command::ResumeChannel:
    case Command::SeekChannel:
        if (!hasSource())
            return refused({ProblemKind::ChannelHasNoSource, {}, c.channel + 1});
        if (c.command == Command::PauseChannel)
            engine.pauseChannel(c.channel);
        else if (c.command == Command::ResumeChannel)
            engine.resumeChannel(c.channel);
        else
            engine.seekChannel(c.channel, c.positionMs);
        return ok({{"channel", channelNumber}});
    case Command::Cut:
        engine.cutTo(c.channel);
        return ok({{"channel", channelNumber}});
    case Command::SetPreview:
        engine.setPreviewChannel(c.channel);
        return ok(productionJson(engine));
    case Command::Take:
        if (engine.previewChannel() < 0)
            return failed(409, QStringLiteral("no channel is on the preview bus "
                                              "(PUT /api/v1/program/preview)"));
        if (c.takeAtOnce)
            engine.cutToPreview();
        else
            engine.take();
        return ok(productionJson(engine));
    case Command::SetTransition: {
        QString error;
        const auto transition = transitions::fromJson(c.transition, engine.transition(), &error);
        if (!transition)
            return failed(400, error);
        engine.setTransition(*transition);
        if (c.directTakes)
            engine.setDirectTakesUseTransition(*c.directTakes);
        return ok(productionJson(engine));
    }
    case Command::SetTBar:
        if (engine.previewChannel() < 0)
            return failed(409, QStringLiteral("no channel is on the preview bus "
                                              "(PUT /api/v1/program/preview)"));
        engine.setTBar(c.position);
        return ok(productionJson(engine));
    case Command::FadeToBlack:
        engine.setFadeToBlack(c.black.value_or(!engine.fadedToBlack()),
                              c.durationMs.value_or(engine.transition().durationMs));
        return ok(productionJson(engine));
    case Command::ShowSlate:
        engine.showSlate();
        return ok(failoverJson(engine));
    case Command::SetFailover: {
        QString error;
        const auto settings = failoverFromJson(c.fields, engine.failover(), &error);
        if (!settings)
            return failed(400, error);
        if (const Problem problem = engine.setFailover(*settings))
            return refused(problem);
        return ok(failoverJson(engine));
    }
    case Command::SetOutputTimes: {
        // Each of "start" and "stop" as the command line writes it; one left out stays.
        OutputTimes times = engine.outputTimes();
        const QDateTime now = QDateTime::currentDateTime();
        for (const auto &[name, moment, stop] :
             {std::tuple{"start", &times.start, false}, std::tuple{"stop", &times.stop, true}}) {
            const QJsonValue value = c.fields.value(QLatin1String(name));
            if (value.isUndefined())
                continue;
            const std::optional<OutputMoment> read =
                value.isString() ? readOutputMoment(value.toString(), stop, now) : std::nullopt;
            if (!read)
                return failed(400, QStringLiteral("\"%1\" is \"hand\", \"schedule\", a "
                                                  "date-time (2026-11-26T21:00) or a time of "
                                                  "day (21:00)")
                                       .arg(QLatin1String(name)));
            *moment = *read;
        }
        if (const Problem problem = engine.setOutputTimes(times))
            return refused(problem);
        return ok(outputTimesJson(engine, engine.stats().output));
    }
    case Command::EventTicket: // the server's own, answered before it comes here
    case Command::ChannelSnapshot:
    case Command::Snapshot: {
        Reply later; // the server answers with the next program picture
        later.deferred = true;
        return later;
    }
    case Command::SetText:
        if (const Problem problem = engine.setTextOverlay(c.text))
            return refused(problem, QStringLiteral("\"text\": "));
        return ok({{"id", c.id}});
    case Command::SetMedia:
        if (const Problem problem = engine.setMediaOverlay(c.media))
            return refused(problem, QStringLiteral("\"path\": "));
        return ok({{"id", c.id}});
    case Command::RemoveText:
    case Command::RemoveMedia: {
        const Problem problem = c.command == Command::RemoveText ? engine.removeTextOverlay(c.id)
                                                                 : engine.removeMediaOverlay(c.id);
        if (problem)
            return refused(problem);
        if (c.command == Command::RemoveMedia)
            m_overlayVolumes.remove(c.id);
        return ok({{"id", c.id}});
    }
    case Command::ChannelAudio:
        if (c.volume)
            engine.setChannelVolume(c.channel, *c.volume);
        if (c.mute)
            engine.setChannelMuted(c.channel, *c.mute);
        return ok({{"channel", channelNumber},
                   {"volume", engine.channelVolume(c.channel)},
                   {"mute", engine.channelMuted(c.channel)}});
    case Command::OverlayAudio: {
        bool video = false;
        for (const MediaOverlayRecord &media : engine.mediaOverlays())
            video = video || (media.id == c.id && media.kind == MediaOverlayRecord::OverlayVideo);
        if (!video)
            return failed(404, QStringLiteral("no video overlay with id %1").arg(c.id));
        OverlayVolumes &volumes = m_overlayVolumes[c.id];
        if (c.volume || c.previewVolume) {
            volumes.program = c.volume.value_or(volumes.program);
            volumes.preview = c.previewVolume.value_or(volumes.preview);
            engine.setOverlayVolume(c.id, volumes.preview, volumes.program);
        }
        if (c.mute)
            engine.setOverlayMuted(c.id, *c.mute);
        if (c.onProgram)
            engine.setOverlayOnProgram(c.id, *c.onProgram);
        return ok({{"id", c.id}});
    }
    case Command::ProgramAudio:
        if (c.volume)
            engine.setProgramVolume(*c.volume);
        if (c.mute)
            engine.setProgramMuted(*c.mute);
        if (c.gain)
            engine.setProgramGain(*c.gain);
        return ok({{"volume", engine.programVolume()}, {"mute", engine.programMuted()}});
    case Command::StartOutputs:
        return startOutputs(c);
    case Command::StopOutputs:
        if (!engine.outputsActive())
            return failed(409, QStringLiteral("the outputs are not running"));
        engine.stopOutputs();
        return ok({{"stopping", true}});
    case Command::ReconnectTarget: {
        const OutputStats output = engine.stats().output;
        if (!engine.outputsActive() || c.id >= output.targets.size())
            return failed(404, QStringLiteral("no stream target %1").arg(c.id + 1));
        if (!engine.reconnectTargetNow(c.id))
            return failed(409, QStringLiteral("stream target %1 is not waiting to reconnect (%2)")
                                   .arg(c.id + 1)
                                   .arg(output.targets[c.id].status));
        return ok({{"target", c.id + 1}});
    }
    case Command::GetSchedule:
        return {200, ScheduleFiles::write(engine.schedule())};
    case Command::LoadSchedule:
        return loadSchedule(c.schedule);
    case Command::StartSchedule: {
        if (engine.isScheduleRunning())
            return failed(409, QStringLiteral("the schedule is already running"));
        const ProgramArrangement loaded = engine.schedule();
        if (loaded.sceneClips.isEmpty() && loaded.overlayClips.isEmpty())
            return failed(409, QStringLiteral("no schedule is loaded (PUT /api/v1/schedule)"));
        QString error;
        if (!engine.startSchedule(&error))
            return failed(409, error);
        return ok({{"running", true}});
    }
    case Command::StopSchedule:
        if (!engine.isScheduleRunning())
            return failed(409, QStringLiteral("the schedule is not running"));
        engine.stopSchedule();
        return ok({{"running", false}});
    case Command::Events:
        break;
    }
    return failed(404, QStringLiteral("no such path"));
}

Reply ControlDispatch::startOutputs(const ControlCommand &c)
{
    Engine &engine = m_engine;
    const auto failed = errorReply;
    const OutputSettings settings = applyOutputRequest(c.outputs, engine.preparedOutputs());
    if (const Problem problem = engine.startOutputs(settings))
        return failed(httpStatusFor(problem), problemText(problem, ProblemLanguage::English));
    return okReply(
        {{"record", settings.encoder.fileEnabled ? settings.encoder.filePath : QString()},
         {"streams", int(settings.encoder.streamTargets.size())},
         {"fps", settings.encoder.fps}},
        202);
}

Reply ControlDispatch::loadSchedule(const QByteArray &json)
{
    const auto failed = errorReply;
    QString error;
    const ProgramArrangement arrangement = ScheduleFiles::read(json, &error);
    if (!error.isEmpty())
        return failed(400, error);
    // Checked before it is kept: a refused schedule leaves the loaded one as it was.
    const arrangement::Validation check = ScheduleFiles::check(arrangement);
    if (!check.ok)
        return failed(400, check.title + QStringLiteral(": ") + check.message);
    m_engine.loadSchedule(arrangement);
    return okReply({{"sceneClips", int(arrangement.sceneClips.size())},
                    {"overlayClips", int(arrangement.overlayClips.size())}});
}

} // namespace selvane::control
