// The ground floor shared by every thread: the frame pool's cap (and the room it lends the
// encode queue), its recycling across threads and after the pool is gone, the coalescing
// mailbox, and the sample queue's drop rule.

#include "TestSupport.h"
#include "media/FrameMailbox.h"
#include "media/FramePool.h"
#include "media/FrameSizes.h"
#include "media/SampleQueue.h"

#include <QtTest>

#include <thread>
#include <vector>

using namespace testsupport;

class TestMedia : public QObject
{
    Q_OBJECT

private slots:
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
        first.reset();
        // The recycled token shares its buffer with `reader`: writing takes a private one.
        FramePool again = pool;
        FrameWriter writer = again.acquire();
        writer.prepare(4, 4, 16);
        writer.bits()[0] = 0x22;
        QCOMPARE(reader.at(0), '\x11');
    }

    void mailboxKeepsTheNewestAndPostsOnce()
    {
        selvane::FrameMailbox<2> mailbox;
        FramePool pool(8, 4, 4);
        int posts = 0;
        std::thread producer([&] {
            for (int i = 0; i < 100; ++i)
                posts += mailbox.store(i % 2, solidFrame(pool, 4, 4, uchar(i)));
        });
        producer.join();
        QCOMPARE(posts, 1);
        auto frames = mailbox.take();
        QCOMPARE(frames[0]->bits()[0], uchar(98));
        QCOMPARE(frames[1]->bits()[0], uchar(99));
        QCOMPARE(mailbox.replacedCount(), 98);
        QVERIFY(mailbox.store(0, solidFrame(pool, 4, 4, 1))); // taken: the next store posts
    }

    void sampleQueueDropsTheOldestAndFillsSilence()
    {
        selvane::SampleQueue queue(100);
        std::vector<std::int16_t> block(2 * 60);
        for (int i = 0; i < 60; ++i)
            block[2 * i] = block[2 * i + 1] = std::int16_t(i);
        queue.push(block.data(), 60);
        queue.push(block.data(), 60); // 20 of the first block give way
        QCOMPARE(queue.droppedFrames(), 20);
        std::vector<std::int16_t> out(2 * 120, -1);
        QCOMPARE(queue.take(out.data(), 120), 100);
        QCOMPARE(out[0], std::int16_t(20));   // the oldest kept frame
        QCOMPARE(out[2 * 99], std::int16_t(59));
        QCOMPARE(out[2 * 100], std::int16_t(0)); // silence for what was missing
        queue.push(block.data(), 60);
        queue.trimTo(10);
        QCOMPARE(queue.queuedFrames(), 10);
        QCOMPARE(queue.take(out.data(), 1), 1);
        QCOMPARE(out[0], std::int16_t(50));
    }
};

QTEST_GUILESS_MAIN(TestMedia)
#include "test_media.moc"
