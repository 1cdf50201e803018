#pragma once

// What both faces do with a show of the command line: read its schedule file, put the channels,
// overlays and volumes on the engine, and start the schedule. GUI thread only.

#include "show/ShowOptions.h"

#include <QStringList>

namespace selvane {

class Engine;

// Reads a schedule file; false with the operator's reason. Warnings are for the operator too.
bool readScheduleFile(const QString &path, ProgramArrangement *arrangement, QString *error,
                      QStringList *warnings);

// Failover, volumes, the output size, overlays, the base channel and every channel's source
// (looping). False with the operator's reason when the failover settings are refused.
bool applyShowOptions(Engine &engine, const ShowOptions &options, QString *error);

// The whole show: its schedule read and checked (warnings handed back), the options applied,
// the schedule started. False with the operator's reason, naming the file, when it cannot be.
bool loadShow(Engine &engine, const ShowOptions &options, QStringList *warnings, QString *error);

} // namespace selvane
