#include "media/Heap.h"

#include <cstdlib> // defines __GLIBC__ where it applies

#ifdef __GLIBC__
#include <atomic>
#include <malloc.h>
#endif

namespace selvane {

void setUpHeap()
{
#ifdef __GLIBC__
    mallopt(M_MMAP_THRESHOLD, 1 << 20);
    mallopt(M_TRIM_THRESHOLD, 2 << 20);
#endif
}

void releaseFreeHeap()
{
#ifdef __GLIBC__
    // Asked while a release runs: it runs once more for the asker, who returns at once.
    static std::atomic<int> asked{0};
    int seen = 1;
    if (asked.fetch_add(1) != 0)
        return;
    for (;;) {
        malloc_trim(0);
        if (asked.compare_exchange_strong(seen, 0))
            return;
    }
#endif
}

} // namespace selvane
