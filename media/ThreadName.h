#pragma once

// Names the calling thread for the system's tools (top -H, perf, a debugger): at most 15
// characters on Linux. Threads a named thread starts (FFmpeg's codec threads among them) take
// its name on Linux, so that their time is counted where it belongs. Any thread.

namespace selvane {

void nameThisThread(const char *name);

} // namespace selvane
