#include "control/EventSocket.h"

#include "control/ControlRequests.h"
#include "control/HttpWire.h"

#include <QCryptographicHash>
#include <QTcpSocket>
#include <QtEndian>

namespace selvane::control {

namespace {

enum Opcode : quint8
{
    Continuation = 0x0,
    Text = 0x1,
    Binary = 0x2,
    Close = 0x8,
    Ping = 0x9,
    Pong = 0xA,
};

// Close codes.
constexpr quint16 kNormal = 1000;
constexpr quint16 kProtocolError = 1002;
constexpr quint16 kTooBig = 1009;

QByteArray closePayload(quint16 code)
{
    QByteArray payload(2, '\0');
    qToBigEndian(code, payload.data());
    return payload;
}

} // namespace

QByteArray EventSocket::acceptKey(const QByteArray &clientKey)
{
    static constexpr char kGuid[] = "258EAFA5-E914-47DA-95CA-C5AB0DC85B11";
    return QCryptographicHash::hash(clientKey.trimmed() + kGuid, QCryptographicHash::Sha1)
        .toBase64();
}

EventSocket *EventSocket::accept(QTcpSocket *socket, const RequestHead &head, qsizetype headBytes,
                                 QObject *parent)
{
    const QByteArray key = head.header("Sec-WebSocket-Key").trimmed();
    if (head.header("Sec-WebSocket-Version").trimmed() != "13") {
        Reply refusal = errorReply(426, QStringLiteral("WebSocket version 13 only"));
        refusal.extraHeaders = "Sec-WebSocket-Version: 13\r\n";
        writeReply(socket, refusal);
        return nullptr;
    }
    if (QByteArray::fromBase64(key).size() != 16) {
        writeReply(socket, errorReply(400, QStringLiteral("no valid Sec-WebSocket-Key")));
        return nullptr;
    }
    socket->read(headBytes); // the handshake's head, read by the gate so far only by a peek
    // A browser offers the stream's name beside its ticket and wants the name back.
    QByteArray protocol;
    for (const QByteArray &offered : head.header("Sec-WebSocket-Protocol").split(','))
        if (offered.trimmed() == kProtocolName)
            protocol = "Sec-WebSocket-Protocol: " + QByteArray(kProtocolName) + "\r\n";
    socket->write("HTTP/1.1 101 Switching Protocols\r\nUpgrade: websocket\r\n"
                  "Connection: Upgrade\r\nSec-WebSocket-Accept: " +
                  acceptKey(key) + "\r\n" + protocol + "\r\n");
    return new EventSocket(socket, parent);
}

EventSocket::EventSocket(QTcpSocket *socket, QObject *parent) : QObject(parent), m_socket(socket)
{
    socket->setParent(this);
    connect(socket, &QTcpSocket::readyRead, this, &EventSocket::readFrames);
    connect(socket, &QTcpSocket::disconnected, this, &EventSocket::finish);
    if (socket->bytesAvailable() > 0)
        readFrames();
}

EventSocket::~EventSocket()
{
    if (m_socket)
        m_socket->disconnect(this);
}

qint64 EventSocket::unsentBytes() const
{
    return m_socket ? m_socket->bytesToWrite() : 0;
}

void EventSocket::sendText(const QByteArray &utf8)
{
    if (!m_closing && !m_finished)
        sendFrame(Text, utf8);
}

void EventSocket::abort()
{
    if (m_socket)
        m_socket->abort();
    finish();
}

void EventSocket::sendFrame(quint8 opcode, const QByteArray &payload)
{
    // Server frames are whole (FIN set) and never masked.
    QByteArray frame;
    frame.reserve(payload.size() + 10);
    frame.append(char(0x80 | opcode));
    const qint64 size = payload.size();
    if (size < 126) {
        frame.append(char(size));
    } else if (size <= 0xFFFF) {
        frame.append(char(126));
        char length[2];
        qToBigEndian(quint16(size), length);
        frame.append(length, 2);
    } else {
        frame.append(char(127));
        char length[8];
        qToBigEndian(quint64(size), length);
        frame.append(length, 8);
    }
    m_socket->write(frame + payload);
}

void EventSocket::readFrames()
{
    m_received += m_socket->readAll();
    for (;;) {
        if (m_received.size() < 2)
            return;
        const auto byte = [this](qsizetype i) {
            return quint8(m_received.at(i));
        };
        const bool fin = byte(0) & 0x80;
        const quint8 opcode = byte(0) & 0x0F;
        const bool masked = byte(1) & 0x80;
        qint64 length = byte(1) & 0x7F;
        qsizetype at = 2;
        if (length == 126) {
            if (m_received.size() < 4)
                return;
            length = qFromBigEndian<quint16>(m_received.constData() + 2);
            at = 4;
        } else if (length == 127) {
            if (m_received.size() < 10)
                return;
            const quint64 big = qFromBigEndian<quint64>(m_received.constData() + 2);
            length =
                big > quint64(kMaxIncomingFrameBytes) ? kMaxIncomingFrameBytes + 1 : qint64(big);
            at = 10;
        }
        const bool control = opcode & 0x08;
        // Clients mask every frame; control frames are short and whole; the opcode is known.
        if (!masked || (control && (!fin || length > 125)) ||
            (opcode > Binary && opcode != Close && opcode != Ping && opcode != Pong)) {
            sendFrame(Close, closePayload(kProtocolError));
            m_closing = true;
            m_socket->disconnectFromHost();
            return;
        }
        if (length > kMaxIncomingFrameBytes) {
            sendFrame(Close, closePayload(kTooBig));
            m_closing = true;
            m_socket->disconnectFromHost();
            return;
        }
        if (m_received.size() < at + 4 + length)
            return;
        const QByteArray mask = m_received.mid(at, 4);
        QByteArray payload = m_received.mid(at + 4, length);
        for (qsizetype i = 0; i < payload.size(); ++i)
            payload[i] = char(payload[i] ^ mask[i % 4]);
        m_received.remove(0, at + 4 + length);
        switch (opcode) {
        case Ping:
            sendFrame(Pong, payload);
            break;
        case Close:
            if (!m_closing)
                sendFrame(Close, payload.size() >= 2 ? payload.left(2) : closePayload(kNormal));
            m_closing = true;
            m_socket->disconnectFromHost();
            return;
        default:
            break; // the stream is one way: what a client says is read and let go
        }
    }
}

void EventSocket::finish()
{
    if (m_finished)
        return;
    m_finished = true;
    emit closed();
}

} // namespace selvane::control
