#include "media/FrameConvert.h"

#include "media/PlaneShrink.h"

#include <cstdlib>

namespace selvane {

namespace {

ffsupport::SwsPtr converter(int width, int height, AVPixelFormat from, AVPixelFormat to)
{
    return ffsupport::SwsPtr(sws_getContext(width, height, from, width, height, to,
                                            SWS_BILINEAR | SWS_ACCURATE_RND | SWS_FULL_CHR_H_INT,
                                            nullptr, nullptr, nullptr));
}

} // namespace

QImage frameToImage(const FrameToken &frame)
{
    if (frame.width < 1 || frame.height < 1 || !frame.hasPicture())
        return {};
    if (!frame.isI420())
        return QImage(frame.bits(), frame.width, frame.height, frame.stride,
                      QImage::Format_RGBA8888)
            .copy();
    QImage image(frame.width, frame.height, QImage::Format_RGBA8888);
    const ffsupport::SwsPtr sws =
        converter(frame.width, frame.height, AV_PIX_FMT_YUV420P, AV_PIX_FMT_RGBA);
    if (!sws || image.isNull())
        return {};
    const FrameToken::AvPlanes src = frame.avPlanes();
    uint8_t *dst[4] = {image.bits(), nullptr, nullptr, nullptr};
    const int dstStride[4] = {int(image.bytesPerLine()), 0, 0, 0};
    sws_scale(sws.get(), src.data, src.linesize, 0, frame.height, dst, dstStride);
    return image;
}

bool imageToFrame(const QImage &image, FrameWriter &out)
{
    if (image.isNull() || !out)
        return false;
    const QImage rgba = image.convertToFormat(QImage::Format_RGBA8888);
    const ffsupport::SwsPtr sws =
        converter(rgba.width(), rgba.height(), AV_PIX_FMT_RGBA, AV_PIX_FMT_YUV420P);
    if (!sws)
        return false;
    out.prepareI420(rgba.width(), rgba.height());
    const uint8_t *const src[4] = {rgba.constBits(), nullptr, nullptr, nullptr};
    const int srcStride[4] = {int(rgba.bytesPerLine()), 0, 0, 0};
    const FrameWriter::AvPlanes dst = out.avPlanes();
    sws_scale(sws.get(), src, srcStride, 0, rgba.height(), dst.data, dst.linesize);
    return true;
}

bool scaleToI420(ffsupport::SwsPtr &context, const FrameToken &from, QSize size, FrameWriter &out)
{
    if (from.width < 1 || from.height < 1 || size.isEmpty() || !out)
        return false;
    context.reset(sws_getCachedContext(context.release(), from.width, from.height,
                                       from.isI420() ? AV_PIX_FMT_YUV420P : AV_PIX_FMT_RGBA,
                                       size.width(), size.height(), AV_PIX_FMT_YUV420P,
                                       SWS_BILINEAR, nullptr, nullptr, nullptr));
    if (!context)
        return false;
    out.prepareI420(size.width(), size.height());
    const FrameToken::AvPlanes src = from.avPlanes();
    const FrameWriter::AvPlanes dst = out.avPlanes();
    sws_scale(context.get(), src.data, src.linesize, 0, from.height, dst.data, dst.linesize);
    return true;
}

namespace {

// An RGB32 image of `size` made from planes of `format` at `from` size, through `context`.
bool planesToImage(ffsupport::SwsPtr &context, const std::uint8_t *const data[4],
                   const int linesize[4], AVPixelFormat format, QSize from, QSize size, int flags,
                   QImage &out)
{
    context.reset(sws_getCachedContext(context.release(), from.width(), from.height(), format,
                                       size.width(), size.height(), AV_PIX_FMT_BGRA, flags, nullptr,
                                       nullptr, nullptr));
    if (!context)
        return false;
    // swscale's vector code may write a few pixels past the end of a row whose width is not a
    // multiple of its step: rows are padded to 64 bytes and a spare row follows the last, so
    // that nothing lands outside the image's buffer.
    const qsizetype rowBytes = (qsizetype(size.width()) * 4 + 63) & ~qsizetype(63);
    if (out.size() != size || out.format() != QImage::Format_RGB32 || !out.isDetached() ||
        out.bytesPerLine() != rowBytes) {
        auto *buffer =
            static_cast<uchar *>(std::malloc(std::size_t(rowBytes) * (size.height() + 1)));
        if (!buffer)
            return false;
        out = QImage(buffer, size.width(), size.height(), rowBytes, QImage::Format_RGB32, std::free,
                     buffer);
    }
    if (out.isNull())
        return false;
    uint8_t *dst[4] = {out.bits(), nullptr, nullptr, nullptr};
    const int dstStride[4] = {int(out.bytesPerLine()), 0, 0, 0};
    sws_scale(context.get(), data, linesize, 0, from.height(), dst, dstStride);
    return true;
}

} // namespace

bool shrinkToImage(ffsupport::SwsPtr &context, ShrunkPlanes &scratch, const FrameToken &from,
                   int factor, QImage &out)
{
    if (!from.isI420() || factor < 1)
        return false;
    if (factor == 1) {
        const FrameToken::AvPlanes planes = from.avPlanes();
        const QSize size(from.width & ~1, from.height & ~1);
        return planesToImage(context, planes.data, planes.linesize, AV_PIX_FMT_YUV420P, size, size,
                             SWS_POINT, out);
    }
    if (!shrinkI420(from, factor, scratch))
        return false;
    const QSize size(scratch.width, scratch.height);
    return planesToImage(context, scratch.data, scratch.linesize, AV_PIX_FMT_YUV420P, size, size,
                         SWS_POINT, out);
}

bool scaleToImage(ffsupport::SwsPtr &context, const FrameToken &from, QSize size, QImage &out)
{
    if (from.width < 1 || from.height < 1 || size.isEmpty())
        return false;
    // Far downscales read one source pixel of four anyway; point sampling then costs a third.
    const bool far = from.width >= 3 * size.width();
    const FrameToken::AvPlanes src = from.avPlanes();
    return planesToImage(
        context, src.data, src.linesize, from.isI420() ? AV_PIX_FMT_YUV420P : AV_PIX_FMT_RGBA,
        QSize(from.width, from.height), size, far ? SWS_POINT : SWS_FAST_BILINEAR, out);
}

} // namespace selvane
