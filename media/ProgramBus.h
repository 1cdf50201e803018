#pragma once

// What is on air at any program time: the program channel, a transition from it to another
// channel (timed, or held by hand at a position), and how far the whole program is faded to
// black. The program thread asks it for each tick's picture and the mixer for each block's
// sound, both by the same program time, so that sound follows picture to the frame.
//
// A change takes effect at a program time the caller names (the next tick): blocks and ticks
// before it still see what was on air before.
//
// Threads: any thread; every method takes a short lock. Owned by SourceFeeds.

#include "media/StingerClip.h"

#include <QString>
#include <QtGlobal>
#include <limits>
#include <mutex>

namespace selvane {

enum class TransitionKind : quint8
{
    Cut,
    Mix,     // a dissolve
    Wipe,    // an edge with a soft border moves across
    Dip,     // out to a colour at half time, in from it
    Stinger, // a clip with alpha plays over the switch, which happens at its cut point
};

enum class WipeDirection : quint8
{
    LeftToRight,
    RightToLeft,
    TopDown,
    BottomUp,
};

struct Transition
{
    static constexpr int kDefaultMs = 1000;
    static constexpr int kMinMs = 100;
    static constexpr int kMaxMs = 10000;

    Transition() = default;
    Transition(TransitionKind k, int ms = kDefaultMs, WipeDirection d = WipeDirection::LeftToRight,
               quint32 colour = 0xff000000)
        : kind(k), durationMs(ms), direction(d), dipColour(colour)
    {
    }

    TransitionKind kind = TransitionKind::Cut;
    int durationMs = kDefaultMs;
    WipeDirection direction = WipeDirection::LeftToRight;
    quint32 dipColour = 0xff000000; // ARGB, black by default
    // A stinger's file and where in it the switch happens (< 0: its middle); the duration is
    // the clip's. `stinger` is the clip as loaded for the program, set when a take runs it.
    QString stingerFile;
    int cutMs = -1;
    StingerClipPtr stinger;

    bool timed() const { return kind != TransitionKind::Cut; }
    bool operator==(const Transition &) const = default;
};

class ProgramBus
{
public:
    static constexpr qint64 kAlways = std::numeric_limits<qint64>::min();

    struct Moment
    {
        // The source on air: a channel, or SourceFeeds::kStandby (a failed channel's stand-in);
        // -1: a still picture or black.
        int from = -1;
        int to = -1;           // the channel a transition goes to; -1 when none runs
        double position = 0.0; // how far the transition is, 0 .. 1
        Transition transition; // the running one's look
        double black = 0.0;    // how far the program is faded to black, 0 .. 1
        qint64 elapsedUs = 0;  // into the running transition
        bool manual = false;   // held by hand (the T-bar)
        bool transitioning() const { return to >= 0; }
    };

    Moment at(qint64 programUs) const;

    // The channel on air, a running transition aside.
    int program() const;
    // The channel a running transition (timed or by hand) goes to, or -1.
    int target() const;

    // `channel` is on air from `atUs` on; a running transition is over.
    void cut(int channel, qint64 atUs);
    // A timed transition to `channel` from `startUs`; a running one is finished at once first.
    void begin(int channel, const Transition &transition, qint64 startUs);
    // A transition held by hand at `position` (0 .. 1), from the channel on air to `channel`.
    // The caller settles it at 1 (settleManual) and cancels it at 0 (cancelManual).
    void hold(int channel, const Transition &transition, double position);
    double manualPosition() const;
    bool isManual() const;
    void cancelManual();

    // A timed transition whose end is at or before `programUs` is over: its channel is on air.
    // Returns that channel when this call finished one, else -1.
    int settle(qint64 programUs);
    // The held transition is taken to its end: its channel is on air from `atUs`; returns it.
    int settleManual(qint64 atUs);

    // Fades the program to black (or back) over `durationMs` from `startUs`.
    void fade(bool toBlack, int durationMs, qint64 startUs);
    bool fadingToBlack() const;

private:
    double blackAt(qint64 programUs) const;
    // `channel` on air from `atUs`; what was, before it (under the lock).
    void switchTo(int channel, qint64 atUs);

    mutable std::mutex m_mutex;
    int m_program = -1;
    int m_previous = -1; // on air before m_switchUs
    qint64 m_switchUs = kAlways;

    int m_target = -1;
    Transition m_transition;
    qint64 m_startUs = 0;
    bool m_manual = false;
    double m_manualPosition = 0.0;

    bool m_toBlack = false;
    double m_blackFrom = 0.0;
    qint64 m_fadeStartUs = kAlways;
    qint64 m_fadeUs = 0;
};

} // namespace selvane
