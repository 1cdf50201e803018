#pragma once

// One run of a Windows display or window capture done by the system itself rather than by a
// demuxer: desktop duplication (DXGI) of a monitor, or a window through the companion library
// WgcCapture.dll. Each BGRA picture is converted into a pool token and handed to the decoder's
// host like a decoded picture, stamped with the capture's own clock.
//
// Created and used on the decoder's worker thread only. When the system refuses the capture
// before a first picture (duplication is not offered, the library is not there), `run` returns
// Refused and the decoder opens the same address with gdigrab instead.

#include "input/DecodeRun.h"
#include "input/SourceAddress.h"

#include <QString>

namespace selvane {

class NativeCaptureRun
{
public:
    enum class Outcome
    {
        Refused,
        Ended
    };

    NativeCaptureRun(DecoderControls &controls, DecodeHost &host);

    // Whether this build captures `address` natively at all (Windows, a display or window
    // capture address; for a window, the companion library loaded).
    static bool offeredFor(const SourceAddress &address);
    // Captures until the host cancels the run. `why` says what refused the capture.
    Outcome run(const SourceAddress &address, QString *why);

private:
    void deliver(const std::uint8_t *bgra, int width, int height, std::int64_t timeUs);

    DecoderControls &m_controls;
    DecodeHost &m_host;
    std::unique_ptr<PictureConverter> m_pictures;
    PictureConverter::Sizes m_lastSizes;
    SourceTimeline m_timeline;
    quint64 m_timelineId = 0;
    qint64 m_delivered = 0;
    qint64 m_lastUs = SourceTimeline::kNoTime;
};

} // namespace selvane
