#include "audio/AudioLevels.h"

#include <cmath>
#include <cstdlib>

namespace selvane {

void AudioLevels::measure(Meter &m, const std::int16_t *samples, int values)
{
    if (values <= 0) {
        store(m, {});
        return;
    }
    int peak = 0;
    double sum = 0.0;
    for (int i = 0; i < values; ++i) {
        const int v = samples[i];
        peak = std::max(peak, std::abs(v));
        sum += double(v) * v;
    }
    store(m, {float(peak / 32768.0), float(std::sqrt(sum / values) / 32768.0)});
}

} // namespace selvane
