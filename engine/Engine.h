#pragma once

// The one door to the mixer: what an operator does (sources, cuts, stills, overlays, volumes,
// outputs, schedules) as operations on values, a stats snapshot, and signals for what changes.
// The window, the headless face, the schedule and the remote control all drive it; none reaches
// into its parts.
//
// Owns: the four channels and the four overlay-video slots (decoders on their own threads), the
// program switcher on the program thread (composition, still pictures, hand-over to the
// outputs), the overlay registry, the preview audio mixer on the audio thread, the output
// session, the schedule runner, and the failover's standby (the backup or slate decoder).
//
// Threads: the engine lives on the GUI thread; call every method there, and every signal is
// emitted there. No method waits for a decoder, the compositor or an encoder: cuts and source
// changes return at once. (The destructor is the exception: it stops and joins everything.)

#include "engine/EngineTypes.h"
#include "engine/Problem.h"
#include "engine/StatsSampler.h"
#include "media/FramePool.h"
#include "media/ProgramBus.h"
#include "media/ProgramClock.h"
#include "media/SourceFeeds.h"

#include <QElapsedTimer>
#include <QHash>
#include <QImage>
#include <QObject>
#include <functional>
#include <memory>
#include <optional>

class OverlayManager;
class PreviewAudioMixer;
class QThread;
class QTimer;
class ScheduleRunner;

namespace selvane {

class ChannelSet;
class FailoverControl;
class OutputSession;
class OverlaySlots;
class ProgramSwitcher;
class StingerCache;
class ScheduleControl;
class SlideShow;

class Engine : public QObject
{
    Q_OBJECT

public:
    explicit Engine(QObject *parent = nullptr);
    ~Engine() override;

    // ---- channels (0..3) ----
    // An empty address clears the channel. `audioAddress`: a separate microphone. Refused when
    // the channel does not exist, or when the source would read what the outputs (running, or
    // prepared for the next start) write. An address that cannot be opened is not refused: the
    // channel's state and error say why.
    Problem setChannelSource(int channel, const QString &address, const QString &audioAddress = {});
    void clearChannel(int channel) { setChannelSource(channel, QString()); }
    void pauseChannel(int channel);
    void resumeChannel(int channel);
    void seekChannel(int channel, qint64 positionMs);
    void setChannelLoop(int channel, bool loop);

    // ---- the program picture ----
    void cutTo(int channel);
    // Still pictures: a slideshow of image files, one picture, or black. A slideshow remembers
    // the channel on air before it, and stopImages() goes back to it (black when none was).
    Problem showImages(const QStringList &paths, int intervalMs, bool loop);
    void stopImages();
    bool isShowingImages() const;
    void showStill(const QImage &image);
    void showBlack() { showStill(QImage()); }
    // The channel on air, or -1 for still pictures.
    int programChannel() const;
    // The program's picture size as it stands (locked while the outputs run).
    QSize programSize() const { return m_programSize; }
    // The size the outputs are to have: explicit, or the program's own.
    void setOutputSize(const OutputSize &size);

    // ---- production: preview bus, transitions, T-bar, fade to black ----
    // The channel prepared on the preview bus (-1: none). It costs the program nothing.
    void setPreviewChannel(int channel);
    int previewChannel() const { return m_previewChannel; }
    // How takes go to air: a cut, a mix, a wipe, a dip or a stinger, and how long (clamped to
    // Transition::kMinMs .. kMaxMs; a stinger lasts as long as its clip). A stinger's clip is
    // loaded ahead (stingerLoaded / stingerFailed); a take before it is ready is a cut.
    void setTransition(Transition transition);
    // Loading state of a stinger's clip, and the clip once loaded.
    StingerInfo stingerInfo(const QString &file, int cutMs) const;
    Transition transition() const { return m_transition; }
    // Take: the preview goes to air with the transition and the former program becomes the
    // preview. Cut: the same at once. Nothing happens without a preview channel.
    void take();
    void cutToPreview();
    // A channel straight to air (cutTo above, the keys, the remote control's cut, the schedule)
    // uses the transition too when this is on; off by default.
    void setDirectTakesUseTransition(bool use);
    bool directTakesUseTransition() const { return m_directTakesUseTransition; }
    // A channel to air with this transition (the schedule's clips name theirs).
    void transitionTo(int channel, const Transition &transition);
    // The T-bar: the transition from program to preview held at `position` (0 .. 1); reaching 1
    // completes the take (and the bar reads 0 again), going back to 0 cancels it. A cut (the
    // transition's kind) is ridden as a mix.
    void setTBar(double position);
    double tbar() const { return m_tbar; }
    // Fade to black: the whole program, overlays and sound included, fades to black and
    // silence over `durationMs` and holds; called again, it fades back. Outputs keep running.
    void setFadeToBlack(bool black, int durationMs = Transition::kDefaultMs);
    void toggleFadeToBlack() { setFadeToBlack(!m_fadedToBlack, m_transition.durationMs); }
    bool fadedToBlack() const { return m_fadedToBlack; }
    // The channel a running transition goes to (-1: none runs).
    int transitionTarget() const;

