#pragma once

// Which video encoder serves an output run, and how it is configured: the H.264/HEVC family
// rule, hardware candidates with the process-wide preferred-encoder and failed-request memory,
// the software encoder and the fallback walk, the option tables and the automatic bitrate.
// Called on encode worker threads; the process-wide memory has its own mutex, held only while
// it is read or updated, never while an encoder opens.

#include "media/FfmpegTypes.h"
#include "media/FrameSizes.h"
#include "output/EncoderSettings.h"

#include <QString>

namespace selvane::encoder {

enum class Family
{
    H264,
    Hevc,
};

// HEVC when either side is above 4096 (what the operator sees as "8K"), H.264 otherwise.
Family familyFor(int width, int height);
inline bool isEightK(int width, int height)
{
    return width > frames::kHevcAboveSide || height > frames::kHevcAboveSide;
}

// kbit/s: max(fps, 1) x W x H x 0.00012 rounded, at least 2500, capped by picture size.
qint64 automaticBitrateKbps(double fps, int width, int height);

struct OpenedEncoder
{
    ffsupport::CodecContextPtr context;
    QString name;
    bool hardware = false;
};

// Selection and opening at width x height; `globalHeader` when a container needs it.
bool openVideoEncoder(const EncoderSettings &settings, int width, int height, bool globalHeader,
                      OpenedEncoder *out);

// Configures and opens one found encoder; false when it does not open.
bool configureAndOpen(const AVCodec *codec, const EncoderSettings &settings, int width, int height,
                      bool globalHeader, ffsupport::CodecContextPtr *out);

// The clock the failed-request memory expires on (tests put a fake one in its place).
void setEncoderMemoryClock(SteadyNow now);
// Forgets the preferred encoders, the failed requests and the once-per-run warning.
void resetEncoderMemory();
// How many hardware candidates have been tried to open since the last reset.
int hardwareOpenAttempts();

} // namespace selvane::encoder
