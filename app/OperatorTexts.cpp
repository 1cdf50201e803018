#include "app/OperatorTexts.h"

#include <QCoreApplication>

namespace selvane {

namespace {
QString tr(const char *text)
{
    return QCoreApplication::translate("selvane", text);
}
} // namespace

QString sourceErrorText(SourceError error)
{
    switch (error) {
    case SourceError::None:
        return {};
    case SourceError::OpenFailed:
        return tr("The source could not be opened.");
    case SourceError::ProbeFailed:
        return tr("The source's streams could not be read.");
    case SourceError::NoVideoStream:
        return tr("The source has no picture.");
    case SourceError::DecoderOpenFailed:
        return tr("The source's picture cannot be decoded.");
    case SourceError::AllocFailed:
        return tr("Out of memory while opening the source.");
    case SourceError::DeviceInputMissing:
        return tr("Capture devices are not available: this FFmpeg was built without libavdevice.");
    case SourceError::DeviceOpenFailed:
        return tr("The camera or microphone could not be opened (is the device name the "
                  "system's own? Is another program using it?)");
    case SourceError::MicAddressInvalid:
        return tr("The separate microphone address is invalid (it needs dshow://…&audio=NAME).");
    case SourceError::MicInputMissing:
        return tr("Capture devices are not available for the separate microphone.");
    case SourceError::MicOpenFailed:
        return tr("The separate microphone could not be opened.");
    case SourceError::MicProbeFailed:
        return tr("The separate microphone's stream could not be read.");
    case SourceError::MicNoAudio:
        return tr("The separate microphone delivers no sound.");
    case SourceError::MicDecoderFailed:
        return tr("The separate microphone's sound cannot be decoded.");
    case SourceError::CaptureUnavailable:
        return tr("Screen and window capture are not available in this build.");
    case SourceError::CaptureNoDisplay:
        return tr("Screen and window capture need an X11 display, and this session has none "
                  "(on Wayland, run Selvane under XWayland).");
    case SourceError::CaptureMonitorInvalid:
        return tr("Invalid monitor index.");
    case SourceError::CaptureWindowInvalid:
        return tr("wgc:// needs a valid hwnd parameter (decimal or 0x hexadecimal).");
    case SourceError::CaptureWindowClosed:
        return tr("The captured window was closed.");
    case SourceError::ReadFailed:
        return tr("The source stopped delivering.");
    }
    return {};
}

} // namespace selvane
