#include "control/ControlServer.h"

#include "control/ControlRequests.h"
#include "control/ControlStatus.h"
#include "control/ControlToken.h"
#include "engine/Engine.h"

#include <QAbstractHttpServer>
#include <QBuffer>
#include <QFileInfo>
#include <QHttpServerRequest>
#include <QHttpServerResponder>
#include <QImage>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QTcpServer>
#include <QTcpSocket>
#include <QTimer>
#include <QWebSocket>
#include <QWebSocketServer>
#include <algorithm>
#include <utility>

namespace selvane {

using namespace control;

namespace {

constexpr int kMaxConnections = 64;
constexpr int kMaxEventClients = 16;
constexpr int kMaxSnapshotWaits = 16;
constexpr int kHeadTimeoutMs = 10000;
constexpr int kConnectionLifetimeMs = 30000;
constexpr int kSnapshotWaitMs = 2000;
constexpr int kDrainMs = 2000;
constexpr qint64 kMaxDrainBytes = 16 * 1024 * 1024;
constexpr qint64 kMaxUnsentEventBytes = 1024 * 1024;
constexpr int kTickMs = 100;
const QSize kSnapshotSize(640, 360);

// Where a connection is: its head being read, answered at the gate (what still comes is read
// and dropped), or handed on (to the HTTP server or the WebSocket server).
enum ConnectionState
{
    ReadingHead = 0,
    Draining = 1,
    HandedOn = 2,
    EventClient = 3,
};
constexpr char kState[] = "selvaneControlState";
constexpr char kMethod[] = "selvaneControlMethod";
constexpr char kPath[] = "selvaneControlPath";
constexpr char kDrained[] = "selvaneControlDrained";
constexpr char kDrainLimit[] = "selvaneControlDrainLimit";

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
    case 431:
        return "Request Header Fields Too Large";
    case 503:
        return "Service Unavailable";
    default:
        return "Error";
    }
}

QByteArray json(const QJsonObject &object)
{
    return QJsonDocument(object).toJson(QJsonDocument::Compact);
}

QByteArray okBody(QJsonObject object = {})
{
    object.insert("ok", true);
    return json(object);
}

} // namespace

// The listening socket: every new connection goes to the control server's gate first, and
// reaches the HTTP server only when its head has been admitted.
class ControlServer::Gate : public QTcpServer
{
public:
    Gate(ControlServer *owner, QObject *parent) : QTcpServer(parent), m_owner(owner) {}
    void handOn(QTcpSocket *socket) { addPendingConnection(socket); }

protected:
    void incomingConnection(qintptr handle) override { m_owner->accept(handle); }

private:
    ControlServer *m_owner;
};

// Parses what the gate admitted (headers and the body) and lets the control server answer.
class ControlServer::Http : public QAbstractHttpServer
{
public:
    Http(ControlServer *owner) : QAbstractHttpServer(owner), m_owner(owner) {}
    static QHttpServerResponder responderFor(const QHttpServerRequest &request, QTcpSocket *socket)
    {
        return makeResponder(request, socket);
    }

protected:
    bool handleRequest(const QHttpServerRequest &request, QTcpSocket *socket) override
    {
        m_owner->answer(request, socket);
        return true;
    }
    void missingHandler(const QHttpServerRequest &, QTcpSocket *) override {}

private:
    ControlServer *m_owner;
};

