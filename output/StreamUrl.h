#pragma once

// Stream target URLs: masking for logs, the RTMP-to-RTMPS reachability rewrite, container
// choice. Free functions, any thread.

#include <QString>

namespace selvane {

// The URL with its secrets masked (net/SecretMask.h: maskUrl).
QString maskStreamUrl(const QString &url);

// An rtmp:// URL to the YouTube RTMP ingest becomes the RTMPS ingest (same path); others are
// returned unchanged. `rewritten` tells which.
QString rewriteYouTubeRtmp(const QString &url, bool *rewritten = nullptr);

// True when the target is published as FLV: its format name is "flv" (or "live_flv"), or its URL
// is RTMP-family.
bool isFlvTarget(const QString &url, const QString &formatName);
bool isRtmpFamilyUrl(const QString &url);

// The muxer short name for a stream target: "flv" for FLV targets, "mpegts" for "mpegts" and
// "m2ts", otherwise the given name (trimmed, lower-cased).
QString streamContainerName(const QString &url, const QString &formatName);

} // namespace selvane

struct StreamTarget;

namespace selvane {

// A target as the operator writes it, "URL" or "URL#FORMAT": FORMAT is split off only when the
// text after the last "#" names an FFmpeg muxer, so that an SRT stream id such as
// "#!::r=live/key,m=publish" stays in the URL. Without it the container follows the URL's
// kind: FLV for RTMP, MPEG-TS for SRT, UDP, RTP and HTTP(S), HLS for a local path to a
// playlist (".m3u8"); empty when nothing fits.
StreamTarget parseStreamTarget(const QString &text);

// What keeps an output from working, found before anything starts.
enum class OutputProblem
{
    None,
    UnknownContainer,  // the recording's extension names no container
    FolderMissing,     // the recording's folder does not exist
    FolderNotWritable, // ... or cannot be written
    BadTargetUrl,      // a target without scheme and host
    NoTargetContainer, // a target whose container is neither given nor implied
};
OutputProblem recordingProblem(const QString &path);
OutputProblem streamTargetProblem(const StreamTarget &target);
// An HLS folder: the target's URL is the path of its playlist ("live/index.m3u8").
bool isHlsTarget(const StreamTarget &target);

// A path beside `path` that names no existing file: `path` itself, or "take_1.mp4",
// "take_2.mp4" ... for "take.mp4". No take is ever replaced.
QString unusedRecordingPath(const QString &path);

} // namespace selvane
