#pragma once

// Peak and RMS levels (linear, 0..1 of full scale) of the mixer's sources and of the program
// bus, measured on every 10 ms block. Written by the mixer thread, read from any thread (each
// value one atomic; a reader may see two values from neighbouring blocks).

#include <array>
#include <atomic>
#include <cstdint>

namespace selvane {

struct Level
{
    float peak = 0.0f;
    float rms = 0.0f;
};

class AudioLevels
{
public:
    static constexpr int kChannels = 4;
    static constexpr int kOverlaySlots = 4;

    Level channel(int index) const { return read(m_channels[std::size_t(index)]); }
    Level overlaySlot(int index) const { return read(m_overlays[std::size_t(index)]); }
    Level program() const { return read(m_program); }

    void measureChannel(int index, const std::int16_t *samples, int values)
    {
        measure(m_channels[std::size_t(index)], samples, values);
    }
    void measureOverlaySlot(int index, const std::int16_t *samples, int values)
    {
        measure(m_overlays[std::size_t(index)], samples, values);
    }
    void measureProgram(const std::int16_t *samples, int values)
    {
        measure(m_program, samples, values);
    }
    void silenceChannel(int index) { store(m_channels[std::size_t(index)], {}); }
    void silenceOverlaySlot(int index) { store(m_overlays[std::size_t(index)], {}); }

private:
    struct Meter
    {
        std::atomic<float> peak{0.0f};
        std::atomic<float> rms{0.0f};
    };
    static Level read(const Meter &m) { return {m.peak.load(), m.rms.load()}; }
    static void store(Meter &m, Level level)
    {
        m.peak.store(level.peak);
        m.rms.store(level.rms);
    }
    static void measure(Meter &m, const std::int16_t *samples, int values);

    std::array<Meter, kChannels> m_channels;
    std::array<Meter, kOverlaySlots> m_overlays;
    Meter m_program;
};

} // namespace selvane
