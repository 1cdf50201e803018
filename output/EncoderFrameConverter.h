#pragma once

// Owns the colour converter that turns a program picture into the video encoder's frame, fitted
// into it with its shape kept (black bars around a picture of another shape). An I420 picture of
// the encoder's size and format is copied plane by plane.
// Threads: the encode worker only. Reports: a warning when swscale cannot take a thread count.

#include "media/FfmpegTypes.h"
#include "media/FrameToken.h"

#include <QSize>

namespace selvane {

class EncoderFrameConverter
{
public:
    // Readies the converter for this picture and the encoder's frame (its size and pixel
    // format); false when swscale cannot be set up. qualityPreset: EncoderSettings::QualityPreset.
    bool prepare(const FrameToken &picture, const AVFrame &out, int qualityPreset);
    // After prepare(): converts into `out`, which must be writable.
    void convert(const FrameToken &picture, AVFrame *out);
    // After prepare(): the picture is the encoder's frame as it is (size and format), so an
    // encoder that copies its input at once may read the picture's own planes.
    bool passesThrough() const { return m_copy; }
    // Forgets the converter (the encoder's frame changed).
    void reset();

private:
    ffsupport::SwsPtr m_sws;
    bool m_copy = false;
    AVPixelFormat m_sourceFormat = AV_PIX_FMT_NONE;
    int m_sourceWidth = 0;
    int m_sourceHeight = 0;
    QSize m_fitSize; // where the picture lands inside the encoder's frame
};

} // namespace selvane
