// Pictures of a live source put on 30 fps program ticks, a minute at a time, with the source's
// timestamps as real senders make them: rounded to the millisecond (FLV), jittered by the
// sender's clock, at the program's rate, a little slower, twice as fast, or at 25 fps. Counts the
// ticks that repeated a picture and the pictures never shown, and checks that the repeats of a
// slower source come in an even pattern. Also the sound of a capture device, whose stamps wander
// while it starts and drift with its clock: it must reach its queue without holes.

#include "TestSupport.h"
#include "engine/SourcePacer.h"
#include "input/ContinuousStamps.h"
#include "media/TimedSampleQueue.h"

#include <QRandomGenerator>
#include <QtTest>

using namespace selvane;
using namespace testsupport;

namespace {

constexpr qint64 kTickUs = 33333;

struct Outcome
{
    qint64 ticks = 0;
    qint64 repeated = 0;
    qint64 skipped = 0;
    QList<qint64> repeatTicks; // the ticks that repeated, from the start of the count
};

// One minute of a live source whose picture n has source time stamp(n) and arrives when the
// program clock reaches its true time (plus `arrivalUs`; every tenth picture `stallUs` later
// still, with the pictures behind it waiting for it, as on a network that stalls now and then);
// counted after a settling second.
Outcome run(double fps, const std::function<qint64(qint64 n, double trueUs)> &stamp,
            qint64 arrivalUs, qint64 stallUs)
{
    FramePool pool(64, 16, 16);
    SourceFeed feed;
    feed.setLive(true);
    feed.frames().setDepth(45);
    SourcePacer pacer;
    qint64 next = 0;
    double lastArrivalUs = 0;
    Outcome outcome;
    qint64 repeatedBefore = 0, skippedBefore = 0;
    const qint64 ticks = 61 * 30;
    for (qint64 k = 0; k < ticks; ++k) {
        const qint64 programUs = std::llround(double(k) * 1e6 / 30.0);
        for (;; ++next) {
            const double trueUs = double(next) * 1e6 / fps;
            const double heldUs =
                std::max(lastArrivalUs, trueUs + double(next % 10 == 5 ? stallUs : 0));
            if (heldUs + double(arrivalUs) > double(programUs))
                break;
            lastArrivalUs = heldUs;
            FrameTokenPtr picture = solidFrame(pool, 16, 16, 128, stamp(next, trueUs));
            feed.frames().push(std::move(picture), true);
        }
        pacer.advance(feed, programUs, kTickUs);
        if (k == 30) {
            repeatedBefore = pacer.repeated();
            skippedBefore = pacer.skipped();
        } else if (k > 30 && pacer.repeated() > repeatedBefore + outcome.repeated) {
            outcome.repeatTicks << k - 30;
        }
        if (k > 30) {
            outcome.ticks = k - 30;
            outcome.repeated = pacer.repeated() - repeatedBefore;
            outcome.skipped = pacer.skipped() - skippedBefore;
        }
    }
    return outcome;
}

qint64 exact(qint64, double trueUs)
{
    return std::llround(trueUs);
}

qint64 milliseconds(qint64, double trueUs)
{
    return std::llround(trueUs / 1000.0) * 1000;
}

} // namespace

