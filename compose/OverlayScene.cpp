#include "compose/OverlayScene.h"

#include <algorithm>
#include <chrono>

qint64 OverlayScene::nowUs() const
{
    if (clock)
        return clock();
    return std::chrono::duration_cast<std::chrono::microseconds>(
               std::chrono::steady_clock::now().time_since_epoch())
        .count();
}

qint64 OverlayScene::scrollElapsedUs(int textId, qint64 now) const
{
    const auto it = scrollStartUs.constFind(textId);
    if (it == scrollStartUs.constEnd())
        return 0;
    return std::max<qint64>(0, now - it.value());
}
