// The schedule runner against a fake clock: which base clip wins, open-ended takeovers, overlays
// shown and removed by the active set, black when nothing is eligible, and gaps that do not
// skip schedule time. The program control records what the runner asked for. A week of clips
// is played by leaps and ticks, forwards and backwards, against a scan of every clip.

#include "schedule/ScheduleRunner.h"

#include <QRandomGenerator>
#include <QSignalSpy>
#include <QtTest>

namespace {

class RecordingControl : public ProgramControl
{
public:
    QStringList calls;
    void showChannel(int channel, const selvane::Transition &) override
    {
        calls << QStringLiteral("channel %1").arg(channel);
    }
    void playImages(const QStringList &paths, int intervalMs, bool loop) override
    {
        calls << QStringLiteral("images %1 %2 %3").arg(paths.join(',')).arg(intervalMs).arg(loop);
    }
    void playVideo(const QString &path, bool loop) override
    {
        calls << QStringLiteral("video %1 %2").arg(path).arg(loop);
    }
    void prepareVideo(const QString &path, bool loop) override
    {
        calls << QStringLiteral("prepare %1 %2").arg(path).arg(loop);
    }
    void showBlack() override { calls << "black"; }
    void showTextOverlay(const QString &id, const TextOverlayData &text) override
    {
        calls << QStringLiteral("text %1 %2").arg(id, text.text);
    }
    void showMediaOverlay(const QString &id, int kind, const QString &path, const QRectF &rect,
                          double opacity) override
    {
        calls << QStringLiteral("media %1 %2 %3 %4,%5 %6")
                     .arg(id)
                     .arg(kind)
                     .arg(path)
                     .arg(rect.x())
                     .arg(rect.width())
                     .arg(opacity);
    }
    void removeOverlay(const QString &id) override { calls << QStringLiteral("remove %1").arg(id); }
    QStringList take()
    {
        QStringList out = calls;
        calls.clear();
        return out;
    }
};

SceneClip channelClip(const QString &id, qint64 start, qint64 end, int channel)
{
    SceneClip clip;
    clip.id = id;
    clip.startMs = start;
    clip.endMs = end;
    clip.channel = channel;
    return clip;
}

OverlayClip textClip(const QString &id, qint64 start, qint64 end)
{
    OverlayClip clip;
    clip.id = id;
    clip.startMs = start;
    clip.endMs = end;
    clip.textData.text = id.toUpper();
    return clip;
}

// Keeps what is on air from the calls alone; a call that makes no sense is a fault. The
// overlays that change at once change in order of start (the later one is laid on top).
class OnAirControl : public ProgramControl
{
public:
    QString base = "black";
    QSet<QString> overlays;
    QStringList prepared;
    QStringList faults;
    QHash<QString, qint64> startOf; // by overlay id
    qint64 lastStart = 0;           // of the overlay changed last since the moment was applied