    // ---- failover: backups and the slate ----
    // When the channel on air fails (reconnecting, or no new picture for failoverMs), its
    // backup or the slate goes on air with the transition (a stinger once its clip is loaded),
    // and the channel comes back once it has delivered steadily for returnMs. Refused: a
    // backup naming itself or no channel, a missing backup file, times out of range, an
    // unreadable slate.
    Problem setFailover(const FailoverSettings &settings);
    FailoverSettings failover() const;
    // The slate on air by hand, with the transition; any cut or take ends it.
    void showSlate();
    bool slateOnAir() const;

    // ---- overlays ----
    // Ids below kFirstScheduleOverlayId are the operator's; the schedule's overlays have the
    // ids from there on, and the operator's panels leave them be.
    static constexpr int kFirstScheduleOverlayId = 1000;
    static bool isScheduleOverlay(int id) { return id >= kFirstScheduleOverlayId; }
    // A text overlay, inserted or replaced by id. Refused: no words, more than
    // TextOverlayData::kMaxTextLength characters, an eleventh overlay.
    Problem setTextOverlay(const TextOverlayData &text);
    // A new text overlay of the operator's, over the others, under the first free id; the id,
    // or -1 with the problem.
    int addTextOverlay(TextOverlayData text, Problem *problem = nullptr);
    // A copy of text overlay `id`, a step right of and below it (kept inside the picture), added
    // as addTextOverlay adds; the copy's id, or -1 with the problem.
    int duplicateTextOverlay(int id, Problem *problem = nullptr);
    Problem removeTextOverlay(int id);
    // An image or a (looping) video in a rectangle of the 640 x 360 scene, inserted or replaced
    // by id. Refused: no readable file, a fifth overlay.
    Problem setMediaOverlay(const MediaOverlayRecord &record);
    // A new picture or video of the operator's, a quarter of the scene wide in its top right
    // corner (each next one a step lower and to the left), looping; the id, or -1 with the
    // problem.
    int addMediaOverlay(MediaOverlayRecord::Kind kind, const QString &path,
                        Problem *problem = nullptr);
    Problem removeMediaOverlay(int id);
    // Whether one more overlay may be added now (a panel asks before it opens its dialog).
    Problem roomForTextOverlay() const;
    Problem roomForMediaOverlay() const;
    void setDoodle(const QList<DoodleStroke> &strokes);
    void setDoodleVisible(bool visible);
    QList<TextOverlayData> textOverlays() const;
    QList<MediaOverlayRecord> mediaOverlays() const;
    QList<DoodleStroke> doodle() const;
    bool doodleVisible() const;
    // ---- sound ----
    // Starts the audio thread: the preview on the default output and the program bus.
    void startAudio();
    // Stops it within fixed time limits; never blocks for more than about six seconds.
    void shutdownAudio();
    void setChannelVolume(int channel, float volume);
    void setChannelMuted(int channel, bool muted);
    float channelVolume(int channel) const
    {
        return channel >= 0 && channel < kChannelCount ? m_channelVolumes[std::size_t(channel)]
                                                       : 0.0f;
    }
    bool channelMuted(int channel) const
    {
        return channel >= 0 && channel < kChannelCount && m_channelMuted[std::size_t(channel)];
    }
    float programVolume() const { return m_programVolume; }
    bool programMuted() const { return m_programMuted; }
    void setOverlayVolume(int mediaId, float previewVolume, float programVolume);
    void setOverlayOnProgram(int mediaId, bool onProgram);
    void setOverlayMuted(int mediaId, bool muted);
    void setProgramVolume(float volume);
    void setProgramMuted(bool muted);
    void setProgramGain(float gain);
    // The speaker output the preview plays on (empty id: the system's default; the choices are
    // CaptureSources::audioOutputs()). The program mix is not affected.
    void setPreviewAudioDevice(const QByteArray &id);
    QByteArray previewAudioDevice() const { return m_previewDevice; }

