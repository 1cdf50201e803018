// The ground floor shared by every thread: the frame pool's cap (and the room it lends the
// encode queue), its recycling across threads and after the pool is gone, its release when its
// producer goes idle, the coalescing mailbox, the sample queue's drop rule, and shrinking
// pictures by whole factors for previews.

#include "TestSupport.h"
#include "input/SourceTimeline.h"
#include "media/FrameConvert.h"
#include "media/FramePool.h"
#include "media/FrameSizes.h"
#include "media/PlaneShrink.h"
#include "media/TimedSampleQueue.h"

#include <QtTest>
#include <thread>
#include <vector>

using namespace testsupport;

class TestMedia : public QObject
{
    Q_OBJECT

private slots:
    // Each output pixel is the rounded mean of its block, in every plane, at widths that leave
    // tails for the one-pixel path; odd sizes lose their last row and column, never overrun.
    void shrinkingAveragesWholeBlocks()
    {
        FramePool pool(4, 0, 0);
        for (const int factor : {2, 3}) {
            FrameWriter writer = pool.acquire();
            writer.prepareI420(101, 47);
            for (int p = 0; p < 3; ++p) {
                const int rows = p == 0 ? 47 : 24, width = p == 0 ? 101 : 51;
                for (int y = 0; y < rows; ++y)
                    for (int x = 0; x < width; ++x)
                        writer.plane(p)[y * writer->planeStride(p) + x] =
                            std::uint8_t((x * 37 + y * 11 + p * 5) % 256);
            }
            const FrameTokenPtr picture = std::move(writer).publish();
            selvane::ShrunkPlanes shrunk;
            QVERIFY(selvane::shrinkI420(*picture, factor, shrunk));
            QCOMPARE(shrunk.width, (101 / factor) & ~1);
            QCOMPARE(shrunk.height, (47 / factor) & ~1);
            for (int p = 0; p < 3; ++p) {
                const int w = p == 0 ? shrunk.width : shrunk.width / 2;
                const int h = p == 0 ? shrunk.height : shrunk.height / 2;
                for (int y = 0; y < h; ++y)
                    for (int x = 0; x < w; ++x) {
                        int sum = 0;
                        for (int dy = 0; dy < factor; ++dy)
                            for (int dx = 0; dx < factor; ++dx)
                                sum +=
                                    picture->plane(p)[(y * factor + dy) * picture->planeStride(p) +
                                                      x * factor + dx];
                        const int area = factor * factor;
                        QCOMPARE(int(shrunk.data[p][y * shrunk.linesize[p] + x]),
                                 (sum + area / 2) / area);
                    }
            }
        }
        // Into an image whose width is no multiple of the converter's step (1280 / 3 = 426):
        // the colours come through and nothing is written past the image (ASan would say).
        FrameWriter grey = pool.acquire();
        grey.prepareI420(1280, 720);
        std::memset(grey.bits(), 126, std::size_t(grey->pixels.size()));
        std::memset(grey.plane(1), 128, std::size_t(grey->planeStride(1) * 360 * 2));
        ffsupport::SwsPtr context;
        selvane::ShrunkPlanes scratch;
        QImage image;
        QVERIFY(selvane::shrinkToImage(context, scratch, *std::move(grey).publish(), 3, image));
        QCOMPARE(image.size(), QSize(426, 240));
        QVERIFY(std::abs(qGray(image.pixel(425, 239)) - 128) < 4);
        FrameWriter tiny = pool.acquire();
        tiny.prepareI420(3, 3);
        selvane::ShrunkPlanes shrunk;
        QVERIFY(!selvane::shrinkI420(*std::move(tiny).publish(), 2, shrunk)); // nothing left
    }

    void capHoldsAndGrowsWithWhatConsumersHold()
    {
        FramePool pool(18, 1920, 1080);
        std::vector<FrameTokenPtr> held;
        while (FrameTokenPtr frame = solidFrame(pool, 16, 16, 1))
            held.push_back(frame);
        QCOMPARE(int(held.size()), pool.maxInUse());
        QCOMPARE(pool.refusedCount(), 1);
        // The encode queue may hold 32 more: producers get exactly that many more pictures.
        pool.setHeldByConsumers(32);
        for (int i = 0; i < 32; ++i)
            held.push_back(solidFrame(pool, 16, 16, 1));
        QVERIFY(held.back() && !pool.acquire());
        // At 4K fewer pictures may be in flight; the ones out count against the new cap.
        pool.resize(3840, 2160);
        pool.setHeldByConsumers(0);
        held.resize(std::size_t(pool.maxInUse()));
        QVERIFY(!pool.acquire());
        held.pop_back();
        QVERIFY(pool.acquire());
    }

