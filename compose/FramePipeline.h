#pragma once

// The hub every picture passes through. Owns the four channel decoders, the four overlay-video
// slots and their decoders, the program pool (18 tokens) and the overlay pool (6), and the
// compositor. For each decoded frame of the base channel it composes one program frame and
// announces it; there is no timer: the program rate is the base decoder's rate.
//
// Threads: decoder threads call only the mailbox entries (one mutex each, an atomic posted flag
// so that at most one flush is queued) and the pools. Everything else runs on the thread the
// pipeline lives on (the GUI thread), including all signals. Blocking decoder teardown of
// overlay slots runs on the global thread pool; its late completion is checked against the
// decoder's generation.

#include "compose/FramePool.h"
#include "compose/VulkanCompositor.h"
#include "output/EncoderSettings.h"

#include <QElapsedTimer>
#include <QImage>
#include <QObject>
#include <QSize>
#include <QString>

#include <array>
#include <atomic>
#include <memory>
#include <mutex>

class FFmpegVideoDecoder;
class OutputRouter;
class OverlayManager;
class PreviewAudioMixer;
namespace selvane {
class SampleQueue;
}

class FramePipeline : public QObject
{
    Q_OBJECT

public:
    static constexpr int kChannelCount = 4;
    static constexpr int kOverlaySlotCount = 4;
    static constexpr int kStillImageMode = 5;
    static constexpr int kProgramPoolBase = 18;
    static constexpr int kOverlayPoolBase = 6;
    static constexpr int kExplicitResolutionMode = 1;
    static constexpr QSize kFallbackOutputSize{1920, 1080};
    static constexpr QSize kOverlayPreviewSize{256, 144};

    explicit FramePipeline(QObject *parent);
    ~FramePipeline() override;

    void setOverlayManager(OverlayManager *manager);

    // Channels 0..3. An empty source stops the channel.
    void setChannelSource(int channel, const QString &source, const QString &audioSource = {});
    FFmpegVideoDecoder *channelDecoder(int channel) const;
    // The decoder-thread entry of a channel's frames (any thread): the channel preview mailbox,
    // and, for the base channel, the decoded-frame mailbox.
    void submitChannelFrame(int channel, FrameTokenPtr frame);
    QSize channelDisplaySize(int channel) const;

    // 0..3 selects a channel; any other value means no channel is the base.
    void setBaseChannel(int channel);
    int baseChannel() const { return m_baseChannel.load(); }
    // kStillImageMode takes the program from pushed images; any other value from the base channel.
    void setProgramSourceMode(int mode);
    int programSourceMode() const { return m_programMode.load(); }
    void pushStillImage(const QImage &image, qint64 pts);

    void registerOverlayVideo(int mediaId, const QString &path);
    void unregisterOverlayVideo(int mediaId) { runUnregisterOverlayVideoAsync(mediaId); }
    int overlaySlotOf(int mediaId) const;
    FFmpegVideoDecoder *overlayDecoder(int slot) const;

    // Mode kExplicitResolutionMode uses width x height; any other mode is "Same as Program".
    void setOutputResolutionSelection(int mode, int width, int height);
    QSize effectiveOutputSize() const { return m_effectiveSize; }
    bool usedFallbackResolution() const { return m_usedFallback; }
    bool isResolutionLocked() const { return m_resolutionLocked; }
    double outputFrameRate() const { return m_outputFrameRate; }

    // Outputs. The settings apply at the next start; the resolution is locked while they run.
    void setOutputSettings(const EncoderSettings &settings) { m_outputSettings = settings; }
    const EncoderSettings &outputSettings() const { return m_outputSettings; }
    bool startOutputs();
    void stopOutputsAsync();
    bool outputsRunning() const { return m_outputsRunning; }
    bool outputsStopping() const { return m_outputsStopping; }
    // The running (or last) output router, for status displays; null before the first start.
    const OutputRouter *outputRouter() const { return m_router.get(); }
    // True when the last output failure happened before any output could be opened.
    bool lastOutputFailureWasOpen() const { return m_lastFailureWasOpen; }
    // Microseconds since the outputs started: the clock of program pictures and sound. Any thread.
    qint64 programClockUs() const;
    // The mixer whose program bus feeds the outputs while they run.
    void setPreviewAudioMixerForOutput(PreviewAudioMixer *mixer) { m_mixer = mixer; }

    // Audio of channels and overlay slots, 48 kHz stereo s16, queued per source (about 2 s at
    // most). Any thread. take fills what is missing with silence and returns the real frames.
    int takeChannelAudio(int channel, std::int16_t *out, int frames);
    int takeOverlayAudio(int slot, std::int16_t *out, int frames);
    void pushChannelAudio(int channel, const std::int16_t *samples, int frames);
    void pushOverlayAudio(int slot, const std::int16_t *samples, int frames);
    // The channel whose sound belongs to the program: the base channel, or -1 (still images, or
    // no channel as base). Any thread.
    int programChannel() const;