class TestPacing : public QObject
{
    Q_OBJECT

private slots:
    void captureSoundFollowsOnWithoutHoles()
    {
        // Ten minutes of 1024-frame blocks from a device whose clock runs 0.05 % slow, stamped
        // with a latency that wanders by up to 80 ms in its first two seconds and by a few
        // milliseconds ever after; once it stalls for half a second.
        ContinuousStamps stamps;
        TimedSampleQueue queue(48000);
        std::vector<std::int16_t> block(2 * 1024, 1000), out(2 * 1024);
        QRandomGenerator random(3);
        const qint64 blockUs = 1024 * 1000000LL / 48000;
        qint64 deviceUs = 0, maxAwayUs = 0, restartsAt = -1;
        qint64 filledBefore = 0, droppedBefore = 0;
        for (int i = 0; i < 600 * 47; ++i) {
            const qint64 wander =
                deviceUs < 2000000 ? qint64(random.bounded(80000)) : qint64(random.bounded(4000));
            if (i == 300 * 47)
                deviceUs += 500000; // the stall: nothing for half a second
            const qint64 stampUs = deviceUs * 10005 / 10000 - wander;
            const qint64 atUs = stamps.place(stampUs, 1024);
            if (i == 300 * 47) {
                filledBefore = queue.filledFrames();
                droppedBefore = queue.droppedFrames();
                restartsAt = atUs;
                QCOMPARE(atUs, stampUs); // far from where it should be: it starts there
            } else if (deviceUs > 2000000) {
                maxAwayUs = std::max(maxAwayUs, std::abs(atUs - stampUs));
            }
            queue.push(block.data(), 1024, atUs, 1);
            queue.takeOldest(out.data(), 1024);
            deviceUs += blockUs;
        }
        QVERIFY(restartsAt > 0);
        // Not one hole filled nor one frame cut, before the stall or after it.
        QCOMPARE(filledBefore, 0);
        QCOMPARE(queue.filledFrames(), 0);
        QCOMPARE(queue.droppedFrames(), droppedBefore);
        // The times keep near the device's own (its wander and the drift followed).
        QVERIFY2(maxAwayUs < ContinuousStamps::kFollowUs, QByteArray::number(maxAwayUs));
    }

    void picturesKeepToTheTicks_data()
    {
        QTest::addColumn<double>("fps");
        QTest::addColumn<bool>("rounded"); // FLV's millisecond timestamps
        QTest::addColumn<int>("jitterUs"); // the sender's clock, at random within ±
        QTest::addColumn<int>("stallUs");  // every tenth picture held back this long
        QTest::newRow("30, exact") << 30.0 << false << 0 << 0;
        QTest::newRow("30, milliseconds") << 30.0 << true << 0 << 0;
        QTest::newRow("30, jittered 4 ms") << 30.0 << false << 4000 << 0;
        QTest::newRow("29.97, milliseconds") << 30000.0 / 1001 << true << 0 << 0;
        QTest::newRow("59.94, milliseconds") << 60000.0 / 1001 << true << 0 << 0;
        QTest::newRow("60, milliseconds") << 60.0 << true << 0 << 0;
        QTest::newRow("25, milliseconds") << 25.0 << true << 0 << 0;
        QTest::newRow("30, stalls of 150 ms") << 30.0 << true << 0 << 150000;
    }

    void picturesKeepToTheTicks()
    {
        QFETCH(double, fps);
        QFETCH(bool, rounded);
        QFETCH(int, jitterUs);
        QFETCH(int, stallUs);
        QRandomGenerator random(7);
        const auto stamp = [&](qint64 n, double trueUs) {
            const qint64 jitter = jitterUs ? random.bounded(2 * jitterUs + 1) - jitterUs : 0;
            return (rounded ? milliseconds(n, trueUs) : exact(n, trueUs)) + jitter;
        };
        // Arrival delays chosen so that the live margin puts pictures at every phase of a tick,
        // the edge between two ticks included.
        for (const qint64 arrivalUs : {0, 8333, 16667, 25000}) {
            const Outcome o = run(fps, stamp, arrivalUs, stallUs);
            // What the rates imply: one picture a tick, the rest repeated or skipped.
            const qint64 pictures = std::llround(double(o.ticks) * fps / 30.0);
            const qint64 repeated = std::max<qint64>(0, o.ticks - pictures);
            const qint64 skipped = std::max<qint64>(0, pictures - o.ticks);
            QVERIFY2(std::abs(o.repeated - repeated) <= 1 && std::abs(o.skipped - skipped) <= 1,
                     qPrintable(QStringLiteral("arrival +%1 us: %2 ticks, repeated %3, skipped %4")
                                    .arg(arrivalUs)
                                    .arg(o.ticks)
                                    .arg(o.repeated)
                                    .arg(o.skipped)));
            // A slower source repeats evenly: 25 fps into 30 repeats every sixth tick.
            for (qsizetype i = 2; fps == 25.0 && i < o.repeatTicks.size(); ++i)
                QCOMPARE(o.repeatTicks[i] - o.repeatTicks[i - 1], 6);
        }
    }
};

QTEST_GUILESS_MAIN(TestPacing)
#include "test_pacing.moc"
