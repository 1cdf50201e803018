#include "output/VideoEncoderChoice.h"

#include "media/FrameSizes.h"

#include <QDebug>
#include <algorithm>
#include <atomic>
#include <cmath>
#include <mutex>

extern "C" {
#include <libavutil/opt.h>
}

namespace selvane::encoder {

namespace {

constexpr auto kFailedRequestMemory = std::chrono::seconds(10);

struct FamilyMemory
{
    QString preferred;
    QString failedKey;
    std::chrono::steady_clock::time_point failedUntil{};
};

std::mutex g_memoryMutex;
FamilyMemory g_memory[2];
bool g_unavailableWarned = false;
SteadyNow g_now;
std::atomic<int> g_hardwareAttempts{0};

std::chrono::steady_clock::time_point now()
{
    std::lock_guard lock(g_memoryMutex);
    return g_now ? g_now() : std::chrono::steady_clock::now();
}

FamilyMemory &memoryFor(Family family)
{
    return g_memory[family == Family::Hevc ? 1 : 0];
}

const char *softwareName(Family family)
{
    return family == Family::Hevc ? "libx265" : "libx264";
}

QStringList hardwareCandidates(Family family)
{
    if (family == Family::Hevc)
        return {"hevc_nvenc", "hevc_qsv", "hevc_amf"};
    return {"h264_nvenc", "h264_qsv", "h264_amf"};
}

void setOption(AVCodecContext *context, const char *key, const QByteArray &value)
{
    // An encoder that rejects an option is still opened.
    av_opt_set(context->priv_data, key, value.constData(), 0);
}

void setPrivateOptions(AVCodecContext *context, const QString &name, AVCodecID id,
                       const EncoderSettings &s, int gop)
{
    const int preset = std::clamp(s.qualityPreset, 0, 2);
    if (name.contains("nvenc") && (id == AV_CODEC_ID_H264 || id == AV_CODEC_ID_HEVC)) {
        static const char *const presets[] = {"p1", "p4", "p6"};
        setOption(context, "preset", presets[preset]);
        setOption(context, "delay", "0");
        setOption(context, "rc-lookahead", "0");
        setOption(context, "rc", "cbr");
        setOption(context, "zerolatency", "1");
        setOption(context, "forced-idr", "1");
    } else if (name.contains("_qsv")) {
        static const char *const presets[] = {"veryfast", "medium", "slow"};
        setOption(context, "preset", presets[preset]);
        setOption(context, "look_ahead", "0");
        setOption(context, "async_depth", "1");
        setOption(context, "low_delay_brc", "1");
    } else if (name.contains("_amf")) {
        static const char *const qualities[] = {"speed", "balanced", "quality"};
        setOption(context, "usage", "lowlatency");
        setOption(context, "quality", qualities[preset]);
        setOption(context, "rc", "cbr");
        setOption(context, "filler_data", "1");
    } else if (name.contains("libx264")) {
        static const char *const presets[] = {"ultrafast", "veryfast", "medium"};
        setOption(context, "preset", presets[preset]);
        setOption(context, "tune", "zerolatency");
        if (s.livePublish)
            setOption(context, "x264-params",
                      QStringLiteral("sliced_threads=0:threads=4:weightp=0:scenecut=0:force-cfr=1:"
                                     "nal-hrd=cbr:filler=1:keyint=%1:min-keyint=%1")
                          .arg(gop)
                          .toUtf8());
    } else if (name.contains("libx265")) {
        static const char *const presets[] = {"ultrafast", "veryfast", "medium"};
        setOption(context, "preset", presets[preset]);
        setOption(context, "tune", "zerolatency");
        setOption(context, "x265-params", "repeat-headers=1:scenecut=0");
    }
}

} // namespace

Family familyFor(int width, int height)
{
    return isEightK(width, height) ? Family::Hevc : Family::H264;
}

qint64 automaticBitrateKbps(double fps, int width, int height)
{
    const qint64 pixels = qint64(width) * height;
    const qint64 cap = pixels <= frames::kPixels1080p ? 20000
                       : pixels <= frames::kPixels4K  ? 100000
                                                      : 200000;
    const qint64 kbps = std::llround(std::max(fps, 1.0) * double(pixels) * 0.00012);
    return std::clamp<qint64>(kbps, 2500, cap);
}

bool configureAndOpen(const AVCodec *codec, const EncoderSettings &s, int width, int height,
                      bool globalHeader, ffsupport::CodecContextPtr *out)
{
    ffsupport::CodecContextPtr context(avcodec_alloc_context3(codec));
    if (!context)
        return false;
    const QString name = QString::fromLatin1(codec->name);
    const int fps = std::max(1, int(std::lround(s.fps)));
    context->width = width;
    context->height = height;
    context->time_base = s.livePublish ? AVRational{1, 1000} : AVRational{1, fps};
    context->framerate = AVRational{fps, 1};
    context->max_b_frames = 0;
    context->gop_size = s.keyframeSeconds * fps;
    context->pix_fmt =
        name.contains("_qsv") || name.contains("_amf") ? AV_PIX_FMT_NV12 : AV_PIX_FMT_YUV420P;
    const qint64 bitrate =
        (s.bitrateKbps > 0 ? qint64(s.bitrateKbps) : automaticBitrateKbps(s.fps, width, height)) *
        1000;
    context->bit_rate = bitrate;
    context->rc_max_rate = bitrate;
    context->rc_min_rate = s.livePublish ? bitrate : 0;
    context->rc_buffer_size = int(std::min<qint64>(s.livePublish ? bitrate : 2 * bitrate, INT_MAX));
    setPrivateOptions(context.get(), name, codec->id, s, context->gop_size);
    if (globalHeader)
        context->flags |= AV_CODEC_FLAG_GLOBAL_HEADER;
    if (avcodec_open2(context.get(), codec, nullptr) < 0)
        return false;
    *out = std::move(context);
    return true;
}

bool openVideoEncoder(const EncoderSettings &s, int width, int height, bool globalHeader,
                      OpenedEncoder *out)
{
    const Family family = familyFor(width, height);
    const QString key = QStringLiteral("%1x%2").arg(width).arg(height);
    const bool hardwareMode = s.encoderMode == EncoderSettings::Hardware;

    if (s.encoderMode != EncoderSettings::Software) {
        QStringList candidates = hardwareCandidates(family);
        bool skipHardware = false;
        const auto t = now();
        {
            std::lock_guard lock(g_memoryMutex);
            FamilyMemory &memory = memoryFor(family);
            if (!memory.preferred.isEmpty() && candidates.contains(memory.preferred)) {
                candidates.removeAll(memory.preferred);
                candidates.prepend(memory.preferred);
            }
            // A request that just failed on every device is not probed again for a while.
            skipHardware = s.encoderMode == EncoderSettings::Auto && memory.failedKey == key &&
                           t < memory.failedUntil;
        }
        if (!skipHardware) {
            for (const QString &name : candidates) {
                const AVCodec *codec = avcodec_find_encoder_by_name(name.toLatin1().constData());
                if (!codec)
                    continue;
                g_hardwareAttempts.fetch_add(1);
                if (!configureAndOpen(codec, s, width, height, globalHeader, &out->context))
                    continue;
                {
                    std::lock_guard lock(g_memoryMutex);
                    FamilyMemory &memory = memoryFor(family);
                    memory.preferred = name;
                    memory.failedKey.clear();
                    memory.failedUntil = {};
                }
                out->name = name;
                out->hardware = true;
                qInfo().noquote() << "FfmpegEncoderSink: hardware encoder selected" << name;
                return true;
            }
        }
        const auto failedAt = now();
        bool warn = false;
        {
            std::lock_guard lock(g_memoryMutex);
            FamilyMemory &memory = memoryFor(family);
            memory.failedKey = key;
            memory.failedUntil = failedAt + kFailedRequestMemory;
            warn = !g_unavailableWarned;
            g_unavailableWarned = true;
        }
        if (warn)
            qWarning().noquote() << "FfmpegEncoderSink: NVENC/QSV/AMF unavailable for"
                                 << (family == Family::Hevc ? "8K HEVC" : "H.264")
                                 << (hardwareMode ? "; hardware mode cannot continue"
                                                  : "; trying software encoder");
        if (hardwareMode)
            return false;
    }

    const char *software = softwareName(family);
    if (const AVCodec *codec = avcodec_find_encoder_by_name(software)) {
        if (configureAndOpen(codec, s, width, height, globalHeader, &out->context)) {
            out->name = software;
            out->hardware = false;
            return true;
        }
    }
    // Last resort: any other encoder of the same codec in this build.
    const AVCodecID id = family == Family::Hevc ? AV_CODEC_ID_HEVC : AV_CODEC_ID_H264;
    void *iterator = nullptr;
    while (const AVCodec *codec = av_codec_iterate(&iterator)) {
        if (!av_codec_is_encoder(codec) || codec->id != id)
            continue;
        const QString name = QString::fromLatin1(codec->name);
        if (name.contains("nvenc") || name.contains("_qsv") || name.contains("_amf") ||
            name == QLatin1String(software))
            continue;
        if (configureAndOpen(codec, s, width, height, globalHeader, &out->context)) {
            out->name = name;
            out->hardware = false;
            return true;
        }
    }
    return false;
}

void setEncoderMemoryClock(SteadyNow clock)
{
    std::lock_guard lock(g_memoryMutex);
    g_now = std::move(clock);
}

void resetEncoderMemory()
{
    std::lock_guard lock(g_memoryMutex);
    g_memory[0] = {};
    g_memory[1] = {};
    g_unavailableWarned = false;
    g_hardwareAttempts.store(0);
}

int hardwareOpenAttempts()
{
    return g_hardwareAttempts.load();
}

} // namespace selvane::encoder