    void tryAcquireNeverCreatesBeyondBase()
    {
        FramePool pool(4, 64, 64);
        std::vector<FrameWriter> held;
        for (int i = 0; i < 4; ++i)
            held.push_back(pool.tryAcquire());
        QVERIFY(!pool.tryAcquire());
        held.push_back(pool.acquire()); // acquire may create one more while below the cap
        QVERIFY(held.back());
    }

    void releasedPoolKeepsNothingUntilUsedAgain()
    {
        FramePool pool(4, 64, 64);
        std::vector<FrameWriter> out;
        for (int i = 0; i < 4; ++i)
            out.push_back(pool.acquire());
        out.resize(2);
        QCOMPARE(pool.freeCount(), 2);
        pool.releaseFree();
        QCOMPARE(pool.freeCount(), 0);
        out.clear(); // still out at the release: deleted as they come back
        QCOMPARE(pool.freeCount(), 0);
        QCOMPARE(pool.inUse(), 0);
        // Used again, it makes its tokens anew up to its base and recycles them as before.
        for (int i = 0; i < 4; ++i)
            out.push_back(pool.tryAcquire());
        QVERIFY(out.back() && !pool.tryAcquire());
        out.clear();
        QCOMPARE(pool.freeCount(), 4);
    }

    void recycledTokensAreResetAndLargeBuffersLimited()
    {
        FramePool pool(6, 3840, 2160);
        std::vector<FrameWriter> held;
        for (int i = 0; i < 3; ++i) {
            held.push_back(pool.acquire());
            held.back().prepare(3840, 2160, 3840 * 4);
            held.back()->ptsUs = 42;
        }
        held.clear(); // the third large buffer is released, not kept
        int large = 0;
        for (int i = 0; i < 3; ++i) {
            held.push_back(pool.acquire());
            QCOMPARE(held.back()->ptsUs, 0);
            large += held.back()->pixels.capacity() >= selvane::frames::kLargeBufferBytes;
        }
        QCOMPARE(large, 2);
    }

    void tokensComeBackFromAnyThreadEvenAfterThePool()
    {
        FrameTokenPtr survivor;
        {
            FramePool pool(18, 1920, 1080);
            std::vector<std::thread> threads;
            for (int t = 0; t < 4; ++t)
                threads.emplace_back([pool]() mutable {
                    for (int i = 0; i < 5000; ++i) {
                        FrameWriter a = pool.acquire();
                        FrameWriter b = pool.tryAcquire();
                    }
                });
            for (std::thread &t : threads)
                t.join();
            QCOMPARE(pool.inUse(), 0);
            QVERIFY(pool.freeCount() <= 18);
            survivor = solidFrame(pool, 8, 8, 9);
        }
        survivor.reset(); // the pool's state lives on for the deleter
    }

    void aPublishedPictureIsNeverWrittenAgain()
    {
        FramePool pool(1, 4, 4);
        FrameTokenPtr first = solidFrame(pool, 4, 4, 0x11);
        const QByteArray reader = first->pixels; // another holder of the same bytes
        const char before = reader.at(0);
        first.reset();
        // The recycled token shares its buffer with `reader`: writing takes a private one.
        FramePool again = pool;
        FrameWriter writer = again.acquire();
        writer.prepare(4, 4, 16);
        writer.bits()[0] = char(before + 1);
        QCOMPARE(reader.at(0), before);
    }

