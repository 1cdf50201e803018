#pragma once

// Where recordings go: the folder of the configured recording file ("output/filePath"), or the
// default output folder when none is set. GUI thread only (reads the settings store).

#include <QString>

namespace selvane {

// <Videos>/Selvane, or <home>/Selvane where the platform has no videos folder.
QString defaultOutputDirectory();
QString recordingDirectory();

} // namespace selvane
