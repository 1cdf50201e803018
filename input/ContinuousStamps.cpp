#include "input/ContinuousStamps.h"

#include "media/AudioFormat.h"

#include <algorithm>

namespace selvane {

qint64 ContinuousStamps::place(qint64 stampUs, int frames)
{
    // Times are counted in frames from an anchor, so that no rounding adds up.
    const auto endUs = [this] {
        return m_anchorUs + m_frames * 1000000 / audio::kSampleRate;
    };
    const qint64 offUs = stampUs - endUs();
    if (m_started && offUs <= kFollowUs && offUs >= -kFollowUs) {
        m_anchorUs += std::clamp(offUs, -kSteerUs, kSteerUs);
    } else {
        m_started = true;
        m_anchorUs = stampUs;
        m_frames = 0;
    }
    const qint64 atUs = endUs();
    m_frames += frames;
    return atUs;
}

} // namespace selvane