    void startMoment()
    {
        prepared.clear();
        lastStart = std::numeric_limits<qint64>::min();
    }
    void showChannel(int channel, const selvane::Transition &) override
    {
        base = QStringLiteral("channel %1").arg(channel);
    }
    void playImages(const QStringList &, int, bool) override { faults << "images"; }
    void playVideo(const QString &path, bool) override { base = path; }
    void prepareVideo(const QString &path, bool) override { prepared << path; }
    void showBlack() override { base = "black"; }
    void showTextOverlay(const QString &id, const TextOverlayData &text) override
    {
        if (overlays.contains(id) || text.text != id)
            faults << "shown twice or wrong text: " + id;
        overlays.insert(id);
        inOrder(id);
    }
    void showMediaOverlay(const QString &id, int, const QString &, const QRectF &, double) override
    {
        faults << "media " + id;
    }
    void removeOverlay(const QString &id) override
    {
        if (!overlays.remove(id))
            faults << "removed while off: " + id;
        inOrder(id);
    }
    void inOrder(const QString &id)
    {
        if (startOf.value(id) < lastStart)
            faults << "out of order: " + id;
        lastStart = startOf.value(id);
    }
};

// The base clip due at `t` the slow way: of the clips running at `t`, the latest start, and
// of equal starts the one listed last. -1: none.
int scanForBase(const QList<SceneClip> &clips, qint64 t)
{
    int winner = -1;
    for (int i = 0; i < clips.size(); ++i) {
        const SceneClip &c = clips[i];
        if (c.startMs <= t && (c.endMs < 1 || t < c.endMs) &&
            (winner < 0 || c.startMs >= clips[winner].startMs))
            winner = i;
    }
    return winner;
}

QSet<QString> scanForOverlays(const QList<OverlayClip> &clips, qint64 t)
{
    QSet<QString> on;
    for (const OverlayClip &c : clips)
        if (c.startMs <= t && (c.endMs < 1 || t < c.endMs))
            on.insert(c.id);
    return on;
}

// A week of clips about 30 s apart, listed out of order, with the awkward cases among them:
// equal starts, short clips, overlaps, gaps of black in the first half, open-ended base clips in
// the second that take over again after later clips end, video clips to open ahead, and
// overlays of every length.
ProgramArrangement aWeekOfClips(QRandomGenerator &random)
{
    ProgramArrangement a;
    constexpr int kClips = 20000;
    for (int i = 0; i < kClips; ++i) {
        SceneClip base = channelClip(QStringLiteral("b%1").arg(i), 0, 0, random.bounded(4));
        base.startMs = i % 50 == 7 && i > 0 ? a.sceneClips.last().startMs
                                            : i * 30000LL + random.bounded(-5000, 5000);
        const int shape = random.bounded(100);
        base.endMs = shape < 3 && i >= kClips / 2 ? 0 // open-ended, never black again
                     : shape < 20                 ? base.startMs + 1 + random.bounded(5000)
                                                  : base.startMs + 1 + random.bounded(60000);
        if (random.bounded(100) < 3) {
            base.kind = SceneClip::SceneVideo;
            base.sceneVideoPath = "/" + base.id + ".mp4";
        }
        a.sceneClips << base;
        OverlayClip text = textClip(QStringLiteral("t%1").arg(i), 0, 0);
        text.textData.text = text.id;
        text.startMs = i * 30000LL + random.bounded(30000);
        text.endMs = random.bounded(100) < 2 ? 0 : text.startMs + 1 + random.bounded(90000);
        a.overlayClips << text;
    }
    for (int i = kClips - 1; i > 0; --i) {
        const int j = random.bounded(i + 1);
        a.sceneClips.swapItemsAt(i, j);
        a.overlayClips.swapItemsAt(i, j);
    }
    return a;
}

} // namespace

class TestSchedule : public QObject
{
    Q_OBJECT

private slots:
    void baseClipChoiceAndOpenEndedTakeover()
    {
        RecordingControl control;
        ScheduleRunner runner(&control);
        qint64 now = 0;
        runner.clock() = ScheduleClock([&now] { return now; });
        ProgramArrangement a;
        // Listed out of order: the runner sorts by start. "b" and "c" share a start: the later
        // one in the sorted list ("c") plays.
        a.sceneClips = {channelClip("late", 5000, 0, 3), channelClip("b", 0, 10000, 1),
                        channelClip("c", 0, 10000, 2)};
        QSignalSpy running(&runner, &ScheduleRunner::programArrangementRunningChanged);
        QVERIFY(runner.start(a));
        QCOMPARE(running.count(), 1);
        QCOMPARE(control.take(), QStringList{"channel 2"});
        for (int i = 0; i < 150; ++i) { // 4950 ms: still "c", applied once only
            now += 33;
            runner.tick();
        }
        QCOMPARE(control.take(), QStringList{});
        now += 60;
        runner.tick();
        QCOMPARE(control.take(), QStringList{"channel 3"});
        QCOMPARE(runner.currentBaseId(), QString("late"));
        for (int i = 0; i < 400; ++i) { // far past 10000: the open-ended clip stays
            now += 40;
            runner.tick();
        }
        QCOMPARE(control.take(), QStringList{});
        QCOMPARE(runner.currentBaseId(), QString("late"));
    }

