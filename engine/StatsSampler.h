#pragma once

// The rates of the stats snapshot: pictures a second per channel and for the program, kilobits
// a second encoded and sent to each stream target, from the running counters sampled once a
// second. A counter that went back (a new output session) counts as a rate of zero, never as a
// negative one.
//
// Owned by the engine; its thread only (the GUI thread).

#include "engine/EngineTypes.h"

#include <QList>
#include <array>

namespace selvane {

class StatsSampler
{
public:
    // The counters as they stand at `nowMs`, on a clock that started with the counters at zero.
    struct Counters
    {
        std::array<qint64, kChannelCount> channelPictures{};
        qint64 programFrames = 0;
        qint64 bytesEncoded = 0;
        QList<qint64> targetBytes;
    };

    void sample(const Counters &counters, qint64 nowMs);
    // Writes the rates of the last sample into a snapshot (its targets already listed).
    void apply(EngineStats &stats) const;

private:
    static double perSecond(qint64 now, qint64 last, double seconds);

    qint64 m_lastMs = 0;
    Counters m_last;
    std::array<double, kChannelCount> m_channelFps{};
    double m_programFps = 0.0;
    double m_outputKbps = 0.0;
    QList<double> m_targetKbps;
};

} // namespace selvane
