#pragma once

// Why a source could not be opened or stopped playing. The engine reports the code with a
// technical detail and logs the English text of logText(); what the operator reads is the faces'
// business (translated there). Values and a plain function, any thread.

#include <QMetaType>
#include <QString>

namespace selvane {

enum class SourceError
{
    None,
    OpenFailed,  // the demuxer could not open the address
    ProbeFailed, // the stream-information probe failed
    NoVideoStream,
    DecoderOpenFailed,
    AllocFailed,        // frames or packets could not be allocated
    DeviceInputMissing, // the capture-device input is not part of this FFmpeg build
    DeviceOpenFailed,   // camera or microphone could not be opened
    MicAddressInvalid,  // separate microphone: no usable audio item
    MicInputMissing,
    MicOpenFailed,
    MicProbeFailed,
    MicNoAudio,
    MicDecoderFailed,
    CaptureUnavailable, // display or window capture is not available in this build
    CaptureNoDisplay,      // no X11 display to capture from (Wayland without XWayland)
    CaptureMonitorInvalid, // no monitor with that index
    CaptureWindowInvalid,  // the window handle is missing, unparsable or names no window
    CaptureWindowClosed,   // the captured window went away
    ReadFailed,         // the source stopped delivering (network error, device gone)
};

// The text written to the log for a code (English, technical).
QString sourceErrorLogText(SourceError error);

} // namespace selvane

Q_DECLARE_METATYPE(selvane::SourceError)
