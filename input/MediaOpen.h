#pragma once

// Opening a source address as a demuxer input, with the open options, probe options and error
// texts of each kind. Called on a decoder's worker thread; `interrupt` is installed before the
// open so that a stop can break a blocking network call.
//
// Capture devices keep the "dshow://capture?video=…&audio=…" grammar on every platform. On
// Windows they open through the "dshow" input with one device specification. On Linux the
// camera opens through "v4l2" and the microphone through "pulse"; a friendly name is matched
// against the devices the system lists (description or device name), and the microphone of an
// address that names both is opened as a separate audio input beside the camera.

#include "input/FfmpegSupport.h"

#include <QString>

namespace selvane {

struct OpenedInput
{
    ffsupport::InputContextPtr context;
    QString error;        // empty on success; the operator text otherwise
    QString openedUrl;    // what was actually opened (after relay rewriting)
    qint64 durationMs = 0; // 0 when unknown
    bool live = false;
    bool captureDevice = false;
    // Linux: the microphone named in the same capture address, to be opened separately.
    QString deviceMicrophone;
};

// The main address of a channel or overlay (display and window capture excluded).
// `separateAudio` tells that the channel has its own microphone address, in which case the
// address's own audio item is ignored.
OpenedInput openMainInput(const QString &address, bool separateAudio,
                          const AVIOInterruptCB &interrupt);

// A microphone-only capture address ("dshow://capture?audio=NAME"), or a plain device name when
// `isBareDeviceName` is set (Linux: the microphone of a camera address).
OpenedInput openMicrophoneInput(const QString &addressOrName, bool isBareDeviceName,
                                const AVIOInterruptCB &interrupt);

// Network and device registration, once per process (both calls are idempotent).
void ensureMediaLibrariesReady();

// Operator texts of the open failures.
namespace openerror {
inline const char *const kDshowNotRegistered =
    "未注册 dshow 输入（通常未链接 libavdevice）。请确认已安装带 libavdevice 的 FFmpeg，执行 qmake "
    "后完整重编，且 selvane.pro 中链接含 -lavdevice。";
inline const char *const kDeviceOpenFailed =
    "无法打开摄像头或麦克风（设备名是否与系统一致？是否被其他程序占用？）";
inline const char *const kOpenFailed = "avformat_open_input failed";
inline const char *const kProbeFailed = "avformat_find_stream_info failed";
inline const char *const kMicUrlInvalid = "dshow 分离麦克风 URL 无效（需 dshow://…&audio=设备名）";
inline const char *const kMicNotRegistered = "未注册 dshow 输入（分离麦克风）";
inline const char *const kMicOpenFailed = "无法打开麦克风（分离 dshow 采集）";
inline const char *const kMicProbeFailed = "dshow 麦克风 find_stream_info 失败";
inline const char *const kMicNoAudio = "分离音轨中无音频流";
inline const char *const kMicDecoderFailed = "dshow 麦克风解码器打开失败";
} // namespace openerror

} // namespace selvane
