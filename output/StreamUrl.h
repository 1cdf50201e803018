#pragma once

// Stream target URLs: masking for logs, the RTMP-to-RTMPS reachability rewrite, container
// choice. Free functions, any thread.

#include <QString>

namespace selvane {

// Everything after the last "/" that follows "://" is replaced by "***" for rtmp(s/t)://,
// http(s):// URLs; other text is returned as it is.
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
