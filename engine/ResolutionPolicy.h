#pragma once

// Which picture size the program and its outputs have. A pure function of the operator's
// choice and the size of what is on air; the engine applies the result.
//  - An explicit size must be at least 1 x 1; otherwise the choice is invalid.
//  - "Same as program" takes the size of what is on air, or 1920 x 1080 (the fallback) while
//    none is known.
// Every dimension is rounded down to an even number, at least 2.

#include "engine/EngineTypes.h"

namespace selvane {

struct OutputSizeChoice
{
    bool valid = false;
    QSize size;
    bool usedFallback = false;
};

inline constexpr QSize kFallbackOutputSize{1920, 1080};

OutputSizeChoice chooseOutputSize(const OutputSize &wanted, QSize onAir);

} // namespace selvane
