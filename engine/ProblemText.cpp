#include "compose/TextOverlayData.h"
#include "engine/Problem.h"

#include <QCoreApplication>

namespace selvane {

QString problemText(const Problem &p, ProblemLanguage language)
{
    const auto say = [language](const char *text) {
        return language == ProblemLanguage::English ? QString::fromUtf8(text)
                                                    : QCoreApplication::translate("Problem", text);
    };
    const bool local = p.number == 1;
    switch (p.kind) {
    case ProblemKind::None:
        return {};
    case ProblemKind::NothingToWrite:
        return say(QT_TRANSLATE_NOOP("Problem", "Please fill output file path or stream URL, and "
                                                "select at least one output target."));
    case ProblemKind::OutputsActive:
        return say(QT_TRANSLATE_NOOP("Problem", "The outputs are already running."));
    case ProblemKind::RecordingUnknownContainer:
        return say(QT_TRANSLATE_NOOP("Problem", "The recording file \"%1\" names no known "
                                                "container (use .mp4, .mkv, .mov, .ts ...)."))
            .arg(p.subject);
    case ProblemKind::RecordingFolderMissing:
        return say(QT_TRANSLATE_NOOP("Problem",
                                     "The folder of the recording file \"%1\" does not exist."))
            .arg(p.subject);
    case ProblemKind::RecordingFolderNotWritable:
        return say(QT_TRANSLATE_NOOP("Problem",
                                     "The folder of the recording file \"%1\" cannot be written."))
            .arg(p.subject);
    case ProblemKind::TargetBadUrl:
        return say(QT_TRANSLATE_NOOP("Problem", "The stream target \"%1\" is not a URL such as "
                                                "rtmp://host/app/key."))
            .arg(p.subject);
    case ProblemKind::TargetNoContainer:
        return say(QT_TRANSLATE_NOOP("Problem", "No container is known for the stream target "
                                                "\"%1\"; add #FORMAT (for example #flv or "
                                                "#mpegts)."))
            .arg(p.subject);
    case ProblemKind::EightKFlvTarget:
        return say(QT_TRANSLATE_NOOP("Problem", "8K output uses HEVC. Standard RTMP services "
                                                "accept H.264 only.\nUse a HEVC-capable SRT "
                                                "destination or record to MP4/MKV."));
    case ProblemKind::EightKNoHardwareEncoder:
        return say(QT_TRANSLATE_NOOP("Problem", "The selected 8K hardware HEVC encoder is "
                                                "unavailable. Update the GPU driver or choose a "
                                                "supported GPU.")) +
               (p.detail.isEmpty() ? QString() : "\n\n" + p.detail);
    case ProblemKind::OutputsNotOpened:
        return say(QT_TRANSLATE_NOOP(
                   "Problem",
                   "Unable to start stream/output.\n\nIf the log shows RTMP_Connect0 / 10060, the "
                   "PC cannot TCP-reach the server (common for YouTube rtmp://:1935). Try:\n• Use "
                   "a VPN/proxy in TUN mode\n• Or paste rtmps://… (YouTube supports RTMPS on port "
                   "443)\n• Confirm the stream key and that Live is enabled in YouTube Studio")) +
               (p.detail.isEmpty() ? QString() : "\n\n" + p.detail);
    case ProblemKind::SourceIsRecording:
        return local ? say(QT_TRANSLATE_NOOP("Problem", "A source cannot be the file the "
                                                        "outputs record to."))
                     : say(QT_TRANSLATE_NOOP("Problem", "A source cannot be the address the "
                                                        "outputs record to."));
    case ProblemKind::SourceIsTarget:
        return local ? say(QT_TRANSLATE_NOOP("Problem", "A source cannot be a file that a "
                                                        "selected stream target writes."))
                     : say(QT_TRANSLATE_NOOP("Problem", "A source cannot be the address of a "
                                                        "selected stream target."));
    case ProblemKind::ChannelOutOfRange:
        return say(QT_TRANSLATE_NOOP("Problem", "There is no channel %1: channels are 1 to 4."))
            .arg(p.number);
    case ProblemKind::AddressEmpty:
        return say(QT_TRANSLATE_NOOP("Problem", "The address is empty."));
    case ProblemKind::AddressUnknownScheme:
        return say(QT_TRANSLATE_NOOP("Problem", "\"%1\" names no protocol this system has."))
            .arg(p.subject);
    case ProblemKind::AddressMissingHost:
        return say(QT_TRANSLATE_NOOP("Problem", "\"%1\" is a network address without a host."))
            .arg(p.subject);
    case ProblemKind::AddressFileMissing:
    case ProblemKind::OverlayFileMissing:
        return say(QT_TRANSLATE_NOOP("Problem", "There is no readable file at \"%1\"."))
            .arg(p.subject);
    case ProblemKind::AddressBadTestSignal:
        return say(QT_TRANSLATE_NOOP("Problem", "The test signal's graph in \"%1\" does not "
                                                "parse."))
            .arg(p.subject);
    case ProblemKind::ChannelHasNoSource:
        return say(QT_TRANSLATE_NOOP("Problem", "Channel %1 has no source.")).arg(p.number);
    case ProblemKind::TextEmpty:
        return say(QT_TRANSLATE_NOOP("Problem", "The text overlay needs some words."));
    case ProblemKind::TextTooLong:
        return say(QT_TRANSLATE_NOOP("Problem",
                                     "A text holds at most %1 characters; this one has %2."))
            .arg(TextOverlayData::kMaxTextLength)
            .arg(p.number);
    case ProblemKind::TooManyTexts:
        return say(QT_TRANSLATE_NOOP("Problem", "At most %1 text overlays can be shown."))
            .arg(p.number);
    case ProblemKind::TooManyMedia:
        return say(QT_TRANSLATE_NOOP("Problem", "At most %1 image and video overlays can be "
                                                "shown."))
            .arg(p.number);
    case ProblemKind::NoSuchOverlay:
        return say(QT_TRANSLATE_NOOP("Problem", "There is no overlay %1.")).arg(p.number);
    case ProblemKind::TwinIsRecording:
        return say(QT_TRANSLATE_NOOP("Problem", "The twin recording \"%1\" is the recording "
                                                "itself: choose another folder or disk."))
            .arg(p.subject);
    case ProblemKind::OutputTimePassed:
        return say(QT_TRANSLATE_NOOP("Problem", "That time has passed: %1")).arg(p.subject);
    case ProblemKind::OutputStopBeforeStart:
        return say(QT_TRANSLATE_NOOP("Problem", "The outputs must stop after they start."));
    case ProblemKind::ProfileBadName:
        return say(QT_TRANSLATE_NOOP("Problem", "A profile's name holds letters, digits, \"-\" "
                                                "and \"_\" only: \"%1\""))
            .arg(p.subject);
    case ProblemKind::ProfileTwice:
        return say(QT_TRANSLATE_NOOP("Problem", "There are two profiles named \"%1\"."))
            .arg(p.subject);
    case ProblemKind::ProfileUnknown:
        return say(QT_TRANSLATE_NOOP("Problem", "There is no profile named \"%1\"."))
            .arg(p.subject);
    case ProblemKind::ProfileAboveProgramRate:
        return say(QT_TRANSLATE_NOOP("Problem", "The profile \"%1\" runs faster than the "
                                                "program's %2 frames a second."))
            .arg(p.subject)
            .arg(p.number);
    case ProblemKind::ProfileBadSize:
        return say(QT_TRANSLATE_NOOP("Problem", "The profile \"%1\" needs an even width and "
                                                "height from 16 to 8192."))
            .arg(p.subject);
    case ProblemKind::IsoBadChannel:
        return say(QT_TRANSLATE_NOOP("Problem", "Channels 1 to 4 can be recorded on their own, "
                                                "not %1."))
            .arg(p.number);
    case ProblemKind::IsoTwice:
        return say(QT_TRANSLATE_NOOP("Problem", "Channel %1 is recorded on its own twice."))
            .arg(p.number);
    case ProblemKind::IsoNeedsRecording:
        return say(QT_TRANSLATE_NOOP("Problem", "A channel's own recording is written beside the "
                                                "program's: choose a recording file first."));
    case ProblemKind::HlsBadSegment:
        return say(QT_TRANSLATE_NOOP("Problem", "HLS segments last 1 to 6 seconds, not %1."))
            .arg(p.number);
    case ProblemKind::HlsBadWindow:
        return say(QT_TRANSLATE_NOOP("Problem", "An HLS playlist names 2 to 60 segments, not %1."))
            .arg(p.number);
    case ProblemKind::NoImages:
        return say(QT_TRANSLATE_NOOP("Problem", "Choose a folder or images first."));
    case ProblemKind::BadBackup:
        return say(QT_TRANSLATE_NOOP("Problem",
                                     "The backup of channel %1 must be another channel "
                                     "(channel:1 to channel:4) or a file or stream address: %2"))
            .arg(p.number)
            .arg(p.subject);
    case ProblemKind::BadFailoverTime:
        return say(QT_TRANSLATE_NOOP("Problem",
                                     "Failover times lie between 100 ms and one hour, not %1 ms."))
            .arg(p.number);
    case ProblemKind::SlateUnreadable:
        return say(QT_TRANSLATE_NOOP("Problem", "The slate cannot be read: %1")).arg(p.subject);
    }
    return {};
}

} // namespace selvane
