#pragma once

// Overlays given on the headless command line: `--text "…"` becomes a styled ticker, and
// `PATH@x,y,w,h` (a rectangle in the 640 x 360 scene) becomes an image or video overlay record.
// Plain functions, any thread; the caller registers the results with the OverlayManager.

#include "engine/EngineTypes.h"

#include <QString>

namespace selvane {

// A ticker along the bottom of the picture: white bold letters with a shadow on a
// half-transparent black band across the whole width, scrolling right to left.
TextOverlayData tickerTextOverlay(const QString &text, int id);

// False with a reason for the operator when the words are empty.
bool parseTextOverlaySpec(const QString &text, int id, TextOverlayData *overlay, QString *error);

// Reads PATH@x,y,w,h; the last '@' separates the path, so paths may contain '@'. False with a
// reason for the operator for a missing '@', an empty path, values that are not four finite
// numbers, or a width or height that is not positive.
bool parseMediaOverlaySpec(const QString &spec, MediaOverlayRecord::Kind kind, int id,
                           MediaOverlayRecord *record, QString *error);

} // namespace selvane
