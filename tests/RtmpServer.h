#pragma once

// A real RTMP server for tests: nginx with the rtmp module on a free loopback port, started and
// stopped by PID, with its own prefix directory. freeze()/thaw() stop and continue the process
// to simulate a server that has gone silent.

#include "MediaFixtures.h"

#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QProcess>
#include <QTcpSocket>
#include <QTemporaryDir>
#include <QThread>

#include <csignal>

namespace testsupport {

class RtmpServer
{
public:
    ~RtmpServer() { stop(); }

    bool start(quint16 port = 0)
    {
        m_port = port ? port : freeTcpPort();
        QDir prefix(m_dir.path());
        prefix.mkpath("logs");
        QFile conf(prefix.filePath("nginx.conf"));
        if (!conf.open(QIODevice::WriteOnly))
            return false;
        conf.write(QStringLiteral(
                       "load_module /usr/lib/nginx/modules/ngx_rtmp_module.so;\n"
                       "daemon off;\nmaster_process off;\nworker_processes 1;\n"
                       "pid %1/nginx.pid;\nerror_log %1/logs/error.log warn;\n"
                       "events { worker_connections 256; }\n"
                       "rtmp { server { listen 127.0.0.1:%2; chunk_size 4096;\n"
                       "  application live { live on; record off; drop_idle_publisher 5s; } } }\n")
                       .arg(m_dir.path())
                       .arg(m_port)
                       .toUtf8());
        conf.close();
        m_process.setProcessChannelMode(QProcess::MergedChannels);
        m_process.start("nginx", {"-c", prefix.filePath("nginx.conf"), "-p", m_dir.path(), "-e",
                                  prefix.filePath("logs/error.log")});
        if (!m_process.waitForStarted(5000))
            return false;
        QElapsedTimer timer;
        timer.start();
        while (timer.elapsed() < 5000) {
            QTcpSocket probe;
            probe.connectToHost("127.0.0.1", m_port);
            if (probe.waitForConnected(200))
                return true;
            if (m_process.state() != QProcess::Running)
                return false;
            QThread::msleep(50);
        }
        return false;
    }

    void stop()
    {
        if (m_process.state() == QProcess::NotRunning)
            return;
        thaw();
        m_process.kill();
        m_process.waitForFinished(5000);
    }

    void freeze() { ::kill(pid_t(m_process.processId()), SIGSTOP); }
    void thaw() { ::kill(pid_t(m_process.processId()), SIGCONT); }

    quint16 port() const { return m_port; }
    QString url(const QString &key) const
    {
        return QStringLiteral("rtmp://127.0.0.1:%1/live/%2").arg(m_port).arg(key);
    }
    QByteArray errorLog() const
    {
        QFile log(QDir(m_dir.path()).filePath("logs/error.log"));
        return log.open(QIODevice::ReadOnly) ? log.readAll() : QByteArray();
    }

private:
    QTemporaryDir m_dir;
    QProcess m_process;
    quint16 m_port = 0;
};

} // namespace testsupport
