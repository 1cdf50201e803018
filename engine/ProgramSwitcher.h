#pragma once

// The program: it runs on its own clock at the output frame rate. At every tick it takes from
// each source (the four channels and the four overlay-video slots) the newest picture that is
// due by the source's mapping onto the program clock, composes the channel on air (or the still
// picture) with the overlay scene into one program frame, and hands that to the outputs and to
// the previews. A slow, variable or silent source can neither slow nor stop the program: its
// last picture is repeated until a newer one is due, and pictures that are late are skipped.
//
// Each source's pictures are put on the ticks and its times on the program clock by its
// SourcePacer; the mixer reads the same mapping for the source's sound.
//
// Threads: the switcher lives on the program thread, where ticks, composition and the hand-over
// to the outputs run; the window never waits for any of it. Controls (cut, still, scene, size,
// outputs, overlay slots) may be called from any thread; they store values under a short lock.
// Failover: at every tick the switcher watches the channel on air (FailoverRule); when it
// fails, its backup channel or the standby (the backup file or stream, or the slate) goes on
// air with the failover transition, and the channel comes back once it delivers steadily.
// failedOver() and returned() tell the owner (program thread; connect queued).
//
// Previews reach the owner through the *Ready() signals, posted at most once until taken, and
// only those the owner asks for (a headless show without a remote control takes none).

#include "compose/OverlayScene.h"
#include "compose/VulkanCompositor.h"
#include "engine/FailoverRule.h"
#include "engine/SourcePacer.h"
#include "media/FramePool.h"
#include "media/ProgramBus.h"
#include "media/SourceFeeds.h"

#include <QImage>
#include <QObject>
#include <QSize>
#include <array>
#include <atomic>
#include <functional>
#include <memory>
#include <mutex>

class QTimer;

namespace selvane {

class ProgramClock;

class ProgramSwitcher : public QObject
{
    Q_OBJECT

public:
    // Receives every program frame with its program time (on the program thread).
    using OutputSink = std::function<void(const FrameTokenPtr &frame, qint64 programUs)>;

    // Construct, then moveToProgramThread() and start().
    ProgramSwitcher(SourceFeeds &feeds, const ProgramClock &clock, const FramePool &programPool);
    ~ProgramSwitcher() override;
    void moveToProgramThread(QThread *thread);
    // Begins ticking (posted to the program thread).
    void start();

    // Any thread. Switches land on the next tick, for picture and sound alike (the feeds' bus).
    void cutTo(int channel);
    // A timed transition from the channel on air to `channel`; a running one is finished first.
    void transitionTo(int channel, const Transition &transition);
    // A transition held by hand at `position`; 1 puts `channel` on air, 0 cancels.
    void holdTransition(int channel, const Transition &transition, double position);
    // The whole program (overlays and sound too) fades to black, or back, from the next tick.
    void fadeToBlack(bool black, int durationMs);
    // The operator's channel on air: while a failover stands in for it, the channel that failed;
    // -1 while the slate is on air by hand.
    int programChannel() const;
    // The channel stood in for by a failover (its backup or the standby on air), or -1.
    int failedChannel() const { return m_failedChannel.load(); }
    // Still mode: this picture (letterboxed into the output size) is the program until the next
    // cut; a null image shows black.
    void showStill(const QImage &image);
    bool isStill() const { return m_still.load(); }
    void setScene(OverlayScenePtr scene);
    // Which overlay the pictures of an overlay-video slot belong to (-1: none).
    void setOverlaySlotMedia(int slot, int mediaId);