    void soundIsTakenByItsTimestamps()
    {
        // 10 ms blocks whose samples carry the block's number.
        selvane::TimedSampleQueue queue(48000);
        const auto push = [&](int n, qint64 us, quint64 timeline = 1) {
            const std::vector<std::int16_t> block(2 * 480, std::int16_t(n));
            queue.push(block.data(), 480, us, timeline);
        };
        std::vector<std::int16_t> out(2 * 480);
        const auto take = [&](qint64 us, quint64 timeline = 1) {
            return queue.takeAt(out.data(), 480, us, timeline);
        };
        push(1, 1'000'000);
        push(2, 1'010'000);
        push(3, 1'030'000); // 10 ms after the end of block 2: the hole is silence
        QCOMPARE(queue.filledFrames(), 480);
        // Wanted from 6 ms into block 1: what is older is dropped.
        QCOMPARE(take(1'006'000), 480);
        QCOMPARE(out[2 * 191], 1);
        QCOMPARE(out[2 * 192], 2);
        QCOMPARE(take(1'016'000), 480);
        QCOMPARE(out[2 * 191], 2);
        QCOMPARE(out[2 * 192], 0);
        // Wanted before the queue starts: silence, and nothing is taken.
        QCOMPARE(take(1'016'000), 0);
        QCOMPARE(take(1'026'000), 480);
        QCOMPARE(out[2 * 192], 3);

        // A newer timeline waits for the mixer to reach it; the rest of the old one is dropped.
        const qint64 dropped = queue.droppedFrames();
        push(4, 5'000'000, 2);
        QCOMPARE(queue.droppedFrames(), dropped + 192);
        QCOMPARE(take(1'036'000, 1), 0);
        QCOMPARE(take(5'000'000, 2), 480);
        QCOMPARE(out[0], 4);

        // Blocks too far apart start anew; when full, the oldest give way.
        push(5, 6'000'000, 2);
        push(6, 6'300'000, 2);
        qint64 head = 0;
        quint64 timeline = 0;
        QVERIFY(queue.head(&head, &timeline));
        QCOMPARE(head, 6'300'000);
        for (int i = 1; i <= 120; ++i)
            push(7, 6'300'000 + i * 10'000, 2);
        QCOMPARE(queue.queuedFrames(), 48000);
        QVERIFY(queue.head(&head, &timeline));
        QCOMPARE(head, 6'310'000 + 200'000); // 1.2 s pushed into a second's room
    }

    void jumpsAndLoopsKeepOneTimeLine()
    {
        // Picture every 40 ms, sound every 21.333 ms starting 10 ms later, running across a
        // transport stream's wrap (2^33 ticks of 90 kHz): both go on as if nothing happened,
        // and the sound's jump is matched to the picture's, not counted again.
        selvane::SourceTimeline timeline;
        const qint64 wrapUs = (qint64(1) << 33) * 1'000'000 / 90'000;
        const qint64 start = wrapUs - 1'000'000;
        for (int i = 0; i < 50; ++i) {
            const qint64 v = start + i * 40'000;
            QCOMPARE(timeline.mapVideo(v % wrapUs, 40'000), v);
            const qint64 a = start + 10'000 + i * 21'333;
            QCOMPARE(timeline.mapAudio(a % wrapUs, 21'333), a);
        }
        QCOMPARE(timeline.jumps(), 1);

        // Two files joined: the second one's picture and sound keep their own relation (sound
        // 15 ms before picture), although the first file's sound ran 30 ms longer.
        timeline.reset();
        QCOMPARE(timeline.mapVideo(9'960'000, 40'000), 9'960'000);
        QCOMPARE(timeline.mapAudio(9'990'000, 40'000), 9'990'000);
        const qint64 picture = timeline.mapVideo(5'000'000'000, 40'000);
        QCOMPARE(picture, 10'000'000);
        QCOMPARE(timeline.mapAudio(5'000'000'000 - 15'000, 40'000), picture - 15'000);

        // A loop of a clip whose sound (94 blocks) runs 5.3 ms longer than its picture (60
        // frames): every loop starts both after the sound, however many loops.
        timeline.reset();
        for (int loop = 0; loop < 100; ++loop) {
            if (loop > 0)
                timeline.loopRestart(0);
            const qint64 loopStart = loop * qint64(94 * 21'333);
            QCOMPARE(timeline.mapVideo(0, 33'333), loopStart);
            QCOMPARE(timeline.mapAudio(0, 21'333), loopStart);
            for (int i = 1; i < 94; ++i) {
                if (i < 60)
                    timeline.mapVideo(i * 33'333, 33'333);
                timeline.mapAudio(i * 21'333, 21'333);
            }
        }
    }
};

QTEST_GUILESS_MAIN(TestMedia)
#include "test_media.moc"
