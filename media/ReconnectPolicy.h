#pragma once

// How Selvane comes back from a lost connection, inputs and outputs side by side: how long it
// waits before each new attempt, and the time-outs of a connection. Nothing gives up while the
// show runs; the waits grow so that a dead server is not hammered.

#include "media/LogThrottle.h"

#include <QtGlobal>
#include <algorithm>

namespace selvane::reconnect {

// ---- inputs: a network source that was lost is opened again after 0.5 s, then 1, 2, 4, 8 and
// 10 s at most; a source that delivered pictures again starts over at 0.5 s.
inline constexpr qint64 kInputFirstRetryMs = 500;
inline constexpr qint64 kInputLongestRetryMs = 10000;

inline qint64 inputAfterLossMs(int attempt)
{
    return std::min(kInputFirstRetryMs << std::min(attempt, 8), kInputLongestRetryMs);
}

// ---- outputs

// After a write failure the first reopen comes quickly; after a failed reopen the waits double
// from one second. Both are capped at 90 s, and retries never give up while the output runs.
inline constexpr qint64 kWriteFailureBaseMs = 400;
inline constexpr int kWriteFailureMaxDoublings = 8;
inline constexpr qint64 kReopenBaseMs = 500;
inline constexpr int kReopenMaxDoublings = 10;
inline constexpr qint64 kMaxDelayMs = 90000;

inline qint64 afterWriteFailureMs(int attempt)
{
    return std::min(kWriteFailureBaseMs << std::min(attempt, kWriteFailureMaxDoublings),
                    kMaxDelayMs);
}

inline qint64 afterFailedReopenMs(int attempt)
{
    return std::min(kReopenBaseMs << std::min(attempt, kReopenMaxDoublings), kMaxDelayMs);
}

// I/O time-outs of a stream target, in microseconds.
inline constexpr const char *kFirstConnectTimeoutUs = "5000000";
inline constexpr const char *kReconnectTimeoutUs = "3000000";

// A stream target's queue is reset when a packet arrives while it holds this many.
inline constexpr std::size_t kQueueResetPackets = 96;

// Closing waits for network workers in slices, warning once after five seconds.
inline constexpr int kCloseSliceMs = 100;
inline constexpr int kCloseWarnAfterMs = 5000;

using selvane::shouldLog;

} // namespace selvane::reconnect
