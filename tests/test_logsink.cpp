// The log sink is a process-wide singleton that reads its environment once, so every case runs
// in a child process of this executable ("--child SCENARIO") with its own XDG data folder, and
// the parent inspects the files and streams the child left behind.

#include "TestSupport.h"
#include "app/LogSink.h"

#include <QCoreApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QRegularExpression>
#include <QThread>
#include <QtTest>
#include <csignal>
#include <cstdio>
#include <cstring>

extern "C" {
#include <libavutil/log.h>
}

using namespace testsupport;

namespace {

const char *testContextName(void *)
{
    return "testctx";
}
AVClass makeTestClass()
{
    AVClass avClass{};
    avClass.class_name = "testctx";
    avClass.item_name = testContextName;
    avClass.version = LIBAVUTIL_VERSION_INT;
    return avClass;
}
const AVClass kTestClass = makeTestClass();
struct TestContext
{
    const AVClass *avClass = &kTestClass;
};

QByteArray currentLogFile()
{
    return readAll(selvane::logFilePath());
}

// Waits for `needle` to appear in the live log file; returns the milliseconds it took or -1.
qint64 waitForInLog(const QByteArray &needle, int timeoutMs)
{
    QElapsedTimer timer;
    timer.start();
    while (timer.elapsed() < timeoutMs) {
        if (currentLogFile().contains(needle))
            return timer.elapsed();
        QThread::msleep(5);
    }
    return -1;
}

int runChild(const QByteArray &scenario)
{
    if (scenario == "queue") {
        // Lines queued before the writer runs are bounded by the default 20000: the oldest go.
        for (int i = 0; i < 25000; ++i)
            selvane::enqueueLogLine(QByteArray("q") + QByteArray::number(i).rightJustified(5, '0'));
    }
    selvane::initLogSink();
    if (scenario == "settings") {
        const selvane::LogSinkSettings s = selvane::logSinkSettings();
        std::printf("%lld %d %d %d\n", static_cast<long long>(s.maxFileBytes), s.maxFileCount,
                    s.maxQueueLines, s.ffmpegLogLevel);
    } else if (scenario == "lines") {
        qInfo("hello-info");
        selvane::enqueueLogLine("two-crlf\r\n\r\n");
        selvane::enqueueLogLine("\r\n\n");
        TestContext ctx;
        av_log(&ctx, AV_LOG_ERROR, "ff-error-line %d\n", 7);
        av_log(&ctx, AV_LOG_INFO, "ff-info-hidden\n");
        std::fprintf(stderr, "stderr-full-line\n");
        std::fflush(stderr);
        if (waitForInLog("stderr-full-line", 3000) < 0)
            return 3;
        // A partial line (no LF) must reach the log about 400 ms after its last byte.
        QElapsedTimer sinceWrite;
        std::fputs("stderr-partial", stderr);
        std::fflush(stderr);
        sinceWrite.start();
        while (!currentLogFile().contains("stderr-partial") && sinceWrite.elapsed() < 3000)
            QThread::msleep(5);
        std::printf("partial-after-ms %lld\n", static_cast<long long>(sinceWrite.elapsed()));
    } else if (scenario == "rotate") {
        for (int i = 0; i < 200; ++i)
            selvane::enqueueLogLine(QByteArray("r") + QByteArray::number(i).rightJustified(4, '0') +
                                    QByteArray(94, 'x'));
    } else if (scenario == "fatal") {
        // Well below the queue's bound, so that no line may be dropped whatever the writer's pace.
        for (int i = 0; i < 5000; ++i)
            selvane::enqueueLogLine(QByteArray("f") + QByteArray::number(i));
        qFatal("fatal-now");
    } else if (scenario == "abort") {
        // The line is given time to reach the file: a line still in the writer's hands when the
        // process dies is lost by design, and would make this check a race.
        qInfo("before-abort");
        QThread::msleep(300);
        std::abort();
    } else if (scenario == "sigterm") {
        qInfo("before-term");
        QThread::msleep(300);
        std::raise(SIGTERM);
    }
    selvane::shutdownLogSink();
    selvane::shutdownLogSink(); // a second call must be a no-op
    return 0;
}

} // namespace

