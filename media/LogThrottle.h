#pragma once

// Repeated failures are logged the first N times and then every M-th time, so that a long outage
// cannot flood the log at the frame rate.

#include <QtGlobal>

namespace selvane {

inline bool shouldLog(qint64 count, qint64 firstN, qint64 everyM)
{
    return count <= firstN || (everyM > 0 && count % everyM == 0);
}

} // namespace selvane
