#pragma once

// One client of the event stream: the server side of a WebSocket (RFC 6455) on a connection the
// gate admitted. It answers the opening handshake, sends text messages, and reads what the client
// sends only as far as the protocol needs: pings are answered, a close is answered and ends the
// link, and anything else is read and dropped (the stream is one way), within a size limit.
//
// Owns: the socket it was given. GUI thread. Emits closed() once, when the link is over (the
// client closed, the socket went, or a frame broke the protocol).

#include <QByteArray>
#include <QObject>

class QTcpSocket;

namespace selvane::control {

struct RequestHead;

class EventSocket : public QObject
{
    Q_OBJECT

public:
    // The subprotocol a browser names beside its ticket (see SignInGuard.h).
    static constexpr char kProtocolName[] = "selvane-events";
    // The largest frame taken from a client; one larger ends the link.
    static constexpr qint64 kMaxIncomingFrameBytes = 64 * 1024;

    // Takes `socket`, whose request `head` (ending at `headBytes`) asks for the upgrade, and
    // answers the handshake. Null, with the status and reason of the refusal written to the
    // client, when the head is not a handshake this side speaks.
    static EventSocket *accept(QTcpSocket *socket, const RequestHead &head, qsizetype headBytes,
                               QObject *parent);
    ~EventSocket() override;

    // One text message (UTF-8), whole in one frame.
    void sendText(const QByteArray &utf8);
    // Bytes handed to the socket and not yet written to the network.
    qint64 unsentBytes() const;
    // Ends the link at once, without the closing handshake.
    void abort();

    // The value of Sec-WebSocket-Accept for a client's Sec-WebSocket-Key.
    static QByteArray acceptKey(const QByteArray &clientKey);

signals:
    void closed();

private:
    explicit EventSocket(QTcpSocket *socket, QObject *parent);
    void readFrames();
    void sendFrame(quint8 opcode, const QByteArray &payload);
    void finish();

    QTcpSocket *m_socket = nullptr;
    QByteArray m_received;
    bool m_closing = false;
    bool m_finished = false;
};

} // namespace selvane::control
