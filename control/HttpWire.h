#pragma once

// The wire form of the remote control's answers: one HTTP/1.1 response a connection, with its
// status, JSON (or another) body and the headers every answer carries. Plain values and
// functions; the socket calls run on the GUI thread.

#include <QByteArray>
#include <QJsonObject>
#include <QString>

class QTcpSocket;

namespace selvane::control {

struct Reply
{
    Reply(int code = 200, QByteArray content = {}, QByteArray mime = "application/json")
        : status(code), body(std::move(content)), type(std::move(mime))
    {
    }
    int status = 200;
    QByteArray body;
    QByteArray type = "application/json";
    QByteArray allow;        // 405: the methods the path takes
    QByteArray extraHeaders; // whole header lines, each ending in CRLF
    bool deferred = false;   // answered later (a snapshot waits for its picture)
};

QByteArray jsonBytes(const QJsonObject &object);
// {"ok": true, ...} with the object's fields.
Reply okReply(QJsonObject object = {}, int status = 200);
// {"error": message, "status": status}.
Reply errorReply(int status, const QString &message);
QByteArray reasonPhrase(int status);
// Header lines every answer carries: a strict content policy (the web panel's own scripts,
// styles and pictures, connections to this server only), no sniffing of types, no referrer,
// no framing.
QByteArray browserSafetyHeaders();

// Writes the whole response; closes the connection once it is out unless told not to.
void writeReply(QTcpSocket *socket, const Reply &reply, bool close = true);

} // namespace selvane::control
