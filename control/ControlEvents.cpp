#include "control/ControlEvents.h"

#include "control/ControlStatus.h"
#include "control/EventSocket.h"
#include "control/HttpWire.h"
#include "engine/Engine.h"

#include <QJsonObject>
#include <QTimer>
#include <utility>

namespace selvane::control {

namespace {
constexpr qint64 kMaxUnsentBytes = 1024 * 1024;
constexpr int kTickMs = 100;
} // namespace

ControlEvents::ControlEvents(Engine &engine, QObject *parent) : QObject(parent), m_engine(engine)
{
    m_tickTimer = new QTimer(this);
    m_tickTimer->setInterval(kTickMs);
    connect(m_tickTimer, &QTimer::timeout, this, &ControlEvents::tick);
    connect(&engine, &Engine::channelStateChanged, this, [this](int channel, ChannelState state) {
        if (m_clients.isEmpty())
            return;
        const bool live = m_engine.stats().channels[std::size_t(channel)].live;
        broadcast({{"type", "channel"},
                   {"channel", channel + 1},
                   {"state", channelStateWord(state, live)}});
    });
    connect(&engine, &Engine::channelError, this,
            [this](int channel, SourceError error, const QString &detail) {
                broadcast({{"type", "channelError"},
                           {"channel", channel + 1},
                           {"error", sourceErrorLogText(error)},
                           {"detail", detail}});
            });
    connect(&engine, &Engine::channelEnded, this, [this](int channel) {
        broadcast({{"type", "channelEnded"}, {"channel", channel + 1}});
    });
    connect(&engine, &Engine::overlayError, this,
            [this](int id, SourceError error, const QString &detail) {
                broadcast({{"type", "overlayError"},
                           {"id", id},
                           {"error", sourceErrorLogText(error)},
                           {"detail", detail}});
            });
    connect(&engine, &Engine::overlaysChanged, this, [this] { m_overlaysDirty = true; });
    connect(&engine, &Engine::programChannelChanged, this, [this](int channel) {
        broadcast(
            {{"type", "cut"},
             {"channel", channel >= 0 ? QJsonValue(channel + 1) : QJsonValue(QJsonValue::Null)}});
    });
    // The production controls, whoever moved them; each event carries the whole state.
    const auto production = [this](const char *type) {
        return [this, type] {
            QJsonObject event = productionJson(m_engine);
            event.insert("type", QLatin1String(type));
            broadcast(event);
        };
    };
    connect(&engine, &Engine::previewChannelChanged, this, production("preview"));
    connect(&engine, &Engine::transitionChanged, this, production("transition"));
    connect(&engine, &Engine::transitionStarted, this, production("take"));
    connect(&engine, &Engine::tbarChanged, this, production("tbar"));
    connect(&engine, &Engine::fadeToBlackChanged, this, production("fadeToBlack"));
    connect(&engine, &Engine::stingerLoaded, this, production("stinger"));
    connect(&engine, &Engine::stingerFailed, this, production("stinger"));
    // A recording's disk is about to fill (or has room again).
    connect(&engine, &Engine::diskForecastChanged, this,
            [this](bool twin, int level, qint64 secondsLeft, const QString &path) {
                broadcast({{"type", "diskForecast"},
                           {"twin", twin},
                           {"level", level},
                           {"secondsLeft", secondsLeft},
                           {"path", path}});
            });
    // Failover: a channel that failed on air and what stands in, its return, the slate.
    connect(&engine, &Engine::failedOver, this, [this](int channel, const QString &standIn) {
        broadcast({{"type", "failover"}, {"channel", channel + 1}, {"standIn", standIn}});
    });
    connect(&engine, &Engine::returnedToAir, this, [this](int channel) {
        broadcast({{"type", "return"}, {"channel", channel + 1}});
    });
    connect(&engine, &Engine::slateChanged, this, [this](bool onAir) {
        broadcast({{"type", "slate"}, {"onAir", onAir}});
    });
    connect(&engine, &Engine::programSizeChanged, this, [this](QSize size, bool fallback) {
        broadcast({{"type", "programSize"},
                   {"width", size.width()},
                   {"height", size.height()},
                   {"fallback", fallback}});
    });
    connect(&engine, &Engine::outputsStarted, this, [this](QSize size) {
        if (m_clients.isEmpty())
            return;
        const OutputStats output = m_engine.stats().output;
        broadcast({{"type", "outputsStarted"},
                   {"width", size.width()},
                   {"height", size.height()},
                   {"file", output.recording ? output.file.path : QString()},
                   {"targets", int(output.targets.size())}});
    });
    connect(&engine, &Engine::outputsStopped, this, [this] {
        broadcast({{"type", "outputsStopped"}});
    });
    connect(&engine, &Engine::outputsFailed, this, [this](const Problem &problem) {
        broadcast({{"type", "outputsFailed"},
                   {"reason", problem.kind == ProblemKind::EightKNoHardwareEncoder
                                  ? "eightKNoHardwareEncoder"
                                  : "openFailed"},
                   {"message", problemText(problem, ProblemLanguage::English)}});
    });
    connect(&engine, &Engine::streamStatusChanged, this, [this](int index, const QString &status) {
        broadcast({{"type", "stream"}, {"target", index + 1}, {"status", status}});
    });
    connect(&engine, &Engine::scheduleRunningChanged, this, [this](bool running) {
        broadcast({{"type", "schedule"}, {"running", running}});
    });
    connect(&engine, &Engine::scheduleBaseClipChanged, this, [this](const QString &id, qint64 ms) {
        broadcast({{"type", "scheduleClip"}, {"id", id}, {"scheduleMs", ms}});
    });
}

ControlEvents::~ControlEvents()
{
    closeAll();
}

void ControlEvents::add(EventSocket *client)
{
    client->setParent(this);
    m_clients.append(client);
    connect(client, &EventSocket::closed, this, [this, client] {
        m_clients.removeOne(client);
        client->deleteLater();
        if (m_clients.isEmpty())
            m_tickTimer->stop();
    });
    client->sendText(jsonBytes({{"type", "hello"}, {"status", statusJson(m_engine)}}));
    if (!m_tickTimer->isActive()) {
        m_overlaysDirty = false;
        m_tickTimer->start();
    }
}

void ControlEvents::broadcast(const QJsonObject &event)
{
    if (m_clients.isEmpty())
        return;
    const QByteArray text = jsonBytes(event);
    for (EventSocket *client : QList<EventSocket *>(m_clients)) {
        if (client->unsentBytes() > kMaxUnsentBytes) {
            client->abort();
            continue;
        }
        client->sendText(text);
    }
}

void ControlEvents::closeAll()
{
    m_tickTimer->stop();
    for (EventSocket *client : std::exchange(m_clients, {})) {
        client->disconnect(this);
        client->abort();
        delete client;
    }
}

void ControlEvents::tick()
{
    const EngineStats stats = m_engine.stats();
    if (m_overlaysDirty) {
        m_overlaysDirty = false;
        QJsonObject event = overlaysJson(m_engine);
        event.insert("type", "overlays");
        broadcast(event);
    }
    broadcast(levelsJson(stats));
}

} // namespace selvane::control
