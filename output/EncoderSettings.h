#pragma once

// What the output side is asked to do: the settings record handed to the encoder sink, one
// stream destination, and the sink interface the output router drives. Plain values; they are
// copied into the encode worker.

#include "media/FrameToken.h"
#include "media/SteadyClock.h"

#include <QList>
#include <QString>
#include <chrono>
#include <functional>

struct StreamTarget
{
    QString url;
    QString formatName; // container short name: "flv", "mpegts", ...
};

struct EncoderSettings
{
    enum EncoderMode : qint32
    {
        Auto = 0,
        Hardware = 1,
        Software = 2,
    };
    enum QualityPreset : qint32
    {
        Performance = 0,
        Balanced = 1,
        Quality = 2,
    };

    QString filePath;
    // A second copy of the recording, written from the same packets (another folder or disk);
    // empty: none. Each file fails, retries and resumes on its own.
    QString twinFilePath;
    QList<StreamTarget> streamTargets;
    double fps = 30.0;
    qint32 bitrateKbps = 0; // 0 or less: automatic
    qint32 keyframeSeconds = 2;
    qint32 encoderMode = Auto;
    qint32 qualityPreset = Balanced;
    bool fileEnabled = false;
    bool livePublish = false; // derived at open

    // Segmented recording ("output/segmentEnabled", "output/segmentMinutes",
    // "output/segmentGiB"): a new file at the first keyframe past either limit; 0 = no limit.
    bool segmentEnabled = false;
    double segmentMinutes = 0;
    double segmentGiB = 0;
    // Ring recording ("output/keepFreeMiB", segments only): the take's oldest segments are
    // deleted while the disk has less than this free; 0: never.
    qint64 keepFreeMiB = 0;
};

using selvane::SteadyNow;

class IEncoderSink
{
public:
    virtual ~IEncoderSink() = default;
    virtual bool open(const EncoderSettings &settings) = 0;
    // The sink drops its reference when done. ptsUs is the program clock in microseconds.
    virtual int pushVideoFrame(FrameTokenPtr frame, qint64 ptsUs) = 0;
    virtual void close() = 0;
};
