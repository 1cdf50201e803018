#pragma once

// The system's sockets as the SOCKS relay uses them: one set of names over BSD sockets and
// Winsock (the socket type, polling, errors, non-blocking mode), a socket that closes itself,
// bounded waits that a stop flag ends, and name lookups that give up after a time.
//
// Free functions; any thread. Plain C++ and the system's headers, no Qt, so that the Windows
// branches are checked with the cross compiler.

#ifdef _WIN32
#ifndef _WIN32_WINNT
#define _WIN32_WINNT 0x0600
#endif
#include <winsock2.h>
#include <ws2tcpip.h>
#else
#include <arpa/inet.h>
#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>
#endif

#include <atomic>
#include <chrono>
#include <cstdint>
#include <string>
#include <vector>

namespace selvane::sockio {

using Clock = std::chrono::steady_clock;

// A name lookup gives up after this long; waits are polled in slices this long.
constexpr std::chrono::milliseconds kResolveTimeout{2000};
constexpr int kSliceMs = 100;

#ifdef _WIN32
using Socket = SOCKET;
const Socket kNoSocket = INVALID_SOCKET;
using PollFd = WSAPOLLFD;
using SockLen = int;
constexpr int kSendFlags = 0;
constexpr int kShutWrite = SD_SEND;
#else
using Socket = int;
constexpr Socket kNoSocket = -1;
using PollFd = pollfd;
using SockLen = socklen_t;
#ifdef MSG_NOSIGNAL
constexpr int kSendFlags = MSG_NOSIGNAL;
#else
constexpr int kSendFlags = 0;
#endif
constexpr int kShutWrite = SHUT_WR;
#endif

int pollSockets(PollFd *fds, unsigned long count, int timeoutMs);
void closeSocket(Socket s);
int lastError();
bool inProgress(int e);
bool wouldBlock(int e);
bool isRefused(int e);
void setNonBlocking(Socket s);
// Winsock is started once per process before the first socket; nothing elsewhere.
void ensureSockets();
std::string errorText(int e);
Socket toSocket(std::intptr_t handle);
void setNoDelay(Socket s);
int millisecondsUntil(Clock::time_point deadline);
bool stopped(const std::atomic<bool> *stop);

// Closes the socket it holds when it goes.
class OwnedSocket
{
public:
    OwnedSocket() = default;
    explicit OwnedSocket(Socket s) : m_socket(s) {}
    ~OwnedSocket() { reset(); }
    OwnedSocket(OwnedSocket &&other) noexcept : m_socket(other.release()) {}
    OwnedSocket &operator=(OwnedSocket &&other) noexcept
    {
        if (this != &other) {
            reset();
            m_socket = other.release();
        }
        return *this;
    }
    Socket get() const { return m_socket; }
    bool valid() const { return m_socket != kNoSocket; }
    Socket release()
    {
        const Socket s = m_socket;
        m_socket = kNoSocket;
        return s;
    }
    void reset()
    {
        if (m_socket != kNoSocket)
            closeSocket(m_socket);
        m_socket = kNoSocket;
    }

private:
    Socket m_socket = kNoSocket;
};

enum class Wait
{
    Ready,
    TimedOut,
    Stopped,
};

// Polls one socket in short slices until it is ready, the deadline passes or the stop flag is set.
Wait waitFor(Socket s, short events, Clock::time_point deadline, const std::atomic<bool> *stop);

struct Address
{
    sockaddr_storage storage{};
    SockLen length = 0;
};

struct Resolution
{
    std::vector<Address> addresses;
    bool timedOut = false;
    std::string error;
};

// Looks up a host name (an address is taken as it is), within the deadline and at most
// kResolveTimeout, on a thread of its own that finishes by itself when the answer comes late.
Resolution resolve(const std::string &host, std::uint16_t port, Clock::time_point deadline,
                   const std::atomic<bool> *stop);

} // namespace selvane::sockio
