#include "control/HttpWire.h"

#include <QJsonDocument>
#include <QTcpSocket>

namespace selvane::control {

QByteArray jsonBytes(const QJsonObject &object)
{
    return QJsonDocument(object).toJson(QJsonDocument::Compact);
}

Reply okReply(QJsonObject object, int status)
{
    object.insert("ok", true);
    return {status, jsonBytes(object)};
}

Reply errorReply(int status, const QString &message)
{
    return {status, jsonBytes({{"error", message}, {"status", status}})};
}

QByteArray reasonPhrase(int status)
{
    switch (status) {
    case 200:
        return "OK";
    case 202:
        return "Accepted";
    case 400:
        return "Bad Request";
    case 401:
        return "Unauthorized";
    case 403:
        return "Forbidden";
    case 404:
        return "Not Found";
    case 405:
        return "Method Not Allowed";
    case 408:
        return "Request Timeout";
    case 409:
        return "Conflict";
    case 411:
        return "Length Required";
    case 413:
        return "Payload Too Large";
    case 414:
        return "URI Too Long";
    case 426:
        return "Upgrade Required";
    case 429:
        return "Too Many Requests";
    case 431:
        return "Request Header Fields Too Large";
    case 503:
        return "Service Unavailable";
    default:
        return "Error";
    }
}

QByteArray browserSafetyHeaders()
{
    return "Content-Security-Policy: default-src 'none'; script-src 'self'; style-src 'self'; "
           "img-src 'self' blob: data:; connect-src 'self'; base-uri 'none'; "
           "form-action 'none'; frame-ancestors 'none'\r\n"
           "X-Content-Type-Options: nosniff\r\n"
           "Referrer-Policy: no-referrer\r\n"
           "X-Frame-Options: DENY\r\n"
           "Cross-Origin-Resource-Policy: same-origin\r\n";
}

void writeReply(QTcpSocket *socket, const Reply &reply, bool close)
{
    QByteArray out = "HTTP/1.1 " + QByteArray::number(reply.status) + ' ' +
                     reasonPhrase(reply.status) + "\r\nContent-Type: " + reply.type +
                     "\r\nContent-Length: " + QByteArray::number(reply.body.size()) +
                     "\r\nConnection: close\r\nCache-Control: no-store\r\n";
    if (!reply.allow.isEmpty())
        out += "Allow: " + reply.allow + "\r\n";
    if (reply.status == 401)
        out += "WWW-Authenticate: Bearer\r\n";
    out += browserSafetyHeaders();
    out += reply.extraHeaders;
    socket->write(out + "\r\n" + reply.body);
    if (close)
        socket->disconnectFromHost();
}

} // namespace selvane::control
