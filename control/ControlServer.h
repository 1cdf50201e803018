#pragma once

// The remote control: JSON over HTTP under /api/v1 (cuts, channels, overlays, volumes, outputs,
// schedules, the status and a program snapshot) and a WebSocket of events at /api/v1/events, for
// button panels, a second computer and scripts. It drives the engine through the Engine API only.
//
// Owns: the listening socket, where each connection's request head is read first (its size,
// token, path and method; a refusal is answered there before any body is taken), then its body;
// the command's dispatch (ControlDispatch), the event stream (ControlEvents), and the snapshot
// requests waiting for the next program picture. One request per connection; HTTP/1.1 and the
// WebSocket are spoken here (HttpWire, EventSocket), on Qt Network alone.
//
// Threads: the GUI thread (the engine's) only. Every request is answered in one pass through
// the event loop, except snapshots, which wait for the next program picture (at most two
// seconds). Nothing waits on a decoder or an encoder.
//
// Emits nothing: what happens goes to the event clients as JSON ("channel", "cut", "stream",
// "outputsStarted", "outputsStopped", "outputsFailed", "schedule", "levels" ten times a
// second ...).

#include "control/ControlRequests.h"
#include "engine/EngineTypes.h"
#include "media/FrameToken.h"

#include <QByteArray>
#include <QDeadlineTimer>
#include <QHash>
#include <QHostAddress>
#include <QList>
#include <QObject>
#include <QPointer>
#include <memory>

class QTcpSocket;
class QTimer;

namespace selvane {

class Engine;

namespace control {
class ControlDispatch;
class ControlEvents;
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
    void onProgramFrame(const FrameTokenPtr &frame);
    void expireSnapshots();

    QPointer<Engine> m_engine;
    std::unique_ptr<control::ControlDispatch> m_dispatch;
    control::ControlEvents *m_events = nullptr;
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

    struct SnapshotWait
    {
        QPointer<QTcpSocket> socket;
        QDeadlineTimer deadline;
    };
    QList<SnapshotWait> m_snapshots;
    QTimer *m_snapshotTimer = nullptr;
};

} // namespace selvane
