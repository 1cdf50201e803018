#pragma once

// What the input side needs of the network proxy settings: an HTTP proxy URL for HTTP(S)
// inputs, a SOCKS5 endpoint for TLS-carried RTMPS/RTSPS inputs, and the rewriting of plain
// TCP-carried URLs through the local SOCKS relay. Callable from any thread: each call reads the
// settings store afresh.
//
// Keys (organisation "Ostrel", application "Selvane"):
//   proxy_mode        "auto" (default: the environment's http_proxy/https_proxy/all_proxy),
//                     "manual" (the keys below) or "off"
//   proxy_http_url    e.g. "http://127.0.0.1:8080"
//   proxy_socks_url   e.g. "socks5://127.0.0.1:1080"
//   proxy_url         a single proxy used for both when the specific key is empty

#include <QString>

#include <functional>

namespace selvane::proxy {

// Empty when no HTTP proxy applies.
QString httpProxyUrl();
// "host:port" of the SOCKS5 proxy, empty when none applies.
QString socksEndpoint();

// The local relay installs its rewriter here; without one a URL is opened as it is.
using TcpUrlRewriter = std::function<QString(const QString &)>;
void setTcpUrlRewriter(TcpUrlRewriter rewriter);
QString rewriteTcpCarriedUrl(const QString &address);

// Publishing through the local SOCKS relay: the relay installs a starter that tunnels one
// destination (host, port) through the SOCKS5 proxy and returns the loopback "host:port" to
// publish to. Without a starter, or when it fails, the result is empty and publishing is direct.
using PublishRelayStarter = std::function<QString(const QString &host, int port)>;
void setPublishRelayStarter(PublishRelayStarter starter);
QString startPublishRelay(const QString &host, int port);

} // namespace selvane::proxy
