#include "app/LogSinkPlatform.h"

#include <cerrno>
#include <csignal>
#include <cstdio>

#ifdef _WIN32
#include <fcntl.h>
#include <io.h>
#include <sys/stat.h>
#include <windows.h>
#else
#include <fcntl.h>
#include <poll.h>
#include <sys/ioctl.h>
#include <sys/stat.h>
#include <unistd.h>
#endif

namespace selvane::logplatform {

namespace {
void (*g_abortFlush)() = nullptr;
void (*g_consoleFlush)() = nullptr;

extern "C" void onAbortSignal(int)
{
    if (g_abortFlush)
        g_abortFlush();
    std::signal(SIGABRT, SIG_DFL);
    std::raise(SIGABRT);
}

#ifdef _WIN32
BOOL WINAPI onConsoleEvent(DWORD)
{
    if (g_consoleFlush)
        g_consoleFlush();
    return FALSE; // let the default handling end the process
}
#else
extern "C" void onConsoleSignal(int signalNumber)
{
    if (g_consoleFlush)
        g_consoleFlush();
    std::signal(signalNumber, SIG_DFL);
    std::raise(signalNumber);
}
#endif
} // namespace

#ifdef _WIN32

int stderrDescriptor()
{
    return _fileno(stderr);
}
int duplicateDescriptor(int fd)
{
    return _dup(fd);
}
bool replaceDescriptor(int fromFd, int toFd)
{
    return _dup2(fromFd, toFd) == 0;
}
void closeDescriptor(int fd)
{
    if (fd >= 0)
        _close(fd);
}

bool createPipe(int fds[2], unsigned bufferBytes)
{
    return _pipe(fds, bufferBytes, _O_BINARY | _O_NOINHERIT) == 0;
}

std::int64_t peekPipe(int readFd)
{
    const HANDLE handle = reinterpret_cast<HANDLE>(_get_osfhandle(readFd));
    if (handle == INVALID_HANDLE_VALUE)
        return -1;
    DWORD available = 0;
    if (!PeekNamedPipe(handle, nullptr, 0, nullptr, &available, nullptr))
        return -1;
    return static_cast<std::int64_t>(available);
}

std::int64_t readPipe(int readFd, char *buffer, std::size_t maxBytes)
{
    const HANDLE handle = reinterpret_cast<HANDLE>(_get_osfhandle(readFd));
    DWORD got = 0;
    if (!ReadFile(handle, buffer, static_cast<DWORD>(maxBytes), &got, nullptr))
        return -1;
    return static_cast<std::int64_t>(got);
}

std::int64_t writeDescriptor(int fd, const char *data, std::size_t size)
{
    return _write(fd, data, static_cast<unsigned>(size));
}

void debugOutput(const char *textWithLf)
{
    OutputDebugStringA(textWithLf);
}

int openTruncate(const std::string &path)
{
    return _open(path.c_str(), _O_WRONLY | _O_CREAT | _O_TRUNC | _O_TEXT | _O_NOINHERIT,
                 _S_IREAD | _S_IWRITE);
}

int openAppend(const std::string &path)
{
    return _open(path.c_str(), _O_WRONLY | _O_CREAT | _O_APPEND | _O_TEXT | _O_NOINHERIT,
                 _S_IREAD | _S_IWRITE);
}

std::int64_t descriptorSize(int fd)
{
    struct _stat64 st
    {
    };
    if (_fstat64(fd, &st) != 0)
        return 0;
    return st.st_size;
}

bool fileExists(const std::string &path)
{
    struct _stat64 st
    {
    };
    return _stat64(path.c_str(), &st) == 0;
}

bool removeFile(const std::string &path)
{
    return std::remove(path.c_str()) == 0;
}
bool renameFile(const std::string &from, const std::string &to)
{
    return std::rename(from.c_str(), to.c_str()) == 0;
}

void installAbortHandler(void (*flush)())
{
    g_abortFlush = flush;
    std::signal(SIGABRT, onAbortSignal);
}

void installConsoleHandler(void (*flush)())
{
    g_consoleFlush = flush;
    SetConsoleCtrlHandler(onConsoleEvent, TRUE);
}

#else // POSIX

int stderrDescriptor()
{
    return fileno(stderr);
}

int duplicateDescriptor(int fd)
{
    return fcntl(fd, F_DUPFD_CLOEXEC, 0);
}

bool replaceDescriptor(int fromFd, int toFd)
{
    return dup2(fromFd, toFd) >= 0;
}

void closeDescriptor(int fd)
{
    if (fd >= 0)
        ::close(fd);
}

bool createPipe(int fds[2], unsigned bufferBytes)
{
    if (pipe2(fds, O_CLOEXEC) != 0)
        return false;
#ifdef F_SETPIPE_SZ
    fcntl(fds[1], F_SETPIPE_SZ, static_cast<int>(bufferBytes));
#else
    (void)bufferBytes;
#endif
    return true;
}

std::int64_t peekPipe(int readFd)
{
    int available = 0;
    if (ioctl(readFd, FIONREAD, &available) != 0)
        return -1;
    if (available > 0)
        return available;
    // An empty pipe whose every write end is closed reports a hang-up: the writer is gone.
    pollfd probe{readFd, POLLIN, 0};
    if (poll(&probe, 1, 0) < 0)
        return -1;
    if (probe.revents & (POLLHUP | POLLERR | POLLNVAL))
        return -1;
    return 0;
}

std::int64_t readPipe(int readFd, char *buffer, std::size_t maxBytes)
{
    ssize_t got = 0;
    do {
        got = ::read(readFd, buffer, maxBytes);
    } while (got < 0 && errno == EINTR);
    return got;
}

std::int64_t writeDescriptor(int fd, const char *data, std::size_t size)
{
    ssize_t written = 0;
    do {
        written = ::write(fd, data, size);
    } while (written < 0 && errno == EINTR);
    return written;
}

void debugOutput(const char *) {}

int openTruncate(const std::string &path)
{
    return ::open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0644);
}

int openAppend(const std::string &path)
{
    return ::open(path.c_str(), O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0644);
}

std::int64_t descriptorSize(int fd)
{
    struct stat st
    {
    };
    if (fstat(fd, &st) != 0)
        return 0;
    return st.st_size;
}

bool fileExists(const std::string &path)
{
    struct stat st
    {
    };
    return ::stat(path.c_str(), &st) == 0;
}

bool removeFile(const std::string &path)
{
    return ::unlink(path.c_str()) == 0;
}

bool renameFile(const std::string &from, const std::string &to)
{
    return ::rename(from.c_str(), to.c_str()) == 0;
}

void installAbortHandler(void (*flush)())
{
    g_abortFlush = flush;
    struct sigaction action
    {
    };
    action.sa_handler = onAbortSignal;
    sigemptyset(&action.sa_mask);
    sigaction(SIGABRT, &action, nullptr);
}

void installConsoleHandler(void (*flush)())
{
    g_consoleFlush = flush;
    struct sigaction action
    {
    };
    action.sa_handler = onConsoleSignal;
    sigemptyset(&action.sa_mask);
    for (int signalNumber : {SIGINT, SIGTERM, SIGHUP})
        sigaction(signalNumber, &action, nullptr);
}

#endif

} // namespace selvane::logplatform
