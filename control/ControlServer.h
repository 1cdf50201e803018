#pragma once

// The remote control: JSON over HTTP under /api/v1 (cuts, channels, overlays, volumes, outputs,
// schedules, the status, program and channel snapshots) and a WebSocket of events at
// /api/v1/events, for button panels, a second computer and scripts; and the web panel's files
// at /. It drives the engine through the Engine API only.
//
// Owns: the listening socket, where each connection's request head is read first (the panel's
// files are answered there; then the address's failed sign-ins, the origin, the size, token or
// event ticket, path and method; a refusal is answered before any body is taken), then its body;
// the command's dispatch (ControlDispatch), the event stream (ControlEvents), the pictures
// (PanelPictures), the failed sign-ins and the event tickets (SignInGuard). One request per
// connection; HTTP/1.1 and the WebSocket are spoken here (HttpWire, EventSocket), on Qt Network
// alone.
//
// Threads: the GUI thread (the engine's) only. Every request is answered in one pass through
// the event loop, except snapshots, which wait for their source's next picture (at most two
// seconds). Nothing waits on a decoder or an encoder.
//
// Emits nothing: what happens goes to the event clients as JSON ("channel", "cut", "stream",
// "outputsStarted", "outputsStopped", "outputsFailed", "schedule", "levels" ten times a
// second ...).

#include "control/ControlRequests.h"
#include "control/SignInGuard.h"
#include "engine/EngineTypes.h"

#include <QByteArray>
#include <QHash>
#include <QHostAddress>
#include <QList>
#include <QObject>
#include <QPointer>
#include <memory>

class QTcpSocket;

namespace selvane {

class Engine;

namespace control {
class ControlDispatch;
class ControlEvents;
class PanelPictures;
struct Reply;
} // namespace control

class ControlServer : public QObject
{
    Q_OBJECT

public:
    explicit ControlServer(Engine *engine, QObject *parent = nullptr);
    ~ControlServer() override;

    // Takes the token (see control/ControlToken.h) and listens; false with the reason.
    bool listen(const QHostAddress &address, quint16 port, QString *error);
    // Stops listening and closes every connection and event client (the show is ending).
    void close();
    bool isListening() const;
    quint16 port() const;
    // "control: listening on http://ADDRESS:PORT/api/v1 (token in FILE)"; never the token.
    QString startLine() const;

private:
    class Gate;

    void accept(qintptr handle);
    void inspect(QTcpSocket *socket);
    void readBody(QTcpSocket *socket);
    void answer(const control::RequestHead &head, const QByteArray &body, QTcpSocket *socket);
    void refuseAtGate(QTcpSocket *socket, int status, const QString &message,
                      const QByteArray &allow = {}, qint64 bodyToDrain = 0);
    // Answers before any body is taken, reading and dropping up to `bodyToDrain` bytes first.
    void answerAtGate(QTcpSocket *socket, const control::Reply &reply, qint64 bodyToDrain);
    // Wrong credentials from the socket's address; logged when that locks the address out.
    void signInFailed(QTcpSocket *socket);

    QPointer<Engine> m_engine;
    std::unique_ptr<control::ControlDispatch> m_dispatch;
    control::ControlEvents *m_events = nullptr;
    control::PanelPictures *m_pictures = nullptr;
    control::SignInGuard m_guard;
    control::EventTickets m_tickets;
    Gate *m_gate = nullptr;
    QByteArray m_token;
    QString m_tokenFile;
    QHostAddress m_address;
    bool m_closed = false;
    int m_connections = 0;

    // Requests whose head was admitted, waiting for the rest of their body.
    struct PendingRequest
    {
        control::RequestHead head;
        qsizetype headBytes = 0;
    };
    QHash<QTcpSocket *, PendingRequest> m_pending;
};

} // namespace selvane
