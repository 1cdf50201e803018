#pragma once

// The per-user single-instance lock. A running GUI instance listens on a local socket; a second
// start connects to it (the connection alone is the wake-up signal) and exits. On Linux the
// socket lives in the user's runtime directory (or a per-user name in the temp directory), so
// two users of one machine never share or block each other's lock. GUI thread only.

#include <QString>
#include <functional>

class QLocalServer;

namespace selvane {

inline constexpr auto kSingleInstanceName = "selvane_single_instance";
inline constexpr int kInstanceProbeTimeoutMs = 400;

// Full server name (a socket path on Unix, the pipe name on Windows).
QString singleInstanceServerName();

// True when an instance answers on `serverName` within `timeoutMs`; the probe socket is closed
// again without sending anything.
bool probeRunningInstance(const QString &serverName, int timeoutMs);

// Runs `bringToFront` for each incoming wake-up connection; the connection object deletes
// itself once the peer disconnects.
void connectWakeUpHandler(QLocalServer *server, std::function<void()> bringToFront);

} // namespace selvane