    // ---- outputs ----
    // The settings the next start uses when none are given (the window's output panel, the
    // command line's, the remote control's defaults); sources are checked against them too.
    void setPreparedOutputs(const OutputSettings &settings);
    OutputSettings preparedOutputs() const { return m_preparedOutputs; }
    // Starts recording and streaming with these settings, after every check above and against
    // the channels' sources. The outputs open at once when the size is given, else when the
    // program's source shows its size, at most a second later (then at the fallback size); the
    // program is black until a picture comes. What only opening finds (an encoder that does not
    // open, 8K without a hardware HEVC encoder) comes as outputsFailed; success as
    // outputsStarted.
    Problem startOutputs(const OutputSettings &settings);
    Problem startOutputs() { return startOutputs(m_preparedOutputs); }
    // Stops them; trailers are written before outputsStopped.
    void stopOutputs();
    // Stream target `index` (0-based) that is waiting to reconnect tries again now instead of
    // waiting out its backoff; false when it is not waiting (online, or no such target).
    bool reconnectTargetNow(int index);
    bool outputsActive() const;
    // When the prepared outputs start and stop by themselves (a date-time, or the schedule's
    // start and end); by hand by default. A running schedule with output times of its own
    // follows those instead. Refused when a time has passed or the stop comes first. A start at
    // its time that cannot work comes as outputsFailed, as a start by hand does.
    Problem setOutputTimes(const OutputTimes &times);
    OutputTimes outputTimes() const;
    // Whether any start or stop is due by itself.
    bool outputTimesPlanned() const;

    // ---- schedule ----
    // Checks and keeps an arrangement; `ok` false with the reason when it is not valid.
    arrangement::Validation loadSchedule(const ProgramArrangement &arrangement);
    bool startSchedule(QString *error = nullptr);
    void stopSchedule();
    // How the schedule's channel clips without a transition of their own come on air.
    void setScheduleTransition(const Transition &transition);
    bool isScheduleRunning() const;
    // The arrangement last loaded (empty when none was valid).
    ProgramArrangement schedule() const { return m_arrangement; }

    // Channel pictures (channelPreview) come at most this many times a second (default: every
    // new picture); thumbnails need few.
    void setChannelPreviewRate(int perSecond);
    // Every program picture, handed over on the program thread as it is made (no hop through
    // the window's thread, unlike programFrame); `tap` must return at once. Null: none.
    void setProgramPictureTap(std::function<void(const FrameTokenPtr &frame)> tap);

    // ---- what is going on ----
    EngineStats stats() const;

signals:
    void channelStateChanged(int channel, selvane::ChannelState state);
    void channelError(int channel, selvane::SourceError error, QString detail);
    void channelEnded(int channel);
    void channelPreview(int channel, FrameTokenPtr frame);
    void overlayPreview(int mediaId, FrameTokenPtr frame);
    void overlayError(int mediaId, selvane::SourceError error, QString detail);
    void overlayEnded(int mediaId);
    // The newest program picture and the channel it came from (-1: still); at most one waits.
    void programFrame(FrameTokenPtr frame, int channel);
    void programSizeChanged(QSize size, bool usedFallback);
    // The channel on program changed (-1: a still, a slide or black), whoever cut: the window,
    // the control API, the schedule.
    void programChannelChanged(int channel);
    void previewChannelChanged(int channel);
    void transitionChanged(selvane::Transition transition);
    // A timed transition to `channel` starts now (it ends with programChannelChanged).
    void transitionStarted(int channel, selvane::Transition transition);
    void tbarChanged(double position);
    void fadeToBlackChanged(bool black);
    // `channel` failed on air and `standIn` ("channel 3", "backup", "slate") replaces it; it
    // came back; the slate went on air by hand or off.
    void failedOver(int channel, QString standIn);
    void returnedToAir(int channel);
    void slateChanged(bool onAir);
    // A stinger's clip is in memory, ready to take; or it cannot be used (detail: why).
    void stingerLoaded(QString file, int cutMs, int durationMs);
    void stingerFailed(QString file, int cutMs, QString detail);
    void outputsStarted(QSize size);
    void outputsStopped();
    void outputsFailed(selvane::Problem problem);
    void streamStatusChanged(int index, QString status);
    // A recording's (or its twin's) disk has about ten (level 1) or two (level 2) minutes left
    // at the current bitrate, or room again (0).
    void diskForecastChanged(bool twin, int level, qint64 secondsLeft, QString path);
    void scheduleRunningChanged(bool running);
    // Text or media overlays or the doodle changed (by any caller: a panel, the schedule).
    void overlaysChanged();
    // The schedule put a base clip on air (empty id: black) at this schedule time.
    void scheduleBaseClipChanged(QString id, qint64 scheduleMs);
    void slideShown(int shown);

protected:
    void connectNotify(const QMetaMethod &signal) override;
    void disconnectNotify(const QMetaMethod &signal) override;

private:
    // Pictures are handed out only while someone takes them: a face listening to the preview
    // signals, or the schedule while it runs.
    void updatePreviewDemand();
    void onPreviewReady();
    void onChannelPreviewsReady();
    void onOverlayPreviewsReady();
    void onChannelSizeChanged(int channel, QSize size);
    void updateProgramSize();
    void noteProgramChannel();
    void onTransitionFinished(int channel);
    void finishRunningTake();
    // Puts `channel` on air with `transition` (a cut when it is one); the former program goes
    // to the preview when `swap`.
    void goToAir(int channel, const Transition &transition, bool swap);
    // A stinger with its loaded clip and length, or `fallback`'s kind when the clip is not
    // ready; other transitions as they are.
    Transition withStinger(Transition transition, TransitionKind fallback) const;
    void setUpStingers();
    void setUpFailover();
    // The stand-in's transition, and the standby ready for the channel on air.
    void updateFailoverTransition();
    void failoverStats(ProgramStats &program) const;
    void prepareStingers(const ProgramArrangement &arrangement);
    void openPendingOutputs();
    void setUpOutputTimes();
    // Opens them when the program's size is known (given, or shown by its source).
    void openPendingOutputsOnceSized();
    void applyOverlayAudio(int mediaId);
    QSize overlayTargetSize(const MediaOverlayRecord &record) const;
    void sampleRates();

