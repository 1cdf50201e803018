#pragma once

// The command line's encode profiles: --profile defines one, --adaptive and --multiview say
// how it works, --iso records a channel on its own, --hls-segment and --hls-window shape the
// HLS folders; "NAME=" in front of --record and --stream picks the profile they take.

#include "output/EncoderSettings.h"

class QCommandLineParser;

namespace selvane {

void addProfileOptions(QCommandLineParser &parser);
// After --record and --stream are read into `out`: false with `error` set when an option does
// not read.
bool readProfileOptions(const QCommandLineParser &parser, EncoderSettings &out, QString *error);

} // namespace selvane
