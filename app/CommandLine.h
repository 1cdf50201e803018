#pragma once

// The command line shared by both faces. The GUI face takes no options of its own; the
// headless options are listed here so that `--help` documents everything in one place.

#include <QStringList>

class QCommandLineParser;

namespace selvane {

enum class LaunchFace
{
    Gui,         // the main window with the single-instance lock
    ConsoleOnly, // --help, --version or a command line error: answered without any window
};

// Decides, before any application object exists, which face the arguments ask for.
LaunchFace launchFaceFor(const QStringList &arguments);

// Adds every option to `parser` (help and version included) and sets the description.
void configureCommandLine(QCommandLineParser &parser);

} // namespace selvane