    SourceFeeds m_feeds;
    ProgramClock m_programClock;
    FramePool m_programPool;

    QThread *m_programThread = nullptr;
    ProgramSwitcher *m_switcher = nullptr;
    OverlayManager *m_overlays = nullptr;
    ChannelSet *m_channels = nullptr;
    OverlaySlots *m_overlaySlots = nullptr;
    SlideShow *m_slides = nullptr;
    StingerCache *m_stingers = nullptr;
    FailoverControl *m_failover = nullptr;
    OutputSession *m_output = nullptr;
    class OutputTimetable *m_timetable = nullptr;
    qint64 m_pendingBeginUs = -1; // the program time the pending outputs begin at
    class Hands;
    std::unique_ptr<Hands> m_scheduleHands;
    ScheduleControl *m_scheduleControl = nullptr;
    ScheduleRunner *m_schedule = nullptr;
    ProgramArrangement m_arrangement;
    bool m_arrangementValid = false;

    PreviewAudioMixer *m_mixer = nullptr;
    QThread *m_audioThread = nullptr;
    std::array<float, kChannelCount> m_channelVolumes{};
    std::array<bool, kChannelCount> m_channelMuted{};
    QByteArray m_previewDevice;
    float m_programVolume = 1.0f;
    bool m_programMuted = false;
    struct OverlayAudio
    {
        float preview = 0.0f;
        float program = 1.0f;
        bool onProgram = true;
        bool muted = false;
    };
    QHash<int, OverlayAudio> m_overlayAudio;

    // Program size: the operator's choice, what is on air, and the lock while outputs run.
    OutputSize m_wantedSize;
    QSize m_stillSize;
    int m_announcedProgramChannel = 0;
    QSize m_programSize;
    bool m_usedFallback = false;
    bool m_sizeLocked = false;
    bool m_haveSize = false;
    double m_outputFps = 30.0;
    std::optional<OutputSettings> m_pendingOutputs;
    OutputSettings m_preparedOutputs;
    EncoderSettings m_runningOutputs; // while outputs run: what they write
    int m_channelBeforeImages = -1;
    int m_previewChannel = -1;
    Transition m_transition;
    bool m_directTakesUseTransition = false;
    double m_tbar = 0.0;
    bool m_fadedToBlack = false;
    static constexpr int kNoSwap = -2;
    int m_swapOnFinish = kNoSwap; // to the preview when the running take ends (-1: none)
    int m_awaitedChannel = -1;    // the channel the running take goes to
    qint64 m_transitionsDone = 0;
    quint64 m_outputRequests = 0;
    static constexpr int kOutputSizeWaitMs = 1000;

    // Rates, sampled once a second.
    QTimer *m_rateTimer = nullptr;
    QElapsedTimer m_rateClock;
    StatsSampler m_rates;
};

} // namespace selvane
