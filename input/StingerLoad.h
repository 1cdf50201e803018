#pragma once

// Reads a stinger file whole into a StingerClip at the program's size: its pictures with their
// alpha (QuickTime Animation, ProRes 4444, PNG sequences in a container, VP8/VP9 with alpha
// through libvpx, anything FFmpeg decodes with an alpha plane), and its sound. A clip without
// alpha is accepted and covers the whole picture while it plays.
//
// Runs on whichever thread calls it (the engine's loads run on the global thread pool); it
// touches nothing shared. `cancel`, when given, is polled between packets.

#include "media/StingerClip.h"

#include <QImage>
#include <QSize>
#include <QString>
#include <atomic>

namespace selvane {

// `cutMs` < 0: the switch underneath happens in the clip's middle. Null with `error` set when
// the file cannot be used (missing, not a video, longer than StingerClip::kMaxMs, too big for
// StingerClip::kMaxBytes at this size, or cancelled).
StingerClipPtr loadStinger(const QString &path, QSize size, int cutMs, QString *error,
                           const std::atomic<bool> *cancel = nullptr);

// One picture with alpha (words to lay over a picture, say) in the same form, at its own size;
// clear when the image is null.
StingerPicture stingerPictureOf(const QImage &image);

} // namespace selvane
