#pragma once

// The remote control: JSON over HTTP under /api/v1 (cuts, channels, overlays, volumes, outputs,
// schedules, the status and a program snapshot) and a WebSocket of events at /api/v1/events, for
// button panels, a second computer and scripts. It drives the engine through the Engine API only.
//
// Owns: the listening socket, where each connection's request head is read first (its size,
// token, path and method; a refusal is answered there before any body is taken), the HTTP
// server the admitted requests go on to, the WebSocket clients, and the snapshot requests
// waiting for the next program picture. One request per connection.
//
// Threads: the GUI thread (the engine's) only. Every request is answered in one pass through
// the event loop, except snapshots, which wait for the next program picture (at most two
// seconds). Nothing waits on a decoder or an encoder.
//
// Emits nothing: what happens goes to the event clients as JSON ("channel", "cut", "stream",
// "outputsStarted", "outputsStopped", "outputsFailed", "schedule", "levels" ten times a
// second ...).

#include "engine/EngineTypes.h"
#include "media/FrameToken.h"

#include <QByteArray>
#include <QDeadlineTimer>
#include <QHash>
#include <QHostAddress>
#include <QList>
#include <QObject>
#include <QPointer>
#include <optional>
#include <utility>

class QHttpServerRequest;
class QJsonObject;
class QTcpSocket;
class QTimer;
class QWebSocket;
class QWebSocketServer;

namespace selvane {

class Engine;

namespace control {
struct ControlCommand;
}

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
    // What POST /outputs/start uses for the fields a request leaves out (the show's own).

private:
    class Gate;
    class Http;

    struct Reply
    {
        Reply(int code = 200, QByteArray content = {}, QByteArray mime = "application/json")
            : status(code), body(std::move(content)), type(std::move(mime))
        {
        }
        int status = 200;
        QByteArray body;
        QByteArray type = "application/json";
        QByteArray allow;
        bool deferred = false; // answered later (a snapshot)
    };

    void accept(qintptr handle);
    void inspect(QTcpSocket *socket);
    void answer(const QHttpServerRequest &request, QTcpSocket *socket);
    Reply execute(const control::ControlCommand &command, QTcpSocket *socket);
    Reply startOutputs(const control::ControlCommand &command);
    Reply loadSchedule(const QByteArray &json);
    // Writes a whole response and (unless told not to) closes the connection once it is out.
    void writeRaw(QTcpSocket *socket, const Reply &reply, bool close = true);
    void refuseAtGate(QTcpSocket *socket, int status, const QString &message,
                      const QByteArray &allow = {}, qint64 bodyToDrain = 0);

    void onProgramFrame(const FrameTokenPtr &frame);
    void expireSnapshots();
    void onWebSocket();
    void broadcast(const QJsonObject &event);
    void tick();

    QPointer<Engine> m_engine;
    Gate *m_gate = nullptr;
    Http *m_http = nullptr;
    QWebSocketServer *m_webSockets = nullptr;
    QByteArray m_token;
    QString m_tokenFile;
    QHostAddress m_address;
    bool m_closed = false;
    int m_connections = 0;

    struct SnapshotWait
    {
        QPointer<QTcpSocket> socket;
        QDeadlineTimer deadline;
    };
    QList<SnapshotWait> m_snapshots;
    QTimer *m_snapshotTimer = nullptr;

    QList<QWebSocket *> m_clients;
    QHash<QWebSocket *, qint64> m_unsent; // bytes queued for a client and not yet written
    QTimer *m_tickTimer = nullptr;
    bool m_overlaysDirty = false;
    struct OverlayVolumes
    {
        float preview = 0.0f;
        float program = 1.0f;
    };
    QHash<int, OverlayVolumes> m_overlayVolumes;
};

} // namespace selvane
