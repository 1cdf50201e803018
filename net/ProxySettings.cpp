#include "net/ProxySettings.h"

#include <QSettings>
#include <QUrl>

#include <mutex>

namespace selvane::proxy {

namespace {

std::mutex g_rewriterMutex;
TcpUrlRewriter g_rewriter;
PublishRelayStarter g_relayStarter;

QString setting(const char *key)
{
    QSettings settings("Ostrel", "Selvane");
    return settings.value(key).toString().trimmed();
}

QString environmentProxy(std::initializer_list<const char *> names)
{
    for (const char *name : names) {
        const QString value = QString::fromLocal8Bit(qgetenv(name)).trimmed();
        if (!value.isEmpty())
            return value;
    }
    return {};
}

bool isSocksUrl(const QString &url) { return url.toLower().startsWith("socks"); }

QString hostPort(const QString &url)
{
    const QUrl parsed(url.contains("://") ? url : "socks5://" + url);
    if (parsed.host().isEmpty() || parsed.port() < 1)
        return {};
    return QStringLiteral("%1:%2").arg(parsed.host()).arg(parsed.port());
}

} // namespace

QString httpProxyUrl()
{
    const QString mode = setting("proxy_mode").toLower();
    if (mode == "off")
        return {};
    if (mode == "manual") {
        QString url = setting("proxy_http_url");
        if (url.isEmpty() && !isSocksUrl(setting("proxy_url")))
            url = setting("proxy_url");
        return url;
    }
    const QString env = environmentProxy({"https_proxy", "HTTPS_PROXY", "http_proxy", "HTTP_PROXY"});
    return isSocksUrl(env) ? QString() : env;
}

QString socksEndpoint()
{
    const QString mode = setting("proxy_mode").toLower();
    if (mode == "off")
        return {};
    if (mode == "manual") {
        QString url = setting("proxy_socks_url");
        if (url.isEmpty() && isSocksUrl(setting("proxy_url")))
            url = setting("proxy_url");
        return url.isEmpty() ? QString() : hostPort(url);
    }
    const QString env = environmentProxy({"all_proxy", "ALL_PROXY"});
    return isSocksUrl(env) ? hostPort(env) : QString();
}

void setTcpUrlRewriter(TcpUrlRewriter rewriter)
{
    std::lock_guard lock(g_rewriterMutex);
    g_rewriter = std::move(rewriter);
}

QString rewriteTcpCarriedUrl(const QString &address)
{
    TcpUrlRewriter rewriter;
    {
        std::lock_guard lock(g_rewriterMutex);
        rewriter = g_rewriter;
    }
    return rewriter ? rewriter(address) : address;
}

void setPublishRelayStarter(PublishRelayStarter starter)
{
    std::lock_guard lock(g_rewriterMutex);
    g_relayStarter = std::move(starter);
}

QString startPublishRelay(const QString &host, int port)
{
    PublishRelayStarter starter;
    {
        std::lock_guard lock(g_rewriterMutex);
        starter = g_relayStarter;
    }
    return starter ? starter(host, port) : QString();
}

} // namespace selvane::proxy
