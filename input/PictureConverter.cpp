#include "input/PictureConverter.h"

#include "media/FfmpegCompat.h"

#include <cmath>
#include <cstring>

extern "C" {
#include <libavutil/display.h>
#include <libavutil/hwcontext.h>
}

namespace selvane {

namespace {

int normaliseQuarterTurns(double clockwiseDegrees)
{
    if (!std::isfinite(clockwiseDegrees))
        return 0;
    long turns = std::lround(clockwiseDegrees / 90.0) % 4;
    if (turns < 0)
        turns += 4;
    return static_cast<int>(turns) * 90;
}

void rotateRgba(const std::uint8_t *src, int srcW, int srcH, qint64 srcStride, std::uint8_t *dst,
                qint64 dstStride, int rotation)
{
    const auto pixelAt = [&](int x, int y) {
        std::uint32_t p;
        std::memcpy(&p, src + y * srcStride + qint64(x) * 4, 4);
        return p;
    };
    const int dstW = rotation == 180 ? srcW : srcH;
    const int dstH = rotation == 180 ? srcH : srcW;
    for (int y = 0; y < dstH; ++y) {
        auto *row = reinterpret_cast<std::uint32_t *>(dst + y * dstStride);
        for (int x = 0; x < dstW; ++x) {
            std::uint32_t p = 0;
            if (rotation == 90)
                p = pixelAt(y, srcH - 1 - x);
            else if (rotation == 180)
                p = pixelAt(srcW - 1 - x, srcH - 1 - y);
            else
                p = pixelAt(srcW - 1 - y, x);
            row[x] = p;
        }
    }
}

} // namespace

int uprightRotationDegrees(const AVStream *stream)
{
    if (!stream)
        return 0;
    if (const AVDictionaryEntry *rotate = av_dict_get(stream->metadata, "rotate", nullptr, 0)) {
        char *end = nullptr;
        const double degrees = std::strtod(rotate->value, &end);
        if (end != rotate->value)
            return normaliseQuarterTurns(degrees);
    }
    if (const std::int32_t *matrix = ffcompat::streamDisplayMatrix(stream)) {
        // The matrix rotates counter-clockwise by this angle; undo it.
        return normaliseQuarterTurns(-av_display_rotation_get(matrix));
    }
    return 0;
}

const AVFrame *PictureConverter::inSystemMemory(const AVFrame *decoded)
{
    if (m_hardwareFormat == AV_PIX_FMT_NONE || decoded->format != m_hardwareFormat)
        return decoded;
    if (!m_systemFrame)
        m_systemFrame.reset(av_frame_alloc());
    av_frame_unref(m_systemFrame.get());
    if (!m_systemFrame || av_hwframe_transfer_data(m_systemFrame.get(), decoded, 0) < 0)
        return nullptr;
    av_frame_copy_props(m_systemFrame.get(), decoded);
    return m_systemFrame.get();
}

PictureConverter::Sizes PictureConverter::sizesOf(const AVFrame *frame) const
{
    const QSize coded(frame->width, frame->height);
    const bool quarterTurn = m_rotation == 90 || m_rotation == 270;
    return {coded, quarterTurn ? coded.transposed() : coded};
}

QSize PictureConverter::outputSize(QSize display, QSize target)
{
    if (target.width() < 1 || target.height() < 1)
        return display;
    const double scale = std::min(double(target.width()) / display.width(),
                                  double(target.height()) / display.height());
    if (scale >= 1.0)
        return display; // never larger than the source: whoever draws it scales it up
    return {std::max(1, int(display.width() * scale + 0.5)),
            std::max(1, int(display.height() * scale + 0.5))};
}

bool PictureConverter::convert(const AVFrame *frame, QSize size, FrameWriter &out)
{
    const bool quarterTurn = m_rotation == 90 || m_rotation == 270;
    const QSize scaled = quarterTurn ? size.transposed() : size;
    m_sws.reset(sws_getCachedContext(
        m_sws.release(), frame->width, frame->height, static_cast<AVPixelFormat>(frame->format),
        scaled.width(), scaled.height(), AV_PIX_FMT_RGBA, SWS_BILINEAR, nullptr, nullptr, nullptr));
    if (!m_sws)
        return false;
    const qint64 stride = qint64(size.width()) * 4;
    out.prepare(size.width(), size.height(), stride);
    if (m_rotation == 0) {
        std::uint8_t *planes[4] = {out.bits(), nullptr, nullptr, nullptr};
        int strides[4] = {int(stride), 0, 0, 0};
        sws_scale(m_sws.get(), frame->data, frame->linesize, 0, frame->height, planes, strides);
        return true;
    }
    const qint64 scratchStride = qint64(scaled.width()) * 4;
    m_rotateScratch.resize(std::size_t(scratchStride * scaled.height()));
    std::uint8_t *planes[4] = {m_rotateScratch.data(), nullptr, nullptr, nullptr};
    int strides[4] = {int(scratchStride), 0, 0, 0};
    sws_scale(m_sws.get(), frame->data, frame->linesize, 0, frame->height, planes, strides);
    rotateRgba(m_rotateScratch.data(), scaled.width(), scaled.height(), scratchStride, out.bits(),
               stride, m_rotation);
    return true;
}

} // namespace selvane
