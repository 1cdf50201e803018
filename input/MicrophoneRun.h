#pragma once

// Decodes a microphone opened beside a channel's main source (the device of a separate audio
// address, or on Linux the microphone named in a camera address) into the run's audio sink until
// the run is cancelled. Runs on a thread of its own, started and joined by the decoder's worker.

#include "input/DecodeRun.h"

namespace selvane {

void runMicrophone(const QString &microphone, DecodeHost &host);

} // namespace selvane
