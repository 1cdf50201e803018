#include "input/StingerLoad.h"

#include "input/AudioConverter.h"
#include "media/AudioFormat.h"
#include "media/FfmpegTypes.h"

#include <QFileInfo>
#include <algorithm>
#include <cstring>

extern "C" {
#include <libavutil/pixdesc.h>
}

namespace selvane {

namespace {

// FFmpeg's own VP8 and VP9 decoders leave out the alpha that WebM carries beside each picture;
// libvpx's keep it.
const AVCodec *videoDecoderFor(const AVStream *stream)
{
    const AVDictionaryEntry *mode = av_dict_get(stream->metadata, "alpha_mode", nullptr, 0);
    if (mode && std::strcmp(mode->value, "1") == 0) {
        const AVCodecID id = stream->codecpar->codec_id;
        const char *name = id == AV_CODEC_ID_VP9   ? "libvpx-vp9"
                           : id == AV_CODEC_ID_VP8 ? "libvpx"
                                                   : nullptr;
        if (const AVCodec *codec = name ? avcodec_find_decoder_by_name(name) : nullptr)
            return codec;
    }
    return avcodec_find_decoder(stream->codecpar->codec_id);
}

ffsupport::CodecContextPtr openDecoder(const AVStream *stream, const AVCodec *codec)
{
    if (!codec)
        return {};
    ffsupport::CodecContextPtr context(avcodec_alloc_context3(codec));
    if (!context || avcodec_parameters_to_context(context.get(), stream->codecpar) < 0)
        return {};
    context->pkt_timebase = stream->time_base;
    context->thread_count = 0;
    if (avcodec_open2(context.get(), codec, nullptr) < 0)
        return {};
    return context;
}

// `value` times `alpha` / 255, rounded.
unsigned premultiplied(unsigned product)
{
    return (product + 127) / 255;
}

// The covered columns of a row of alpha: [first, last), empty when it is clear.
std::pair<int, int> coveredSpan(const std::uint8_t *alpha, int width)
{
    int from = 0, to = width;
    while (from < width && alpha[from] == 0)
        ++from;
    while (to > from && alpha[to - 1] == 0)
        --to;
    return {from, to};
}

void keepCoveredRows(StingerPicture &picture, QSize size, const std::uint8_t *const planes[4],
                     const int strides[4])
{
    const int width = size.width(), height = size.height();
    const auto alphaRow = [&](int y) {
        return planes[3] + qint64(y) * strides[3];
    };
    int first = height, last = -1;
    bool opaque = true;
    for (int y = 0; y < height; ++y) {
        const std::uint8_t *row = alphaRow(y);
        bool any = false;
        for (int x = 0; x < width; ++x) {
            any = any || row[x] != 0;
            opaque = opaque && row[x] == 255;
        }
        if (any) {
            first = std::min(first, y);
            last = y;
        }
    }
    picture.opaque = opaque;
    if (last < 0)
        return; // clear: nothing kept
    const int top = first & ~1;
    const int bottom = std::min(height, (last + 2) & ~1);
    picture.top = top;
    picture.rows = bottom - top;
    const int chromaWidth = (width + 1) / 2;
    const int chromaRows = (picture.rows + 1) / 2;
    picture.y.resize(std::size_t(width) * std::size_t(picture.rows));
    picture.alpha.resize(picture.y.size());
    picture.u.resize(std::size_t(chromaWidth) * std::size_t(chromaRows));
    picture.v.resize(picture.u.size());
    picture.chromaAlpha.resize(picture.u.size());
    picture.spans.resize(std::size_t(picture.rows));
    for (int r = 0; r < picture.rows; ++r) {
        const int y = top + r;
        const std::uint8_t *a = alphaRow(y);
        const std::uint8_t *luma = planes[0] + qint64(y) * strides[0];
        const std::size_t at = std::size_t(r) * std::size_t(width);
        for (int x = 0; x < width; ++x)
            picture.y[at + std::size_t(x)] = std::uint8_t(premultiplied(luma[x] * a[x]));
        std::memcpy(&picture.alpha[at], a, std::size_t(width));
        picture.spans[std::size_t(r)] = coveredSpan(a, width);
    }
    picture.chromaSpans.resize(std::size_t(chromaRows));
    for (int r = 0; r < chromaRows; ++r) {
        const int cy = top / 2 + r;
        const std::size_t at = std::size_t(r) * std::size_t(chromaWidth);
        const std::uint8_t *u = planes[1] + qint64(cy) * strides[1];
        const std::uint8_t *v = planes[2] + qint64(cy) * strides[2];
        // Chroma is shared by 2 x 2 pixels: so is its alpha, their mean.
        const std::uint8_t *a0 = alphaRow(top + 2 * r);
        const std::uint8_t *a1 = alphaRow(std::min(height - 1, top + 2 * r + 1));
        std::uint8_t *ca = &picture.chromaAlpha[at];
        for (int x = 0; x < chromaWidth; ++x) {
            const int x1 = std::min(width - 1, 2 * x + 1);
            const unsigned alpha = (a0[2 * x] + a0[x1] + a1[2 * x] + a1[x1] + 2) / 4;
            ca[x] = std::uint8_t(alpha);
            picture.u[at + std::size_t(x)] = std::uint8_t(premultiplied(u[x] * alpha));
            picture.v[at + std::size_t(x)] = std::uint8_t(premultiplied(v[x] * alpha));
        }
        picture.chromaSpans[std::size_t(r)] = coveredSpan(ca, chromaWidth);
    }
}

// Everything a load keeps between packets.
class Loader
{
public:
    Loader(QSize size, StingerClip &clip) : m_size(size), m_clip(clip) {}

