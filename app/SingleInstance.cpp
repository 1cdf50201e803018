#include "app/SingleInstance.h"

#include <QDebug>
#include <QDir>
#include <QLocalServer>
#include <QLocalSocket>
#include <QStandardPaths>

#ifndef _WIN32
#include <unistd.h>
#endif

namespace selvane {

QString singleInstanceServerName()
{
#ifdef _WIN32
    return QString::fromLatin1(kSingleInstanceName);
#else
    const QString runtimeDir = QStandardPaths::writableLocation(QStandardPaths::RuntimeLocation);
    if (!runtimeDir.isEmpty() && QDir(runtimeDir).exists())
        return QDir(runtimeDir).filePath(QString::fromLatin1(kSingleInstanceName));
    return QDir(QDir::tempPath())
        .filePath(QStringLiteral("%1-%2").arg(QLatin1String(kSingleInstanceName)).arg(getuid()));
#endif
}

bool probeRunningInstance(const QString &serverName, int timeoutMs)
{
    QLocalSocket probe;
    probe.connectToServer(serverName, QIODevice::ReadWrite);
    if (!probe.waitForConnected(timeoutMs))
        return false;
    probe.close();
    return true;
}

void connectWakeUpHandler(QLocalServer *server, std::function<void()> bringToFront)
{
    QObject::connect(server, &QLocalServer::newConnection, server,
                     [server, bringToFront = std::move(bringToFront)] {
                         QLocalSocket *connection = server->nextPendingConnection();
                         if (!connection)
                             return;
                         QObject::connect(connection, &QLocalSocket::disconnected, connection,
                                          &QObject::deleteLater);
                         qInfo().noquote() << "single instance: another start of Selvane brings "
                                              "this window to the front";
                         bringToFront();
                     });
}

} // namespace selvane
