#pragma once

// The command line shared by both faces. Without options the mixer window opens; --headless
// runs the same engine without a window (see HeadlessRunner). Plain functions, called on the
// main thread before and while the application object exists.

#include "show/ShowOptions.h"

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

// Decides, before any application object exists, which face the arguments ask for.
LaunchFace launchFaceFor(const QStringList &arguments);

// Adds every option to `parser` (help and version included) and sets the description.
void configureCommandLine(QCommandLineParser &parser);

// --check-schedule: prints the normalised version-3 JSON on stdout and returns 0, or the reason
// on stderr and returns 1. Base clips of channels that no --channel option gives a source are
// warnings.
int checkScheduleFile(const QCommandLineParser &parser);

// Reads the show options of a parser that has processed the arguments. False with a reason
// for the operator when a value is unusable.
bool readShowOptions(const QCommandLineParser &parser, ShowOptions *options, QString *error);

} // namespace selvane
