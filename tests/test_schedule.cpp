// The schedule runner against a fake clock: which base clip wins, open-ended takeovers, overlays
// shown and removed by the active set, black when nothing is eligible, and gaps that do not
// skip schedule time. The program control records what the runner asked for.

#include "schedule/ScheduleRunner.h"

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