ControlServer::ControlServer(Engine *engine, QObject *parent) : QObject(parent), m_engine(engine)
{
    m_webSockets =
        new QWebSocketServer(QStringLiteral("Selvane"), QWebSocketServer::NonSecureMode, this);
    connect(m_webSockets, &QWebSocketServer::newConnection, this, &ControlServer::onWebSocket);
    m_http = new Http(this);
    m_snapshotTimer = new QTimer(this);
    m_snapshotTimer->setInterval(100);
    connect(m_snapshotTimer, &QTimer::timeout, this, &ControlServer::expireSnapshots);
    m_tickTimer = new QTimer(this);
    m_tickTimer->setInterval(kTickMs);
    connect(m_tickTimer, &QTimer::timeout, this, &ControlServer::tick);
    if (!engine)
        return;
    connect(engine, &QObject::destroyed, this, &ControlServer::close);
    connect(engine, &Engine::programFrame, this,
            [this](const FrameTokenPtr &frame, int) { onProgramFrame(frame); });
    connect(engine, &Engine::channelStateChanged, this, [this](int channel, ChannelState state) {
        if (m_clients.isEmpty() || !m_engine)
            return;
        const bool live = m_engine->stats().channels[std::size_t(channel)].live;
        broadcast({{"type", "channel"},
                   {"channel", channel + 1},
                   {"state", channelStateWord(state, live)}});
    });
    connect(engine, &Engine::channelError, this,
            [this](int channel, SourceError error, const QString &detail) {
                broadcast({{"type", "channelError"},
                           {"channel", channel + 1},
                           {"error", sourceErrorLogText(error)},
                           {"detail", detail}});
            });
    connect(engine, &Engine::channelEnded, this, [this](int channel) {
        broadcast({{"type", "channelEnded"}, {"channel", channel + 1}});
    });
    connect(engine, &Engine::overlayError, this,
            [this](int id, SourceError error, const QString &detail) {
                broadcast({{"type", "overlayError"},
                           {"id", id},
                           {"error", sourceErrorLogText(error)},
                           {"detail", detail}});
            });
    connect(engine, &Engine::overlaysChanged, this, [this] { m_overlaysDirty = true; });
    connect(engine, &Engine::programChannelChanged, this, [this](int channel) {
        broadcast(
            {{"type", "cut"},
             {"channel", channel >= 0 ? QJsonValue(channel + 1) : QJsonValue(QJsonValue::Null)}});
    });
    connect(engine, &Engine::programSizeChanged, this, [this](QSize size, bool fallback) {
        broadcast({{"type", "programSize"},
                   {"width", size.width()},
                   {"height", size.height()},
                   {"fallback", fallback}});
    });
    connect(engine, &Engine::outputsStarted, this, [this](QSize size) {
        if (m_clients.isEmpty() || !m_engine)
            return;
        const OutputStats output = m_engine->stats().output;
        broadcast({{"type", "outputsStarted"},
                   {"width", size.width()},
                   {"height", size.height()},
                   {"file", output.recording ? output.file.path : QString()},
                   {"targets", int(output.targets.size())}});
    });
    connect(engine, &Engine::outputsStopped, this, [this] {
        broadcast({{"type", "outputsStopped"}});
    });
    connect(engine, &Engine::outputsFailed, this, [this](const Problem &problem) {
        broadcast({{"type", "outputsFailed"},
                   {"reason", problem.kind == ProblemKind::EightKNoHardwareEncoder
                                  ? "eightKNoHardwareEncoder"
                                  : "openFailed"},
                   {"message", problemText(problem, ProblemLanguage::English)}});
    });
    connect(engine, &Engine::streamStatusChanged, this, [this](int index, const QString &status) {
        broadcast({{"type", "stream"}, {"target", index + 1}, {"status", status}});
    });
    connect(engine, &Engine::scheduleRunningChanged, this, [this](bool running) {
        broadcast({{"type", "schedule"}, {"running", running}});
    });
    connect(engine, &Engine::scheduleBaseClipChanged, this, [this](const QString &id, qint64 ms) {
        broadcast({{"type", "scheduleClip"}, {"id", id}, {"scheduleMs", ms}});
    });
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
        m_gate = new Gate(this, m_http);
    if (!m_gate->listen(address, port)) {
        *error = QStringLiteral("cannot listen on %1 port %2: %3")
                     .arg(address.toString())
                     .arg(port)
                     .arg(m_gate->errorString());
        return false;
    }
    m_address = address;
    m_http->bind(m_gate);
    return true;
}

