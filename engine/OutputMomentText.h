#pragma once

// The outputs' start and stop times as the command line, the remote control and the settings
// write them: "hand" (or empty) for by hand; "schedule" for the schedule's start (a start) or
// its end (a stop); a local date-time "2026-11-26T21:00" or "2026-11-26 21:00:30"; or a time
// of day "21:00" / "21:00:30", meaning its next coming (today, or tomorrow once it has passed).
// Plain functions; any thread.

#include "engine/EngineTypes.h"

#include <optional>

namespace selvane {

// None when the text is none of the above.
std::optional<OutputMoment> readOutputMoment(const QString &text, bool stop, const QDateTime &now);
// What readOutputMoment reads back (a date-time in full).
QString outputMomentText(const OutputMoment &moment);

} // namespace selvane