    const FramePool &programPool() const { return m_programPool; }
    const FramePool &overlayPool() const { return m_overlayPool; }

signals:
    void errorOccurred(QString message);
    void programOutputTransportFailed(QString reason);
    void programOutputStopped();
    void programStreamStatusChanged(int index, QString status);
    void effectiveOutputResolutionChanged(QSize size, bool usedFallback);
    void baseFrameReady(FrameTokenPtr frame);
    void programFrameReady(FrameTokenPtr frame);
    void channelFrameReady(int channel, FrameTokenPtr frame);
    void channelPlaybackEnded(int channel);
    void overlayFrameReady(int mediaId, qint64 ptsMs, QImage image);
    void overlayPlaybackFinished(int mediaId);

public slots:
    void onEncodeTransportFailed();
    void onChannelSourceVideoInfoChanged(int channel, int codedWidth, int codedHeight,
                                         int displayWidth, int displayHeight, quint64 generation);
    void onBaseFrameDecoded(FrameTokenPtr frame);
    void flushDecodedFrameQueue();
    void flushChannelPreviewQueue();
    void flushOverlayPreviewQueue();
    void runUnregisterOverlayVideoAsync(int mediaId);
    void finishOverlayAsyncUnregisterSlot(int slot, int mediaId, quint64 genAtCancel);

protected:
    // Locks the resolution for an output run; unlockResolution() releases it and selects again.
    void lockResolution();
    void unlockResolution();

private:
    struct Channel
    {
        std::unique_ptr<FFmpegVideoDecoder> decoder;
        quint64 generation = 0;
        QSize codedSize;
        QSize displaySize;
    };
    struct OverlaySlot
    {
        std::atomic<int> mediaId{-1};
        QString path;
        std::shared_ptr<FFmpegVideoDecoder> decoder;
        bool connected = false;
        std::atomic<bool> unregistering{false};
        bool pendingRequest = false;
        int pendingMediaId = -1;
        QString pendingPath;
    };
    struct PreviewMailbox
    {
        std::mutex mutex;
        std::array<FrameTokenPtr, 4> frames;
        std::atomic<bool> posted{false};
    };

    void onOverlayFrame(int slot, FrameTokenPtr frame);
    void storeInPreviewMailbox(PreviewMailbox &mailbox, int index, FrameTokenPtr frame,
                               const char *flushSlot);
    void connectOverlaySlot(int slot);
    void disconnectOverlaySlot(int slot);
    void startOverlaySlot(int slot, int mediaId, const QString &path);
    QSize overlayTargetSize(int mediaId) const;
    QSize sourceSize() const;
    void selectOutputResolution();
    void composeAndPublish(const FrameTokenPtr &base);
    void finishOutputStop();

    std::array<Channel, kChannelCount> m_channels;
    std::array<OverlaySlot, kOverlaySlotCount> m_overlaySlots;
    std::atomic<int> m_baseChannel{0};
    std::atomic<int> m_programMode{0};

    FramePool m_programPool{kProgramPoolBase, 1920, 1080};
    FramePool m_overlayPool{kOverlayPoolBase, 1920, 1080};
    VulkanCompositor m_compositor{m_programPool};
    OverlayManager *m_overlayManager = nullptr;

    int m_selectionMode = 0;
    QSize m_selectionSize;
    QSize m_effectiveSize;
    bool m_usedFallback = false;
    double m_outputFrameRate = 30.0;
    bool m_resolutionLocked = false;
    bool m_haveResult = false;
    QSize m_lastEmittedSize;
    bool m_lastEmittedFallback = false;
    double m_lastEmittedRate = 0.0;

    EncoderSettings m_outputSettings;
    std::shared_ptr<OutputRouter> m_router;
    bool m_outputsRunning = false;
    bool m_outputsStopping = false;
    bool m_lastFailureWasOpen = false;
    std::atomic<qint64> m_programClockStartNs{0};
    PreviewAudioMixer *m_mixer = nullptr;
    std::array<std::unique_ptr<selvane::SampleQueue>, kChannelCount> m_channelAudio;
    std::array<std::unique_ptr<selvane::SampleQueue>, kOverlaySlotCount> m_overlayAudio;

    QSize m_stillImageSize;
    QImage m_stillCanvas;
    qint64 m_stillCanvasKey = 0;

    std::mutex m_decodedMutex;
    FrameTokenPtr m_decodedFrame;
    std::atomic<bool> m_decodedPosted{false};
    PreviewMailbox m_channelPreviews;
    PreviewMailbox m_overlayPreviews;
};
