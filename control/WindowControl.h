#pragma once

// The window's remote control: --control-port and --control-bind of the command line, else the
// "control/port" (0: off) and "control/bind" settings. The start-up line goes to stdout and the
// log; a port that cannot be had is told there too and the window goes on without it.
// GUI thread.

#include "engine/EngineTypes.h"

#include <QString>

class QObject;

namespace selvane {

class ControlServer;
class Engine;

struct WindowControlOptions
{
    quint16 port = 0; // 0: the settings decide
    QString bind;     // empty: the settings', else 127.0.0.1
};

// Null when off or when the port cannot be had.
ControlServer *startWindowControl(Engine &engine, const WindowControlOptions &options,
                                  QObject *parent);

} // namespace selvane
