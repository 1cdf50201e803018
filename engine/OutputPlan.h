#pragma once

// Which encoders one run of the outputs needs: one per profile that the recording or a stream
// target names (the program, or the multiview for a multiview profile), and one per channel
// recorded on its own. Each gets the settings its encoder opens with, holding only its own
// files and targets, and the targets' places in the operator's list. A pure function; any
// thread.

#include "output/EncoderSettings.h"

#include <QSize>
#include <QString>
#include <vector>

namespace selvane {

struct PlannedEncode
{
    enum class Source
    {
        Program,
        Multiview,
        Channel, // a channel's own pictures and sound (a channel's recording)
    };
    Source source = Source::Program;
    int channel = -1; // Channel: 0-based
    QString profile;  // its name ("default" for the default profile)
    EncoderSettings settings;
    QSize size;
    std::vector<int> targets; // for each of settings.streamTargets, its place in the list
    bool recording = false;   // writes the program recording (and its twin)
    int iso = -1;             // Channel: its place in the channel recordings
};

// `settings` has passed OutputRules::check. The encode that writes the program recording comes
// first, then the program's other profiles in the order they are named, multiviews, channels.
std::vector<PlannedEncode> planEncodes(const EncoderSettings &settings, QSize programSize);

} // namespace selvane
