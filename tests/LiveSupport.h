#pragma once

// Live shows for the suites: ffmpeg senders that run in real time and start again when they end
// (or when a test kills them, as a publisher restarting), and a headless show with its control
// port, asked over HTTP with the bearer token and followed through its standard output.

#include "TestSupport.h"

#include <QJsonDocument>
#include <QJsonObject>
#include <QNetworkAccessManager>
#include <QNetworkReply>
#include <QSignalSpy>
#include <functional>

namespace testsupport {

// An ffmpeg sender in real time, started again whenever it ends (an SRT peer that went away, a
// listener not up yet), until stop() ends the whole process group.
class Publisher
{
public:
    ~Publisher() { stop(); }
    void start(const QStringList &ffmpegArguments)
    {
        m_process.start("setsid", QStringList{"bash", "-c",
                                              "while true; do ffmpeg -nostdin -v error \"$@\" "
                                              ">/dev/null 2>&1; sleep 0.3; done",
                                              "publisher"} +
                                      ffmpegArguments);
        m_process.waitForStarted(5000);
    }
    // Kills the running sender; the loop starts a new one, as a publisher that restarts.
    void restartSender()
    {
        QProcess::execute("pkill",
                          {"-KILL", "-P", QString::number(m_process.processId()), "ffmpeg"});
    }
    void stop()
    {
        if (m_process.state() == QProcess::NotRunning)
            return;
        ::kill(-pid_t(m_process.processId()), SIGKILL);
        m_process.waitForFinished(5000);
    }

private:
    QProcess m_process;
};

struct Answer
{
    int status = 0;
    QByteArray body;
    const QJsonObject json() const { return QJsonDocument::fromJson(body).object(); }
};

// A running headless show with the control port, its standard output kept line by line.
class RemoteShow
{
public:
    static constexpr const char *kToken = "test-token-4f1c9a7e2b";

    ~RemoteShow() { stop(); }

    bool start(const QString &binary, const QStringList &arguments, bool withToken = true)
    {
        m_port = freeTcpPort();
        QProcessEnvironment env = m_home.environment();
        if (withToken)
            env.insert("SELVANE_CONTROL_TOKEN", QString::fromLatin1(kToken));
        else
            env.remove("SELVANE_CONTROL_TOKEN");
        m_process.setProcessEnvironment(env);
        m_process.start(binary,
                        QStringList{"--headless", "--control-port", QString::number(m_port)} +
                            arguments);
        return m_process.waitForStarted() &&
               waitForLine([](const QString &line) { return line.startsWith("control: "); });
    }
    bool waitForLine(const std::function<bool(const QString &)> &wanted, int timeoutMs = 10000)
    {
        QElapsedTimer timer;
        timer.start();
        while (timer.elapsed() < timeoutMs) {
            m_out += m_process.readAllStandardOutput();
            for (const QByteArray &line : m_out.split('\n'))
                if (wanted(QString::fromUtf8(line)))
                    return true;
            if (m_process.state() != QProcess::Running)
                return false;
            m_process.waitForReadyRead(100);
        }
        return false;
    }
    // SIGTERM; the exit code, or -1 when the show did not end by itself.
    int stop()
    {
        if (m_process.state() == QProcess::NotRunning)
            return m_process.exitStatus() == QProcess::NormalExit ? m_process.exitCode() : -1;
        ::kill(pid_t(m_process.processId()), SIGTERM);
        if (!m_process.waitForFinished(20000)) {
            m_process.kill();
            m_process.waitForFinished(5000);
        }
        m_out += m_process.readAllStandardOutput();
        return m_process.exitStatus() == QProcess::NormalExit ? m_process.exitCode() : -1;
    }
    QByteArray output() const { return m_out; }
    // The log lines written to standard error so far.
    QByteArray errors()
    {
        m_err += m_process.readAllStandardError();
        return m_err;
    }
    QString url(const QString &path) const
    {
        return QStringLiteral("http://127.0.0.1:%1/api/v1/%2").arg(m_port).arg(path);
    }
    quint16 port() const { return m_port; }
    const IsolatedHome &home() const { return m_home; }

    Answer call(const QByteArray &method, const QString &path, const QByteArray &body = {},
                const QByteArray &token = kToken)
    {
        QNetworkRequest request(url(path));
        if (!token.isEmpty())
            request.setRawHeader("Authorization", "Bearer " + token);
        request.setHeader(QNetworkRequest::ContentTypeHeader, "application/json");
        QNetworkReply *reply = m_net.sendCustomRequest(request, method, body);
        QSignalSpy finished(reply, &QNetworkReply::finished);
        finished.wait(10000);
        Answer answer{reply->attribute(QNetworkRequest::HttpStatusCodeAttribute).toInt(),
                      reply->readAll()};
        reply->deleteLater();
        return answer;
    }
    Answer call(const QByteArray &method, const QString &path, const QJsonObject &body)
    {
        return call(method, path, QJsonDocument(body).toJson(QJsonDocument::Compact));
    }
    QJsonObject status() { return call("GET", "status").json(); }

private:
    IsolatedHome m_home;
    QProcess m_process;
    QByteArray m_out;
    QByteArray m_err;
    quint16 m_port = 0;
    QNetworkAccessManager m_net;
};

} // namespace testsupport
