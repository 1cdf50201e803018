#pragma once

// What a remote-control request asks for, read without touching anything: the request head as
// it arrives on the socket (request line and headers, checked for size, token and upgrade before
// a body is read), and a whole request (method, path, headers, body) turned into a typed command
// or into the refusal it earns (status and message). Checks that need the engine or the disk
// (does the file exist, is the target waiting) are the server's. Plain functions, any thread.

#include "control/OutputRequest.h"
#include "engine/EngineTypes.h"

#include <QByteArray>
#include <QByteArrayView>
#include <QJsonObject>
#include <QList>
#include <QPair>
#include <QSize>
#include <QString>
#include <optional>

namespace selvane::control {

// Largest body taken; the head (request line and headers) has a limit of its own.
inline constexpr qint64 kMaxBodyBytes = 1024 * 1024;
inline constexpr qsizetype kMaxHeadBytes = 16 * 1024;
// Ids of text and media overlays the API takes.
inline constexpr int kMaxOverlayId = 999999;

using Headers = QList<QPair<QByteArray, QByteArray>>;

struct RequestHead
{
    QByteArray method;
    QByteArray path; // the request target without its query
    Headers headers;
    qint64 contentLength = 0;
    bool chunked = false;        // Transfer-Encoding given
    bool expectContinue = false; // "Expect: 100-continue"
    bool webSocket = false;      // "Upgrade: websocket"
    // The first value of a header (names compare case-insensitively).
    QByteArray header(QByteArrayView name) const;
};

// Looking at the bytes received so far on a new connection.
struct HeadScan
{
    enum State
    {
        NeedMore, // nothing wrong yet, the head is incomplete
        Complete, // `head` read; the head ends at `headBytes`
        Refused,  // not a request this server reads (see `refusal`)
    };
    State state = NeedMore;
    qsizetype headBytes = 0;
    RequestHead head;
    Refusal refusal;
};
HeadScan scanHead(QByteArrayView received);

// Token, path, method and body size, judged from the head alone (before any body is read).
// `ticketed`: the request carried a valid event ticket instead of the token.
Refusal admitHead(const RequestHead &head, QByteArrayView token, bool ticketed = false);

// "Bearer TOKEN" against the token, in time that does not depend on where they differ.
bool bearerMatches(QByteArrayView authorization, QByteArrayView token);

enum class Command
{
    Status,
    Sources,
    SetChannel,
    ClearChannel,
    PauseChannel,
    ResumeChannel,
    SeekChannel,
    Cut,
    SetPreview,
    Take,
    SetTransition,
    SetTBar,
    FadeToBlack,
    ShowSlate,
    SetFailover,
    SetOutputTimes,
    Snapshot,
    ChannelSnapshot,
    EventTicket,
    SetText,
    RemoveText,
    SetMedia,
    RemoveMedia,
    ChannelAudio,
    OverlayAudio,
    ProgramAudio,
    StartOutputs,
    StopOutputs,
    ReconnectTarget,
    GetSchedule,
    LoadSchedule,
    StartSchedule,
    StopSchedule,
    Events,
};

struct ControlCommand
{
    Command command = Command::Status;
    int channel = -1; // 0..3
    int id = -1;      // overlay id, or the stream target's index (0-based)
    QString address;
    bool loop = true;
    qint64 positionMs = 0;
    TextOverlayData text;
    MediaOverlayRecord media;
    std::optional<float> volume;
    std::optional<float> previewVolume; // overlay videos: the speaker's share
    std::optional<bool> mute;
    std::optional<bool> onProgram;
    std::optional<float> gain; // program bus, linear
    OutputRequest outputs;
    QByteArray schedule; // the arrangement's JSON as sent
    // Production: a take at once instead of with the transition; the transition's fields as
    // sent; the T-bar's position; fade to black (absent: the other way from where it is).
    bool takeAtOnce = false;
    QJsonObject transition;
    std::optional<bool> directTakes;
    double position = 0;
    std::optional<bool> black;
    std::optional<int> durationMs;
    // Failover, the outputs' times: the fields as sent, read against the engine's settings by
    // the dispatcher.
    QJsonObject fields;
};

struct ParsedRequest
{
    Refusal refusal;
    ControlCommand command;
};

// Token, path and method, and the upgrade the event socket needs: everything but the body.
// `path` as sent (the query is ignored); `token` the one every request must carry.
Refusal routeRequest(QByteArrayView method, QByteArrayView path, const Headers &headers,
                     QByteArrayView token, ControlCommand *command, bool ticketed = false);

// The whole request: the route, then the body's fields.
ParsedRequest parseRequest(QByteArrayView method, QByteArrayView path, const Headers &headers,
                           const QByteArray &body, QByteArrayView token);

} // namespace selvane::control