    bool addPicture(const AVFrame *frame, qint64 ptsUs, QString *error);
    void addSound(const AVFrame *frame, const AVCodecContext *codec, qint64 frameUs);

private:
    QSize m_size;
    StingerClip &m_clip;
    ffsupport::SwsPtr m_sws;
    AVPixelFormat m_swsFrom = AV_PIX_FMT_NONE;
    QSize m_swsFromSize;
    ffsupport::FramePtr m_scaled{av_frame_alloc()};
    AudioConverter m_audio;
};

bool Loader::addPicture(const AVFrame *frame, qint64 ptsUs, QString *error)
{
    const auto format = AVPixelFormat(frame->format);
    const AVPixFmtDescriptor *desc = av_pix_fmt_desc_get(format);
    if (!desc)
        return true;
    const bool alpha = (desc->flags & AV_PIX_FMT_FLAG_ALPHA) != 0;
    m_clip.hasAlpha = m_clip.hasAlpha || alpha;
    if (!m_sws || m_swsFrom != format || m_swsFromSize != QSize(frame->width, frame->height)) {
        m_sws.reset(sws_getContext(frame->width, frame->height, format, m_size.width(),
                                   m_size.height(), AV_PIX_FMT_YUVA420P, SWS_BICUBIC, nullptr,
                                   nullptr, nullptr));
        m_swsFrom = format;
        m_swsFromSize = QSize(frame->width, frame->height);
        av_frame_unref(m_scaled.get());
        m_scaled->format = AV_PIX_FMT_YUVA420P;
        m_scaled->width = m_size.width();
        m_scaled->height = m_size.height();
        if (!m_sws || av_frame_get_buffer(m_scaled.get(), 64) < 0) {
            m_sws.reset();
            *error = QStringLiteral("its pictures cannot be scaled to %1 x %2")
                         .arg(m_size.width())
                         .arg(m_size.height());
            return false;
        }
    }
    sws_scale(m_sws.get(), frame->data, frame->linesize, 0, frame->height, m_scaled->data,
              m_scaled->linesize);
    if (!alpha) {
        // A picture without alpha covers everything.
        for (int y = 0; y < m_size.height(); ++y)
            std::memset(m_scaled->data[3] + qint64(y) * m_scaled->linesize[3], 255,
                        std::size_t(m_size.width()));
    }
    StingerPicture picture;
    picture.ptsUs = ptsUs;
    keepCoveredRows(picture, m_size, m_scaled->data, m_scaled->linesize);
    m_clip.bytes +=
        qint64(picture.y.size() + picture.u.size() + picture.v.size() + picture.alpha.size() +
               picture.chromaAlpha.size() + picture.spans.size() * sizeof(picture.spans[0]));
    if (m_clip.bytes > StingerClip::kMaxBytes) {
        *error = QStringLiteral("it needs more than %1 MB of memory at %2 x %3")
                     .arg(StingerClip::kMaxBytes >> 20)
                     .arg(m_size.width())
                     .arg(m_size.height());
        return false;
    }
    m_clip.pictures.push_back(std::move(picture));
    return true;
}

void Loader::addSound(const AVFrame *frame, const AVCodecContext *codec, qint64 frameUs)
{
    std::vector<std::int16_t> &sound = m_clip.sound;
    m_audio.convert(frame, codec, frameUs,
                    [&sound](const std::int16_t *samples, int frames, qint64 startUs) {
                        // Placed by its time: sound before the first picture is left out.
                        qint64 first = startUs * audio::kSampleRate / 1'000'000;
                        int skip = 0;
                        if (first < 0) {
                            skip = int(std::min<qint64>(frames, -first));
                            first = 0;
                        }
                        const std::size_t at = std::size_t(first) * audio::kChannels;
                        const std::size_t count = std::size_t(frames - skip) * audio::kChannels;
                        if (sound.size() < at + count)
                            sound.resize(at + count, 0);
                        std::copy_n(samples + std::size_t(skip) * audio::kChannels, count,
                                    sound.begin() + std::ptrdiff_t(at));
                    });
}

} // namespace

StingerClipPtr loadStinger(const QString &path, QSize size, int cutMs, QString *error,
                           const std::atomic<bool> *cancel)
{
    if (!QFileInfo(path).isFile()) {
        *error = QStringLiteral("there is no such file");
        return {};
    }
    if (size.width() < 2 || size.height() < 2) {
        *error = QStringLiteral("the program has no size yet");
        return {};
    }
    AVFormatContext *raw = nullptr;
    int err = avformat_open_input(&raw, QFile::encodeName(path).constData(), nullptr, nullptr);
    ffsupport::InputContextPtr input(raw);
    if (err >= 0)
        err = avformat_find_stream_info(input.get(), nullptr);
    if (err < 0) {
        *error = ffsupport::errorText("open", err);
        return {};
    }
    const int videoIndex = av_find_best_stream(input.get(), AVMEDIA_TYPE_VIDEO, -1, -1, nullptr, 0);
    if (videoIndex < 0) {
        *error = QStringLiteral("it has no pictures");
        return {};
    }
    const AVStream *videoStream = input->streams[videoIndex];
    ffsupport::CodecContextPtr video = openDecoder(videoStream, videoDecoderFor(videoStream));
    if (!video) {
        *error = QStringLiteral("its pictures cannot be decoded");
        return {};
    }
    const int audioIndex =
        av_find_best_stream(input.get(), AVMEDIA_TYPE_AUDIO, -1, videoIndex, nullptr, 0);
    ffsupport::CodecContextPtr sound;
    if (audioIndex >= 0) {
        const AVStream *stream = input->streams[audioIndex];
        sound = openDecoder(stream, avcodec_find_decoder(stream->codecpar->codec_id));
    }

    auto clip = std::make_shared<StingerClip>();
    clip->path = path;
    clip->size = size;
    Loader loader(size, *clip);
    // Times count from the first picture.
    qint64 originUs = AV_NOPTS_VALUE;
    qint64 lastPtsUs = 0, frameUs = 0;
    const AVRational rate = av_guess_frame_rate(input.get(), input->streams[videoIndex], nullptr);
    if (rate.num > 0 && rate.den > 0)
        frameUs = av_rescale(1'000'000, rate.den, rate.num);
    const auto usOf = [&](const AVFrame *frame, const AVStream *stream) {
        const qint64 pts = frame->best_effort_timestamp;
        return pts == AV_NOPTS_VALUE ? AV_NOPTS_VALUE
                                     : av_rescale_q(pts, stream->time_base, AVRational{1, 1000000});
    };
    ffsupport::FramePtr frame(av_frame_alloc());
    ffsupport::PacketPtr packet(av_packet_alloc());
    const auto drain = [&](AVCodecContext *codec, int index) -> bool {
        const AVStream *stream = input->streams[index];
        while (avcodec_receive_frame(codec, frame.get()) >= 0) {
            qint64 us = usOf(frame.get(), stream);
            if (index == videoIndex) {
                if (us == AV_NOPTS_VALUE)
                    us = clip->pictures.empty() ? 0 : lastPtsUs + frameUs + originUs;
                if (originUs == AV_NOPTS_VALUE)
                    originUs = us;
                const qint64 at = us - originUs;
                if (at >= qint64(StingerClip::kMaxMs) * 1000) {
                    *error =
                        QStringLiteral("it is longer than %1 s").arg(StingerClip::kMaxMs / 1000);
                    return false;
                }
                if (!loader.addPicture(frame.get(), at, error))
                    return false;
                lastPtsUs = at;
            } else if (us != AV_NOPTS_VALUE && originUs != AV_NOPTS_VALUE) {
                loader.addSound(frame.get(), codec, us - originUs);
            } else if (us != AV_NOPTS_VALUE) {
                loader.addSound(frame.get(), codec, us); // sound first: from time 0 of the file
            }
            av_frame_unref(frame.get());
        }
        return true;
    };
    while (av_read_frame(input.get(), packet.get()) >= 0) {
        if (cancel && cancel->load()) {
            *error = QStringLiteral("cancelled");
            return {};
        }
        const int index = packet->stream_index;
        AVCodecContext *codec = index == videoIndex            ? video.get()
                                : index == audioIndex && sound ? sound.get()
                                                               : nullptr;
        if (codec && avcodec_send_packet(codec, packet.get()) >= 0 && !drain(codec, index))
            return {};
        av_packet_unref(packet.get());
    }
    avcodec_send_packet(video.get(), nullptr);
    if (!drain(video.get(), videoIndex))
        return {};
    if (sound) {
        avcodec_send_packet(sound.get(), nullptr);
        drain(sound.get(), audioIndex);
    }
    if (clip->pictures.empty()) {
        *error = QStringLiteral("no picture could be decoded");
        return {};
    }
    std::stable_sort(
        clip->pictures.begin(), clip->pictures.end(),
        [](const StingerPicture &a, const StingerPicture &b) { return a.ptsUs < b.ptsUs; });
    if (frameUs <= 0)
        frameUs =
            clip->pictures.size() > 1 ? lastPtsUs / qint64(clip->pictures.size() - 1) : 40'000;
    clip->durationUs = clip->pictures.back().ptsUs + frameUs;
    clip->sound.resize(
        std::size_t(clip->durationUs * audio::kSampleRate / 1'000'000) * audio::kChannels, 0);
    clip->cutUs =
        cutMs < 0 ? clip->durationUs / 2 : std::min(qint64(cutMs) * 1000, clip->durationUs);
    return clip;
}

} // namespace selvane

namespace selvane {

StingerPicture stingerPictureOf(const QImage &image)
{
    StingerPicture picture;
    if (image.isNull())
        return picture;
    const QImage rgba = image.convertToFormat(QImage::Format_RGBA8888);
    const QSize size = rgba.size();
    ffsupport::SwsPtr sws(sws_getContext(size.width(), size.height(), AV_PIX_FMT_RGBA, size.width(),
                                         size.height(), AV_PIX_FMT_YUVA420P, SWS_BICUBIC, nullptr,
                                         nullptr, nullptr));
    ffsupport::FramePtr yuva(av_frame_alloc());
    yuva->format = AV_PIX_FMT_YUVA420P;
    yuva->width = size.width();
    yuva->height = size.height();
    if (!sws || av_frame_get_buffer(yuva.get(), 64) < 0)
        return picture;
    const std::uint8_t *const from[4] = {rgba.constBits(), nullptr, nullptr, nullptr};
    const int fromStride[4] = {int(rgba.bytesPerLine()), 0, 0, 0};
    sws_scale(sws.get(), from, fromStride, 0, size.height(), yuva->data, yuva->linesize);
    keepCoveredRows(picture, size, yuva->data, yuva->linesize);
    return picture;
}

} // namespace selvane