    // ---- failover and the standby (any thread) ----
    // When and how failovers happen; `transition` takes the program to a stand-in and back.
    void setFailover(const FailoverConfig &config, const Transition &transition);
    // What each channel's decoder says it does (the failover's reading of it).
    void setChannelState(int channel, ChannelState state);
    // The standby shows this picture (letterboxed), or its feed's pictures when it is null,
    // with `caption` (the slate's words with alpha, at the output size) over them.
    void setStandbyImage(const QImage &image);
    void setStandbyCaption(std::shared_ptr<const StingerPicture> caption);
    // The standby on air by hand (the slate), with `transition`; any cut takes it off.
    void showStandby(const Transition &transition);
    void setOutputSize(QSize size, double fps);
    void setOutputSink(OutputSink sink);
    // Receives, at every tick and before the program frame, each channel's picture of that tick
    // as decoded (null: none yet), on the program thread; it must return at once.
    using ChannelSink = std::function<void(
        const std::array<FrameTokenPtr, SourceFeeds::kChannels> &pictures, qint64 programUs)>;
    void setChannelSink(ChannelSink sink);
    // Also receives every program frame on the program thread (a face's preview scaler); it
    // must return at once.
    void setPictureTap(OutputSink tap);
    // The program time of the next tick (outputs start on a tick).
    qint64 nextTickUs() const { return m_nextTickPublished.load(); }
    // The program clock now (any thread).
    qint64 nowUs() const;

    // Which previews anyone takes: the others are neither kept nor announced (any thread).
    void setPreviewDemand(bool program, bool channels, bool overlays);
    // Channel pictures are announced at most this many times a second (0: every tick), but for
    // this channel's (-1: none), which are announced as they come (the preview bus's monitor).
    void setChannelPreviewRate(int perSecond);
    void setFullRateChannel(int channel) { m_fullRateChannel.store(channel); }

    // The newest program frame and the channel it came from (-1: still); owner's thread.
    struct Preview
    {
        FrameTokenPtr frame;
        int channel = -1;
    };
    Preview takePreview();
    // The newest picture of each channel, and of each overlay slot (with its media id).
    std::array<FrameTokenPtr, SourceFeeds::kChannels> takeChannelPreviews();
    std::array<std::pair<int, FrameTokenPtr>, SourceFeeds::kOverlaySlots> takeOverlayPreviews();

    struct Counters
    {
        qint64 frames = 0;       // program frames made (one a tick)
        qint64 repeated = 0;     // of those, with the same picture on air as the tick before
        qint64 skippedTicks = 0; // ticks the program thread was too late for
        qint64 withoutOverlays = 0;
        std::array<qint64, SourceFeeds::kChannels> skippedPictures{}; // never shown: late
        std::array<qint64, SourceFeeds::kChannels> repeatedTicks{};   // no newer picture due
        std::array<qint64, SourceFeeds::kChannels> reanchors{};       // put on the clock again
    };
    Counters counters() const;

signals:
    // A transition has put `channel` on air (program thread).
    void transitionFinished(int channel);
    // `channel` failed on air and `standIn` (a channel, or SourceFeeds::kStandby) replaces it;
    // `channel` is back on air (program thread).
    void failedOver(int channel, int standIn);
    void returned(int channel);
    void previewReady();
    void channelPreviewsReady();
    void overlayPreviewsReady();

private:
    struct SourceState
    {
        SourcePacer pacer;
        FrameTokenPtr previewed;
    };

    void onTimer();
    void scheduleNext();
    qint64 tickTimeUs(qint64 index) const;
    void tick(qint64 programUs);
    FrameTokenPtr stillFrame(qint64 programUs);
    // Black at the output size, until anything else has been on air.
    FrameTokenPtr blackFrame(qint64 programUs);
    // The picture of a running transition; null when it cannot be made (the last holds).
    FrameTokenPtr transitionFrame(const ProgramBus::Moment &moment, qint64 programUs);
    FrameTokenPtr stingerFrame(const ProgramBus::Moment &moment, const FrameTokenPtr &from,
                               const FrameTokenPtr &to, qint64 programUs);
    FrameTokenPtr fadedFrame(const FrameTokenPtr &program, double black);
    void startTicking();
    // The picture `source` (a channel or the standby) shows now, or null.
    FrameTokenPtr pictureOf(int source, qint64 programUs);
    FrameTokenPtr standbyFrame(qint64 programUs);
    // A picture letterboxed into the output size, drawn again only when it or the size changed.
    struct Canvas
    {
        FrameTokenPtr token;
        quint64 version = 0;
        QSize size;
    };
    FrameTokenPtr canvasFrame(const QImage &image, quint64 version, Canvas &canvas,
                              qint64 programUs);
    void runFailover(qint64 programUs);
    // An operator's switch: a failover in progress is over.
    void operatorSwitched()
    {
        m_forgetFailover.store(true);
        m_failedChannel.store(-1);
    }