class TestLogSink : public QObject
{
    Q_OBJECT

private:
    ProcessResult child(const IsolatedHome &home, const QByteArray &scenario,
                        const QList<QPair<QString, QString>> &env = {})
    {
        QProcessEnvironment environment = home.environment();
        for (const auto &[name, value] : env)
            environment.insert(name, value);
        return runProcess(QCoreApplication::applicationFilePath(),
                          {"--child", QString::fromLatin1(scenario)}, environment);
    }

    static QStringList logFiles(const IsolatedHome &home)
    {
        QStringList names = QDir(home.logDir()).entryList(QDir::Files, QDir::Name);
        return names;
    }

private slots:
    void environmentAcceptanceRules_data()
    {
        QTest::addColumn<QString>("variable");
        QTest::addColumn<QString>("value");
        QTest::addColumn<QString>("expected"); // "bytes files queue level"
        QTest::newRow("files 33 ignored") << "SELVANE_LOG_MAX_FILES"
                                          << "33"
                                          << "20971520 5 20000 24";
        QTest::newRow("queue 999 ignored") << "SELVANE_LOG_QUEUE_MAX"
                                           << "999"
                                           << "20971520 5 20000 24";
        QTest::newRow("queue beyond 32 bits") << "SELVANE_LOG_QUEUE_MAX"
                                              << "4294967296"
                                              << "20971520 5 20000 24";
        QTest::newRow("bytes 64-bit") << "SELVANE_LOG_MAX_BYTES"
                                      << "8589934592"
                                      << "8589934592 5 20000 24";
    }

    void environmentAcceptanceRules()
    {
        QFETCH(QString, variable);
        QFETCH(QString, value);
        QFETCH(QString, expected);
        IsolatedHome home;
        const ProcessResult r = child(home, "settings", {{variable, value}});
        QVERIFY(r.finished);
        QCOMPARE(r.exitCode, 0);
        QCOMPARE(QString::fromLatin1(r.out.trimmed()), expected);
    }

    void linesFromEverySourceAreWholeAndEchoed()
    {
        IsolatedHome home;
        const ProcessResult r = child(home, "lines");
        QVERIFY(r.finished);
        QCOMPARE(r.exitCode, 0);
        const QStringList files = logFiles(home);
        QCOMPARE(files.size(), 1);
        const QList<QByteArray> lines = readAll(QDir(home.logDir()).filePath(files[0])).split('\n');
        QVERIFY2(lines.value(0).startsWith("selvane log file: ") &&
                     lines.value(0).endsWith(files[0].toUtf8()),
                 lines.value(0).constData());
        QVERIFY(lines.contains("hello-info"));
        // Trailing CR LF pairs are stripped; a message of line breaks only is never queued.
        QVERIFY(lines.contains("two-crlf"));
        QCOMPARE(lines.count(QByteArray()), 1); // only after the final LF
        // FFmpeg lines carry the context prefix; lines above the level are dropped.
        bool prefixed = false;
        for (const QByteArray &line : lines)
            prefixed =
                prefixed || QRegularExpression("^\\[testctx @ 0x[0-9a-f]+\\] ff-error-line 7$")
                                .match(QString::fromUtf8(line))
                                .hasMatch();
        QVERIFY(prefixed);
        QVERIFY(!readAll(QDir(home.logDir()).filePath(files[0])).contains("ff-info-hidden"));
        QVERIFY(lines.contains("stderr-full-line"));
        QVERIFY(lines.contains("stderr-partial"));
        // Console output keeps working through the saved stderr descriptor.
        QVERIFY(r.err.contains("hello-info\n"));
        QVERIFY(r.err.contains("stderr-full-line\n"));
        QVERIFY(r.err.contains("ff-error-line 7\n"));
        const qint64 partialMs = r.out.split(' ').value(1).trimmed().toLongLong();
        QVERIFY2(partialMs >= 395 && partialMs < 1200, r.out.constData());
    }

