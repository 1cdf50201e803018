#pragma once

// The steady clock that waits and paces read; tests put a clock they move by hand in its place.

#include <chrono>
#include <functional>

namespace selvane {

using SteadyClock = std::chrono::steady_clock;
using SteadyNow = std::function<SteadyClock::time_point()>;

inline SteadyClock::time_point steadyNow(const SteadyNow &now)
{
    return now ? now() : SteadyClock::now();
}

} // namespace selvane