void ControlServer::close()
{
    m_closed = true;
    if (m_gate)
        m_gate->close();
    m_tickTimer->stop();
    m_snapshotTimer->stop();
    m_snapshots.clear();
    // The event clients go before the sockets they were made from.
    const QList<QWebSocket *> clients = std::exchange(m_clients, {});
    m_unsent.clear();
    for (QWebSocket *client : clients) {
        client->disconnect(this);
        client->abort();
        delete client;
    }
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
    const Refusal admitted = admitHead(head, m_token);
    if (!admitted.ok()) {
        refuseAtGate(socket, admitted.status, admitted.message, admitted.allow,
                     scan.headBytes + std::min(head.contentLength, kMaxDrainBytes));
        return;
    }
    if (!m_engine || m_closed) {
        refuseAtGate(socket, 503, QStringLiteral("the show is ending"), {},
                     scan.headBytes + std::min(head.contentLength, kMaxDrainBytes));
        return;
    }
    disconnect(socket, &QTcpSocket::readyRead, this, nullptr);
    if (head.webSocket) {
        if (m_clients.size() >= kMaxEventClients) {
            refuseAtGate(socket, 503, QStringLiteral("too many event clients"));
            return;
        }
        socket->setProperty(kState, EventClient);
        m_webSockets->handleConnection(socket);
        emit socket->readyRead(); // the handshake is already here
        return;
    }
    socket->setProperty(kState, HandedOn);
    socket->setProperty(kMethod, head.method);
    socket->setProperty(kPath, head.path);
    if (head.expectContinue)
        socket->write("HTTP/1.1 100 Continue\r\n\r\n");
    m_gate->handOn(socket);
    emit socket->readyRead(); // what has come so far goes on at once
}

void ControlServer::refuseAtGate(QTcpSocket *socket, int status, const QString &message,
                                 const QByteArray &allow, qint64 bodyToDrain)
{
    Reply reply(status, json({{"error", message}, {"status", status}}));
    reply.allow = allow;
    socket->setProperty(kState, Draining);
    // What the client still sends is read and dropped, so that closing does not reset the
    // connection before the answer is read.
    socket->setProperty(kDrained, socket->readAll().size());
    socket->setProperty(kDrainLimit, bodyToDrain);
    if (socket->property(kDrained).toLongLong() >= bodyToDrain) {
        writeRaw(socket, reply);
        return;
    }
    writeRaw(socket, reply, false);
    QTimer::singleShot(kDrainMs, socket, [socket] { socket->disconnectFromHost(); });
}

void ControlServer::writeRaw(QTcpSocket *socket, const Reply &reply, bool close)
{
    QByteArray out = "HTTP/1.1 " + QByteArray::number(reply.status) + ' ' +
                     reasonPhrase(reply.status) + "\r\nContent-Type: " + reply.type +
                     "\r\nContent-Length: " + QByteArray::number(reply.body.size()) +
                     "\r\nConnection: close\r\n";
    if (!reply.allow.isEmpty())
        out += "Allow: " + reply.allow + "\r\n";
    if (reply.status == 401)
        out += "WWW-Authenticate: Bearer\r\n";
    socket->write(out + "\r\n" + reply.body);
    if (close)
        socket->disconnectFromHost();
}

// ---- requests ----

void ControlServer::answer(const QHttpServerRequest &request, QTcpSocket *socket)
{
    if (socket->property(kState).toInt() != HandedOn)
        return;
    socket->setProperty(kState, Draining); // one request per connection
    const ParsedRequest parsed =
        parseRequest(socket->property(kMethod).toByteArray(), socket->property(kPath).toByteArray(),
                     request.headers(), request.body(), m_token);
    Reply reply;
    if (!parsed.refusal.ok()) {
        reply.status = parsed.refusal.status;
        reply.allow = parsed.refusal.allow;
        reply.body = json({{"error", parsed.refusal.message}, {"status", reply.status}});
    } else if (!m_engine || m_closed) {
        reply.status = 503;
        reply.body = json({{"error", "the show is ending"}, {"status", 503}});
    } else {
        reply = execute(parsed.command, socket);
    }
    if (reply.deferred)
        return;
    QHttpServerResponder responder = Http::responderFor(request, socket);
    responder.writeStatusLine(QHttpServerResponder::StatusCode(reply.status));
    responder.writeHeader("Content-Type", reply.type);
    responder.writeHeader("Content-Length", QByteArray::number(reply.body.size()));
    responder.writeHeader("Connection", "close");
    if (!reply.allow.isEmpty())
        responder.writeHeader("Allow", reply.allow);
    responder.writeBody(reply.body);
    socket->disconnectFromHost();
}

