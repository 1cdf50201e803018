#pragma once

// How the process uses the C library's heap. Decoded pictures are large blocks, made by the
// thousand on decoder threads, and a busy show leaves most of what it used resident unless the
// heap is told otherwise: glibc serves a large block from a thread's arena once a block that size
// has been freed (its mapping threshold follows the largest block freed, up to 32 MiB), keeps the
// free top of each arena below twice that, and returns a freed block elsewhere in a heap only
// when asked. Both calls do nothing on other C libraries.

namespace selvane {

// Once at start, before any thread: blocks of 1 MiB or more (a decoder's planes, the pools'
// pictures) get mappings of their own, which go back to the system as they are freed, and an
// arena keeps at most 2 MiB of free top.
void setUpHeap();

// Gives the free memory inside the heap back to the system. For when a producer has gone idle,
// never on a per-picture path: it walks every arena (a few ms after a busy show). Any thread;
// a call made while one is under way is served by it.
void releaseFreeHeap();

} // namespace selvane
