#pragma once

// A show as the command line gives it, for either face: channels and their microphones, the
// base channel, volumes, a schedule or the demo, overlays, outputs and the remote control's
// port. A value record; any thread.

#include "engine/EngineTypes.h"
#include "media/ProgramBus.h"

#include <QMap>
#include <QSize>
#include <QString>

namespace selvane {

struct ShowOptions
{
    QMap<int, QString> channels;    // channel index 0..3 -> source address
    QMap<int, QString> microphones; // channel index 0..3 -> "dshow://capture?audio=NAME"
    int baseChannel = 0;            // 0..3
    double durationSeconds = 0;     // 0: until interrupted

    // Audio: preview volume per channel (linear), the program channel's volume in the program
    // mix, and the program bus gain for the outputs.
    QMap<int, double> channelVolumes;
    double programVolume = 1.0;
    double programGainPercent = 100.0;

    // A schedule file to play, or the built-in demo (test signals, a schedule, overlays).
    QString scheduleFile;
    bool demo = false;
    // How the schedule's channel clips without a transition of their own come on air.
    Transition scheduleTransition;

    // What stands in when the channel on air fails (enabled by any failover option).
    FailoverSettings failover;

    // Overlays drawn over the program.
    QList<TextOverlayData> texts;
    QList<MediaOverlayRecord> media;

    // Outputs: started when a recording or a stream target is given.
    EncoderSettings output;
    QSize outputSize; // empty: same as the program
    bool hasOutputs() const { return output.fileEnabled || !output.streamTargets.isEmpty(); }
    // The window starts the outputs at once only when asked (the headless face always does).
    bool startOutputs = false;
    // When the outputs start and stop by themselves (--start-at, --stop-at); by hand otherwise.
    OutputTimes outputTimes;

    // The remote control (control/): its port (0: off, the window then follows its
    // "control/port" setting) and the address it listens on.
    quint16 controlPort = 0;
    QString controlBind; // empty: 127.0.0.1
    // Whether the command line gave a show at all (the window then loads it).
    bool hasShow() const
    {
        return !channels.isEmpty() || !scheduleFile.isEmpty() || !texts.isEmpty() ||
               !media.isEmpty() || hasOutputs();
    }
};

} // namespace selvane
