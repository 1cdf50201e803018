#include "input/PictureConverter.h"

#include "media/FfmpegCompat.h"

#include <cmath>
#include <cstring>

extern "C" {
#include <libavutil/display.h>
#include <libavutil/hwcontext.h>
#include <libavutil/imgutils.h>
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

// Turns one plane (one byte a pixel) by a quarter, half or three quarters clockwise.
void rotatePlane(const std::uint8_t *src, int srcW, int srcH, qint64 srcStride, std::uint8_t *dst,
                 qint64 dstStride, int rotation)
{
    const int dstW = rotation == 180 ? srcW : srcH;
    const int dstH = rotation == 180 ? srcH : srcW;
    for (int y = 0; y < dstH; ++y) {
        std::uint8_t *row = dst + y * dstStride;
        for (int x = 0; x < dstW; ++x) {
            if (rotation == 90)
                row[x] = src[qint64(srcH - 1 - x) * srcStride + y];
            else if (rotation == 180)
                row[x] = src[qint64(srcH - 1 - y) * srcStride + (srcW - 1 - x)];
            else
                row[x] = src[qint64(x) * srcStride + (srcW - 1 - y)];
        }
    }
}

// Pictures that are already what the program carries: copied as they are.
bool isProgramFormat(const AVFrame *frame)
{
    return frame->format == AV_PIX_FMT_YUV420P && frame->color_range != AVCOL_RANGE_JPEG;
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

bool PictureConverter::holdDecoded(const AVFrame *frame, QSize size, FrameWriter &out)
{
    // Only counted buffers can be held; rows that run upwards are copied.
    if (!frame->buf[0] || frame->linesize[0] <= 0 || frame->linesize[1] <= 0 ||
        frame->linesize[2] <= 0)
        return false;
    std::shared_ptr<const AVFrame> held(av_frame_clone(frame),
                                        [](AVFrame *f) { av_frame_free(&f); });
    if (!held || !held->data[0])
        return false;
    const std::uint8_t *const planes[3] = {held->data[0], held->data[1], held->data[2]};
    const int strides[3] = {held->linesize[0], held->linesize[1], held->linesize[2]};
    out.holdI420(size.width(), size.height(), std::move(held), planes, strides);
    return true;
}

bool PictureConverter::convert(const AVFrame *frame, QSize size, FrameWriter &out)
{
    const bool quarterTurn = m_rotation == 90 || m_rotation == 270;
    const QSize scaled = quarterTurn ? size.transposed() : size;
    if (m_rotation == 0 && isProgramFormat(frame) && scaled == QSize(frame->width, frame->height)) {
        if (holdDecoded(frame, size, out))
            return true;
        out.prepareI420(size.width(), size.height());
        for (int p = 0; p < 3; ++p) {
            const int rows = p == 0 ? size.height() : (size.height() + 1) / 2;
            const int bytes = p == 0 ? size.width() : (size.width() + 1) / 2;
            av_image_copy_plane(out.plane(p), int(out->planeStride(p)), frame->data[p],
                                frame->linesize[p], bytes, rows);
        }
        return true;
    }
    m_sws.reset(sws_getCachedContext(m_sws.release(), frame->width, frame->height,
                                     static_cast<AVPixelFormat>(frame->format), scaled.width(),
                                     scaled.height(), AV_PIX_FMT_YUV420P, SWS_BILINEAR, nullptr,
                                     nullptr, nullptr));
    if (!m_sws)
        return false;
    if (frame->color_range == AVCOL_RANGE_JPEG && frame->format == AV_PIX_FMT_YUV420P) {
        // Full-range pictures in a limited-range format: the range is converted on the way.
        int *inverse = nullptr, *table = nullptr, srcRange = 0, dstRange = 0, brightness = 0,
            contrast = 0, saturation = 0;
        if (sws_getColorspaceDetails(m_sws.get(), &inverse, &srcRange, &table, &dstRange,
                                     &brightness, &contrast, &saturation) >= 0 &&
            srcRange != 1)
            sws_setColorspaceDetails(m_sws.get(), inverse, 1, table, 0, brightness, contrast,
                                     saturation);
    }
    if (m_rotation == 0) {
        out.prepareI420(size.width(), size.height());
        std::uint8_t *planes[4] = {out.plane(0), out.plane(1), out.plane(2), nullptr};
        int strides[4] = {int(out->planeStride(0)), int(out->planeStride(1)),
                          int(out->planeStride(2)), 0};
        sws_scale(m_sws.get(), frame->data, frame->linesize, 0, frame->height, planes, strides);
        return true;
    }
    // Scaled first (in the coded orientation), then each plane turned into the token.
    const qint64 scratchStride = FrameToken::i420Stride(scaled.width());
    const qint64 scratchChroma = scratchStride / 2;
    const int chromaRows = (scaled.height() + 1) / 2;
    m_rotateScratch.resize(std::size_t(FrameToken::i420Bytes(scratchStride, scaled.height())));
    std::uint8_t *scratch[4] = {
        m_rotateScratch.data(), m_rotateScratch.data() + scratchStride * scaled.height(),
        m_rotateScratch.data() + scratchStride * scaled.height() + scratchChroma * chromaRows,
        nullptr};
    int scratchStrides[4] = {int(scratchStride), int(scratchChroma), int(scratchChroma), 0};
    sws_scale(m_sws.get(), frame->data, frame->linesize, 0, frame->height, scratch, scratchStrides);
    out.prepareI420(size.width(), size.height());
    for (int p = 0; p < 3; ++p) {
        const int w = p == 0 ? scaled.width() : (scaled.width() + 1) / 2;
        const int h = p == 0 ? scaled.height() : chromaRows;
        rotatePlane(scratch[p], w, h, scratchStrides[p], out.plane(p), out->planeStride(p),
                    m_rotation);
    }
    return true;
}

} // namespace selvane
