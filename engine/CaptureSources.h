#pragma once

// What this system offers to capture and play on, as the faces list it: cameras, microphones,
// monitors, windows and speakers; a still of a monitor or window; and the check of an address
// as typed.
//
// Static functions. The lists ask the system each time: call them on demand (a Refresh), not
// on a timer. captureStill() blocks for one grab: never on the window thread.

#include "engine/EngineTypes.h"
#include "engine/Problem.h"

#include <QImage>
#include <QList>
#include <QSize>

namespace selvane {

class CaptureSources
{
public:
    // Cameras (V4L2, DirectShow) and microphones (PulseAudio sources, DirectShow).
    static QList<CaptureDevice> cameras();
    static QList<CaptureDevice> microphones();
    // Monitors and top-level windows to capture. Empty, and hasCaptureDisplay() false, where
    // there is nothing to capture (Wayland without XWayland).
    static bool hasCaptureDisplay();
    static QList<CaptureTarget> displays();
    static QList<CaptureTarget> windows();
    // One picture of a display or window address, fitted into `fit`.
    static QImage captureStill(const QString &address, QSize fit);
    // What is wrong with an address as typed: an unknown protocol, a network address without a
    // host, no readable file, a test signal that does not parse. An empty address is not wrong
    // (it clears a channel).
    static Problem checkAddress(const QString &address);
    // The speaker outputs the preview can play on; one of them is the system's default.
    static QList<AudioOutputDevice> audioOutputs();
};

} // namespace selvane