ControlServer::Reply ControlServer::execute(const ControlCommand &c, QTcpSocket *socket)
{
    Engine &engine = *m_engine;
    const auto failed = [](int status, const QString &message) {
        return Reply{status, json({{"error", message}, {"status", status}})};
    };
    const auto ok = [](QJsonObject object = {}) {
        return Reply{200, okBody(std::move(object))};
    };
    // The engine's refusals, in its own words.
    const auto refused = [&failed](const Problem &problem, const QString &field = {}) {
        return failed(httpStatusFor(problem),
                      field + problemText(problem, ProblemLanguage::English));
    };
    const QJsonValue channelNumber = c.channel + 1;
    const auto hasSource = [&] {
        return !engine.stats().channels[std::size_t(c.channel)].source.isEmpty();
    };
    switch (c.command) {
    case Command::Status:
        return {200, json(statusJson(engine))};
    case Command::SetChannel: {
        if (const Problem bad = Engine::checkSourceAddress(c.address))
            return refused(bad, QStringLiteral("\"address\": "));
        if (const Problem problem = engine.setChannelSource(c.channel, c.address))
            return refused(problem);
        engine.setChannelLoop(c.channel, c.loop);
        return ok({{"channel", channelNumber}});
    }
    case Command::ClearChannel:
        engine.clearChannel(c.channel);
        return ok({{"channel", channelNumber}});
    case Command::PauseChannel:
    case Command::ResumeChannel:
    case Command::SeekChannel:
        if (!hasSource())
            return refused({ProblemKind::ChannelHasNoSource, {}, c.channel + 1});
        if (c.command == Command::PauseChannel)
            engine.pauseChannel(c.channel);
        else if (c.command == Command::ResumeChannel)
            engine.resumeChannel(c.channel);
        else
            engine.seekChannel(c.channel, c.positionMs);
        return ok({{"channel", channelNumber}});
    case Command::Cut:
        engine.cutTo(c.channel);
        return ok({{"channel", channelNumber}});
    case Command::Snapshot: {
        if (m_snapshots.size() >= kMaxSnapshotWaits)
            return failed(503, QStringLiteral("too many snapshots waiting"));
        m_snapshots.append({socket, QDeadlineTimer(kSnapshotWaitMs)});
        m_snapshotTimer->start();
        Reply later;
        later.deferred = true;
        return later;
    }
    case Command::SetText:
        if (const Problem problem = engine.setTextOverlay(c.text))
            return refused(problem, QStringLiteral("\"text\": "));
        return ok({{"id", c.id}});
    case Command::SetMedia:
        if (const Problem problem = engine.setMediaOverlay(c.media))
            return refused(problem, QStringLiteral("\"path\": "));
        return ok({{"id", c.id}});
    case Command::RemoveText:
    case Command::RemoveMedia: {
        const Problem problem = c.command == Command::RemoveText ? engine.removeTextOverlay(c.id)
                                                                 : engine.removeMediaOverlay(c.id);
        if (problem)
            return refused(problem);
        if (c.command == Command::RemoveMedia)
            m_overlayVolumes.remove(c.id);
        return ok({{"id", c.id}});
    }
    case Command::ChannelAudio:
        if (c.volume)
            engine.setChannelVolume(c.channel, *c.volume);
        if (c.mute)
            engine.setChannelMuted(c.channel, *c.mute);
        return ok({{"channel", channelNumber},
                   {"volume", engine.channelVolume(c.channel)},
                   {"mute", engine.channelMuted(c.channel)}});
    case Command::OverlayAudio: {
        bool video = false;
        for (const MediaOverlayRecord &media : engine.mediaOverlays())
            video = video || (media.id == c.id && media.kind == MediaOverlayRecord::OverlayVideo);
        if (!video)
            return failed(404, QStringLiteral("no video overlay with id %1").arg(c.id));
        OverlayVolumes &volumes = m_overlayVolumes[c.id];
        if (c.volume || c.previewVolume) {
            volumes.program = c.volume.value_or(volumes.program);
            volumes.preview = c.previewVolume.value_or(volumes.preview);
            engine.setOverlayVolume(c.id, volumes.preview, volumes.program);
        }
        if (c.mute)
            engine.setOverlayMuted(c.id, *c.mute);
        if (c.onProgram)
            engine.setOverlayOnProgram(c.id, *c.onProgram);
        return ok({{"id", c.id}});
    }
    case Command::ProgramAudio:
        if (c.volume)
            engine.setProgramVolume(*c.volume);
        if (c.mute)
            engine.setProgramMuted(*c.mute);
        if (c.gain)
            engine.setProgramGain(*c.gain);
        return ok({{"volume", engine.programVolume()}, {"mute", engine.programMuted()}});
    case Command::StartOutputs:
        return startOutputs(c);
    case Command::StopOutputs:
        if (!engine.outputsActive())
            return failed(409, QStringLiteral("the outputs are not running"));
        engine.stopOutputs();
        return ok({{"stopping", true}});
    case Command::ReconnectTarget: {
        const OutputStats output = engine.stats().output;
        if (!engine.outputsActive() || c.id >= output.targets.size())
            return failed(404, QStringLiteral("no stream target %1").arg(c.id + 1));
        if (!engine.reconnectTargetNow(c.id))
            return failed(409, QStringLiteral("stream target %1 is not waiting to reconnect (%2)")
                                   .arg(c.id + 1)
                                   .arg(output.targets[c.id].status));
        return ok({{"target", c.id + 1}});
    }
    case Command::GetSchedule:
        return {200, Engine::writeSchedule(engine.schedule())};
    case Command::LoadSchedule:
        return loadSchedule(c.schedule);
    case Command::StartSchedule: {
        if (engine.isScheduleRunning())
            return failed(409, QStringLiteral("the schedule is already running"));
        const ProgramArrangement loaded = engine.schedule();
        if (loaded.sceneClips.isEmpty() && loaded.overlayClips.isEmpty())
            return failed(409, QStringLiteral("no schedule is loaded (PUT /api/v1/schedule)"));
        QString error;
        if (!engine.startSchedule(&error))
            return failed(409, error);
        return ok({{"running", true}});
    }
    case Command::StopSchedule:
        if (!engine.isScheduleRunning())
            return failed(409, QStringLiteral("the schedule is not running"));
        engine.stopSchedule();
        return ok({{"running", false}});
    case Command::Events:
        break;
    }
    return failed(404, QStringLiteral("no such path"));
}

