#pragma once

// Puts one stream connection (a publish target or an opened input) on the local SOCKS relay: a
// relay started for the URL's real host and port, and the URL and protocol options to open
// instead, so that the server still sees its own names: the TLS name check and the SNI name
// ("verifyhost"; a TLS URL points at "localhost" so that the name is sent at all), and for RTMP
// the connect parameters ("rtmp_tcurl", "rtmp_app", "rtmp_playpath"). TLS stays end to end: an
// rtmps URL stays rtmps. Free functions, any thread; the relay belongs to the caller and is
// stopped when its last owner lets it go. Reports: the relay's log lines, "SocksTcpRelay: ...".

#include "net/ProxySettings.h"
#include "net/SocksTcpRelay.h"

#include <QByteArray>
#include <QList>
#include <QPair>
#include <QString>
#include <memory>

namespace selvane::proxy {

struct RelayRoute
{
    std::shared_ptr<SocksTcpRelay> relay; // null: not relayed
    QString url;                          // what to open
    QList<QPair<QByteArray, QByteArray>> options;
    QString failure; // why no relay could be started (empty when none was wanted or it runs)
};

// RTMP (rtmp, rtmps, rtmpe, rtmpt), RTSP (rtsp, rtsps: interleaved over TCP) and tcp:// URLs:
// one TCP connection each, which the relay can carry.
bool isRelayable(const QString &url);

// The real host and port of a URL (the scheme's default port when it names none; 0 when there
// is none).
QString urlHost(const QString &url);
quint16 urlPort(const QString &url);

// Starts a relay for the URL's host and port through `socks` (which must be valid) and returns
// the route; on failure the route has no relay and `failure` says why.
RelayRoute startRelay(const QString &url, const Server &socks);

// The route through an already running relay for the same URL.
RelayRoute routeThrough(const std::shared_ptr<SocksTcpRelay> &relay, const QString &url);

// The relay's last tunnel in words, when it is newer than `sinceSerial`; empty otherwise.
QString relayFailureSince(const SocksTcpRelay &relay, std::uint64_t sinceSerial);

} // namespace selvane::proxy
