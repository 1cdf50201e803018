#include "engine/StatsSampler.h"

#include <algorithm>

namespace selvane {

double StatsSampler::perSecond(qint64 now, qint64 last, double seconds)
{
    return now >= last ? (now - last) / seconds : 0.0;
}

void StatsSampler::sample(const Counters &counters, qint64 nowMs)
{
    const double seconds = std::max<qint64>(1, nowMs - m_lastMs) / 1000.0;
    {
        for (int c = 0; c < kChannelCount; ++c)
            m_channelFps[std::size_t(c)] =
                perSecond(counters.channelPictures[std::size_t(c)],
                          m_last.channelPictures[std::size_t(c)], seconds);
        m_programFps = perSecond(counters.programFrames, m_last.programFrames, seconds);
        m_outputKbps = perSecond(counters.bytesEncoded, m_last.bytesEncoded, seconds) * 8 / 1000;
        m_targetKbps.resize(counters.targetBytes.size());
        for (qsizetype i = 0; i < counters.targetBytes.size(); ++i)
            m_targetKbps[i] =
                perSecond(counters.targetBytes[i], m_last.targetBytes.value(i), seconds) * 8 / 1000;
    }
    m_last = counters;
    m_lastMs = nowMs;
}

void StatsSampler::apply(EngineStats &stats) const
{
    for (int c = 0; c < kChannelCount; ++c)
        stats.channels[std::size_t(c)].fps = m_channelFps[std::size_t(c)];
    stats.program.fps = m_programFps;
    stats.output.kbps = m_outputKbps;
    for (qsizetype i = 0; i < stats.output.targets.size() && i < m_targetKbps.size(); ++i)
        stats.output.targets[i].kbps = m_targetKbps[i];
}

} // namespace selvane
