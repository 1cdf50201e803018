#pragma once

// The values the Engine API takes and gives: what an operator asks for (sources, overlays,
// output settings, schedules) and what the engine reports back (the stats snapshot). Plain
// values, copied freely between threads.

#include "audio/AudioLevels.h"
#include "compose/OverlayScene.h"
#include "compose/TextOverlayData.h"
#include "input/SourceError.h"
#include "output/EncoderSettings.h"
#include "output/StreamUrl.h"
#include "schedule/ProgramArrangement.h"

#include <QDateTime>
#include <QHash>
#include <QList>
#include <QMetaType>
#include <QRect>
#include <QSize>
#include <QString>
#include <array>

namespace selvane {

inline constexpr int kChannelCount = 4;
inline constexpr int kOverlayVideoSlots = 4;

enum class ChannelState
{
    Idle,    // no source
    Opening, // connecting or probing
    Playing,
    Paused,
    Ended,        // a file reached its end without loop
    Failed,       // see lastError
    Reconnecting, // a network stream is lost and being opened again (see lastError)
};

// The word the progress line and the control API use: "idle", "connecting", "live" (a live
// source delivering), "playing", "paused", "ended", "failed", "reconnecting".
QString channelStateWord(ChannelState state, bool live);

// The output's picture size: the program's own (with 1920 x 1080 until one is known), or an
// explicit size.
struct OutputSize
{
    bool explicitSize = false;
    QSize size;
};

// One output start: recording, stream targets, encoding and the picture size.
struct OutputSettings
{
    EncoderSettings encoder;
    OutputSize size;
    // The recording's folder is made when it does not exist (as a file manager makes the
    // folder one types), instead of refusing the start.
    bool makeRecordingFolder = false;
    bool hasDestination() const
    {
        return (encoder.fileEnabled && !encoder.filePath.trimmed().isEmpty()) ||
               !encoder.streamTargets.isEmpty();
    }
};

// What happens when the channel on air fails: off unless enabled. Each channel may name a
// backup: "channel:M" (another channel, 1..4), or a file or stream address; a channel without
// one shows the slate: `slatePath` (an image or a clip; empty: a built-in card) with
// `slateText` over it (empty: the built-in card's words, none over a picture of one's own).
struct FailoverSettings
{
    bool enabled = false;
    int failoverMs = 2000; // no new picture for this long: failed
    int returnMs = 3000;   // delivering steadily for this long: back on air
    std::array<QString, kChannelCount> backups;
    QString slatePath;
    QString slateText;
    bool operator==(const FailoverSettings &) const = default;
};

// A moment at which the outputs start or stop by themselves. ByHand: none, the operator does it;
// Schedule: at `scheduleMs` on the running schedule's timeline (0: as the schedule starts);
// ScheduleEnd: where the schedule's last clip ends, or as the schedule is stopped; Clock: at
// the date-time `at`.
struct OutputMoment
{
    enum class Kind
    {
        ByHand,
        Schedule,
        ScheduleEnd,
        Clock,
    };
    Kind kind = Kind::ByHand;
    qint64 scheduleMs = 0;
    QDateTime at;
    bool operator==(const OutputMoment &) const = default;
};

// When the outputs start and stop by themselves; both by hand by default.
struct OutputTimes
{
    OutputMoment start;
    OutputMoment stop;
    bool operator==(const OutputTimes &) const = default;
};

// A camera or a microphone the system offers: the name the address carries ("dshow://capture?
// video=NAME"), which is the friendly description where the system has one.
struct CaptureDevice
{
    QString name;
    QString deviceId; // what the system opens (/dev/video0, a PulseAudio source name)
};

// A monitor or a window that can be captured, with the address that captures it.
struct CaptureTarget
{
    QString address; // "desktop://capture?monitor=N" or "wgc://capture?hwnd=0x…"
    QString name;    // the monitor's output name, or the window's title
    QString label;   // windows: "title  [0xHANDLE]"
    QRect geometry;  // monitors: where on the screen
    quint64 window = 0;
};

// A speaker output the preview can play on.
struct AudioOutputDevice
{
    QByteArray id;
    QString description;
    bool isDefault = false;
};

struct ChannelStats
{
    ChannelState state = ChannelState::Idle;
    QString source;
    QSize size; // display size of the pictures, once known
    double fps = 0.0;
    qint64 framesDelivered = 0;
    qint64 framesDropped = 0;
    qint64 packetsDropped = 0;
    qint64 durationMs = 0; // 0 when unknown or live
    qint64 positionMs = 0; // of the newest decoded picture, from the source's start
    bool live = false;
    bool loop = false;
    bool deinterlacing = false; // interlaced pictures are being deinterlaced
    qint64 picturesSkipped = 0; // decoded but never on air: late, or a newer one was due
    qint64 repeatedTicks = 0;   // program ticks that found no newer picture of the channel due
    qint64 reanchors = 0;       // times the channel was put on the program clock again
    qint64 reconnects = 0;      // times a network stream was lost and opened again
    SourceError lastError = SourceError::None;
    Level audio;
};

struct ProgramStats
{
    int channel = -1;   // the channel on air; -1 for still pictures or black
    bool still = false; // pictures come from still images
    QSize size;         // the program's (output) size
    bool usedFallbackSize = false;
    double fps = 0.0;
    qint64 frames = 0;       // program frames made: one for every tick of the output rate
    qint64 repeated = 0;     // of those, with the same picture on air as the tick before
    qint64 skippedTicks = 0; // ticks the program thread was too late for (a stalled machine)
    qint64 framesWithoutOverlays = 0; // composed without overlays for want of a free picture
    Level audio;
    int preview = -1;          // the channel on the preview bus; -1 for none
    int transitionTarget = -1; // the channel a running transition goes to; -1 for none
    double tbar = 0.0;         // the hand-held transition's position, 0 .. 1
    bool fadedToBlack = false; // faded (or fading) to black
    qint64 transitions = 0;    // transitions taken to their end since the start
    // Failover: the channel stood in for (-1: none), by what ("channel 3", "backup", "slate"),
    // how often it happened and came back, and the slate on air by hand.
    int failedChannel = -1;
    QString standIn;
    qint64 failovers = 0;
    qint64 returns = 0;
    bool slate = false;
};

struct TargetStats
{
    QString url;    // masked
    QString status; // "connecting", "online", "congested", "reconnecting", "stopped"
    double kbps = 0.0;
    qint64 bytes = 0;
    qint64 reconnects = 0;
    qint64 queueResets = 0;
    qint64 packetsDropped = 0; // queue resets, waits for a keyframe, time spent reconnecting
    QString profile;           // the encode profile it takes ("default" for the default one)
};

struct RecordingStats
{
    QString path; // the file (segment) being written
    qint64 bytes = 0;
    // "failed" while nothing can be written (the streams go on; a new file is tried every
    // second), with the reason; failures counts the times it went from writing to failed.
    bool failed = false;
    QString failureReason;
    int failures = 0;
    int resumes = 0; // times a new file was begun after a failure
    // The disk: free bytes (-1: unknown), seconds left at the current bitrate (-1: not known
    // yet), and the warning level (0 room, 1 about ten minutes left, 2 about two).
    qint64 freeBytes = -1;
    qint64 secondsLeft = -1;
    int diskWarning = 0;
};

// One encoder of the running outputs: the profile it encodes, what it shows ("program",
// "multiview", "channel N"), its picture, its video bitrate as set and now (they differ while
// an adaptive bitrate has stepped it down), its steps, and its pictures.
struct EncodeStats
{
    QString profile;
    QString source;
    QSize size;
    double fps = 0;
    bool adaptive = false;
    qint64 setKbps = 0;
    qint64 currentKbps = 0;
    int bitrateSteps = 0;
    qint64 framesWritten = 0;
    qint64 encoderDrops = 0;
    QString encoder;
    bool failed = false; // none of its outputs could be opened
};

// A channel recorded on its own.
struct IsoStats
{
    int channel = 0; // 1-4
    QString profile;
    RecordingStats file;
};

struct OutputStats
{
    bool running = false;
    bool stopping = false;
    qint64 elapsedMs = 0;
    // Wall-clock time (ms since 1970) of the outputs' first picture; 0 while stopped.
    qint64 startedAtMs = 0;
    QString encoder;
    qint64 bytesEncoded = 0;
    qint64 framesWritten = 0; // pictures the encoder has written
    double kbps = 0.0;
    qint64 encoderDrops = 0;       // pictures the encode queue dropped
    qint64 audioChunksDropped = 0; // program sound the encode queue dropped
    bool recording = false;
    RecordingStats file;
    bool twinRecording = false; // a second copy of the recording is written
    RecordingStats twin;
    QList<TargetStats> targets;
    QList<EncodeStats> encodes; // the recording's encode first
    QList<IsoStats> isoRecordings;
    QString timecode; // the recordings' timecode origin
    // The outputs' times: how long until they start or stop by themselves, -1 when nothing is
    // due (or not known yet: a time on a schedule that does not run).
    qint64 startsInMs = -1;
    qint64 stopsInMs = -1;
};

struct EngineStats
{
    std::array<ChannelStats, kChannelCount> channels;
    ProgramStats program;
    OutputStats output;
    QHash<int, Level> overlayAudio; // by media id, for the overlay videos that play
    bool scheduleRunning = false;
    QString scheduleBaseClip;
    qint64 scheduleMs = 0;
    qint64 audioDroppedFrames = 0;
};

// ---- network proxy ----

// The proxy settings as the operator keeps them: mode "auto" (what the system says), "manual"
// (the URLs below) or "off"; the URLs may carry user:password.
struct ProxyConfig
{
    QString mode = QStringLiteral("auto");
    QString httpUrl;  // HTTP and HTTPS inputs and targets
    QString socksUrl; // RTMP, RTMPS, RTSP and TCP inputs and targets
};

// What automatic mode finds on this system, for showing (credentials masked).
struct ProxyFound
{
    QString source; // "environment", "GNOME", "KDE", "Windows"; empty when nothing was found
    QString http;
    QString https;
    QString socks;
    QString noProxy;
};

struct ProxyStatus
{
    ProxyConfig config;
    ProxyFound found;
};

enum class ProxyTestFailure
{
    None,
    BadAddress,       // the host:port typed is not one
    ProxyNotFound,    // the proxy's name does not resolve
    ProxyUnreachable, // refused or no route
    ProxyTimeout,     // no answer in time
    ProxyClosed,      // the proxy closed the connection
    AuthRequired,     // the proxy wants a user and password that were not given
    AuthRefused,      // user and password refused
    Refused,          // the proxy could not or would not connect to the host (replyCode)
    BadReply,         // not a SOCKS5 (or HTTP) proxy
    Unreachable,      // direct: the host cannot be reached
};

struct ProxyTestResult
{
    ProxyTestFailure failure = ProxyTestFailure::None;
    QString route;      // "socks", "http" or "direct" (no proxy in the settings)
    QString proxy;      // host:port of the proxy tried (no credentials)
    int replyCode = -1; // Refused: the SOCKS5 reply code or the HTTP status
    qint64 elapsedMs = 0;
    QString detail; // the system's own words, when there are any
    bool ok() const { return failure == ProxyTestFailure::None; }
};

// Where a stinger's clip stands: loaded ahead, a take before it is ready is a cut.
struct StingerInfo
{
    QString state; // "loading", "ready", "failed", or empty when never asked for
    QString failure;
    int durationMs = 0;
    int cutMs = 0; // where the switch happens
    bool hasAlpha = false;
};

} // namespace selvane

Q_DECLARE_METATYPE(selvane::ChannelState)
