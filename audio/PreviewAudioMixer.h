#pragma once

// Every 10 ms mixes two stereo buses from the audio of the four channels and the four overlay
// slots: the preview mix, played on the default output device through AudioQueueIODevice, and
// the program mix, which goes to the outputs (the program audio tap) and to a bounded program
// queue. tanh is the only limiter. Each block takes from every source the sound that belongs to
// the block's program time (the source's mapping onto the program clock, set from its pictures),
// heard or not: sound follows its timestamps, never its arrival or a queue's depth, and a cut to
// a channel nobody listened to finds its sound in step.
//
// Threads: the mixer lives on its own thread (its timer and mixTick run there). The setters are
// plain atomic stores, callable from any thread. The tap is installed and removed from any
// thread (mutex); it is called on the mixer thread. The source feeds and the program clock
// belong to the engine; levels are readable from any thread.
//
// Clock: blocks are due at 10 ms steps of a steady clock since start(); a late tick mixes every
// block that is due, so 48000 frames are produced per second of wall time. The program tap is
// given each block with the program clock at its due time, the same clock that stamps program
// pictures.

#include "audio/AudioLevels.h"
#include "media/AudioFormat.h"

#include <QElapsedTimer>
#include <QObject>
#include <array>
#include <atomic>
#include <cstdint>
#include <functional>
#include <mutex>
#include <vector>

class AudioQueueIODevice;
class QAudioSink;
namespace selvane {
class SourceFeed;
class SourceFeeds;
class ProgramClock;
struct StingerClip;
} // namespace selvane
class QTimer;

class PreviewAudioMixer : public QObject
{
    Q_OBJECT

public:
    static constexpr int kBlockFrames = selvane::audio::kBlockFrames;
    static constexpr int kBlockValues = selvane::audio::kBlockValues;
    static constexpr int kBlockBytes = selvane::audio::kBlockBytes;
    static constexpr qint64 kProgramQueueMaxBytes = 384000; // 2 s
    static constexpr int kSinkBufferBytes = 196608;
    static constexpr int kMaxCatchUpBlocks = 50;

    using ProgramTap = std::function<void(const std::int16_t *samples, int frames, qint64 ptsUs)>;

    PreviewAudioMixer(selvane::SourceFeeds &feeds, const selvane::ProgramClock &clock,
                      QObject *parent = nullptr);
    ~PreviewAudioMixer() override;

    // On the mixer's thread.
    Q_INVOKABLE void start();
    Q_INVOKABLE void stop();
    Q_INVOKABLE void cleanup();
    // The speaker output the preview plays on (empty: the system's default); a device that is
    // gone falls back to the default. Remembered for start() when not started yet.
    Q_INVOKABLE void setOutputDevice(const QByteArray &id);
    void mixTick();
    // One 480-frame block for the program time `programUs` (tests drive it directly).
    void mixBlock(qint64 programUs = 0);

    void setChannelVolume(int channel, float volume);
    void setProgramVolume(float volume) { m_programVolume.store(volume); }
    void setOverlayPreviewVolume(int slot, float volume);
    void setOverlayProgramVolume(int slot, float volume);
    void setOverlayOnProgram(int slot, bool on);
    void setProgramOutputEnabled(bool enabled) { m_programOutputEnabled.store(enabled); }
    void setProgramGain(float gain) { m_programGain.store(gain); }
    void setProgramTap(ProgramTap tap);
    // Every channel's own sound, before its volume, for every block (silence while it has
    // none): the channels' recordings. Called on the mixer's thread; must return at once.
    using ChannelTap =
        std::function<void(int channel, const std::int16_t *samples, int frames, qint64 ptsUs)>;
    void setChannelTap(ChannelTap tap);

    // The output side's read of the program queue; returns the bytes copied.
    qint64 readProgramAudio(char *data, qint64 maxBytes);
    qint64 programQueuedBytes() const;
    AudioQueueIODevice *device() const { return m_device; }
    bool hasSink() const { return m_sink != nullptr; }
    qint64 blocksMixed() const { return m_blocksMixed.load(); }
    const selvane::AudioLevels &levels() const { return m_levels; }
    float channelVolume(int channel) const;
    float programVolume() const { return m_programVolume.load(); }
    float programGain() const { return m_programGain.load(); }

private:
    void createSink();
    void addSource(std::vector<float> &bus, float gain);
    void addStingerSound(const selvane::StingerClip &clip, qint64 elapsedUs, float gain);
    int takeSource(selvane::SourceFeed &feed, qint64 programUs);
    void appendProgramBlock();

    selvane::SourceFeeds &m_feeds;
    const selvane::ProgramClock &m_clockSource;
    selvane::AudioLevels m_levels;
    std::array<std::atomic<float>, 4> m_channelVolumes;
    std::atomic<float> m_programVolume{1.0f};
    std::array<std::atomic<float>, 4> m_overlayPreviewVolumes;
    std::array<std::atomic<float>, 4> m_overlayProgramVolumes;
    std::array<std::atomic<bool>, 4> m_overlayOnProgram;
    std::atomic<bool> m_programOutputEnabled{true};
    std::atomic<float> m_programGain{1.0f};

    std::vector<float> m_previewBus;
    std::vector<float> m_programBus;
    std::vector<std::int16_t> m_source;      // one source's block
    std::vector<std::int16_t> m_sampleBlock; // the converted preview block
    std::vector<std::int16_t> m_programBlock;

    mutable std::mutex m_programMutex;
    QByteArray m_programQueue;
    qint64 m_programReadOffset = 0;

    std::mutex m_tapMutex;
    ProgramTap m_tap;
    ChannelTap m_channelTap;

    AudioQueueIODevice *m_device = nullptr;
    QAudioSink *m_sink = nullptr;
    QByteArray m_outputId;
    QTimer *m_timer = nullptr;
    QElapsedTimer m_clock;
    qint64 m_blocksDue = 0;
    qint64 m_baseProgramUs = 0; // the program time of block 0
    std::atomic<qint64> m_blocksMixed{0};
};
