// The outputs' stats: every encode's destinations gathered into the operator's list of targets,
// the recording, its twin and the channels' recordings.

#include "engine/OutputSession.h"
#include "output/OutputRouter.h"

namespace selvane {

namespace {

void showForecast(RecordingStats &file, const DiskForecast &forecast)
{
    file.freeBytes = forecast.freeBytes();
    file.secondsLeft = forecast.secondsLeft();
    file.diskWarning = int(forecast.level());
}

RecordingStats recordingOf(const FfmpegEncoderSink::OutputStats &d, const QString &until)
{
    return {d.path.isEmpty() ? until : d.path,
            d.bytesWritten,
            d.failed,
            d.failureReason,
            d.failures,
            d.resumes};
}

QString sourceWord(const PlannedEncode &plan)
{
    switch (plan.source) {
    case PlannedEncode::Source::Multiview:
        return QStringLiteral("multiview");
    case PlannedEncode::Source::Channel:
        return QStringLiteral("channel %1").arg(plan.channel + 1);
    case PlannedEncode::Source::Program:
        break;
    }
    return QStringLiteral("program");
}

} // namespace

OutputStats OutputSession::stats() const
{
    OutputStats out;
    out.running = m_state == State::Running;
    out.stopping = m_state == State::Stopping;
    out.recording = m_settings.fileEnabled && !m_settings.filePath.trimmed().isEmpty();
    out.twinRecording = out.recording && !m_settings.twinFilePath.trimmed().isEmpty();
    out.timecode = m_settings.timecode;
    if (out.recording && !m_settings.segmentEnabled) {
        out.file.path = m_settings.filePath; // until the file opens
        if (out.twinRecording)
            out.twin.path = m_settings.twinFilePath;
    }
    for (int i = 0; i < m_status.size(); ++i) {
        TargetStats target;
        target.status = m_status[i];
        target.profile = m_settings.streamTargets.value(i).profile;
        if (target.profile.isEmpty())
            target.profile = QStringLiteral("default");
        out.targets.append(target);
    }
    const Encode *main = primary();
    if (!main)
        return out;
    out.elapsedMs = out.running ? m_elapsed.elapsed() : 0;
    out.startedAtMs = out.running ? m_startedAtMs : 0;
    out.encoder = main->router->encoderName();
    out.framesWritten = main->router->framesEncoded();
    for (const Encode &encode : m_encodes) {
        const OutputRouter &router = *encode.router;
        out.bytesEncoded += router.bytesEncoded();
        out.encoderDrops += router.droppedFrames();
        out.audioChunksDropped += router.droppedAudioChunks();
        EncodeStats e;
        e.profile = encode.plan.profile;
        e.source = sourceWord(encode.plan);
        e.size = encode.plan.size;
        e.fps = encode.plan.settings.fps;
        e.adaptive = encode.plan.settings.adaptiveBitrate;
        e.setKbps = router.setKbps();
        e.currentKbps = router.currentKbps();
        e.bitrateSteps = router.bitrateSteps();
        e.framesWritten = router.framesEncoded();
        e.encoderDrops = router.droppedFrames();
        e.encoder = router.encoderName();
        e.failed = encode.failed;
        out.encodes.append(e);
        if (encode.plan.source == PlannedEncode::Source::Channel) {
            IsoStats iso;
            iso.channel = encode.plan.channel + 1;
            iso.profile = encode.plan.profile;
            iso.file.path = encode.plan.settings.filePath;
            for (const FfmpegEncoderSink::OutputStats &d : router.destinationStats())
                if (d.targetIndex == FfmpegEncoderSink::OutputStats::kRecording)
                    iso.file = recordingOf(d, iso.file.path);
            out.isoRecordings.append(iso);
            continue;
        }
        for (const FfmpegEncoderSink::OutputStats &d : router.destinationStats()) {
            if (d.targetIndex == FfmpegEncoderSink::OutputStats::kTwin) {
                out.twin = recordingOf(d, out.twin.path);
                showForecast(out.twin, m_twinForecast);
                continue;
            }
            if (d.targetIndex < 0) {
                out.file = recordingOf(d, out.file.path);
                showForecast(out.file, m_fileForecast);
                continue;
            }
            if (std::size_t(d.targetIndex) >= encode.plan.targets.size())
                continue;
            const int place = encode.plan.targets[std::size_t(d.targetIndex)];
            if (place >= out.targets.size())
                continue;
            TargetStats &target = out.targets[place];
            target.url = d.path;
            target.bytes = d.bytesWritten;
            target.reconnects = d.reconnects;
            target.queueResets = d.queueResets;
            target.packetsDropped = d.packetsDropped;
        }
    }
    return out;
}

} // namespace selvane
