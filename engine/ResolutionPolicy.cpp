#include "engine/ResolutionPolicy.h"

#include <algorithm>

namespace selvane {

namespace {

int evenAtLeastTwo(int value)
{
    return std::max(2, value - (value % 2));
}
QSize evenSize(QSize size)
{
    return {evenAtLeastTwo(size.width()), evenAtLeastTwo(size.height())};
}

} // namespace

OutputSizeChoice chooseOutputSize(const OutputSize &wanted, QSize onAir)
{
    if (wanted.explicitSize) {
        if (wanted.size.width() < 1 || wanted.size.height() < 1)
            return {};
        return {true, evenSize(wanted.size), false};
    }
    if (onAir.width() >= 1 && onAir.height() >= 1)
        return {true, evenSize(onAir), false};
    return {true, evenSize(kFallbackOutputSize), true};
}

} // namespace selvane
