#pragma once

// Helpers for tests that run real processes: a private set of XDG folders per test so that
// settings, logs and the instance lock never touch the user's own, and a bounded run of a
// command that collects its output.

#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QProcess>
#include <QProcessEnvironment>
#include <QTemporaryDir>

namespace testsupport {

struct ProcessResult
{
    bool finished = false;
    QProcess::ExitStatus exitStatus = QProcess::NormalExit;
    int exitCode = -1;
    QByteArray out;
    QByteArray err;
    qint64 elapsedMs = 0;
};

// XDG_DATA_HOME, XDG_CONFIG_HOME and XDG_RUNTIME_DIR inside one temporary folder.
class IsolatedHome
{
public:
    IsolatedHome()
    {
        QDir root(m_dir.path());
        root.mkpath("data");
        root.mkpath("config");
        root.mkpath("run");
        QFile::setPermissions(root.filePath("run"),
                              QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
    }
    QString path(const QString &sub = {}) const { return QDir(m_dir.path()).filePath(sub); }
    QString logDir() const { return path("data/Ostrel/Selvane/logs"); }
    QProcessEnvironment environment() const
    {
        QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
        env.insert("XDG_DATA_HOME", path("data"));
        env.insert("XDG_CONFIG_HOME", path("config"));
        env.insert("XDG_RUNTIME_DIR", path("run"));
        env.insert("QT_QPA_PLATFORM", "offscreen");
        for (const char *name : {"SELVANE_LOG_MAX_BYTES", "SELVANE_LOG_MAX_FILES",
                                 "SELVANE_LOG_QUEUE_MAX", "SELVANE_AV_LOG_LEVEL"})
            env.remove(name);
        return env;
    }

private:
    QTemporaryDir m_dir;
};

inline ProcessResult runProcess(const QString &program, const QStringList &arguments,
                                const QProcessEnvironment &env, int timeoutMs = 30000)
{
    ProcessResult result;
    QProcess process;
    process.setProcessEnvironment(env);
    QElapsedTimer timer;
    timer.start();
    process.start(program, arguments);
    if (!process.waitForStarted(timeoutMs))
        return result;
    result.finished = process.waitForFinished(timeoutMs);
    result.elapsedMs = timer.elapsed();
    if (!result.finished) {
        process.kill();
        process.waitForFinished(2000);
    }
    result.exitStatus = process.exitStatus();
    result.exitCode = process.exitCode();
    result.out = process.readAllStandardOutput();
    result.err = process.readAllStandardError();
    return result;
}

inline QByteArray readAll(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

} // namespace testsupport
