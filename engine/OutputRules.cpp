// The checks made before outputs start, apart from the rest of the engine: they need no running
// engine, and the command line reader (and its fuzzer) link them alone.

#include "engine/OutputRules.h"

#include "output/EncodeProfiles.h"
#include "output/VideoEncoderChoice.h"

#include <QFileInfo>

namespace selvane {

StreamTarget OutputRules::parseStreamTarget(const QString &text)
{
    return selvane::parseStreamTarget(text);
}

namespace {

ProblemKind kindOf(OutputProblem problem)
{
    switch (problem) {
    case OutputProblem::None:
        break;
    case OutputProblem::UnknownContainer:
        return ProblemKind::RecordingUnknownContainer;
    case OutputProblem::FolderMissing:
        return ProblemKind::RecordingFolderMissing;
    case OutputProblem::FolderNotWritable:
        return ProblemKind::RecordingFolderNotWritable;
    case OutputProblem::BadTargetUrl:
        return ProblemKind::TargetBadUrl;
    case OutputProblem::NoTargetContainer:
        return ProblemKind::TargetNoContainer;
    }
    return ProblemKind::None;
}

} // namespace

OutputRules::EightKRules OutputRules::eightKRules(const OutputSettings &settings, QSize programSize)
{
    const QSize size = settings.size.explicitSize ? settings.size.size : programSize;
    EightKRules rules;
    rules.eightK = encoder::isEightK(size.width(), size.height());
    rules.hardwareForced =
        rules.eightK && settings.encoder.encoderMode != EncoderSettings::Hardware;
    rules.performanceForced = rules.eightK && settings.encoder.fps >= 59.0 &&
                              settings.encoder.qualityPreset != EncoderSettings::Performance;
    return rules;
}

Problem OutputRules::checkProfiles(const EncoderSettings &encoder)
{
    QStringList names;
    for (const EncodeProfile &profile : encoder.profiles) {
        if (!profiles::isValidName(profile.name) || profiles::isDefault(profile.name))
            return {ProblemKind::ProfileBadName, profile.name};
        if (names.contains(profile.name))
            return {ProblemKind::ProfileTwice, profile.name};
        names << profile.name;
        if (profile.size.isValid() &&
            (profile.size.width() < 16 || profile.size.height() < 16 ||
             profile.size.width() > 8192 || profile.size.height() > 8192 ||
             profile.size.width() % 2 || profile.size.height() % 2))
            return {ProblemKind::ProfileBadSize, profile.name};
        // A profile takes every picture of the program or fewer: never more than there are.
        if (profile.fps > encoder.fps + 0.01)
            return {ProblemKind::ProfileAboveProgramRate, profile.name, qint64(encoder.fps)};
    }
    const auto known = [&](const QString &name) {
        return profiles::isDefault(name) || names.contains(name);
    };
    if (encoder.fileEnabled && !known(encoder.fileProfile))
        return {ProblemKind::ProfileUnknown, encoder.fileProfile};
    for (const StreamTarget &target : encoder.streamTargets) {
        if (!known(target.profile))
            return {ProblemKind::ProfileUnknown, target.profile};
        if (isHlsTarget(target) && (target.hlsSegmentSeconds < 1 || target.hlsSegmentSeconds > 6))
            return {ProblemKind::HlsBadSegment, {}, target.hlsSegmentSeconds};
        if (isHlsTarget(target) && (target.hlsWindow < 2 || target.hlsWindow > 60))
            return {ProblemKind::HlsBadWindow, {}, target.hlsWindow};
    }
    QList<int> isoChannels;
    for (const IsoRecording &iso : encoder.isoRecordings) {
        if (iso.channel < 0 || iso.channel > 3)
            return {ProblemKind::IsoBadChannel, {}, iso.channel + 1};
        if (isoChannels.contains(iso.channel))
            return {ProblemKind::IsoTwice, {}, iso.channel + 1};
        isoChannels << iso.channel;
        if (!known(iso.profile))
            return {ProblemKind::ProfileUnknown, iso.profile};
        if (iso.path.trimmed().isEmpty() &&
            (!encoder.fileEnabled || encoder.filePath.trimmed().isEmpty()))
            return ProblemKind::IsoNeedsRecording;
    }
    return {};
}

Problem OutputRules::check(const OutputSettings &settings, QSize programSize)
{
    const EncoderSettings &encoder = settings.encoder;
    if (!settings.hasDestination())
        return ProblemKind::NothingToWrite;
    const QString path = encoder.filePath.trimmed();
    if (encoder.fileEnabled && !path.isEmpty()) {
        OutputProblem problem = recordingProblem(path);
        // A folder that is to be made when the outputs start is no reason to refuse them.
        if (problem == OutputProblem::FolderMissing && settings.makeRecordingFolder)
            problem = OutputProblem::None;
        if (problem != OutputProblem::None)
            return {kindOf(problem), path};
        const QString twin = encoder.twinFilePath.trimmed();
        if (!twin.isEmpty()) {
            if (QFileInfo(twin).absoluteFilePath() == QFileInfo(path).absoluteFilePath())
                return {ProblemKind::TwinIsRecording, twin};
            problem = recordingProblem(twin);
            if (problem != OutputProblem::None)
                return {kindOf(problem), twin};
        }
    }
    for (const StreamTarget &target : encoder.streamTargets) {
        const OutputProblem problem = streamTargetProblem(target);
        if (problem != OutputProblem::None)
            return {kindOf(problem), maskStreamUrl(target.url)};
    }
    if (const Problem problem = checkProfiles(encoder))
        return problem;
    // 8K is HEVC, and FLV carries H.264 only: at the size of each target's own profile.
    const QSize defaultSize = settings.size.explicitSize ? settings.size.size : programSize;
    for (const StreamTarget &target : encoder.streamTargets) {
        const std::optional<EncodeProfile> profile = profiles::find(encoder, target.profile);
        const QSize size =
            profile && !profiles::isDefault(target.profile) && profile->size.isValid()
                ? profile->size
                : defaultSize;
        if (encoder::isEightK(size.width(), size.height()) &&
            isFlvTarget(target.url, target.formatName))
            return {ProblemKind::EightKFlvTarget, maskStreamUrl(target.url)};
    }
    return {};
}

} // namespace selvane
