#include "net/SocksTcpRelay.h"

#include "net/SocketIo.h"

#include <algorithm>
#include <chrono>
#include <condition_variable>
#include <cstring>
#include <initializer_list>
#include <memory>
#include <system_error>

#ifndef _WIN32
#include <netinet/tcp.h>
#endif

namespace selvane {

namespace {

using namespace sockio;
using namespace std::chrono_literals;

// Setting up a tunnel (resolving, connecting to the proxy, the whole exchange) stays below the
// muxer's own reconnect time-out, so that the relay names the reason before the muxer gives up.
constexpr auto kConnectTimeout = 2500ms;
constexpr auto kSetupTimeout = 2800ms;
constexpr int kCopySliceMs = 200;
// Once one direction has ended, the other gets this long to finish.
constexpr auto kHalfCloseGrace = 5s;
constexpr std::size_t kCopyBuffer = 64 * 1024;
constexpr std::size_t kMaxTunnels = 8;

struct Connected
{
    OwnedSocket socket;
    bool refused = false;
    SocksTcpRelay::Failure failure = SocksTcpRelay::Failure::None;
    std::string detail;
};

// A non-blocking connect to each address in turn, within the deadline.
Connected connectTo(const std::string &host, std::uint16_t port, Clock::time_point deadline,
                    const std::atomic<bool> *stop)
{
    using Failure = SocksTcpRelay::Failure;
    Connected result;
    const Resolution resolution = resolve(host, port, deadline, stop);
    if (resolution.addresses.empty()) {
        result.failure = resolution.timedOut ? Failure::ProxyTimeout : Failure::ProxyUnresolved;
        result.detail = resolution.error;
        return result;
    }
    result.failure = Failure::ProxyUnreachable;
    for (const Address &address : resolution.addresses) {
        OwnedSocket s(::socket(address.storage.ss_family, SOCK_STREAM, IPPROTO_TCP));
        if (!s.valid()) {
            result.detail = errorText(lastError());
            continue;
        }
        setNonBlocking(s.get());
        int err = 0;
        if (::connect(s.get(), reinterpret_cast<const sockaddr *>(&address.storage),
                      address.length) != 0) {
            err = lastError();
            if (!inProgress(err)) {
                result.refused = result.refused || isRefused(err);
                result.detail = errorText(err);
                continue;
            }
            const Wait w = waitFor(s.get(), POLLOUT, deadline, stop);
            if (w == Wait::Stopped) {
                result.failure = Failure::Stopped;
                return result;
            }
            if (w == Wait::TimedOut) {
                result.failure = Failure::ProxyTimeout;
                result.detail = "no answer to the connection attempt";
                return result;
            }
            SockLen length = sizeof err;
            if (getsockopt(s.get(), SOL_SOCKET, SO_ERROR, reinterpret_cast<char *>(&err),
                           &length) != 0)
                err = lastError();
            if (err != 0) {
                result.refused = result.refused || isRefused(err);
                result.detail = errorText(err);
                continue;
            }
        }
        setNoDelay(s.get());
        result.socket = std::move(s);
        result.failure = Failure::None;
        result.detail.clear();
        return result;
    }
    return result;
}

enum class Io
{
    Done,
    Closed,
    TimedOut,
    Stopped,
    Failed,
};

Io sendAll(Socket s, const std::uint8_t *data, std::size_t size, Clock::time_point deadline,
           const std::atomic<bool> *stop)
{
    while (size > 0) {
        const auto n = ::send(s, reinterpret_cast<const char *>(data), int(size), kSendFlags);
        if (n > 0) {
            data += n;
            size -= std::size_t(n);
            continue;
        }
        if (n < 0 && !wouldBlock(lastError()))
            return Io::Failed;
        const Wait w = waitFor(s, POLLOUT, deadline, stop);
        if (w != Wait::Ready)
            return w == Wait::Stopped ? Io::Stopped : Io::TimedOut;
    }
    return Io::Done;
}

// Reads until `parse` says the reply is complete or invalid; the bytes read beyond the reply
// stay in `buffer` after it.
template <typename ParseFn>
Io readReply(Socket s, std::vector<std::uint8_t> &buffer, ParseFn parse, socks::Reply *reply,
             Clock::time_point deadline, const std::atomic<bool> *stop)
{
    std::uint8_t chunk[512];
    for (;;) {
        *reply = parse(buffer.data(), buffer.size());
        if (reply->parse != socks::Parse::NeedMore)
            return Io::Done;
        if (buffer.size() > 4096) {
            reply->parse = socks::Parse::Invalid;
            reply->problem = "reply too long";
            return Io::Done;
        }
        const Wait w = waitFor(s, POLLIN, deadline, stop);
        if (w != Wait::Ready)
            return w == Wait::Stopped ? Io::Stopped : Io::TimedOut;
        const auto n = ::recv(s, reinterpret_cast<char *>(chunk), int(sizeof chunk), 0);
        if (n == 0)
            return Io::Closed;
        if (n < 0) {
            if (wouldBlock(lastError()))
                continue;
            return Io::Failed;
        }
        buffer.insert(buffer.end(), chunk, chunk + n);
    }
}

using Outcome = SocksTcpRelay::Outcome;
using Failure = SocksTcpRelay::Failure;

Outcome ioFailure(Io io, const char *step)
{
    Outcome o;
    switch (io) {
    case Io::Closed:
        o.failure = Failure::ProxyClosed;
        o.detail = std::string("the proxy closed the connection during ") + step;
        break;
    case Io::TimedOut:
        o.failure = Failure::ProxyTimeout;
        o.detail = std::string("the proxy did not answer ") + step + " in time";
        break;
    case Io::Stopped:
        o.failure = Failure::Stopped;
        break;
    default:
        o.failure = Failure::ProxyClosed;
        o.detail = std::string("connection lost during ") + step + ": " + errorText(lastError());
        break;
    }
    return o;
}

// The SOCKS5 exchange on a connected proxy socket. On success `leftover` holds what the proxy
// sent beyond its reply (the destination's first bytes).
Outcome socksHandshake(Socket s, const SocksTcpRelay::Proxy &proxy, const std::string &host,
                       std::uint16_t port, Clock::time_point deadline,
                       const std::atomic<bool> *stop, std::vector<std::uint8_t> *leftover)
{
    const bool offerAuth = !proxy.user.empty() && !proxy.password.empty();
    std::vector<std::uint8_t> out = socks::greeting(offerAuth);
    if (const Io io = sendAll(s, out.data(), out.size(), deadline, stop); io != Io::Done)
        return ioFailure(io, "the greeting");
    std::vector<std::uint8_t> in;
    socks::Reply reply;
    if (const Io io = readReply(s, in, socks::parseMethodReply, &reply, deadline, stop);
        io != Io::Done)
        return ioFailure(io, "the greeting");
    Outcome o;
    if (reply.parse == socks::Parse::Invalid) {
        o.failure = Failure::BadReply;
        o.detail = reply.problem;
        return o;
    }
    in.erase(in.begin(), in.begin() + std::ptrdiff_t(reply.length));
    if (reply.code == socks::kMethodUserPassword && offerAuth) {
        out = socks::authRequest(proxy.user, proxy.password);
        if (out.empty()) {
            o.failure = Failure::AuthRefused;
            o.detail = "user name or password longer than 255 bytes";
            return o;
        }
        if (const Io io = sendAll(s, out.data(), out.size(), deadline, stop); io != Io::Done)
            return ioFailure(io, "authentication");
        if (const Io io = readReply(s, in, socks::parseAuthReply, &reply, deadline, stop);
            io != Io::Done)
            return ioFailure(io, "authentication");
        if (reply.parse == socks::Parse::Invalid) {
            o.failure = Failure::BadReply;
            o.detail = reply.problem;
            return o;
        }
        if (reply.code != 0) {
            o.failure = Failure::AuthRefused;
            o.detail = "the proxy refused the user name and password";
            return o;
        }
        in.erase(in.begin(), in.begin() + std::ptrdiff_t(reply.length));
    } else if (reply.code == socks::kMethodNoneAcceptable) {
        o.failure = Failure::NoAcceptableMethod;
        o.detail = offerAuth ? "the proxy accepts neither no authentication nor user and password"
                             : "the proxy requires a user name and password";
        return o;
    } else if (reply.code != socks::kMethodNone) {
        o.failure = Failure::BadReply;
        o.detail = "the proxy chose an authentication method that was not offered";
        return o;
    }
    out = socks::connectRequest(host, port);
    if (const Io io = sendAll(s, out.data(), out.size(), deadline, stop); io != Io::Done)
        return ioFailure(io, "CONNECT");
    const Io io = readReply(s, in, socks::parseConnectReply, &reply, deadline, stop);
    // A refusal may come without the bound address, the proxy closing right after the code.
    if (reply.code > 0 && reply.parse != socks::Parse::Invalid &&
        (io == Io::Done || io == Io::Closed || io == Io::TimedOut)) {
        o.failure = Failure::ConnectRefused;
        o.replyCode = reply.code;
        o.detail = socks::replyCodeText(reply.code);
        return o;
    }
    if (io != Io::Done)
        return ioFailure(io, "CONNECT");
    if (reply.parse == socks::Parse::Invalid) {
        o.failure = Failure::BadReply;
        o.detail = reply.problem;
        return o;
    }
    if (leftover)
        leftover->assign(in.begin() + std::ptrdiff_t(reply.length), in.end());
    return o;
}

std::string endpointText(const std::string &host, std::uint16_t port)
{
    const bool v6 = host.find(':') != std::string::npos;
    return (v6 ? "[" + host + "]" : host) + ":" + std::to_string(port);
}

struct Tunnel
{
    OwnedSocket socket;
    Outcome outcome;
    std::vector<std::uint8_t> leftover;
};

Tunnel openSocksTunnel(const SocksTcpRelay::Proxy &proxy, const std::string &host,
                       std::uint16_t port, Clock::time_point deadline,
                       const std::atomic<bool> *stop)
{
    Tunnel t;
    // Checked before anything is sent.
    if (socks::connectRequest(host, port).empty() || port == 0) {
        t.outcome.failure = Failure::BadDestination;
        t.outcome.detail = "the destination's name is empty or longer than 255 bytes";
        return t;
    }
    Connected c =
        connectTo(proxy.host, proxy.port, std::min(deadline, Clock::now() + kConnectTimeout), stop);
    if (c.failure != Failure::None) {
        t.outcome.failure = c.failure;
        t.outcome.detail = c.detail;
        return t;
    }
    t.outcome = socksHandshake(c.socket.get(), proxy, host, port, deadline, stop, &t.leftover);
    if (t.outcome.failure == Failure::None)
        t.socket = std::move(c.socket);
    return t;
}

std::string base64(const std::string &in)
{
    static const char *table = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    std::string out;
    std::size_t i = 0;
    for (; i + 2 < in.size(); i += 3) {
        const unsigned v = unsigned(std::uint8_t(in[i])) << 16 |
                           unsigned(std::uint8_t(in[i + 1])) << 8 | std::uint8_t(in[i + 2]);
        out += {table[v >> 18], table[(v >> 12) & 63], table[(v >> 6) & 63], table[v & 63]};
    }
    if (i + 1 == in.size()) {
        const unsigned v = unsigned(std::uint8_t(in[i])) << 16;
        out += {table[v >> 18], table[(v >> 12) & 63], '=', '='};
    } else if (i + 2 == in.size()) {
        const unsigned v = unsigned(std::uint8_t(in[i])) << 16 | unsigned(std::uint8_t(in[i + 1]))
                                                                     << 8;
        out += {table[v >> 18], table[(v >> 12) & 63], table[(v >> 6) & 63], '='};
    }
    return out;
}

Outcome finish(Outcome o, Clock::time_point started, std::int64_t *elapsedMs)
{
    if (elapsedMs)
        *elapsedMs =
            std::chrono::duration_cast<std::chrono::milliseconds>(Clock::now() - started).count();
    return o;
}

} // namespace

std::string SocksTcpRelay::Outcome::text() const
{
    std::string what;
    switch (failure) {
    case Failure::None:
        return "tunnel up";
    case Failure::ProxyUnresolved:
        what = "proxy name not found";
        break;
    case Failure::ProxyUnreachable:
        what = "cannot reach proxy";
        break;
    case Failure::ProxyTimeout:
        what = "proxy did not answer";
        break;
    case Failure::ProxyClosed:
        what = "proxy closed the connection";
        break;
    case Failure::NoAcceptableMethod:
        what = "no authentication method accepted";
        break;
    case Failure::AuthRefused:
        what = "authentication refused";
        break;
    case Failure::ConnectRefused:
        what = "CONNECT refused, reply " + std::to_string(replyCode);
        break;
    case Failure::BadReply:
        what = "bad reply";
        break;
    case Failure::BadDestination:
        what = "bad destination";
        break;
    case Failure::Stopped:
        return "stopped";
    }
    return detail.empty() ? what : what + " (" + detail + ")";
}

SocksTcpRelay::SocksTcpRelay(std::string targetHost, std::uint16_t targetPort, Proxy proxy,
                             LogFunction log)
    : m_targetHost(std::move(targetHost)), m_targetPort(targetPort), m_proxy(std::move(proxy)),
      m_log(std::move(log))
{
}

SocksTcpRelay::~SocksTcpRelay()
{
    stop();
}

void SocksTcpRelay::log(bool warning, const std::string &line) const
{
    if (m_log)
        m_log(warning, line);
}

std::uint16_t SocksTcpRelay::defaultPort(const std::string &scheme)
{
    std::string s = scheme;
    std::transform(s.begin(), s.end(), s.begin(),
                   [](unsigned char c) { return char(c >= 'A' && c <= 'Z' ? c + 32 : c); });
    if (s == "rtmp" || s == "rtmpe")
        return 1935;
    if (s == "rtmps")
        return 443;
    if (s == "rtsp")
        return 554;
    if (s == "rtsps")
        return 322;
    return 0;
}

bool SocksTcpRelay::isLoopbackPeer(const sockaddr *address, std::size_t length)
{
    if (!address)
        return false;
    if (address->sa_family == AF_INET && length >= sizeof(sockaddr_in)) {
        const auto *in = reinterpret_cast<const sockaddr_in *>(address);
        return (ntohl(in->sin_addr.s_addr) >> 24) == 127;
    }
    if (address->sa_family == AF_INET6 && length >= sizeof(sockaddr_in6)) {
        const auto *in6 = reinterpret_cast<const sockaddr_in6 *>(address);
        const auto *b = reinterpret_cast<const std::uint8_t *>(&in6->sin6_addr);
        static const std::uint8_t loopback[16] = {0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 1};
        static const std::uint8_t mapped[12] = {0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0xff, 0xff};
        return std::memcmp(b, loopback, 16) == 0 ||
               (std::memcmp(b, mapped, 12) == 0 && b[12] == 127);
    }
    return false;
}

std::uint16_t SocksTcpRelay::start()
{
    if (m_acceptThread.joinable())
        return m_localPort.load();
    ensureSockets();
    OwnedSocket listener(::socket(AF_INET, SOCK_STREAM, IPPROTO_TCP));
    if (!listener.valid())
        return 0;
#ifndef _WIN32
    int on = 1;
    setsockopt(listener.get(), SOL_SOCKET, SO_REUSEADDR, &on, sizeof on);
#endif
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    address.sin_port = 0;
    if (::bind(listener.get(), reinterpret_cast<const sockaddr *>(&address), sizeof address) != 0 ||
        ::listen(listener.get(), 4) != 0)
        return 0;
    setNoDelay(listener.get());
    SockLen length = sizeof address;
    if (getsockname(listener.get(), reinterpret_cast<sockaddr *>(&address), &length) != 0)
        return 0;
    setNonBlocking(listener.get());
    const std::uint16_t port = ntohs(address.sin_port);
    m_stop.store(false);
    m_listener = std::intptr_t(listener.release());
    m_localPort.store(port);
    m_acceptThread = std::thread([this] { acceptLoop(); });
    log(false, "SocksTcpRelay: 127.0.0.1:" + std::to_string(port) + " via " +
                   endpointText(m_proxy.host, m_proxy.port) + " -> " +
                   endpointText(m_targetHost, m_targetPort));
    return port;
}

void SocksTcpRelay::stop()
{
    m_stop.store(true);
    if (m_acceptThread.joinable())
        m_acceptThread.join();
    if (m_listener != -1) {
        closeSocket(toSocket(m_listener));
        m_listener = -1;
    }
    std::list<Connection> connections;
    {
        std::lock_guard lock(m_connectionsMutex);
        connections.splice(connections.end(), m_connections);
    }
    for (Connection &c : connections)
        if (c.thread.joinable())
            c.thread.join();
}

SocksTcpRelay::Outcome SocksTcpRelay::lastOutcome() const
{
    std::lock_guard lock(m_outcomeMutex);
    return m_outcome;
}

void SocksTcpRelay::setOutcome(Outcome outcome)
{
    std::lock_guard lock(m_outcomeMutex);
    m_outcome = std::move(outcome);
}

void SocksTcpRelay::reapFinished()
{
    std::lock_guard lock(m_connectionsMutex);
    for (auto it = m_connections.begin(); it != m_connections.end();) {
        if (it->done.load()) {
            if (it->thread.joinable())
                it->thread.join();
            it = m_connections.erase(it);
        } else {
            ++it;
        }
    }
}

void SocksTcpRelay::acceptLoop()
{
    const Socket listener = toSocket(m_listener);
    while (!m_stop.load()) {
        PollFd fd{};
        fd.fd = listener;
        fd.events = POLLIN;
        if (pollSockets(&fd, 1, kSliceMs) <= 0)
            continue;
        sockaddr_storage peer{};
        SockLen length = sizeof peer;
        OwnedSocket client(::accept(listener, reinterpret_cast<sockaddr *>(&peer), &length));
        if (!client.valid())
            continue;
        if (!isLoopbackPeer(reinterpret_cast<const sockaddr *>(&peer), std::size_t(length))) {
            m_refusedPeers.fetch_add(1);
            log(true, "SocksTcpRelay: refused a connection that does not come from this machine");
            continue;
        }
        reapFinished();
        std::lock_guard lock(m_connectionsMutex);
        if (m_connections.size() >= kMaxTunnels) {
            log(true, "SocksTcpRelay: too many open tunnels; connection refused");
            continue;
        }
        Connection &c = m_connections.emplace_back();
        const std::intptr_t handle = std::intptr_t(client.release());
        c.thread = std::thread([this, handle, &c] {
            serve(handle);
            c.done.store(true);
        });
    }
}

void SocksTcpRelay::serve(std::intptr_t handle)
{
    OwnedSocket client(toSocket(handle));
    setNonBlocking(client.get());
    setNoDelay(client.get());
    const std::uint64_t serial = m_serial.fetch_add(1) + 1;
    Tunnel t =
        openSocksTunnel(m_proxy, m_targetHost, m_targetPort, Clock::now() + kSetupTimeout, &m_stop);
    t.outcome.serial = serial;
    setOutcome(t.outcome);
    if (t.outcome.failure != Failure::None) {
        if (t.outcome.failure == Failure::Stopped)
            return;
        const bool unreachable = t.outcome.failure == Failure::ProxyUnreachable ||
                                 t.outcome.failure == Failure::ProxyUnresolved;
        log(true, (unreachable ? "SocksTcpRelay: cannot reach proxy " +
                                     endpointText(m_proxy.host, m_proxy.port) + ": "
                               : std::string("SocksTcpRelay: SOCKS5 CONNECT failed: ")) +
                      t.outcome.text());
        return;
    }
    m_tunnelsUp.fetch_add(1);
    log(false, "SocksTcpRelay: tunnel up to " + endpointText(m_targetHost, m_targetPort));

    // Each direction reads from one socket into its buffer and writes the buffer to the other;
    // the end of one side's data is passed on as a shutdown of the other's writing side.
    struct Direction
    {
        Socket from;
        Socket to;
        std::vector<std::uint8_t> buffer;
        std::size_t fill = 0;
        std::size_t sent = 0;
        bool reading = true;
        bool shut = false;
        std::atomic<std::uint64_t> *counter;
    };
    Direction up{client.get(), t.socket.get(), std::vector<std::uint8_t>(kCopyBuffer), 0, 0, true,
                 false,        &m_bytesUp};
    Direction down{t.socket.get(), client.get(), std::vector<std::uint8_t>(kCopyBuffer), 0, 0, true,
                   false,          &m_bytesDown};
    down.fill = std::min(t.leftover.size(), down.buffer.size());
    std::copy_n(t.leftover.begin(), down.fill, down.buffer.begin());
    bool hungUp[2] = {false, false}; // client, server
    Clock::time_point halfClosedAt{};
    std::string ending = "closed";
    while (!m_stop.load()) {
        if (up.reading != down.reading) {
            if (halfClosedAt == Clock::time_point{})
                halfClosedAt = Clock::now();
            else if (Clock::now() - halfClosedAt > kHalfCloseGrace)
                break;
        }
        for (Direction *d : {&up, &down}) {
            if (!d->reading && d->sent == d->fill && !d->shut) {
                ::shutdown(d->to, kShutWrite);
                d->shut = true;
            }
        }
        if (up.shut && down.shut)
            break;
        if ((hungUp[1] && up.sent < up.fill) || (hungUp[0] && down.sent < down.fill)) {
            ending = "lost";
            break;
        }
        const bool readClient = up.reading && up.fill == 0;
        const bool readServer = down.reading && down.fill == 0;
        PollFd fds[2]{};
        fds[0].fd = hungUp[0] && !readClient ? kNoSocket : client.get();
        fds[1].fd = hungUp[1] && !readServer ? kNoSocket : t.socket.get();
        fds[0].events = short((readClient ? POLLIN : 0) | (down.sent < down.fill ? POLLOUT : 0));
        fds[1].events = short((readServer ? POLLIN : 0) | (up.sent < up.fill ? POLLOUT : 0));
        if (pollSockets(fds, 2, kCopySliceMs) < 0)
            break;
        bool failed = false;
        for (int i = 0; i < 2; ++i) {
            if (fds[i].revents & POLLERR)
                failed = true;
            if (fds[i].revents & POLLHUP)
                hungUp[i] = true;
        }
        const short readable[2] = {short(fds[0].revents & (POLLIN | POLLHUP)),
                                   short(fds[1].revents & (POLLIN | POLLHUP))};
        int index = 0;
        for (Direction *d : {&up, &down}) {
            if (!failed && readable[index] && d->reading && d->fill == 0) {
                const auto n = ::recv(d->from, reinterpret_cast<char *>(d->buffer.data()),
                                      int(d->buffer.size()), 0);
                if (n > 0) {
                    d->fill = std::size_t(n);
                    d->sent = 0;
                } else if (n == 0) {
                    d->reading = false;
                } else if (!wouldBlock(lastError())) {
                    failed = true;
                }
            }
            if (!failed && d->sent < d->fill) {
                const auto n =
                    ::send(d->to, reinterpret_cast<const char *>(d->buffer.data()) + d->sent,
                           int(d->fill - d->sent), kSendFlags);
                if (n > 0) {
                    d->sent += std::size_t(n);
                    d->counter->fetch_add(std::uint64_t(n));
                    if (d->sent == d->fill)
                        d->fill = d->sent = 0;
                } else if (n < 0 && !wouldBlock(lastError())) {
                    failed = true;
                }
            }
            ++index;
        }
        if (failed) {
            ending = "lost";
            break;
        }
    }
    log(false, "SocksTcpRelay: tunnel to " + endpointText(m_targetHost, m_targetPort) + " " +
                   (m_stop.load() ? std::string("stopped") : ending) + " (" +
                   std::to_string(m_bytesUp.load()) + " bytes sent, " +
                   std::to_string(m_bytesDown.load()) + " received in all)");
}

SocksTcpRelay::Outcome SocksTcpRelay::testTunnel(const Proxy &proxy, const std::string &host,
                                                 std::uint16_t port, int timeoutMs,
                                                 std::int64_t *elapsedMs)
{
    const auto started = Clock::now();
    Tunnel t =
        openSocksTunnel(proxy, host, port, started + std::chrono::milliseconds(timeoutMs), nullptr);
    return finish(t.outcome, started, elapsedMs);
}

SocksTcpRelay::Outcome SocksTcpRelay::testHttpConnect(const Proxy &proxy, const std::string &host,
                                                      std::uint16_t port, int timeoutMs,
                                                      std::int64_t *elapsedMs)
{
    const auto started = Clock::now();
    const auto deadline = started + std::chrono::milliseconds(timeoutMs);
    Outcome o;
    if (host.empty() || port == 0) {
        o.failure = Failure::BadDestination;
        return finish(o, started, elapsedMs);
    }
    Connected c = connectTo(proxy.host, proxy.port, deadline, nullptr);
    if (c.failure != Failure::None) {
        o.failure = c.failure;
        o.detail = c.detail;
        return finish(o, started, elapsedMs);
    }
    const std::string target = endpointText(host, port);
    std::string request = "CONNECT " + target + " HTTP/1.1\r\nHost: " + target + "\r\n";
    if (!proxy.user.empty())
        request +=
            "Proxy-Authorization: Basic " + base64(proxy.user + ":" + proxy.password) + "\r\n";
    request += "\r\n";
    if (const Io io =
            sendAll(c.socket.get(), reinterpret_cast<const std::uint8_t *>(request.data()),
                    request.size(), deadline, nullptr);
        io != Io::Done)
        return finish(ioFailure(io, "CONNECT"), started, elapsedMs);
    std::vector<std::uint8_t> in;
    socks::Reply reply;
    const auto headerEnd = [](const std::uint8_t *data, std::size_t size) {
        socks::Reply r;
        const std::string text(reinterpret_cast<const char *>(data), size);
        if (size >= 5 && text.compare(0, 5, "HTTP/") != 0) {
            r.parse = socks::Parse::Invalid;
            r.problem = "not an HTTP proxy";
            return r;
        }
        const std::size_t end = text.find("\r\n\r\n");
        if (end == std::string::npos)
            return r;
        const std::size_t space = text.find(' ');
        r.code = space == std::string::npos ? 0 : std::atoi(text.c_str() + space + 1);
        r.length = end + 4;
        r.parse = socks::Parse::Complete;
        return r;
    };
    if (const Io io = readReply(c.socket.get(), in, headerEnd, &reply, deadline, nullptr);
        io != Io::Done)
        return finish(ioFailure(io, "CONNECT"), started, elapsedMs);
    if (reply.parse == socks::Parse::Invalid) {
        o.failure = Failure::BadReply;
        o.detail = reply.problem;
    } else if (reply.code == 407) {
        o.failure = Failure::AuthRefused;
        o.detail = "HTTP 407";
    } else if (reply.code < 200 || reply.code > 299) {
        o.failure = Failure::ConnectRefused;
        o.replyCode = reply.code;
        o.detail = "HTTP " + std::to_string(reply.code);
    }
    return finish(o, started, elapsedMs);
}

SocksTcpRelay::Probe SocksTcpRelay::probe(const std::string &host, std::uint16_t port,
                                          int timeoutMs)
{
    Connected c =
        connectTo(host, port, Clock::now() + std::chrono::milliseconds(timeoutMs), nullptr);
    switch (c.failure) {
    case Failure::None:
        return Probe::Open;
    case Failure::ProxyUnresolved:
        return Probe::Unresolved;
    case Failure::ProxyTimeout:
        return Probe::TimedOut;
    case Failure::ProxyUnreachable:
        return c.refused ? Probe::Refused : Probe::Failed;
    default:
        return Probe::Failed;
    }
}

} // namespace selvane