    void fullQueueDropsTheOldestLines()
    {
        IsolatedHome home;
        const ProcessResult r = child(home, "queue");
        QCOMPARE(r.exitCode, 0);
        const QByteArray text = readAll(QDir(home.logDir()).filePath(logFiles(home).value(0)));
        const QList<QByteArray> lines = text.split('\n');
        QList<int> numbers;
        for (const QByteArray &line : lines)
            if (line.startsWith('q'))
                numbers << line.mid(1).toInt();
        // The newest lines are kept in order; the oldest gave way. The sink's own first line
        // may push out one more of the oldest if it arrives before the writer starts.
        QVERIFY2(numbers.size() == 20000 || numbers.size() == 19999,
                 QByteArray::number(numbers.size()));
        QCOMPARE(numbers.last(), 24999);
        QVERIFY(numbers.first() == 5000 || numbers.first() == 5001);
        for (qsizetype i = 1; i < numbers.size(); ++i)
            QCOMPARE(numbers[i], numbers[i - 1] + 1);
    }

    void rotationKeepsTheConfiguredNumberOfFiles()
    {
        IsolatedHome home;
        const ProcessResult r = child(
            home, "rotate", {{"SELVANE_LOG_MAX_BYTES", "1000"}, {"SELVANE_LOG_MAX_FILES", "3"}});
        QCOMPARE(r.exitCode, 0);
        const QStringList files = logFiles(home);
        QCOMPARE(files.size(), 3);
        const QString live = files[0];
        QCOMPARE(files[1], live + ".1");
        QCOMPARE(files[2], live + ".2");
        // Oldest to newest, the kept files hold consecutive whole lines ending with the last one.
        const QDir dir(home.logDir());
        QList<QByteArray> lines;
        for (const QString &name : {live + ".2", live + ".1", live})
            for (const QByteArray &line : readAll(dir.filePath(name)).split('\n'))
                if (line.startsWith('r'))
                    lines << line;
        QVERIFY(lines.size() >= 20);
        for (qsizetype i = 0; i < lines.size(); ++i) {
            QCOMPARE(lines[i].size(), 99);
            QCOMPARE(lines[i].mid(1, 4).toInt(), 200 - lines.size() + i);
        }
    }

    void fatalMessageDrainsTheQueueBeforeAborting()
    {
        IsolatedHome home;
        const ProcessResult r = child(home, "fatal");
        QVERIFY(r.finished);
        QCOMPARE(r.exitStatus, QProcess::CrashExit);
        const QByteArray text = readAll(QDir(home.logDir()).filePath(logFiles(home).value(0)));
        QVERIFY(text.contains("\nf0\n"));
        QVERIFY(text.contains("\nf4999\n"));
        QVERIFY(text.contains("fatal-now"));
    }

    void abnormalEndsFlushAndStillEndTheProcess_data()
    {
        QTest::addColumn<QByteArray>("scenario");
        QTest::addColumn<QByteArray>("line");
        QTest::newRow("SIGABRT") << QByteArray("abort") << QByteArray("before-abort");
        QTest::newRow("SIGTERM") << QByteArray("sigterm") << QByteArray("before-term");
    }

    void abnormalEndsFlushAndStillEndTheProcess()
    {
        QFETCH(QByteArray, scenario);
        QFETCH(QByteArray, line);
        IsolatedHome home;
        const ProcessResult r = child(home, scenario);
        QVERIFY(r.finished);
        QCOMPARE(r.exitStatus, QProcess::CrashExit);
        const QByteArray text = readAll(QDir(home.logDir()).filePath(logFiles(home).value(0)));
        QVERIFY(text.contains(line + "\n"));
    }
};

int main(int argc, char *argv[])
{
    if (argc >= 3 && std::strcmp(argv[1], "--child") == 0) {
        QCoreApplication app(argc, argv);
        QCoreApplication::setApplicationName("Selvane");
        return runChild(QByteArray(argv[2]));
    }
    QCoreApplication app(argc, argv);
    TestLogSink test;
    return QTest::qExec(&test, argc, argv);
}

#include "test_logsink.moc"
