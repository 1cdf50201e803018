// The rules that keep the control port to its own page and its own people: wrong tokens lock an
// address out for a while, event tickets open the stream once and not for long, another site's
// page is refused, and only the panel's own files are handed out. The clock is the only thing
// faked.

#include "control/SignInGuard.h"
#include "control/WebFiles.h"

#include <QtTest>

using namespace selvane::control;

class TestWebAccess : public QObject
{
    Q_OBJECT

    qint64 m_nowMs = 1000000;
    MillisecondClock clock()
    {
        return [this] {
            return m_nowMs;
        };
    }

private slots:
    void wrongTokensLockAnAddressForAMinute()
    {
        SignInGuard guard(clock());
        const QHostAddress guesser("192.0.2.7"), other("192.0.2.8");
        for (int i = 1; i < SignInGuard::kMaxFailures; ++i) {
            QVERIFY(!guard.failed(guesser));
            m_nowMs += 1000;
        }
        QCOMPARE(guard.lockedForMs(guesser), 0);
        QVERIFY(guard.failed(guesser));
        QCOMPARE(guard.lockedForMs(guesser), SignInGuard::kWindowMs);
        QCOMPARE(guard.lockedForMs(other), 0); // one address's guesses lock no one else
        m_nowMs += SignInGuard::kWindowMs - 1;
        QVERIFY(guard.lockedForMs(guesser) > 0);
        m_nowMs += 1;
        QCOMPARE(guard.lockedForMs(guesser), 0);
        // After the lock, a fresh window: one more wrong token does not lock again.
        QVERIFY(!guard.failed(guesser));
        QCOMPARE(guard.lockedForMs(guesser), 0);

        // Mistakes spread out over more than a minute never lock.
        SignInGuard slow(clock());
        for (int i = 0; i < 3 * SignInGuard::kMaxFailures; ++i) {
            QVERIFY(!slow.failed(other));
            m_nowMs += SignInGuard::kWindowMs / 2 + 1;
            if (i % 2 == 1)
                m_nowMs += SignInGuard::kWindowMs;
        }
        QCOMPARE(slow.lockedCount(), 0);
    }

    void ticketsOpenTheStreamOnceAndNotForLong()
    {
        EventTickets tickets(clock());
        const QByteArray first = tickets.issue();
        const QByteArray second = tickets.issue();
        QCOMPARE(first.size(), 32);
        QVERIFY(first != second);
        QVERIFY(!tickets.redeem(""));
        QVERIFY(!tickets.redeem("0123456789abcdef0123456789abcdef"));
        QVERIFY(tickets.redeem(first));
        QVERIFY(!tickets.redeem(first)); // spent
        m_nowMs += EventTickets::kLifetimeMs;
        QVERIFY(!tickets.redeem(second)); // expired
        // Outstanding tickets are bounded: the oldest goes.
        const QByteArray oldest = tickets.issue();
        m_nowMs += 1;
        for (int i = 0; i < EventTickets::kMaxOutstanding; ++i)
            tickets.issue();
        QVERIFY(!tickets.redeem(oldest));

        QCOMPARE(offeredTicket("selvane-events, ticket.abc123"), QByteArray("abc123"));
        QCOMPARE(offeredTicket("ticket.ff,selvane-events"), QByteArray("ff"));
        QVERIFY(offeredTicket("selvane-events").isEmpty());
        QVERIFY(offeredTicket("").isEmpty());
    }

    void anotherSitesPageIsRefused_data()
    {
        QTest::addColumn<QByteArray>("host");
        QTest::addColumn<QByteArray>("origin");
        QTest::addColumn<QByteArray>("site");
        QTest::addColumn<bool>("allowed");
        QTest::newRow("a script, no origin")
            << QByteArray("127.0.0.1:8080") << QByteArray() << QByteArray() << true;
        QTest::newRow("the panel itself")
            << QByteArray("127.0.0.1:8080") << QByteArray("http://127.0.0.1:8080")
            << QByteArray("same-origin") << true;
        QTest::newRow("behind a TLS proxy")
            << QByteArray("panel.example.org") << QByteArray("https://panel.example.org")
            << QByteArray() << true;
        QTest::newRow("another site") << QByteArray("127.0.0.1:8080")
                                      << QByteArray("http://evil.example") << QByteArray() << false;
        QTest::newRow("another port")
            << QByteArray("127.0.0.1:8080") << QByteArray("http://127.0.0.1:8081") << QByteArray()
            << false;
        QTest::newRow("an opaque origin")
            << QByteArray("127.0.0.1:8080") << QByteArray("null") << QByteArray() << false;
        QTest::newRow("cross-site metadata without origin")
            << QByteArray("127.0.0.1:8080") << QByteArray() << QByteArray("cross-site") << false;
    }
    void anotherSitesPageIsRefused()
    {
        QFETCH(QByteArray, host);
        QFETCH(QByteArray, origin);
        QFETCH(QByteArray, site);
        QFETCH(bool, allowed);
        RequestHead head;
        head.headers.append({"Host", host});
        if (!origin.isNull())
            head.headers.append({"Origin", origin});
        if (!site.isNull())
            head.headers.append({"Sec-Fetch-Site", site});
        const Refusal refusal = checkOrigin(head);
        QCOMPARE(refusal.ok(), allowed);
        if (!allowed)
            QCOMPARE(refusal.status, 403);
    }

    void onlyThePanelsOwnFilesAreHandedOut()
    {
        const auto page = webFile("GET", "/");
        QVERIFY(page);
        QVERIFY(page->type.startsWith("text/html"));
        QVERIFY(page->body.contains("<html"));
        QVERIFY(webFile("GET", "/index.html?x=1"));
        const auto head = webFile("HEAD", "/");
        QVERIFY(head && head->body.isEmpty());
        for (const QByteArray path :
             {"/api/v1/status", "/../CMakeLists.txt", "/%2e%2e/x.js", "/.hidden.js", "/nothing.js",
              "/index.php", "//etc/passwd", "/web/index.html"})
            QVERIFY2(!webFile("GET", path), path.constData());
        QVERIFY(!webFile("POST", "/"));
    }
};

QTEST_GUILESS_MAIN(TestWebAccess)
#include "test_web_access.moc"
