#pragma once

// A TCP listener on 127.0.0.1 that carries each connection it accepts through a SOCKS5 proxy to
// one destination (host name or address, and port), so that a muxer or demuxer that speaks only
// plain TCP (RTMP, RTMPS, RTSP ...) reaches its server through the proxy. The bytes are copied as
// they are in both directions: TLS spoken by the client stays end to end.
//
// One relay belongs to one stream target or one opened input and lives as long as it. Only
// loopback peers are served; every wait is bounded (resolving the proxy, connecting to it, each
// step of the SOCKS5 exchange, the copy), so a proxy that accepts and never answers cannot hold up
// a tunnel or stop().
//
// Threads: start(), stop() and the destructor on the owner's thread; one accept thread and one
// thread per open tunnel inside; the observers (lastOutcome, counters) from any thread.
// Reports: info and warning lines through the LogFunction given to the constructor (called from
// the relay's threads); the last tunnel's outcome through lastOutcome().
//
// Plain C++ and the system's socket interface (Winsock on Windows), no Qt, so that the Windows
// branches are checked with the cross compiler.

#include "net/SocksWire.h"

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <list>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

struct sockaddr;

namespace selvane {

class SocksTcpRelay
{
public:
    struct Proxy
    {
        std::string host;
        std::uint16_t port = 0;
        std::string user; // user and password: offered with RFC 1929 when both are set
        std::string password;
    };

    enum class Failure
    {
        None,
        ProxyUnresolved,    // the proxy's name does not resolve
        ProxyUnreachable,   // refused or no route
        ProxyTimeout,       // connected, or tried to, and heard nothing in time
        ProxyClosed,        // the proxy closed the connection during the exchange
        NoAcceptableMethod, // the proxy wants an authentication this relay does not offer
        AuthRefused,        // user and password refused
        ConnectRefused,     // CONNECT answered with a reply code other than 0
        BadReply,           // not SOCKS5
        BadDestination,     // host name empty or too long
        Stopped,
    };

    struct Outcome
    {
        Failure failure = Failure::None;
        int replyCode = -1;       // for ConnectRefused
        std::string detail;       // the system's error text, or what was wrong with a reply
        std::uint64_t serial = 0; // counts the tunnels tried; 0 before the first
        std::string text() const;
    };

    using LogFunction = std::function<void(bool warning, const std::string &line)>;

    SocksTcpRelay(std::string targetHost, std::uint16_t targetPort, Proxy proxy,
                  LogFunction log = {});
    ~SocksTcpRelay();
    SocksTcpRelay(const SocksTcpRelay &) = delete;
    SocksTcpRelay &operator=(const SocksTcpRelay &) = delete;

    // Listens on 127.0.0.1 on a port the system chooses and starts accepting; the port, or 0
    // when no socket could be set up.
    std::uint16_t start();
    // Stops accepting, ends every tunnel and waits for the threads (a few hundred milliseconds
    // at most).
    void stop();

    std::uint16_t localPort() const { return m_localPort.load(); }
    const std::string &targetHost() const { return m_targetHost; }
    std::uint16_t targetPort() const { return m_targetPort; }
    const Proxy &proxy() const { return m_proxy; }

    Outcome lastOutcome() const;
    std::uint64_t tunnelsUp() const { return m_tunnelsUp.load(); }
    std::uint64_t bytesToServer() const { return m_bytesUp.load(); }
    std::uint64_t bytesFromServer() const { return m_bytesDown.load(); }
    std::uint64_t refusedPeers() const { return m_refusedPeers.load(); }

    // True for 127.0.0.0/8, ::1 and IPv4-mapped 127.x addresses.
    static bool isLoopbackPeer(const sockaddr *address, std::size_t length);
    // 1935 for rtmp and rtmpe, 443 for rtmps, 554 for rtsp, 322 for rtsps, otherwise 0.
    static std::uint16_t defaultPort(const std::string &scheme);

    // Opens a tunnel through the proxy to host:port on the calling thread, bounded by
    // `timeoutMs` as a whole, and closes it again: the proxy test. `elapsedMs` gets the time the
    // tunnel took.
    static Outcome testTunnel(const Proxy &proxy, const std::string &host, std::uint16_t port,
                              int timeoutMs, std::int64_t *elapsedMs = nullptr);
    // An HTTP proxy's CONNECT to host:port, the same way.
    static Outcome testHttpConnect(const Proxy &proxy, const std::string &host, std::uint16_t port,
                                   int timeoutMs, std::int64_t *elapsedMs = nullptr);

    enum class Probe
    {
        Open,
        Refused,
        TimedOut,
        Unresolved,
        Failed,
    };
    // Connects to host:port and closes at once, within `timeoutMs`.
    static Probe probe(const std::string &host, std::uint16_t port, int timeoutMs);

private:
    void acceptLoop();
    void serve(std::intptr_t client);
    void setOutcome(Outcome outcome);
    void log(bool warning, const std::string &line) const;
    void reapFinished();

    const std::string m_targetHost;
    const std::uint16_t m_targetPort;
    const Proxy m_proxy;
    LogFunction m_log;

    std::atomic<bool> m_stop{false};
    std::atomic<std::uint16_t> m_localPort{0};
    std::intptr_t m_listener = -1;
    std::thread m_acceptThread;

    struct Connection
    {
        std::thread thread;
        std::atomic<bool> done{false};
    };
    std::mutex m_connectionsMutex;
    std::list<Connection> m_connections;

    mutable std::mutex m_outcomeMutex;
    Outcome m_outcome;
    std::atomic<std::uint64_t> m_serial{0};
    std::atomic<std::uint64_t> m_tunnelsUp{0};
    std::atomic<std::uint64_t> m_bytesUp{0};
    std::atomic<std::uint64_t> m_bytesDown{0};
    std::atomic<std::uint64_t> m_refusedPeers{0};
};

} // namespace selvane
