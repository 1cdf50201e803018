#pragma once

// What output settings may be, decided in one place: a stream target as the operator types it,
// the 8K rules, and what keeps a set of settings from starting. Pure functions; any thread. The
// engine applies them when outputs start; a face shows them.

#include "engine/EngineTypes.h"
#include "engine/Problem.h"

#include <QSize>
#include <QString>

namespace selvane {

class OutputRules
{
public:
    // A stream target as the operator types it ("URL" or "URL#FORMAT").
    static StreamTarget parseStreamTarget(const QString &text);
    // Above 4096 pixels a side the encoder is hardware HEVC, and at 59 fps and more the preset
    // is Performance, so that 8K keeps real time.
    struct EightKRules
    {
        bool eightK = false;
        bool hardwareForced = false;    // the encoder choice becomes Hardware
        bool performanceForced = false; // the preset becomes Performance
    };
    static EightKRules eightKRules(const OutputSettings &settings, QSize programSize);
    // What keeps these settings from starting, whatever the engine's state: nothing to write,
    // the recording's container and folder, the targets, 8K over FLV.
    static Problem check(const OutputSettings &settings, QSize programSize);
    // The encode profiles and what names them: valid and unique names, sizes, no rate above
    // the program's, every name an output asks for defined, channel recordings, HLS limits.
    static Problem checkProfiles(const EncoderSettings &encoder);
};

} // namespace selvane
