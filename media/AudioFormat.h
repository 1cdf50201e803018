#pragma once

// The one audio format between decoders, the mixer and the outputs: 48000 Hz, two channels,
// interleaved signed 16-bit; the mixer works in blocks of 10 ms.

namespace selvane::audio {

inline constexpr int kSampleRate = 48000;
inline constexpr int kChannels = 2;
inline constexpr int kBytesPerFrame = 4;
inline constexpr int kBlockFrames = 480; // 10 ms
inline constexpr int kBlockValues = kBlockFrames * kChannels;
inline constexpr int kBlockBytes = kBlockFrames * kBytesPerFrame;

} // namespace selvane::audio
