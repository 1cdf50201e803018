// The system's sockets (BSD sockets, or Winsock on Windows) as the SOCKS relay uses them.

#include "net/SocketIo.h"

#include <algorithm>
#include <condition_variable>
#include <cstring>
#include <memory>
#include <mutex>
#include <system_error>
#include <thread>

#ifndef _WIN32
#include <cerrno>
#include <fcntl.h>
#include <netdb.h>
#include <netinet/tcp.h>
#include <unistd.h>
#endif

namespace selvane::sockio {

#ifdef _WIN32

int pollSockets(PollFd *fds, unsigned long count, int timeoutMs)
{
    return WSAPoll(fds, count, timeoutMs);
}
void closeSocket(Socket s)
{
    closesocket(s);
}
int lastError()
{
    return WSAGetLastError();
}
bool inProgress(int e)
{
    return e == WSAEWOULDBLOCK || e == WSAEINPROGRESS;
}
bool wouldBlock(int e)
{
    return e == WSAEWOULDBLOCK;
}
bool isRefused(int e)
{
    return e == WSAECONNREFUSED;
}
void setNonBlocking(Socket s)
{
    u_long on = 1;
    ioctlsocket(s, FIONBIO, &on);
}
void ensureSockets()
{
    static std::once_flag once;
    std::call_once(once, [] {
        WSADATA data;
        WSAStartup(MAKEWORD(2, 2), &data);
    });
}
#else

int pollSockets(PollFd *fds, unsigned long count, int timeoutMs)
{
    return ::poll(fds, nfds_t(count), timeoutMs);
}
void closeSocket(Socket s)
{
    ::close(s);
}
int lastError()
{
    return errno;
}
bool inProgress(int e)
{
    return e == EINPROGRESS || e == EWOULDBLOCK || e == EAGAIN || e == EINTR;
}
bool wouldBlock(int e)
{
    return e == EWOULDBLOCK || e == EAGAIN || e == EINTR;
}
bool isRefused(int e)
{
    return e == ECONNREFUSED;
}
void setNonBlocking(Socket s)
{
    const int flags = fcntl(s, F_GETFL, 0);
    fcntl(s, F_SETFL, flags | O_NONBLOCK);
}
void ensureSockets() {}
#endif

std::string errorText(int e)
{
    return std::system_category().message(e);
}

Socket toSocket(std::intptr_t handle)
{
    return Socket(handle);
}

void setNoDelay(Socket s)
{
    int on = 1;
    setsockopt(s, IPPROTO_TCP, TCP_NODELAY, reinterpret_cast<const char *>(&on), sizeof on);
}

int millisecondsUntil(Clock::time_point deadline)
{
    const auto left =
        std::chrono::duration_cast<std::chrono::milliseconds>(deadline - Clock::now());
    return int(std::max<std::chrono::milliseconds::rep>(0, left.count()));
}

bool stopped(const std::atomic<bool> *stop)
{
    return stop && stop->load();
}

// Polls one socket in short slices until it is ready, the deadline passes or the stop flag is set.
Wait waitFor(Socket s, short events, Clock::time_point deadline, const std::atomic<bool> *stop)
{
    for (;;) {
        if (stopped(stop))
            return Wait::Stopped;
        const int left = millisecondsUntil(deadline);
        if (left <= 0)
            return Wait::TimedOut;
        PollFd fd{};
        fd.fd = s;
        fd.events = events;
        const int n = pollSockets(&fd, 1, std::min(left, kSliceMs));
        if (n > 0)
            return Wait::Ready;
    }
}

namespace {

std::vector<Address> toAddresses(const addrinfo *list)
{
    std::vector<Address> out;
    for (const addrinfo *ai = list; ai; ai = ai->ai_next) {
        if (ai->ai_addrlen > sizeof(sockaddr_storage))
            continue;
        Address a;
        std::memcpy(&a.storage, ai->ai_addr, ai->ai_addrlen);
        a.length = SockLen(ai->ai_addrlen);
        out.push_back(a);
    }
    return out;
}

} // namespace

// Names are looked up on a thread of their own, so that a slow resolver costs at most
// `kResolveTimeout`; the thread finishes on its own when the answer comes late.
Resolution resolve(const std::string &host, std::uint16_t port, Clock::time_point deadline,
                   const std::atomic<bool> *stop)
{
    ensureSockets();
    Resolution result;
    const std::string service = std::to_string(port);
    addrinfo hints{};
    hints.ai_family = AF_UNSPEC;
    hints.ai_socktype = SOCK_STREAM;
    hints.ai_flags = AI_NUMERICHOST;
    addrinfo *list = nullptr;
    if (getaddrinfo(host.c_str(), service.c_str(), &hints, &list) == 0) {
        result.addresses = toAddresses(list);
        freeaddrinfo(list);
        return result;
    }
    struct Shared
    {
        std::mutex mutex;
        std::condition_variable done;
        bool finished = false;
        int status = 0;
        std::vector<Address> addresses;
    };
    auto shared = std::make_shared<Shared>();
    std::thread([shared, host, service] {
        addrinfo hints{};
        hints.ai_family = AF_UNSPEC;
        hints.ai_socktype = SOCK_STREAM;
        addrinfo *list = nullptr;
        const int status = getaddrinfo(host.c_str(), service.c_str(), &hints, &list);
        std::vector<Address> addresses;
        if (status == 0) {
            addresses = toAddresses(list);
            freeaddrinfo(list);
        }
        std::lock_guard lock(shared->mutex);
        shared->status = status;
        shared->addresses = std::move(addresses);
        shared->finished = true;
        shared->done.notify_all();
    }).detach();
    const auto limit = std::min(deadline, Clock::now() + kResolveTimeout);
    std::unique_lock lock(shared->mutex);
    while (!shared->finished && !stopped(stop) && Clock::now() < limit)
        shared->done.wait_for(lock, std::chrono::milliseconds(kSliceMs));
    if (!shared->finished) {
        result.timedOut = true;
        result.error = "name lookup took too long";
        return result;
    }
    if (shared->status != 0) {
#ifdef _WIN32
        // Qt builds with UNICODE, where gai_strerror names the wide-character version.
        result.error = gai_strerrorA(shared->status);
#else
        result.error = gai_strerror(shared->status);
#endif
        return result;
    }
    result.addresses = shared->addresses;
    return result;
}

} // namespace selvane::sockio
