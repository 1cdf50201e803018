#pragma once

// The guard against a source that reads what the outputs write (a loop of the program into
// itself): the recording file or a stream target, compared as normalised paths and URLs.
// Capture devices never conflict. Any thread.

#include "engine/Problem.h"
#include "input/SourceAddress.h"
#include "output/EncoderSettings.h"

namespace selvane {

// Whether a typed source address can be opened at all: a known protocol, an existing file, a
// test signal's graph that parses. Cheap, no I/O beyond a file's existence.
Problem checkSourceAddress(const SourceAddress &address);

Problem sourceIsOutput(const SourceAddress &source, const EncoderSettings &outputs);

} // namespace selvane
