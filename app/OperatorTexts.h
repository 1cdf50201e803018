#pragma once

// What the window tells the operator about the engine's reports, in the operator's language.
// GUI thread.

#include "engine/EngineTypes.h"

#include <QString>

namespace selvane {

QString sourceErrorText(SourceError error);

} // namespace selvane
