#pragma once

// Opening a source address as a demuxer input, with the open options, probe options and error
// texts of each kind. Called on a decoder's worker thread; `interrupt` is installed before the
// open so that a stop can break a blocking network call.
//
// Network inputs follow the proxy settings (net/ProxySettings.h): RTMP(S), RTSP(S) and tcp://
// go through a local SOCKS relay of their own when a SOCKS proxy applies (TLS still to the real
// server), HTTP(S) through the HTTP proxy; where the settings say direct, the environment's
// http_proxy is kept out of FFmpeg too.
//
// Capture devices keep the "dshow://capture?video=…&audio=…" grammar on every platform. On
// Windows they open through the "dshow" input with one device specification. On Linux the
// camera opens through "v4l2" and the microphone through "pulse"; a friendly name is matched
// against the devices the system lists (description or device name), and the microphone of an
// address that names both is opened as a separate audio input beside the camera.

#include "input/SourceAddress.h"
#include "input/SourceError.h"
#include "input/TestSignalGraph.h"
#include "media/FfmpegTypes.h"

#include <QString>
#include <memory>

namespace selvane {

class SocksTcpRelay;

struct OpenedInput
{
    // The local relay a network input goes through when a SOCKS proxy applies to its host; it
    // outlives the context (members go in reverse order).
    std::shared_ptr<SocksTcpRelay> relay;
    ffsupport::InputContextPtr context;
    SourceError error = SourceError::None;
    QString openedUrl;     // what was actually opened (after relay rewriting)
    qint64 durationMs = 0; // 0 when unknown
    bool live = false;
    bool captureDevice = false;
    // Linux: the microphone named in the same capture address, to be opened separately.
    QString deviceMicrophone;
    // A test signal's graph: the source of the context's packets.
    std::unique_ptr<TestSignalGraph> graph;

    // The next packet, from the demuxer or the test signal's graph.
    int read(AVPacket *packet)
    {
        return graph ? graph->read(packet) : av_read_frame(context.get(), packet);
    }
};

// The main address of a channel or overlay. `separateAudio` tells that the channel has its own
// microphone address, in which case the address's own audio item is ignored.
OpenedInput openMainInput(const SourceAddress &source, bool separateAudio,
                          const AVIOInterruptCB &interrupt);

// A microphone by its device name (of a "dshow://capture?audio=NAME" address, or on Linux of a
// camera address); an empty name is refused with MicAddressInvalid.
OpenedInput openMicrophoneInput(const QString &microphone, const AVIOInterruptCB &interrupt);

} // namespace selvane
