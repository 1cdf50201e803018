// The checks made before outputs start, apart from the rest of the engine: they need no running
// engine, and the command line reader (and its fuzzer) link them alone.

#include "engine/OutputRules.h"

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
    // 8K is HEVC, and FLV carries H.264 only.
    if (eightKRules(settings, programSize).eightK)
        for (const StreamTarget &target : encoder.streamTargets)
            if (isFlvTarget(target.url, target.formatName))
                return {ProblemKind::EightKFlvTarget, maskStreamUrl(target.url)};
    return {};
}

} // namespace selvane