    void blackWhenNothingIsEligible()
    {
        RecordingControl control;
        ScheduleRunner runner(&control);
        ProgramArrangement a;
        a.sceneClips = {channelClip("first", 1000, 2000, 0)};
        QVERIFY(runner.start(a));
        QCOMPARE(control.take(), QStringList{"black"});
        runner.applyAt(1500);
        QCOMPARE(control.take(), QStringList{"channel 0"});
        runner.applyAt(2000); // the end is exclusive
        QCOMPARE(control.take(), QStringList{"black"});
        runner.applyAt(2500);
        QCOMPARE(control.take(), QStringList{});
    }

    void overlaysFollowTheActiveSet()
    {
        RecordingControl control;
        ScheduleRunner runner(&control);
        ProgramArrangement a;
        a.sceneClips = {channelClip("base", 0, 0, 0)};
        OverlayClip logo;
        logo.id = "logo";
        logo.kind = OverlayClip::Image;
        logo.path = "/logo.png";
        logo.startMs = 500;
        logo.endMs = 1500;
        logo.x = 0.25;
        logo.w = 0.5;
        logo.opacity = 0.75;
        a.overlayClips = {textClip("forever", 1000, 0), logo};
        QVERIFY(runner.start(a));
        QCOMPARE(control.take(), QStringList{"channel 0"});
        runner.applyAt(600);
        QCOMPARE(control.take(), QStringList{"media logo 2 /logo.png 0.25,0.5 0.75"});
        runner.applyAt(1000);
        QCOMPARE(control.take(), QStringList{"text forever FOREVER"});
        runner.applyAt(1200);
        QCOMPARE(control.take(), QStringList{});
        runner.applyAt(1500);
        QCOMPARE(control.take(), QStringList{"remove logo"});
        runner.applyAt(1000000); // an overlay without an end stays until the schedule stops
        QCOMPARE(control.take(), QStringList{});
        QCOMPARE(runner.activeOverlayIds(), QSet<QString>{"forever"});
        runner.stop();
        QCOMPARE(control.take(), QStringList{"remove forever"});
        runner.applyAt(2000); // stopped: nothing happens
        QCOMPARE(control.take(), QStringList{});
    }

    void aMinuteAwayDoesNotSkipAMinute()
    {
        RecordingControl control;
        ScheduleRunner runner(&control);
        qint64 now = 0;
        runner.clock() = ScheduleClock([&now] { return now; });
        ProgramArrangement a;
        a.sceneClips = {channelClip("one", 0, 10000, 0), channelClip("two", 10000, 0, 1)};
        QVERIFY(runner.start(a));
        for (int i = 0; i < 90; ++i) {
            now += 33;
            runner.tick();
        }
        const qint64 before = runner.clock().ms();
        now += 60000; // the machine slept
        runner.tick();
        QCOMPARE(runner.clock().ms(), before);
        now += 5000; // a stall of five seconds is not schedule time either
        runner.tick();
        QCOMPARE(runner.clock().ms(), before);
        QCOMPARE(runner.currentBaseId(), QString("one"));
        control.take();
        while (runner.clock().ms() < 10000) {
            now += 33;
            runner.tick();
        }
        QCOMPARE(control.take(), QStringList{"channel 1"});
    }

    void imageSlidesAndVideoPositionsSetTheClock()
    {
        RecordingControl control;
        ScheduleRunner runner(&control);
        ProgramArrangement a;
        SceneClip slides;
        slides.id = "slides";
        slides.kind = SceneClip::ImagePlay;
        slides.paths = QStringList{"1.png", "2.png"};
        slides.intervalMs = 1500;
        slides.startMs = 2000;
        slides.endMs = 8000;
        SceneClip video;
        video.id = "video";
        video.kind = SceneClip::SceneVideo;
        video.sceneVideoPath = "/v.mp4";
        video.startMs = 8000;
        a.sceneClips = {channelClip("cam", 0, 2000, 0), slides, video};
        QVERIFY(runner.start(a));
        runner.applyAt(2000);
        QCOMPARE(control.take(), (QStringList{"channel 0", "images 1.png,2.png 1500 1"}));
        runner.advanceBySlide(2, 1500);
        QVERIFY(control.take().isEmpty());
        runner.advanceBySlide(3, 1500); // the video is opened 1.5 s ahead, once
        QCOMPARE(runner.clock().ms(), 6500);
        runner.tick();
        QCOMPARE(control.take(), QStringList{"prepare /v.mp4 0"});
        runner.advanceBySlide(4, 1500);
        QCOMPARE(control.take(), QStringList{"video /v.mp4 0"});
        runner.resyncToBasePosition(2500000); // 2.5 s into the video
        QCOMPARE(runner.clock().ms(), 10500);
        runner.advanceBySlide(9, 1500); // slides no longer drive anything
        QCOMPARE(runner.clock().ms(), 10500);
    }

