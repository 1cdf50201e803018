#include "input/MediaOpen.h"

#include "input/ScreenCapture.h"
#include "input/SourceAddress.h"
#include "net/ProxyRoute.h"
#include "net/ProxySettings.h"
#include "net/SocksTcpRelay.h"

#include <QDebug>
#include <mutex>

extern "C" {
#include <libavdevice/avdevice.h>
#include <libavutil/opt.h>
}

namespace selvane {

namespace {

using ffsupport::Dictionary;
using ffsupport::InputContextPtr;

enum class DeviceMedia
{
    Camera,
    Microphone,
};

const AVInputFormat *deviceInputFormat(DeviceMedia media)
{
#ifdef _WIN32
    Q_UNUSED(media);
    return av_find_input_format("dshow");
#else
    return av_find_input_format(media == DeviceMedia::Camera ? "v4l2" : "pulse");
#endif
}

#ifndef _WIN32
// Maps a friendly device name to what the Linux input device opens: the device whose
// description or device name equals it; the name itself when none does.
QByteArray linuxDeviceName(const AVInputFormat *format, const QString &friendlyName)
{
    AVDeviceInfoList *list = nullptr;
    QByteArray match;
    if (avdevice_list_input_sources(format, nullptr, nullptr, &list) >= 0 && list) {
        for (int i = 0; i < list->nb_devices && match.isEmpty(); ++i) {
            const AVDeviceInfo *info = list->devices[i];
            if (QString::fromUtf8(info->device_description) == friendlyName ||
                QString::fromUtf8(info->device_name) == friendlyName)
                match = info->device_name;
        }
    }
    avdevice_free_list_devices(&list);
    return match.isEmpty() ? friendlyName.toUtf8() : match;
}
#endif

InputContextPtr allocateInput(const AVIOInterruptCB &interrupt)
{
    AVFormatContext *raw = avformat_alloc_context();
    if (raw)
        raw->interrupt_callback = interrupt;
    return InputContextPtr(raw);
}

// avformat_open_input frees the context on failure; ownership passes in and back out.
int openInto(InputContextPtr &context, const char *url, const AVInputFormat *format,
             AVDictionary **options)
{
    AVFormatContext *raw = context.release();
    const int err = avformat_open_input(&raw, url, format, options);
    context.reset(err < 0 ? nullptr : raw);
    return err;
}

// The HTTP proxy as the settings have it: HTTP(S) inputs, and TLS inputs that no SOCKS relay
// carries (FFmpeg's TLS tunnels through an HTTP proxy with CONNECT). An HTTP proxy on this machine
// that is not running is passed by, and where the settings say direct FFmpeg is kept from the
// environment's http_proxy (its HTTP and TLS layers read it on their own).
void applyHttpProxyChoice(const SourceAddress &address, bool relayed, Dictionary &options)
{
    const bool tls = address.isTls();
    if (!address.usesHttpProxy() && !tls)
        return;
    if (!relayed && tls && !av_dict_get(options.get(), "http_proxy", nullptr, 0)) {
        const proxy::Server http = proxy::httpProxyFor(address.host(), true, false);
        if (http.isValid()) {
            options.set("http_proxy", http.url().toUtf8().constData());
            qInfo().noquote() << "FFmpegVideoDecoder: TLS input through the HTTP proxy"
                              << http.endpoint();
        }
    }
    const AVDictionaryEntry *entry = av_dict_get(options.get(), "http_proxy", nullptr, 0);
    if (!relayed && entry && entry->value[0] != '\0') {
        const proxy::Server server = proxy::parseServer(QString::fromUtf8(entry->value), false);
        if (!proxy::isLocalAndNotRunning(server))
            return;
        qWarning().noquote() << "ProxySettings: the HTTP proxy" << server.endpoint()
                             << "on this machine is not running; connecting to" << address.host()
                             << "directly";
    }
    options.set("http_proxy", "");
}

// The probe limits are demuxer options (analyzeduration, probesize): they are applied to the
// opened context right before the stream-info probe, which then runs with them. (The probe's
// own options argument takes per-stream decoder options, one dictionary per stream.)
int probeStreams(AVFormatContext *context, Dictionary &probeOptions)
{
    if (probeOptions.get())
        av_opt_set_dict(context, probeOptions.address());
    return avformat_find_stream_info(context, nullptr);
}

} // namespace

OpenedInput openMainInput(const SourceAddress &source, bool separateAudio,
                          const AVIOInterruptCB &interrupt)
{
    ffsupport::ensureMediaLibrariesReady();
    OpenedInput result;
    // What is opened: the source, or the local relay that carries it through a SOCKS proxy.
    SourceAddress address = source;
    proxy::RelayRoute route;
    if (proxy::isRelayable(source.text())) {
        const proxy::Server socks = proxy::socksProxyFor(source.host());
        if (socks.isValid()) {
            route = proxy::startRelay(source.text(), socks);
            if (!route.relay) {
                qWarning().noquote() << "FFmpegVideoDecoder: not opened through the SOCKS proxy"
                                     << socks.endpoint() + ":" << route.failure;
                result.error = SourceError::OpenFailed;
                return result;
            }
            qInfo().noquote() << "FFmpegVideoDecoder: input through local SOCKS relay via"
                              << socks.endpoint();
            address = SourceAddress(route.url);
            result.relay = route.relay;
        }
    }
    result.openedUrl = address.text();

    Dictionary openOptions;
    buildInputOptions(address, openOptions.address(), false);
    for (const auto &[key, value] : route.options)
        openOptions.set(key.constData(), value.constData());
    applyHttpProxyChoice(address, bool(result.relay), openOptions);
    const std::uint64_t relaySerial = result.relay ? result.relay->lastOutcome().serial : 0;
    Dictionary probeOptions;

    result.context = allocateInput(interrupt);
    if (!result.context) {
        result.error = SourceError::OpenFailed;
        return result;
    }

    const SourceKind kind = address.kind();
    int err = 0;
    if (kind == SourceKind::TestSignal) {
        // A generator: its graph is built here and read as a source of its own (no stream
        // probe: the graph's outputs tell everything).
        QString why;
        result.graph =
            TestSignalGraph::open(address.testGraph().toUtf8(), result.context.get(), &why);
        if (!result.graph) {
            qWarning().noquote() << "FFmpegVideoDecoder: test signal:" << why;
            result.context.reset();
            result.error = SourceError::OpenFailed;
        }
        return result;
    }
    if (kind == SourceKind::DisplayCapture || kind == SourceKind::WindowCapture) {
        const GrabInput grab = grabInputFor(address);
        const AVInputFormat *format = av_find_input_format(grabFormatName());
        if (grab.error != SourceError::None || !format) {
            result.context.reset();
            result.error = format ? grab.error : SourceError::CaptureUnavailable;
            return result;
        }
        result.captureDevice = true;
        qInfo().noquote() << "FFmpegVideoDecoder: capturing" << address.text() << "with"
                          << grabFormatName() << "(" + QString::fromUtf8(grab.url) + ")";
        Dictionary grabOptions;
        for (const auto &[key, value] : grab.options)
            grabOptions.set(key.constData(), value.constData());
        {
            const std::unique_lock lock = lockDisplayConnect();
            err = openInto(result.context, grab.url.constData(), format, grabOptions.address());
        }
        if (err < 0) {
            qWarning().noquote() << "FFmpegVideoDecoder:"
                                 << ffsupport::errorText("avformat_open_input", err);
            result.error = kind == SourceKind::WindowCapture ? SourceError::CaptureWindowInvalid
                                                             : SourceError::OpenFailed;
            return result;
        }
    } else if (kind == SourceKind::CaptureDevice) {
        result.captureDevice = true;
        const AVInputFormat *format = deviceInputFormat(DeviceMedia::Camera);
        if (!format) {
            result.context.reset();
            result.error = SourceError::DeviceInputMissing;
            return result;
        }
        Dictionary deviceOptions;
#ifdef _WIN32
        const QByteArray spec = buildDshowDeviceSpec(
            address.camera(), separateAudio ? QString() : address.microphone());
        deviceOptions.set("rtbufsize", separateAudio ? "16777216" : "33554432");
#else
        const QByteArray spec = linuxDeviceName(format, address.camera());
        if (!separateAudio)
            result.deviceMicrophone = address.microphone();
#endif
        probeOptions.set("analyzeduration", "2000000");
        probeOptions.set("probesize", "2000000");
        err = openInto(result.context, spec.constData(), format, deviceOptions.address());
        if (err < 0) {
            qWarning().noquote() << "FFmpegVideoDecoder:"
                                 << ffsupport::errorText("avformat_open_input", err);
            result.error = SourceError::DeviceOpenFailed;
            return result;
        }
    } else {
        const AVInputFormat *format = nullptr;
        const QByteArray url = address.text().toUtf8();
        const QString &scheme = address.scheme();
        if (scheme == "rtmp" || scheme == "rtmps" || scheme == "rtmpt") {
            probeOptions.set("analyzeduration", "10000000");
            probeOptions.set("probesize", "8000000");
        }
        err = openInto(result.context, url.constData(), format, openOptions.address());
        if (err < 0) {
            qWarning().noquote() << "FFmpegVideoDecoder:"
                                 << ffsupport::errorText("avformat_open_input", err);
            // The demuxer sees a closed connection; the relay knows what the proxy said.
            const QString why =
                result.relay ? proxy::relayFailureSince(*result.relay, relaySerial) : QString();
            if (!why.isEmpty())
                qWarning().noquote() << "FFmpegVideoDecoder: through the SOCKS proxy:" << why;
            result.error = SourceError::OpenFailed;
            return result;
        }
    }
    openOptions.reset();

    err = probeStreams(result.context.get(), probeOptions);
    if (err < 0) {
        qWarning().noquote() << "FFmpegVideoDecoder:"
                             << ffsupport::errorText("avformat_find_stream_info", err);
        result.context.reset();
        result.error = SourceError::ProbeFailed;
        return result;
    }
    if (result.context->duration > 0 && result.context->duration != AV_NOPTS_VALUE)
        result.durationMs = result.context->duration / 1000;
    result.live = result.captureDevice || source.isLive(result.context.get());
    return result;
}

OpenedInput openMicrophoneInput(const QString &microphone, const AVIOInterruptCB &interrupt)
{
    ffsupport::ensureMediaLibrariesReady();
    OpenedInput result;
    result.captureDevice = true;
    result.live = true;
    if (microphone.isEmpty()) {
        result.error = SourceError::MicAddressInvalid;
        return result;
    }
    const AVInputFormat *format = deviceInputFormat(DeviceMedia::Microphone);
    if (!format) {
        result.error = SourceError::MicInputMissing;
        return result;
    }
    Dictionary options;
#ifdef _WIN32
    const QByteArray spec = buildDshowDeviceSpec(QString(), microphone);
    options.set("rtbufsize", "8388608");
#else
    const QByteArray spec = linuxDeviceName(format, microphone);
#endif
    result.context = allocateInput(interrupt);
    int err = result.context ? openInto(result.context, spec.constData(), format, options.address())
                             : AVERROR(ENOMEM);
    if (err < 0) {
        qWarning().noquote() << "FFmpegVideoDecoder:"
                             << ffsupport::errorText("avformat_open_input", err);
        result.context.reset();
        result.error = SourceError::MicOpenFailed;
        return result;
    }
    Dictionary probe;
    probe.set("analyzeduration", "1000000");
    probe.set("probesize", "1000000");
    err = probeStreams(result.context.get(), probe);
    if (err < 0) {
        result.context.reset();
        result.error = SourceError::MicProbeFailed;
        return result;
    }
    return result;
}

} // namespace selvane
