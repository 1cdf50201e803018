#pragma once

// Why the engine refused an operation: a kind and its details. The engine decides (what may
// start, the limits, the 8K rules, a source that would read an output); the faces only turn a
// problem into words with problemText() and show them. A value record; any thread.

#include <QMetaType>
#include <QString>

namespace selvane {

enum class ProblemKind
{
    None,
    // ---- outputs ----
    NothingToWrite,            // neither a recording nor a stream target
    OutputsActive,             // the outputs are running already
    RecordingUnknownContainer, // subject: the file; its extension names no container
    RecordingFolderMissing,    // subject: the file
    RecordingFolderNotWritable,
    TwinIsRecording,         // subject: the twin's file, the recording's own
    TargetBadUrl,            // subject: the target as typed
    TargetNoContainer,       // subject: the target
    EightKFlvTarget,         // subject: the target; 8K is HEVC, which FLV does not carry
    EightKNoHardwareEncoder, // detail: what the probe found
    OutputsNotOpened,        // no output could be opened (detail: why, when known)
    OutputTimePassed,        // subject: the time as the operator gave it
    OutputStopBeforeStart,   // the outputs' stop comes before their start
    ProfileBadName,          // subject: the name as given
    ProfileTwice,            // subject: the name defined twice
    ProfileUnknown,          // subject: the name an output asks for
    ProfileAboveProgramRate, // subject: the profile; number: the program's frame rate
    ProfileBadSize,          // subject: the profile
    IsoBadChannel,           // number: the channel as given (1-4)
    IsoTwice,                // number: the channel (1-4) recorded on its own twice
    IsoNeedsRecording,       // a channel's recording is named beside the program's
    HlsBadSegment,           // number: the segment length in seconds as given
    HlsBadWindow,            // number: the playlist's length as given
    // A source that would read what the outputs write: subject, the source; number 1 when it
    // is a local file (the words differ).
    SourceIsRecording,
    SourceIsTarget,
    // ---- sources ----
    ChannelOutOfRange, // number: the channel as given
    AddressEmpty,
    AddressUnknownScheme, // subject: the address
    AddressMissingHost,
    AddressFileMissing,
    AddressBadTestSignal,
    ChannelHasNoSource, // number: the channel (1-4)
    // ---- overlays ----
    TextEmpty,
    TextTooLong,        // number: its characters
    TooManyTexts,       // number: the limit
    TooManyMedia,       // number: the limit
    OverlayFileMissing, // subject: the file
    NoSuchOverlay,      // number: the id
    // ---- still pictures ----
    NoImages, // a slideshow of no pictures
    // ---- failover ----
    BadBackup,       // number: the channel (1-4); subject: the backup as given
    BadFailoverTime, // number: the time in ms as given
    SlateUnreadable, // subject: the file
};

struct Problem
{
    ProblemKind kind = ProblemKind::None;
    QString subject; // the file, address or target it concerns
    QString detail;  // more, where there is more (a probe's finding)
    qint64 number = 0;

    Problem() = default;
    Problem(ProblemKind k, QString s = {}, qint64 n = 0, QString d = {})
        : kind(k), subject(std::move(s)), detail(std::move(d)), number(n)
    {
    }
    explicit operator bool() const { return kind != ProblemKind::None; }
    friend bool operator==(const Problem &, const Problem &) = default;
};

// The operator's words for a problem: in the language of the loaded translation, or in English
// (the control API answers in English whatever the window shows).
enum class ProblemLanguage
{
    Operator,
    English,
};
QString problemText(const Problem &problem, ProblemLanguage language = ProblemLanguage::Operator);

} // namespace selvane

Q_DECLARE_METATYPE(selvane::Problem)
