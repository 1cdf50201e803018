#pragma once

// The network proxy as the faces see it: the settings, what automatic mode finds on this
// system (environment variables, the desktop's settings), and a test connection.
//
// Static functions. status() and setConfig() read and write the settings store (any thread);
// test() blocks for up to its time-out, so faces call testAsync(), which runs it on the thread
// pool and hands the result to `done` on the GUI thread while `context` lives.

#include "engine/EngineTypes.h"

#include <QObject>
#include <QString>
#include <functional>

namespace selvane {

class ProxyService
{
public:
    static ProxyStatus status();
    // Keeps the settings; connections opened from now on follow them.
    static void setConfig(const ProxyConfig &config);
    // Connects to "host:port" through the proxy `config` gives (SOCKS5 when it names one, else
    // HTTP CONNECT, else directly) and closes again, within `timeoutMs`.
    static ProxyTestResult test(const ProxyConfig &config, const QString &hostPort,
                                int timeoutMs = 5000);
    static void testAsync(const ProxyConfig &config, const QString &hostPort, int timeoutMs,
                          QObject *context, std::function<void(ProxyTestResult)> done);
};

} // namespace selvane
