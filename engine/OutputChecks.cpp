// The checks made before outputs start, apart from the rest of the engine: they need no running
// engine, and the command line reader (and its fuzzer) link them alone.

#include "engine/Engine.h"

namespace selvane {

StreamTarget Engine::parseStreamTarget(const QString &text)
{
    return selvane::parseStreamTarget(text);
}

OutputCheck Engine::checkOutputs(const EncoderSettings &settings)
{
    if (settings.fileEnabled && !settings.filePath.trimmed().isEmpty()) {
        const OutputProblem problem = recordingProblem(settings.filePath.trimmed());
        if (problem != OutputProblem::None)
            return {problem, settings.filePath.trimmed()};
    }
    for (const StreamTarget &target : settings.streamTargets) {
        const OutputProblem problem = streamTargetProblem(target);
        if (problem != OutputProblem::None)
            return {problem, maskStreamUrl(target.url)};
    }
    return {};
}

} // namespace selvane
