#pragma once

// What the output side is asked to do: the settings record handed to the encoder sink, one
// stream destination, and the sink interface the output router drives. Plain values; they are
// copied into the encode worker.

#include "media/FrameToken.h"
#include "media/SteadyClock.h"

#include <QList>
#include <QSize>
#include <QString>
#include <chrono>
#include <functional>

struct StreamTarget
{
    StreamTarget() = default;
    StreamTarget(QString url_, QString formatName_ = {})
        : url(std::move(url_)), formatName(std::move(formatName_))
    {
    }
    QString url;
    QString formatName; // container short name: "flv", "mpegts", "hls", ...
    QString profile;    // the encode profile it takes; empty: the default one
    // An HLS folder ("hls", the URL a path to its playlist): the length of a segment and how
    // many of them the playlist names; older segments are deleted.
    qint32 hlsSegmentSeconds = 2;
    qint32 hlsWindow = 6;
    bool operator==(const StreamTarget &) const = default;
};

// What an encode produces besides the default one: its name (letters, digits, '-', '_'), its
// picture (the program's size when empty; a frame rate at or below the program's, 0: the
// program's), its bitrate, encoder and preset, its keyframe interval, and what it shows (the
// program, or the multiview). Outputs that name the same profile share one encoder.
struct EncodeProfile
{
    QString name;
    QSize size;
    double fps = 0;
    qint32 bitrateKbps = 0; // 0 or less: automatic
    qint32 keyframeSeconds = 2;
    qint32 encoderMode = 0;   // EncoderSettings::EncoderMode
    qint32 qualityPreset = 1; // EncoderSettings::QualityPreset
    // The bitrate follows a congested target down to `floorPercent` of the set one, and back.
    bool adaptive = false;
    qint32 floorPercent = 30;
    bool multiview = false;
    bool operator==(const EncodeProfile &) const = default;
};

// A channel recorded on its own beside the program, as decoded, with its own sound, encoded
// with `profile` (empty: the default) into `path`.
struct IsoRecording
{
    int channel = 0; // 0-based
    QString profile;
    QString path; // empty: beside the program recording, "<name>_iso<N>.<ext>"
    bool operator==(const IsoRecording &) const = default;
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

    // The default profile's bitrate follows a congested target (see EncodeProfile).
    bool adaptiveBitrate = false;
    qint32 adaptiveFloorPercent = 30;
    // Named profiles beside the default one (whose fields are the ones above); the recording's
    // profile (empty: the default); channels recorded on their own.
    QList<EncodeProfile> profiles;
    QString fileProfile;
    QList<IsoRecording> isoRecordings;
    // The recording's timecode origin ("HH:MM:SS:FF"), the same in the program recording and
    // every channel's, set when the outputs start; empty: none.
    QString timecode;
    // What the logs call this encode ("default", a profile's name, "channel 2").
    QString encodeName;
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
