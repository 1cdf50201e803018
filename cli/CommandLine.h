#pragma once

// The command line shared by both faces. Without options the mixer window opens; --headless
// runs the same engine without a window (see HeadlessRunner). Plain functions, called on the
// main thread before and while the application object exists.

#include "engine/EngineTypes.h"

#include <QMap>
#include <QSize>
#include <QString>
#include <QStringList>

class QCommandLineParser;

namespace selvane {

enum class LaunchFace
{
    Gui,           // the main window with the single-instance lock
    Headless,      // --headless: no window, no lock
    ConsoleOnly,   // --help, --version or a command line error: answered without any window
    CheckSchedule, // --check-schedule FILE: validate and print the normalised arrangement
};

struct HeadlessOptions
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

    // Overlays drawn over the program.
    QList<TextOverlayData> texts;
    QList<MediaOverlayRecord> media;

    // Outputs: started when a recording or a stream target is given.
    EncoderSettings output;
    QSize outputSize; // empty: same as the program
    bool hasOutputs() const { return output.fileEnabled || !output.streamTargets.isEmpty(); }
    // The window starts the outputs at once only when asked (the headless face always does).
    bool startOutputs = false;

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

// Decides, before any application object exists, which face the arguments ask for.
LaunchFace launchFaceFor(const QStringList &arguments);

// Adds every option to `parser` (help and version included) and sets the description.
void configureCommandLine(QCommandLineParser &parser);

// --check-schedule: prints the normalised version-3 JSON on stdout and returns 0, or the reason
// on stderr and returns 1. Base clips of channels that no --channel option gives a source are
// warnings.
int checkScheduleFile(const QCommandLineParser &parser);

// Reads the headless options of a parser that has processed the arguments. False with a reason
// for the operator when a value is unusable.
bool readHeadlessOptions(const QCommandLineParser &parser, HeadlessOptions *options,
                         QString *error);

} // namespace selvane
