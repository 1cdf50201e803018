#include "net/ProxyRoute.h"

#include <QDebug>
#include <QRegularExpression>
#include <QUrl>

namespace selvane::proxy {

namespace {

QString schemeOf(const QString &url)
{
    const qsizetype end = url.indexOf("://");
    return end > 0 ? url.left(end).trimmed().toLower() : QString();
}

bool isTls(const QString &scheme)
{
    return scheme == "rtmps" || scheme == "rtsps";
}

// The URL with its host and port replaced; user information, path and query stay as written.
QString withAuthority(const QString &url, const QString &hostPort)
{
    const qsizetype start = url.indexOf("://") + 3;
    static const QRegularExpression end("[/?#]");
    qsizetype stop = url.indexOf(end, start);
    if (stop < 0)
        stop = url.size();
    const QString authority = url.mid(start, stop - start);
    const qsizetype at = authority.lastIndexOf('@');
    return url.left(start) + (at >= 0 ? authority.left(at + 1) : QString()) + hostPort +
           url.mid(stop);
}

void relayLog(bool warning, const std::string &line)
{
    if (warning)
        qWarning().noquote() << QString::fromStdString(line);
    else
        qInfo().noquote() << QString::fromStdString(line);
}

} // namespace

bool isRelayable(const QString &url)
{
    static const QStringList schemes{"rtmp", "rtmps", "rtmpe", "rtmpt", "rtsp", "rtsps", "tcp"};
    return schemes.contains(schemeOf(url));
}

QString urlHost(const QString &url)
{
    return QUrl(url.trimmed()).host();
}

quint16 urlPort(const QString &url)
{
    const QString scheme = schemeOf(url);
    const int fallback = scheme == "rtmpt" ? 80 : SocksTcpRelay::defaultPort(scheme.toStdString());
    const int port = QUrl(url.trimmed()).port(fallback);
    return port > 0 && port <= 65535 ? quint16(port) : 0;
}

RelayRoute startRelay(const QString &url, const Server &socks)
{
    RelayRoute route;
    const QString host = urlHost(url);
    const quint16 port = urlPort(url);
    if (host.isEmpty() || port == 0) {
        route.failure = QStringLiteral("the URL names no host and port for the SOCKS proxy");
        return route;
    }
    auto relay = std::make_shared<SocksTcpRelay>(
        host.toStdString(), port,
        SocksTcpRelay::Proxy{socks.host.toStdString(), socks.port, socks.user.toStdString(),
                             socks.password.toStdString()},
        relayLog);
    if (relay->start() == 0) {
        route.failure = QStringLiteral("the local SOCKS relay could not listen on 127.0.0.1");
        return route;
    }
    return routeThrough(relay, url);
}

RelayRoute routeThrough(const std::shared_ptr<SocksTcpRelay> &relay, const QString &url)
{
    RelayRoute route;
    route.relay = relay;
    const QString scheme = schemeOf(url);
    const QString host = urlHost(url);
    // A TLS client sends no server name for an address, only for a name.
    const QString local = isTls(scheme) ? QStringLiteral("localhost") : QStringLiteral("127.0.0.1");
    route.url = withAuthority(url.trimmed(), local + ":" + QString::number(relay->localPort()));
    if (isTls(scheme))
        route.options << qMakePair(QByteArray("verifyhost"), host.toUtf8());
    if (scheme.startsWith("rtmp")) {
        // The RTMP connect parameters keep naming the real server, application and stream.
        QString base = url.trimmed();
        const qsizetype question = base.indexOf('?');
        const QString query = question >= 0 ? base.mid(question) : QString();
        if (question >= 0)
            base = base.left(question);
        const qsizetype pathStart = base.indexOf('/', base.indexOf("://") + 3);
        const qsizetype last = base.lastIndexOf('/');
        if (pathStart > 0 && last > pathStart) {
            route.options << qMakePair(QByteArray("rtmp_tcurl"), base.left(last).toUtf8())
                          << qMakePair(QByteArray("rtmp_app"),
                                       base.mid(pathStart + 1, last - pathStart - 1).toUtf8())
                          << qMakePair(QByteArray("rtmp_playpath"),
                                       (base.mid(last + 1) + query).toUtf8());
        } else if (pathStart > 0) {
            route.options << qMakePair(QByteArray("rtmp_tcurl"), base.toUtf8());
        }
    }
    return route;
}

QString relayFailureSince(const SocksTcpRelay &relay, std::uint64_t sinceSerial)
{
    const SocksTcpRelay::Outcome outcome = relay.lastOutcome();
    if (outcome.serial <= sinceSerial || outcome.failure == SocksTcpRelay::Failure::None)
        return {};
    return QString::fromStdString(outcome.text());
}

} // namespace selvane::proxy
