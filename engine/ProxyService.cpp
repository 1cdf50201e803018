// The network proxy as the faces see it: its settings, what automatic mode finds on this system,
// and a test connection through it.

#include "engine/ProxyService.h"

#include "media/StoredSettings.h"
#include "net/ProxySettings.h"
#include "net/SecretMask.h"
#include "net/SocksTcpRelay.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QPointer>
#include <QThreadPool>
#include <QUrl>

namespace selvane {

ProxyStatus ProxyService::status()
{
    ProxyStatus status;
    StoredSettings settings;
    status.config.mode = proxy::modeName(proxy::mode());
    const QString single = settings.value("proxy_url").toString().trimmed();
    const bool singleIsSocks = single.toLower().startsWith("socks");
    status.config.httpUrl = settings.value("proxy_http_url").toString().trimmed();
    status.config.socksUrl = settings.value("proxy_socks_url").toString().trimmed();
    if (status.config.httpUrl.isEmpty() && !singleIsSocks)
        status.config.httpUrl = single;
    if (status.config.socksUrl.isEmpty() && singleIsSocks)
        status.config.socksUrl = single;
    const proxy::SystemProxy found = proxy::systemProxy();
    status.found = {found.source, maskUrl(found.http), maskUrl(found.https), maskUrl(found.socks),
                    found.noProxy};
    return status;
}

void ProxyService::setConfig(const ProxyConfig &config)
{
    StoredSettings settings;
    const QString mode = config.mode.toLower();
    settings.setValue("proxy_mode", mode == "manual" || mode == "off" ? mode : QString("auto"));
    settings.setValue("proxy_http_url", config.httpUrl.trimmed());
    settings.setValue("proxy_socks_url", config.socksUrl.trimmed());
    // The two keys above now say everything the single one said.
    settings.remove("proxy_url");
    settings.sync();
}

ProxyTestResult ProxyService::test(const ProxyConfig &config, const QString &hostPort,
                                   int timeoutMs)
{
    ProxyTestResult result;
    const QUrl target("tcp://" + hostPort.trimmed());
    const QString host = target.host();
    const int port = target.port();
    if (host.isEmpty() || port <= 0 || !target.path().isEmpty()) {
        result.failure = ProxyTestFailure::BadAddress;
        return result;
    }
    QString socksUrl;
    QString httpUrl;
    const QString mode = config.mode.toLower();
    if (mode == "manual") {
        socksUrl = config.socksUrl;
        httpUrl = config.httpUrl;
    } else if (mode != "off") {
        const proxy::SystemProxy found = proxy::systemProxy();
        socksUrl = found.socks;
        httpUrl = found.https.isEmpty() ? found.http : found.https;
    }
    const proxy::Server socks = proxy::parseServer(socksUrl, true);
    const proxy::Server http = proxy::parseServer(httpUrl, false);
    const proxy::Server &server = socks.isValid() ? socks : http;
    std::int64_t elapsed = 0;
    if (!server.isValid()) {
        result.route = "direct";
        QElapsedTimer timer;
        timer.start();
        const SocksTcpRelay::Probe probe =
            SocksTcpRelay::probe(host.toStdString(), quint16(port), timeoutMs);
        result.elapsedMs = timer.elapsed();
        switch (probe) {
        case SocksTcpRelay::Probe::Open:
            break;
        case SocksTcpRelay::Probe::Unresolved:
            result.failure = ProxyTestFailure::BadAddress;
            break;
        default:
            result.failure = ProxyTestFailure::Unreachable;
            break;
        }
        return result;
    }
    result.route = socks.isValid() ? "socks" : "http";
    result.proxy = server.endpoint();
    const SocksTcpRelay::Proxy p{server.host.toStdString(), server.port, server.user.toStdString(),
                                 server.password.toStdString()};
    const SocksTcpRelay::Outcome outcome =
        socks.isValid()
            ? SocksTcpRelay::testTunnel(p, host.toStdString(), quint16(port), timeoutMs, &elapsed)
            : SocksTcpRelay::testHttpConnect(p, host.toStdString(), quint16(port), timeoutMs,
                                             &elapsed);
    result.elapsedMs = elapsed;
    result.replyCode = outcome.replyCode;
    result.detail = QString::fromStdString(outcome.detail);
    using F = SocksTcpRelay::Failure;
    switch (outcome.failure) {
    case F::None:
        result.failure = ProxyTestFailure::None;
        break;
    case F::ProxyUnresolved:
        result.failure = ProxyTestFailure::ProxyNotFound;
        break;
    case F::ProxyUnreachable:
        result.failure = ProxyTestFailure::ProxyUnreachable;
        break;
    case F::ProxyTimeout:
    case F::Stopped:
        result.failure = ProxyTestFailure::ProxyTimeout;
        break;
    case F::ProxyClosed:
        result.failure = ProxyTestFailure::ProxyClosed;
        break;
    case F::NoAcceptableMethod:
        result.failure = ProxyTestFailure::AuthRequired;
        break;
    case F::AuthRefused:
        result.failure = ProxyTestFailure::AuthRefused;
        break;
    case F::ConnectRefused:
        result.failure = ProxyTestFailure::Refused;
        break;
    case F::BadReply:
        result.failure = ProxyTestFailure::BadReply;
        break;
    case F::BadDestination:
        result.failure = ProxyTestFailure::BadAddress;
        break;
    }
    return result;
}

void ProxyService::testAsync(const ProxyConfig &config, const QString &hostPort, int timeoutMs,
                             QObject *context, std::function<void(ProxyTestResult)> done)
{
    QPointer<QObject> receiver(context);
    QThreadPool::globalInstance()->start(
        [config, hostPort, timeoutMs, receiver, done = std::move(done)] {
            const ProxyTestResult result = test(config, hostPort, timeoutMs);
            QMetaObject::invokeMethod(
                qApp,
                [receiver, done, result] {
                    if (receiver)
                        done(result);
                },
                Qt::QueuedConnection);
        });
}

} // namespace selvane
