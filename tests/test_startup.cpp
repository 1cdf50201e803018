// Start-up of the real `selvane` executable: the console-only options, the per-user instance
// lock with its wake-up connection, recovery from a crashed instance's socket, and the exit code
// when the lock cannot be taken.

#include "TestSupport.h"

#include <QLocalSocket>
#include <QThread>
#include <QtTest>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

using namespace testsupport;

namespace {

const QString kBinary = testsupport::builtProgram("SELVANE_BINARY");

bool waitForLock(const QString &socketPath, int timeoutMs)
{
    QElapsedTimer timer;
    timer.start();
    while (timer.elapsed() < timeoutMs) {
        QLocalSocket socket;
        socket.connectToServer(socketPath);
        if (socket.waitForConnected(200))
            return true;
        QThread::msleep(50);
    }
    return false;
}

} // namespace

class TestStartup : public QObject
{
    Q_OBJECT

private slots:
    void versionAndHelpNeedNoDisplay()
    {
        IsolatedHome home;
        QProcessEnvironment env = home.environment();
        env.remove("QT_QPA_PLATFORM");
        env.remove("DISPLAY");
        const ProcessResult version = runProcess(kBinary, {"--version"}, env);
        QCOMPARE(version.exitCode, 0);
        QVERIFY2(QRegularExpression("^Selvane \\d+\\.\\d+\\.\\d+\\n$")
                     .match(QString::fromUtf8(version.out))
                     .hasMatch(),
                 version.out.constData());
        const ProcessResult help = runProcess(kBinary, {"--help"}, env);
        QCOMPARE(help.exitCode, 0);
        QVERIFY(help.out.contains("--version"));
        QVERIFY(help.out.contains("Usage:"));
        const ProcessResult bad = runProcess(kBinary, {"--no-such-option"}, env);
        QCOMPARE(bad.exitCode, 1);
        QVERIFY2(bad.err.contains("no-such-option"), bad.err.constData());
        // None of these took the lock or opened a log.
        QVERIFY(!QFile::exists(home.path("run/selvane_single_instance")));
    }

    void theLastErrorBeforeAnExitIsLogged()
    {
        // A show that ends at once on an error written to stderr: the line reaches the console
        // and the log file, though the process ends right after writing it.
        IsolatedHome home;
        const QString bad = home.path("cut-short.json");
        QFile file(bad);
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.write("{ \"format\": ");
        file.close();
        for (int run = 0; run < 3; ++run) {
            const ProcessResult show =
                runProcess(kBinary, {"--headless", "--schedule", bad}, home.environment());
            QCOMPARE(show.exitCode, 1);
            QVERIFY2(show.err.contains("cut short"), show.err.constData());
        }
        QByteArray logged;
        for (const QString &name : QDir(home.logDir()).entryList(QDir::Files))
            logged += readAll(QDir(home.logDir()).filePath(name));
        QCOMPARE(logged.count("cut-short.json: line 1"), 3);
    }

    void secondStartWakesTheFirstAndExits()
    {
        IsolatedHome home;
        QProcess first;
        first.setProcessEnvironment(home.environment());
        first.start(kBinary, {});
        QVERIFY(first.waitForStarted());
        const QString socketPath = home.path("run/selvane_single_instance");
        QVERIFY2(waitForLock(socketPath, 15000), "first instance never took the lock");

        const ProcessResult second = runProcess(kBinary, {}, home.environment());
        QVERIFY(second.finished);
        QCOMPARE(second.exitStatus, QProcess::NormalExit);
        QCOMPARE(second.exitCode, 0);
        QVERIFY2(second.elapsedMs < 5000, QByteArray::number(second.elapsedMs).constData());
        QCOMPARE(first.state(), QProcess::Running);
        QVERIFY(waitForLock(socketPath, 2000));

        // A crash leaves the socket file behind; the next start must take the lock anyway.
        first.kill();
        QVERIFY(first.waitForFinished(5000));
        QVERIFY(QFile::exists(socketPath));
        QProcess third;
        third.setProcessEnvironment(home.environment());
        third.start(kBinary, {});
        QVERIFY(third.waitForStarted());
        QVERIFY2(waitForLock(socketPath, 15000), "stale socket blocked a new instance");
        QCOMPARE(third.state(), QProcess::Running);
        third.terminate();
        QVERIFY(third.waitForFinished(5000));
    }

    void lockThatCannotListenExitsWithOne()
    {
        // A socket path longer than the platform allows cannot be listened on.
        IsolatedHome home;
        const QString longRun = home.path("run/" + QString(120, 'r'));
        QVERIFY(QDir().mkpath(longRun));
        QFile::setPermissions(longRun, QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
        QProcessEnvironment env = home.environment();
        env.insert("XDG_RUNTIME_DIR", longRun);
        const ProcessResult r = runProcess(kBinary, {}, env);
        QVERIFY(r.finished);
        QCOMPARE(r.exitCode, 1);
        QVERIFY2(r.err.contains("Single-instance lock listen failed:"), r.err.constData());
        // The message reached the log file too.
        const QStringList logs = QDir(home.logDir()).entryList(QDir::Files);
        QCOMPARE(logs.size(), 1);
        QVERIFY(readAll(QDir(home.logDir()).filePath(logs[0]))
                    .contains("Single-instance lock listen failed:"));
    }
};

QTEST_GUILESS_MAIN(TestStartup)
#include "test_startup.moc"