ControlServer::Reply ControlServer::startOutputs(const ControlCommand &c)
{
    Engine &engine = *m_engine;
    const auto failed = [](int status, const QString &message) {
        return Reply{status, json({{"error", message}, {"status", status}})};
    };
    const OutputSettings settings = applyOutputRequest(c.outputs, engine.preparedOutputs());
    if (const Problem problem = engine.startOutputs(settings))
        return failed(httpStatusFor(problem), problemText(problem, ProblemLanguage::English));
    QJsonArray targets;
    for (const StreamTarget &target : settings.encoder.streamTargets)
        targets.append(target.formatName.isEmpty() ? QJsonValue(QJsonValue::Null)
                                                   : QJsonValue(target.formatName));
    return {202, okBody({{"record",
                          settings.encoder.fileEnabled ? settings.encoder.filePath : QString()},
                         {"streams", int(settings.encoder.streamTargets.size())},
                         {"fps", settings.encoder.fps}})};
}

ControlServer::Reply ControlServer::loadSchedule(const QByteArray &json)
{
    const auto failed = [](int status, const QString &message) {
        return Reply{status, selvane::json({{"error", message}, {"status", status}})};
    };
    QString error;
    const ProgramArrangement arrangement = Engine::readSchedule(json, &error);
    if (!error.isEmpty())
        return failed(400, error);
    // Checked before it is kept: a refused schedule leaves the loaded one as it was.
    const arrangement::Validation check = Engine::checkSchedule(arrangement);
    if (!check.ok)
        return failed(400, check.title + QStringLiteral(": ") + check.message);
    m_engine->loadSchedule(arrangement);
    return {200, okBody({{"sceneClips", int(arrangement.sceneClips.size())},
                         {"overlayClips", int(arrangement.overlayClips.size())}})};
}