    void aWeekOfClipsAgreesWithAScanOfEveryClip()
    {
        QRandomGenerator random(20240611);
        const ProgramArrangement week = aWeekOfClips(random);
        const qint64 end = 20000 * 30000LL + 120000;
        OnAirControl control;
        for (const OverlayClip &clip : week.overlayClips)
            control.startOf.insert(clip.id, clip.startMs);
        ScheduleRunner runner(&control);
        QVERIFY(runner.start(week));
        const auto call = [&](int base) { // what puts the base clip at `base` on air
            if (base < 0)
                return QStringLiteral("black");
            const SceneClip &clip = week.sceneClips[base];
            return clip.kind == SceneClip::SceneVideo
                       ? clip.sceneVideoPath
                       : QStringLiteral("channel %1").arg(clip.channel);
        };
        // Runs of ticks between leaps: far ahead, far back, a little back (a slide or a video
        // position setting the clock), to where ticks land on a clip's start or end or just
        // before it, to the start and past the end.
        qint64 t = 0;
        int checked = 0;
        for (int run = 0; run < 80; ++run) {
            const int leap = run % 8;
            const int clip = random.bounded(20000);
            const qint64 edges[] = {week.sceneClips[clip].startMs, week.sceneClips[clip].endMs,
                                    week.overlayClips[clip].startMs, week.overlayClips[clip].endMs};
            t = leap == 0       ? t + random.bounded(1, 12 * 3600) * 1000LL
                : leap == 1     ? t - random.bounded(1, 24 * 3600) * 1000LL
                : leap == 2     ? t - random.bounded(1, 500)
                : leap < 7      ? edges[leap - 3] - run / 8 % 2 - 33 * random.bounded(3)
                : run % 16 == 7 ? 0
                                : end + random.bounded(1, 1000000);
            t = std::clamp<qint64>(t, 0, end + 1000000);
            for (int tick = random.bounded(1, 60); tick > 0; --tick, t += ScheduleRunner::kTickMs) {
                control.startMoment();
                runner.applyAt(t);
                const QString at = QStringLiteral("at %1 ms").arg(t);
                const int base = scanForBase(week.sceneClips, t);
                QVERIFY2(control.base == call(base), qPrintable(at + ": " + control.base));
                QCOMPARE(runner.currentBaseId(), base < 0 ? QString() : week.sceneClips[base].id);
                QVERIFY2(control.overlays == scanForOverlays(week.overlayClips, t), qPrintable(at));
                const int next = scanForBase(week.sceneClips, t + ScheduleRunner::kPrerollMs);
                for (const QString &path : std::as_const(control.prepared))
                    QVERIFY2(path == call(next), qPrintable(at));
                ++checked;
            }
        }
        QVERIFY(checked > 1000);
        QVERIFY2(control.faults.isEmpty(), qPrintable(control.faults.join("; ")));
        runner.stop();
        QVERIFY(control.overlays.isEmpty());
    }

    void refusesAnArrangementWithoutBaseClips()
    {
        RecordingControl control;
        ScheduleRunner runner(&control);
        QString error;
        QVERIFY(!runner.start(ProgramArrangement{}, &error));
        QVERIFY(!error.isEmpty());
        QVERIFY(control.calls.isEmpty());
    }
};

QTEST_GUILESS_MAIN(TestSchedule)
#include "test_schedule.moc"
