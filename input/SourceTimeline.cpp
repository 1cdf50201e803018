#include "input/SourceTimeline.h"

#include <algorithm>
#include <cstdlib>

namespace selvane {

void SourceTimeline::reset()
{
    m_video = {};
    m_audio = {};
    m_video.jump = m_audio.jump = m_jumps; // no earlier jump is matched
    m_haveLoopOffset = false;
    m_loopOffsetUs = 0;
}

qint64 SourceTimeline::map(Stream &stream, qint64 rawUs, qint64 durationUs)
{
    if (rawUs == kNoTime) {
        // No timestamp: it follows the previous frame.
        rawUs = stream.seen ? stream.expectedUs : 0;
    }
    if (!stream.seen) {
        stream.seen = true;
        stream.offsetUs = m_haveLoopOffset ? m_loopOffsetUs : 0;
    } else if (rawUs > stream.expectedUs + kJumpUs || rawUs < stream.expectedUs - kJumpUs) {
        // A jump: the stream goes on where it was expected, or as the other stream's jump did.
        qint64 deltaUs = stream.expectedUs - rawUs;
        if (stream.jump < m_jumps && std::abs(deltaUs - m_jumpDeltaUs) < kJumpUs) {
            deltaUs = m_jumpDeltaUs;
        } else {
            ++m_jumps;
            m_jumpDeltaUs = deltaUs;
        }
        stream.jump = m_jumps;
        stream.offsetUs += deltaUs;
    }
    stream.expectedUs = rawUs + std::max<qint64>(0, durationUs);
    const qint64 mapped = rawUs + stream.offsetUs;
    stream.endUs = std::max(stream.endUs, mapped + std::max<qint64>(0, durationUs));
    return mapped;
}

void SourceTimeline::loopRestart(qint64 startUs)
{
    // Both streams start the next loop at the same instant: after the longer of the two.
    const qint64 loopEnd = std::max(m_video.endUs, m_audio.endUs);
    m_loopOffsetUs = loopEnd - startUs;
    m_haveLoopOffset = true;
    m_video.seen = false;
    m_audio.seen = false;
}

} // namespace selvane