    SourceFeeds &m_feeds;
    const ProgramClock &m_clock;
    FramePool m_pool;
    VulkanCompositor m_compositor;

    std::atomic<bool> m_still{false};
    std::array<std::atomic<int>, SourceFeeds::kOverlaySlots> m_slotMedia;

    mutable std::mutex m_mutex; // guards the values below, handed in from other threads
    OverlayScenePtr m_scene;
    QImage m_stillImage;
    quint64 m_stillVersion = 0;
    QImage m_standbyImage;
    quint64 m_standbyVersion = 0;
    std::shared_ptr<const StingerPicture> m_standbyCaption;
    FailoverConfig m_failoverConfig;
    Transition m_failoverTransition;
    bool m_failoverChanged = false;
    QSize m_outputSize{1920, 1080};
    double m_fps = 30.0;
    OutputSink m_outputSink;
    ChannelSink m_channelSink;
    OutputSink m_pictureTap;
    Counters m_counters;

    // Program thread only.
    QTimer *m_timer = nullptr;
    // Tick k is at m_tickBaseUs + k / fps, computed from k every time, so that no rounding
    // creeps in however long the program runs.
    double m_tickFps = 30.0;
    qint64 m_tickBaseUs = 0;
    qint64 m_tickIndex = 0;
    qint64 m_nextTickUs = 0;
    qint64 m_periodUs = 33333;
    std::atomic<qint64> m_nextTickPublished{0};
    std::array<SourceState, SourceFeeds::kChannels> m_channels;
    std::array<SourceState, SourceFeeds::kOverlaySlots> m_slots;
    SourceState m_standby;
    Canvas m_standbyCanvas;
    FrameTokenPtr m_captionedFrom, m_captioned; // the standby's picture, and with the caption
    FailoverRule m_failover{SourceFeeds::kStandby};
    std::array<std::atomic<int>, SourceFeeds::kChannels> m_channelStates;
    std::atomic<int> m_failedChannel{-1};
    std::atomic<bool> m_forgetFailover{false};
    std::array<int, SourceFeeds::kOverlaySlots> m_slotShownMedia{-1, -1, -1, -1};
    FrameTokenPtr m_lastBase;
    FrameTokenPtr m_settledBase; // the last picture made while no transition ran
    Canvas m_stillCanvas;
    FrameTokenPtr m_blackToken;

    std::mutex m_previewMutex;
    Preview m_preview;
    std::array<FrameTokenPtr, SourceFeeds::kChannels> m_channelPreviews;
    std::array<std::pair<int, FrameTokenPtr>, SourceFeeds::kOverlaySlots> m_overlayPreviews;
    std::atomic<bool> m_programWanted{true};
    std::atomic<bool> m_channelsWanted{true};
    std::atomic<qint64> m_channelPreviewGapUs{0};
    std::atomic<int> m_fullRateChannel{-1};
    qint64 m_channelPreviewsPostedUs = 0;  // program thread
    bool m_channelPreviewsPending = false; // program thread
    std::atomic<bool> m_overlaysWanted{true};
    std::atomic<bool> m_previewPosted{false};
    std::atomic<bool> m_channelPreviewsPosted{false};
    std::atomic<bool> m_overlayPreviewsPosted{false};
};

} // namespace selvane
