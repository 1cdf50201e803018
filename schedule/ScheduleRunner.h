#pragma once

// Plays a validated program arrangement: at every moment it decides which base clip forms the
// program picture and which overlay clips are shown, and applies the changes through a small
// program-control interface (so the window and the headless face drive the same code).
//
// The schedule's own clock starts at 0 when the schedule starts. It advances by a 33 ms timer
// (running while the schedule does), is set by each slide of an image clip to where that slide
// belongs, and follows the playback position of a video clip while it plays. Gaps of 5 s or more (a
// stall, a suspended machine) are not counted: the schedule pauses over them instead of skipping
// ahead.
//
// When no base clip is eligible the program shows black. A video clip is opened up to 1.5 s before
// it starts, while no other video clip is the base, so that it starts on time.
//
// The arrangement is indexed when the schedule starts, so that a tick costs the same for a week
// of clips as for two. Overlay clips are told apart by their ids, which validation keeps
// unique.
//
// GUI thread only.

#include "schedule/ProgramArrangement.h"
#include "schedule/ScheduleIndex.h"

#include <QElapsedTimer>
#include <QObject>
#include <QSet>
#include <functional>
#include <vector>

class QTimer;

// What the runner needs of the engine.
class ProgramControl
{
public:
    virtual ~ProgramControl() = default;
    // A channel clip comes on air with its transition (a cut unless it or the schedule names
    // another).
    virtual void showChannel(int channel, const selvane::Transition &transition) = 0;
    virtual void playImages(const QStringList &paths, int intervalMs, bool loop) = 0;
    virtual void playVideo(const QString &path, bool loop) = 0;
    // The video clip that becomes the base within kPrerollMs: open it now, held at its start, so
    // that playVideo() of the same path puts its first picture on air at once.
    virtual void prepareVideo(const QString &path, bool loop)
    {
        Q_UNUSED(path);
        Q_UNUSED(loop);
    }
    virtual void showBlack() = 0;
    // Overlays are keyed by the clip id.
    virtual void showTextOverlay(const QString &clipId, const TextOverlayData &text) = 0;
    virtual void showMediaOverlay(const QString &clipId, int kind, const QString &path,
                                  const QRectF &normalisedRect, double opacity) = 0;
    virtual void removeOverlay(const QString &clipId) = 0;
};

// A millisecond count that never goes negative and ignores gaps of 5 s or more.
class ScheduleClock
{
public:
    using ElapsedMs = std::function<qint64()>; // a monotonic millisecond reading

    explicit ScheduleClock(ElapsedMs elapsed = {});
    void set(qint64 ms) { m_ms = std::max<qint64>(0, ms); }
    void start(qint64 ms);
    void stop() { m_running = false; }
    void tick();
    void advance(qint64 ms)
    {
        if (ms > 0)
            m_ms += ms;
    }
    qint64 ms() const { return m_ms; }
    // The time it reads now, between ticks too.
    qint64 msNow() const;
    bool isRunning() const { return m_running; }

    static constexpr qint64 kMaxTickGapMs = 4999;

private:
    ElapsedMs m_elapsed;
    qint64 m_ms = 0;
    qint64 m_lastReading = 0;
    bool m_running = false;
};

class ScheduleRunner : public QObject
{
    Q_OBJECT

public:
    static constexpr int kTickMs = 33;
    static constexpr qint64 kPrerollMs = 1500;

    explicit ScheduleRunner(ProgramControl *control, QObject *parent = nullptr);
    ~ScheduleRunner() override;

    // Refuses (false, with the reason) an arrangement without a base clip.
    bool start(const ProgramArrangement &arrangement, QString *error = nullptr);
    void stop();
    bool isRunning() const { return m_running; }

    // Drivers. tick() is what the 33 ms timer calls; the others come from the media players.
    void tick();
    // The image clip shows its slide number `slidesShown` (counting from 0).
    void advanceBySlide(int slidesShown, qint64 intervalMs);
    void resyncToBasePosition(qint64 positionUs);
    // Restarts the clock at `ms` without re-applying anything (outputs just started, say).
    void restartClock(qint64 ms);
    void applyAt(qint64 ms);

    // How channel clips without a transition of their own come on air (a cut by default).
    void setDefaultTransition(const selvane::Transition &transition)
    {
        m_defaultTransition = transition;
    }
    selvane::Transition defaultTransition() const { return m_defaultTransition; }

    ScheduleClock &clock() { return m_clock; }
    const ScheduleClock &clock() const { return m_clock; }
    // Where the schedule's last base clip ends, or -1 when it runs until stopped.
    qint64 endMs() const { return m_running ? m_baseTimeline.end() : -1; }
    QString currentBaseId() const { return m_currentBaseId; }
    QSet<QString> activeOverlayIds() const { return m_activeOverlays; }
    // The base clip being shown, or null.
    const SceneClip *currentBase() const;

signals:
    void programArrangementRunningChanged(bool running);
    void baseClipChanged(QString id);

private:
    // The place (in start order) of the base clip the schedule shows at `t`, or -1.
    int baseAt(qint64 t, std::size_t &cursor) const { return m_baseTimeline.at(t, cursor); }
    void applyOverlaysAt(qint64 t);
    // The timer's next wait: a tick, or less when a base clip is due sooner, so that switches
    // land on their millisecond rather than on the tick after it.
    void armTimer();

    ProgramControl *m_control = nullptr;
    ProgramArrangement m_arrangement; // its clips sorted by start
    selvane::schedule::BaseTimeline m_baseTimeline;
    std::size_t m_baseCursor = 0;
    std::size_t m_prerollCursor = 0;
    // By place: the first place of a base clip with the same id (-1 for an empty id), so that
    // the clip on air is known by one number.
    std::vector<int> m_baseKey;
    selvane::schedule::OverlayTimeline m_overlayTimeline; // where the overlays were last decided
    bool m_running = false;
    QString m_currentBaseId;
    int m_currentBase = -1; // the key of m_currentBaseId
    selvane::Transition m_defaultTransition;
    bool m_showingBlack = false;
    QString m_preparedId; // the video clip opened ahead of its start
    QSet<QString> m_activeOverlays;
    ScheduleClock m_clock;
    QTimer *m_timer = nullptr;
    QElapsedTimer m_sinceMediaDrive; // a player that stops reporting hands the clock back
    static constexpr qint64 kMediaDriveTimeoutMs = 500;
};