// ---- snapshots ----

void ControlServer::onProgramFrame(const FrameTokenPtr &frame)
{
    if (m_snapshots.isEmpty() || !frame)
        return;
    // The picture is made now and the frame let go at once: the pools are bounded.
    const QImage picture = Engine::pictureOf(frame, kSnapshotSize);
    QByteArray jpeg;
    QBuffer buffer(&jpeg);
    buffer.open(QIODevice::WriteOnly);
    if (picture.isNull() || !picture.save(&buffer, "JPEG", 85))
        return;
    const Reply reply{200, jpeg, "image/jpeg"};
    for (const SnapshotWait &wait : std::exchange(m_snapshots, {}))
        if (wait.socket)
            writeRaw(wait.socket, reply);
    m_snapshotTimer->stop();
}

void ControlServer::expireSnapshots()
{
    for (qsizetype i = m_snapshots.size() - 1; i >= 0; --i) {
        const SnapshotWait wait = m_snapshots[i];
        if (wait.socket && !wait.deadline.hasExpired())
            continue;
        m_snapshots.removeAt(i);
        if (wait.socket)
            writeRaw(wait.socket,
                     {503, json({{"error", "no program picture came in time"}, {"status", 503}})});
    }
    if (m_snapshots.isEmpty())
        m_snapshotTimer->stop();
}

// ---- events ----

void ControlServer::onWebSocket()
{
    while (QWebSocket *client = m_webSockets->nextPendingConnection()) {
        if (m_closed || !m_engine) {
            client->abort();
            client->deleteLater();
            continue;
        }
        client->setParent(this);
        // What clients send is not read (the socket is for events only), nor kept in bulk.
        client->setMaxAllowedIncomingMessageSize(64 * 1024);
        client->setMaxAllowedIncomingFrameSize(64 * 1024);
        m_clients.append(client);
        m_unsent.insert(client, 0);
        connect(client, &QWebSocket::disconnected, this, [this, client] {
            m_clients.removeOne(client);
            m_unsent.remove(client);
            client->deleteLater();
        });
        connect(client, &QWebSocket::bytesWritten, this, [this, client](qint64 bytes) {
            auto it = m_unsent.find(client);
            if (it != m_unsent.end())
                *it = std::max<qint64>(0, *it - bytes);
        });
        const QByteArray hello = json({{"type", "hello"}, {"status", statusJson(*m_engine)}});
        m_unsent[client] += client->sendTextMessage(QString::fromUtf8(hello));
    }
    if (!m_clients.isEmpty() && !m_tickTimer->isActive()) {
        m_overlaysDirty = false;
        m_tickTimer->start();
    }
}

void ControlServer::broadcast(const QJsonObject &event)
{
    if (m_clients.isEmpty())
        return;
    const QString text = QString::fromUtf8(json(event));
    for (QWebSocket *client : QList<QWebSocket *>(m_clients)) {
        // A client that reads nothing is let go rather than holding memory without end.
        if (m_unsent.value(client) > kMaxUnsentEventBytes) {
            client->abort();
            continue;
        }
        m_unsent[client] += client->sendTextMessage(text);
    }
}

void ControlServer::tick()
{
    if (m_clients.isEmpty() || !m_engine) {
        m_tickTimer->stop();
        return;
    }
    const EngineStats stats = m_engine->stats();
    if (m_overlaysDirty) {
        m_overlaysDirty = false;
        QJsonObject event = overlaysJson(*m_engine);
        event.insert("type", "overlays");
        broadcast(event);
    }
    broadcast(levelsJson(stats));
}

} // namespace selvane
