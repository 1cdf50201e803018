#include "media/StingerClip.h"

#include <algorithm>

namespace selvane {

const StingerPicture *StingerClip::at(qint64 elapsedUs) const
{
    const auto after =
        std::upper_bound(pictures.begin(), pictures.end(), elapsedUs,
                         [](qint64 us, const StingerPicture &p) { return us < p.ptsUs; });
    return after == pictures.begin() ? nullptr : &*std::prev(after);
}

} // namespace selvane
