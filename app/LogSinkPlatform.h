#pragma once

// Operating-system calls of the log sink, kept free of Qt and FFmpeg so that the Windows
// branches can be syntax-checked with a cross compiler. Everything here may be called from any
// thread; the signal/console handlers call only the functions marked signal-tolerant.

#include <cstddef>
#include <cstdint>
#include <string>

namespace selvane::logplatform {

// Descriptor of the runtime library's standard error stream.
int stderrDescriptor();
// dup(): -1 on failure.
int duplicateDescriptor(int fd);
// dup2(): false on failure.
bool replaceDescriptor(int fromFd, int toFd);
void closeDescriptor(int fd);
// Anonymous pipe with the given buffer size, binary mode; the read end is not inherited by
// child processes. fds[0] read end, fds[1] write end.
bool createPipe(int fds[2], unsigned bufferBytes);
// Bytes waiting in the pipe, or -1 when the pipe is broken (its write end is gone and it is
// empty). Never blocks.
std::int64_t peekPipe(int readFd);
// Reads up to maxBytes that are known to be available; <= 0 on failure or end.
std::int64_t readPipe(int readFd, char *buffer, std::size_t maxBytes);
// One write() call; the count written or -1. Signal-tolerant.
std::int64_t writeDescriptor(int fd, const char *data, std::size_t size);
// Debugger output mirror; a no-op where the platform has none. Signal-tolerant.
void debugOutput(const char *textWithLf);

// Log files. Paths are in the local 8-bit encoding. Signal-tolerant.
int openTruncate(const std::string &path);
int openAppend(const std::string &path);
std::int64_t descriptorSize(int fd);
bool fileExists(const std::string &path);
bool removeFile(const std::string &path);
bool renameFile(const std::string &from, const std::string &to);

// Abnormal-end hooks: `flush` runs first, then the default action ends the process.
// Abort: SIGABRT. Console: Ctrl+C, close and log-off events on Windows; SIGINT, SIGTERM and
// SIGHUP on POSIX systems.
void installAbortHandler(void (*flush)());
void installConsoleHandler(void (*flush)());

} // namespace selvane::logplatform
