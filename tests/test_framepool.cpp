// Frame pool caps, free-list rules and the large-buffer limit.

#include "compose/FramePool.h"

#include <QtTest>

#include <thread>
#include <vector>

class TestFramePool : public QObject
{
    Q_OBJECT

private slots:
    void capShrinksWithFrameSize_data()
    {
        QTest::addColumn<int>("base");
        QTest::addColumn<int>("width");
        QTest::addColumn<int>("height");
        QTest::addColumn<int>("cap");
        QTest::newRow("program 1080p") << 18 << 1920 << 1080 << 20;
        QTest::newRow("program above 1080p") << 18 << 2560 << 1440 << 12;
        QTest::newRow("program just below 4K") << 18 << 3840 << 2159 << 12;
        QTest::newRow("program 4K") << 18 << 3840 << 2160 << 10;
        QTest::newRow("program 8K") << 18 << 7680 << 4320 << 6;
        QTest::newRow("overlay 1080p") << 6 << 1920 << 1080 << 8;
        QTest::newRow("overlay 1440p") << 6 << 2560 << 1440 << 6;
        QTest::newRow("overlay 4K") << 6 << 3840 << 2160 << 4;
        QTest::newRow("overlay 8K") << 6 << 7680 << 4320 << 3;
        QTest::newRow("zero size counts as 1x1") << 6 << 0 << -5 << 8;
    }

    void capShrinksWithFrameSize()
    {
        QFETCH(int, base);
        QFETCH(int, width);
        QFETCH(int, height);
        QFETCH(int, cap);
        FramePool pool(base, 1920, 1080);
        pool.resize(width, height);
        QCOMPARE(pool.maxInUse(), cap);
        QVERIFY(pool.width() >= 1 && pool.height() >= 1);
        std::vector<FrameTokenPtr> held;
        for (int i = 0; i < cap; ++i) {
            held.push_back(pool.acquire());
            QVERIFY(held.back());
        }
        QVERIFY(!pool.acquire()); // cap reached: the frame is dropped
        held.pop_back();
        QVERIFY(pool.acquire());
    }

    void tryAcquireNeverGrowsBeyondBase()
    {
        FramePool pool(18, 1920, 1080);
        std::vector<FrameTokenPtr> held;
        for (int i = 0; i < 18; ++i)
            held.push_back(pool.tryAcquire());
        QVERIFY(held.back());
        QVERIFY(!pool.tryAcquire());
        // acquire creates a 19th, uncounted token while below the cap.
        FrameTokenPtr extra = pool.acquire();
        QVERIFY(extra);
        QCOMPARE(pool.inUse(), 19);
        extra.reset();
        // The 19th went back to the free list, so tryAcquire can hand it out now.
        QVERIFY(pool.tryAcquire());
    }

    void returnBeyondKeepCountDestroysAndResets()
    {
        FramePool pool(2, 64, 64);
        FrameTokenPtr a = pool.acquire();
        FrameTokenPtr b = pool.acquire();
        FrameTokenPtr c = pool.acquire();
        a->pts = 42;
        a->tag = 7;
        a->width = 64;
        a.reset();
        b.reset();
        QCOMPARE(pool.freeCount(), 2);
        c.reset(); // free list already holds keepCount tokens: destroyed
        QCOMPARE(pool.freeCount(), 2);
        QCOMPARE(pool.inUse(), 0);
        FrameTokenPtr again = pool.acquire();
        QCOMPARE(again->pts, 0);
        QCOMPARE(again->tag, quint64(0));
        QCOMPARE(again->width, 0);
    }

    void atMostTwoLargeBuffersWait()
    {
        FramePool pool(6, 3840, 2160);
        std::vector<FrameTokenPtr> held;
        for (int i = 0; i < 3; ++i) {
            held.push_back(pool.acquire());
            prepareTokenPixels(*held.back(), 3840, 2160, 3840 * 4);
        }
        held.clear(); // returned in order: the third large buffer is released
        int large = 0;
        int empty = 0;
        for (int i = 0; i < 3; ++i) {
            held.push_back(pool.acquire());
            if (held.back()->pixels.capacity() >= FramePool::kLargeBufferBytes)
                ++large;
            if (held.back()->pixels.capacity() == 0)
                ++empty;
        }
        QCOMPARE(large, 2);
        QCOMPARE(empty, 1);
    }

    void tokenOutlivesItsPool()
    {
        FrameTokenPtr survivor;
        {
            FramePool pool(2, 32, 32);
            survivor = pool.acquire();
        }
        survivor.reset(); // the shared state is still alive for the deleter
        QVERIFY(true);
    }

    void concurrentAcquireAndReturnKeepCountsExact()
    {
        FramePool pool(18, 1920, 1080);
        std::vector<std::thread> threads;
        for (int t = 0; t < 4; ++t) {
            threads.emplace_back([pool]() mutable {
                for (int i = 0; i < 5000; ++i) {
                    FrameTokenPtr a = pool.acquire();
                    FrameTokenPtr b = pool.tryAcquire();
                }
            });
        }
        for (std::thread &t : threads)
            t.join();
        QCOMPARE(pool.inUse(), 0);
        QVERIFY(pool.freeCount() <= 18);
    }

    void sharedBufferIsDetachedBeforeWriting()
    {
        FramePool pool(2, 4, 4);
        FrameTokenPtr token = pool.acquire();
        prepareTokenPixels(*token, 4, 4, 16);
        token->pixels.fill('\x11');
        const QByteArray reader = token->pixels; // another holder
        prepareTokenPixels(*token, 4, 4, 16);
        token->pixels.data()[0] = '\x22';
        QCOMPARE(reader.at(0), '\x11');
    }
};

QTEST_GUILESS_MAIN(TestFramePool)
#include "test_framepool.moc"
