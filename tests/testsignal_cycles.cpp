// Opens a test signal, reads a second of its pictures and sound, and closes it, ten times:
// run under valgrind by test_decoder to show that nothing of a test signal outlives it.

#include "input/MediaOpen.h"

#include <cstdio>

int main()
{
    const AVIOInterruptCB never{};
    for (int cycle = 0; cycle < 10; ++cycle) {
        selvane::OpenedInput input = selvane::openMainInput(
            selvane::SourceAddress(
                "lavfi://testsrc2=size=64x36:rate=30[out0];sine=frequency=1000[out1]"),
            false, never);
        if (!input.context || !input.graph)
            return 2;
        ffsupport::PacketPtr packet(av_packet_alloc());
        for (int i = 0; i < 77; ++i) {
            if (input.read(packet.get()) < 0)
                return 3;
            av_packet_unref(packet.get());
        }
        if (cycle % 3 == 1 && !input.graph->restart()) // a loop, as a channel makes one
            return 4;
    }
    std::puts("test signal cycles done");
    return 0;
}
