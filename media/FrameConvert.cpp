#include "media/FrameConvert.h"

#include "media/FfmpegTypes.h"

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
    if (frame.width < 1 || frame.height < 1 || frame.pixels.isEmpty())
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
    const uint8_t *const src[4] = {frame.plane(0), frame.plane(1), frame.plane(2), nullptr};
    const int srcStride[4] = {int(frame.planeStride(0)), int(frame.planeStride(1)),
                              int(frame.planeStride(2)), 0};
    uint8_t *dst[4] = {image.bits(), nullptr, nullptr, nullptr};
    const int dstStride[4] = {int(image.bytesPerLine()), 0, 0, 0};
    sws_scale(sws.get(), src, srcStride, 0, frame.height, dst, dstStride);
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
    uint8_t *dst[4] = {out.plane(0), out.plane(1), out.plane(2), nullptr};
    const int dstStride[4] = {int(out->planeStride(0)), int(out->planeStride(1)),
                              int(out->planeStride(2)), 0};
    sws_scale(sws.get(), src, srcStride, 0, rgba.height(), dst, dstStride);
    return true;
}

} // namespace selvane
