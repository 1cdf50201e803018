#include "control/WebFiles.h"

#include <QFile>
#include <QUrl>

namespace selvane::control {

namespace {

QByteArray typeOf(QByteArrayView name)
{
    if (name.endsWith(".html"))
        return "text/html; charset=utf-8";
    if (name.endsWith(".js"))
        return "text/javascript; charset=utf-8";
    if (name.endsWith(".css"))
        return "text/css; charset=utf-8";
    if (name.endsWith(".svg"))
        return "image/svg+xml";
    return {};
}

bool plainName(QByteArrayView name)
{
    if (name.isEmpty() || name.size() > 64 || name.front() == '.')
        return false;
    for (const char c : name)
        if (!((c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') ||
              c == '-' || c == '_' || c == '.'))
            return false;
    return true;
}

// "http://host:port" -> "host:port", with the scheme's own port left out as a Host header
// leaves it out.
QByteArray authorityOf(QByteArrayView origin)
{
    const QUrl url(QString::fromLatin1(origin));
    if (!url.isValid() || url.host().isEmpty())
        return {};
    const int standard = url.scheme() == QLatin1String("https") ? 443 : 80;
    QByteArray host = QUrl::toAce(url.host());
    if (url.host().contains(':'))
        host = '[' + url.host().toLatin1() + ']';
    const int port = url.port(standard);
    return port == standard ? host.toLower() : host.toLower() + ':' + QByteArray::number(port);
}

QByteArray hostHeaderAuthority(QByteArrayView host)
{
    QByteArray value = host.trimmed().toByteArray().toLower();
    if (value.endsWith(":80"))
        value.chop(3);
    return value;
}

} // namespace

std::optional<Reply> webFile(QByteArrayView method, QByteArrayView path)
{
    if (method != "GET" && method != "HEAD")
        return std::nullopt;
    const qsizetype query = path.indexOf('?');
    if (query >= 0)
        path = path.first(query);
    if (!path.startsWith('/') || path.startsWith("/api/"))
        return std::nullopt;
    QByteArrayView name = path.sliced(1);
    if (name.isEmpty())
        name = "index.html";
    if (!plainName(name) || typeOf(name).isEmpty())
        return std::nullopt;
    QFile file(QStringLiteral(":/web/") + QString::fromLatin1(name));
    if (!file.open(QIODevice::ReadOnly))
        return std::nullopt;
    Reply reply(200, method == "HEAD" ? QByteArray() : file.readAll(), typeOf(name));
    return reply;
}

Refusal checkOrigin(const RequestHead &head)
{
    const QByteArray site = head.header("Sec-Fetch-Site").trimmed().toLower();
    if (site == "cross-site" || site == "same-site")
        return {403, QStringLiteral("requests from another site's page are refused"), {}};
    const QByteArray origin = head.header("Origin").trimmed();
    if (origin.isNull())
        return {};
    const QByteArray from = authorityOf(origin);
    if (from.isEmpty() || from != hostHeaderAuthority(head.header("Host")))
        return {403, QStringLiteral("requests from another site's page are refused"), {}};
    return {};
}

} // namespace selvane::control
