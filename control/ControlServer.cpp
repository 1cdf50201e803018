#include "control/ControlServer.h"

#include "control/ControlDispatch.h"
#include "control/ControlEvents.h"
#include "control/ControlRequests.h"
#include "control/ControlToken.h"
#include "control/EventSocket.h"
#include "control/HttpWire.h"
#include "control/PanelPictures.h"
#include "control/WebFiles.h"
#include "engine/Engine.h"

#include <QDebug>
#include <QTcpServer>
#include <QTcpSocket>
#include <QTimer>
#include <algorithm>
#include <utility>

namespace selvane {

using namespace control;

namespace {

constexpr int kMaxConnections = 64;
constexpr int kHeadTimeoutMs = 10000;
constexpr int kConnectionLifetimeMs = 30000;
constexpr int kDrainMs = 2000;
constexpr qint64 kMaxDrainBytes = 16 * 1024 * 1024;

// Where a connection is: its head being read, its body being read, answered (what still comes
// is read and dropped), or an event client.
enum ConnectionState
{
    ReadingHead = 0,
    Draining = 1,
    ReadingBody = 2,
    EventClient = 3,
};
constexpr char kState[] = "selvaneControlState";
constexpr char kDrained[] = "selvaneControlDrained";
constexpr char kDrainLimit[] = "selvaneControlDrainLimit";

} // namespace

// The listening socket: every new connection goes to the control server's gate first.
class ControlServer::Gate : public QTcpServer
{
public:
    Gate(ControlServer *owner, QObject *parent) : QTcpServer(parent), m_owner(owner) {}

protected:
    void incomingConnection(qintptr handle) override { m_owner->accept(handle); }

private:
    ControlServer *m_owner;
};

ControlServer::ControlServer(Engine *engine, QObject *parent) : QObject(parent), m_engine(engine)
{
    if (!engine)
        return;
    m_dispatch = std::make_unique<ControlDispatch>(*engine);
    m_events = new ControlEvents(*engine, this);
    m_pictures = new PanelPictures(*engine, this);
    connect(engine, &QObject::destroyed, this, &ControlServer::close);
}

ControlServer::~ControlServer()
{
    close();
}

bool ControlServer::listen(const QHostAddress &address, quint16 port, QString *error)
{
    Token token;
    if (!loadToken(&token, error))
        return false;
    m_token = token.value;
    m_tokenFile = token.file;
    m_closed = false;
    if (!m_gate)
        m_gate = new Gate(this, this);
    if (!m_gate->listen(address, port)) {
        *error = QStringLiteral("cannot listen on %1 port %2: %3")
                     .arg(address.toString())
                     .arg(port)
                     .arg(m_gate->errorString());
        return false;
    }
    m_address = address;
    return true;
}

void ControlServer::close()
{
    m_closed = true;
    if (m_gate)
        m_gate->close();
    if (m_pictures)
        m_pictures->closeAll();
    m_pending.clear();
    if (m_events)
        m_events->closeAll();
}

bool ControlServer::isListening() const
{
    return m_gate && m_gate->isListening();
}

quint16 ControlServer::port() const
{
    return m_gate ? m_gate->serverPort() : 0;
}

QString ControlServer::startLine() const
{
    const QString host = m_address.protocol() == QAbstractSocket::IPv6Protocol
                             ? QStringLiteral("[%1]").arg(m_address.toString())
                             : m_address.toString();
    const QString where = m_tokenFile.isEmpty() ? QStringLiteral("token from SELVANE_CONTROL_TOKEN")
                                                : QStringLiteral("token in %1").arg(m_tokenFile);
    return QStringLiteral("control: listening on http://%1:%2/api/v1 (%3)")
        .arg(host)
        .arg(port())
        .arg(where);
}

// ---- the gate ----

void ControlServer::accept(qintptr handle)
{
    auto *socket = new QTcpSocket(this);
    if (!socket->setSocketDescriptor(handle)) {
        delete socket;
        return;
    }
    ++m_connections;
    connect(socket, &QObject::destroyed, this, [this] { --m_connections; });
    connect(socket, &QTcpSocket::disconnected, socket, &QObject::deleteLater);
    socket->setProperty(kState, ReadingHead);
    if (m_closed || m_connections > kMaxConnections) {
        refuseAtGate(socket, 503, QStringLiteral("too many connections"));
        return;
    }
    connect(socket, &QTcpSocket::readyRead, this, [this, socket] { inspect(socket); });
    QTimer::singleShot(kHeadTimeoutMs, socket, [this, socket] {
        if (socket->property(kState).toInt() == ReadingHead)
            refuseAtGate(socket, 408, QStringLiteral("the request head did not come in time"));
    });
    // No request takes longer; the event sockets are the exception.
    QTimer::singleShot(kConnectionLifetimeMs, socket, [socket] {
        if (socket->property(kState).toInt() != EventClient)
            socket->abort();
    });
}

void ControlServer::inspect(QTcpSocket *socket)
{
    const int state = socket->property(kState).toInt();
    if (state == Draining) {
        const qint64 drained = socket->property(kDrained).toLongLong() + socket->readAll().size();
        socket->setProperty(kDrained, drained);
        if (drained >= socket->property(kDrainLimit).toLongLong())
            socket->disconnectFromHost();
        return;
    }
    if (state == ReadingBody) {
        readBody(socket);
        return;
    }
    if (state != ReadingHead)
        return;
    const QByteArray received = socket->peek(kMaxHeadBytes);
    const HeadScan scan = scanHead(received);
    if (scan.state == HeadScan::NeedMore)
        return;
    if (scan.state == HeadScan::Refused) {
        refuseAtGate(socket, scan.refusal.status, scan.refusal.message, {}, kMaxDrainBytes);
        return;
    }
    const RequestHead &head = scan.head;
    const qint64 bodyToDrain = scan.headBytes + std::min(head.contentLength, kMaxDrainBytes);
    // The web panel's own files need no token: the page signs in itself.
    if (const std::optional<Reply> file = webFile(head.method, head.path)) {
        answerAtGate(socket, *file, bodyToDrain);
        return;
    }
    if (const qint64 lockedMs = m_guard.lockedForMs(socket->peerAddress()); lockedMs > 0) {
        const QByteArray retry = QByteArray::number((lockedMs + 999) / 1000);
        Reply refusal = errorReply(
            429, QStringLiteral("too many wrong tokens from this address; try again in %1 s")
                     .arg(QString::fromLatin1(retry)));
        refusal.extraHeaders = "Retry-After: " + retry + "\r\n";
        answerAtGate(socket, refusal, bodyToDrain);
        return;
    }
    if (const Refusal origin = checkOrigin(head); !origin.ok()) {
        refuseAtGate(socket, origin.status, origin.message, {}, bodyToDrain);
        return;
    }
    // A browser's event stream comes with a ticket in place of the token (see SignInGuard.h).
    bool ticketed = false;
    if (head.webSocket) {
        const QByteArray ticket = offeredTicket(head.header("Sec-WebSocket-Protocol"));
        if (!ticket.isEmpty() && !(ticketed = m_tickets.redeem(ticket))) {
            signInFailed(socket);
            refuseAtGate(socket, 401, QStringLiteral("the event ticket is unknown, used or old"),
                         {}, bodyToDrain);
            return;
        }
    }
    const Refusal admitted = admitHead(head, m_token, ticketed);
    if (!admitted.ok()) {
        if (admitted.status == 401 && !head.header("Authorization").trimmed().isEmpty())
            signInFailed(socket);
        refuseAtGate(socket, admitted.status, admitted.message, admitted.allow, bodyToDrain);
        return;
    }
    if (!m_engine || m_closed) {
        refuseAtGate(socket, 503, QStringLiteral("the show is ending"), {}, bodyToDrain);
        return;
    }
    if (head.webSocket) {
        if (m_events->clientCount() >= ControlEvents::kMaxClients) {
            refuseAtGate(socket, 503, QStringLiteral("too many event clients"));
            return;
        }
        disconnect(socket, &QTcpSocket::readyRead, this, nullptr);
        disconnect(socket, &QTcpSocket::disconnected, socket, &QObject::deleteLater);
        socket->setProperty(kState, EventClient);
        if (EventSocket *client = EventSocket::accept(socket, head, scan.headBytes, this))
            m_events->add(client);
        else
            connect(socket, &QTcpSocket::disconnected, socket, &QObject::deleteLater);
        return;
    }
    // The body follows the head; the request is answered once all of it is here.
    socket->setProperty(kState, ReadingBody);
    m_pending.insert(socket, {head, scan.headBytes});
    connect(socket, &QObject::destroyed, this, [this, socket] { m_pending.remove(socket); });
    if (head.expectContinue)
        socket->write("HTTP/1.1 100 Continue\r\n\r\n");
    readBody(socket);
}

void ControlServer::readBody(QTcpSocket *socket)
{
    const auto found = m_pending.constFind(socket);
    if (found == m_pending.cend())
        return;
    const qint64 total = found->headBytes + found->head.contentLength;
    if (socket->bytesAvailable() < total)
        return;
    const PendingRequest pending = *found;
    m_pending.remove(socket);
    socket->read(pending.headBytes);
    const QByteArray body = socket->read(pending.head.contentLength);
    answer(pending.head, body, socket);
}

void ControlServer::refuseAtGate(QTcpSocket *socket, int status, const QString &message,
                                 const QByteArray &allow, qint64 bodyToDrain)
{
    Reply reply = errorReply(status, message);
    reply.allow = allow;
    answerAtGate(socket, reply, bodyToDrain);
}

void ControlServer::answerAtGate(QTcpSocket *socket, const Reply &reply, qint64 bodyToDrain)
{
    socket->setProperty(kState, Draining);
    // What the client still sends is read and dropped, so that closing does not reset the
    // connection before the answer is read.
    socket->setProperty(kDrained, socket->readAll().size());
    socket->setProperty(kDrainLimit, bodyToDrain);
    if (socket->property(kDrained).toLongLong() >= bodyToDrain) {
        writeReply(socket, reply);
        return;
    }
    writeReply(socket, reply, false);
    QTimer::singleShot(kDrainMs, socket, [socket] { socket->disconnectFromHost(); });
}

// ---- requests ----

void ControlServer::answer(const RequestHead &head, const QByteArray &body, QTcpSocket *socket)
{
    socket->setProperty(kState, Draining); // one request per connection
    socket->setProperty(kDrained, 0);
    socket->setProperty(kDrainLimit, 0);
    const ParsedRequest parsed = parseRequest(head.method, head.path, head.headers, body, m_token);
    Reply reply;
    if (!parsed.refusal.ok()) {
        reply = errorReply(parsed.refusal.status, parsed.refusal.message);
        reply.allow = parsed.refusal.allow;
    } else if (!m_engine || m_closed) {
        reply = errorReply(503, QStringLiteral("the show is ending"));
    } else if (parsed.command.command == Command::EventTicket) {
        reply = okReply({{"ticket", QString::fromLatin1(m_tickets.issue())},
                         {"expiresInMs", EventTickets::kLifetimeMs}});
    } else {
        reply = m_dispatch->execute(parsed.command);
    }
    if (reply.deferred) {
        // A snapshot: answered with its source's next picture.
        const ControlCommand &c = parsed.command;
        m_pictures->request(
            socket, c.command == Command::ChannelSnapshot ? c.channel : PanelPictures::kProgram);
        return;
    }
    writeReply(socket, reply);
}

void ControlServer::signInFailed(QTcpSocket *socket)
{
    const QHostAddress from = socket->peerAddress();
    if (m_guard.failed(from))
        qWarning().noquote() << QStringLiteral(
                                    "control: %1 wrong tokens from %2 within a minute; its "
                                    "requests are refused for a minute")
                                    .arg(SignInGuard::kMaxFailures)
                                    .arg(from.toString());
}

} // namespace selvane
