#include "input/SourceError.h"

namespace selvane {

QString sourceErrorLogText(SourceError error)
{
    switch (error) {
    case SourceError::None:
        return {};
    case SourceError::OpenFailed:
        return QStringLiteral("avformat_open_input failed");
    case SourceError::ProbeFailed:
        return QStringLiteral("avformat_find_stream_info failed");
    case SourceError::NoVideoStream:
        return QStringLiteral("no video stream");
    case SourceError::DecoderOpenFailed:
        return QStringLiteral("decoder open failed");
    case SourceError::AllocFailed:
        return QStringLiteral("alloc frame/packet failed");
    case SourceError::DeviceInputMissing:
        return QStringLiteral("capture device input not registered (libavdevice missing)");
    case SourceError::DeviceOpenFailed:
        return QStringLiteral("capture device open failed");
    case SourceError::MicAddressInvalid:
        return QStringLiteral("separate microphone address invalid");
    case SourceError::MicInputMissing:
        return QStringLiteral("separate microphone input not registered");
    case SourceError::MicOpenFailed:
        return QStringLiteral("separate microphone open failed");
    case SourceError::MicProbeFailed:
        return QStringLiteral("separate microphone find_stream_info failed");
    case SourceError::MicNoAudio:
        return QStringLiteral("separate microphone has no audio stream");
    case SourceError::MicDecoderFailed:
        return QStringLiteral("separate microphone decoder open failed");
    case SourceError::CaptureUnavailable:
        return QStringLiteral("capture is not available in this build");
    case SourceError::CaptureNoDisplay:
        return QStringLiteral("no X11 display to capture from");
    case SourceError::CaptureMonitorInvalid:
        return QStringLiteral("invalid monitor index");
    case SourceError::CaptureWindowInvalid:
        return QStringLiteral("wgc:// needs a valid hwnd (decimal or 0x hexadecimal)");
    case SourceError::CaptureWindowClosed:
        return QStringLiteral("the captured window was closed");
    case SourceError::ReadFailed:
        return QStringLiteral("read ended");
    }
    return {};
}

} // namespace selvane
