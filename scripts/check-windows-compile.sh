#!/usr/bin/env bash
# Syntax-checks the Windows branches of the files that include neither Qt nor FFmpeg.
set -euo pipefail
root="$(cd "$(dirname "$0")/.." && pwd)"
cxx=""
for candidate in x86_64-w64-mingw32-g++-posix x86_64-w64-mingw32-g++; do
  if command -v "$candidate" >/dev/null 2>&1; then cxx="$candidate"; break; fi
done
if [ -z "$cxx" ]; then
  echo "windows compile check skipped: no mingw-w64 C++ compiler"
  exit 77
fi
files=(app/LogSinkPlatform.cpp input/WindowsCapture.cpp net/SocksTcpRelay.cpp net/SocketIo.cpp
  net/SocksWire.cpp media/ThreadName.cpp compose/BlendRows.cpp)
for f in "${files[@]}"; do
  "$cxx" -std=c++20 -Wall -Wextra -DUNICODE -D_UNICODE -fsyntax-only -I"$root" "$root/$f"
  echo "windows syntax ok: $f"
done
