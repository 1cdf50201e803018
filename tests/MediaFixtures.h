#pragma once

// Test media made at test time with the ffmpeg CLI, and a free loopback port.

#include <QDir>
#include <QFile>
#include <QProcess>
#include <QStringList>
#include <QTcpServer>

namespace testsupport {

// Runs `ffmpeg -hide_banner -loglevel error -y ARGS`; true on success. The output of a failed
// run is returned in `log`.
inline bool runFfmpeg(const QStringList &args, QByteArray *log = nullptr, int timeoutMs = 120000)
{
    QProcess process;
    process.setProcessChannelMode(QProcess::MergedChannels);
    process.start("ffmpeg", QStringList{"-hide_banner", "-loglevel", "error", "-nostdin", "-y"} + args);
    if (!process.waitForStarted(10000))
        return false;
    const bool finished = process.waitForFinished(timeoutMs);
    if (log)
        *log = process.readAll();
    if (!finished) {
        process.kill();
        process.waitForFinished(2000);
        return false;
    }
    return process.exitStatus() == QProcess::NormalExit && process.exitCode() == 0;
}

// A clip from lavfi test sources: `video` and optional `audio` filter graphs, encoded with the
// given extra arguments (codec choices, metadata).
inline bool makeClip(const QString &path, const QString &video, const QString &audio,
                     double seconds, const QStringList &encode, QByteArray *log = nullptr)
{
    QStringList args;
    if (!video.isEmpty())
        args << "-f" << "lavfi" << "-i" << video;
    if (!audio.isEmpty())
        args << "-f" << "lavfi" << "-i" << audio;
    args << "-t" << QString::number(seconds) << encode << path;
    return runFfmpeg(args, log);
}

inline quint16 freeTcpPort()
{
    QTcpServer server;
    if (!server.listen(QHostAddress::LocalHost, 0))
        return 0;
    const quint16 port = server.serverPort();
    server.close();
    return port;
}

// Keeps the first `fraction` of a file.
inline bool truncateCopy(const QString &from, const QString &to, double fraction)
{
    QFile in(from);
    QFile out(to);
    if (!in.open(QIODevice::ReadOnly) || !out.open(QIODevice::WriteOnly))
        return false;
    const QByteArray data = in.readAll();
    return out.write(data.left(qsizetype(data.size() * fraction))) > 0;
}

// Inverts every `step`-th byte after `skip` bytes.
inline bool bitFlipCopy(const QString &from, const QString &to, qsizetype skip, qsizetype step)
{
    QFile in(from);
    QFile out(to);
    if (!in.open(QIODevice::ReadOnly) || !out.open(QIODevice::WriteOnly))
        return false;
    QByteArray data = in.readAll();
    for (qsizetype i = skip; i < data.size(); i += step)
        data[i] = char(~data[i]);
    return out.write(data) == data.size();
}

} // namespace testsupport
