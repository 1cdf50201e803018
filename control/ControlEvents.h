#pragma once

// The remote control's event stream: every client of /api/v1/events gets a "hello" with the
// status, then what happens as it happens ("channel", "channelError", "cut", "programSize",
// "outputsStarted", "outputsStopped", "outputsFailed", "stream", "schedule", "scheduleClip",
// "overlays" when they changed) and the audio levels ten times a second.
//
// Owns: the event clients (EventSocket). GUI thread (the engine's). A client that reads nothing
// is let go once a megabyte waits for it, rather than holding memory without end.

#include "engine/EngineTypes.h"

#include <QList>
#include <QObject>

class QJsonObject;
class QTimer;

namespace selvane {
class Engine;
}

namespace selvane::control {

class EventSocket;

class ControlEvents : public QObject
{
    Q_OBJECT

public:
    static constexpr int kMaxClients = 16;

    ControlEvents(Engine &engine, QObject *parent = nullptr);
    ~ControlEvents() override;

    // A new client, its handshake answered: it gets the hello at once.
    void add(EventSocket *client);
    int clientCount() const { return int(m_clients.size()); }
    void broadcast(const QJsonObject &event);
    // Every client goes (the show is ending).
    void closeAll();

private:
    void tick();

    Engine &m_engine;
    QList<EventSocket *> m_clients;
    QTimer *m_tickTimer = nullptr;
    bool m_overlaysDirty = false;
};

} // namespace selvane::control
