# Cross-compiles for 64-bit Windows with Debian's mingw-w64 (the posix thread model, which
# std::thread and std::mutex need). Libraries, headers and CMake packages come from a prefix
# of cross-built libraries (FFmpeg, Qt, ...); programs (moc, rcc, pkg-config, ...) come from
# the host.
#
#   cmake -DCMAKE_TOOLCHAIN_FILE=cmake/mingw-w64-x86_64.cmake -DSELVANE_WINDOWS_PREFIX=/path ...
#
# The prefix is the SELVANE_WINDOWS_PREFIX cache variable, else the environment variable of the
# same name. scripts/build-windows.sh builds such a prefix. To run the Windows test programs on
# the host, add -DCMAKE_CROSSCOMPILING_EMULATOR=wine.

set(CMAKE_SYSTEM_NAME Windows)
set(CMAKE_SYSTEM_PROCESSOR AMD64)

set(SELVANE_MINGW_TRIPLE x86_64-w64-mingw32)
set(CMAKE_C_COMPILER ${SELVANE_MINGW_TRIPLE}-gcc-posix)
set(CMAKE_CXX_COMPILER ${SELVANE_MINGW_TRIPLE}-g++-posix)
set(CMAKE_RC_COMPILER ${SELVANE_MINGW_TRIPLE}-windres)
set(CMAKE_AR ${SELVANE_MINGW_TRIPLE}-gcc-ar-posix CACHE FILEPATH "archiver")
set(CMAKE_RANLIB ${SELVANE_MINGW_TRIPLE}-gcc-ranlib-posix CACHE FILEPATH "ranlib")

if(NOT SELVANE_WINDOWS_PREFIX AND DEFINED ENV{SELVANE_WINDOWS_PREFIX})
  set(SELVANE_WINDOWS_PREFIX "$ENV{SELVANE_WINDOWS_PREFIX}")
endif()
set(SELVANE_WINDOWS_PREFIX "${SELVANE_WINDOWS_PREFIX}" CACHE PATH
  "prefix holding the cross-built Windows libraries")
# try_compile() projects read the toolchain file again without the cache: hand the prefix on.
list(APPEND CMAKE_TRY_COMPILE_PLATFORM_VARIABLES SELVANE_WINDOWS_PREFIX)
if(SELVANE_WINDOWS_PREFIX)
  # Exported for pkg-config and for the build steps that CMake runs in child processes.
  set(ENV{SELVANE_WINDOWS_PREFIX} "${SELVANE_WINDOWS_PREFIX}")
endif()

# The compiler's own sysroot (/usr/x86_64-w64-mingw32) and the prefix; nothing of the host's.
set(CMAKE_FIND_ROOT_PATH /usr/${SELVANE_MINGW_TRIPLE})
if(SELVANE_WINDOWS_PREFIX)
  list(PREPEND CMAKE_FIND_ROOT_PATH "${SELVANE_WINDOWS_PREFIX}")
  list(APPEND CMAKE_PREFIX_PATH "${SELVANE_WINDOWS_PREFIX}")
endif()
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)

# pkg-config reads only the prefix's .pc files. Their paths are already absolute paths inside
# the prefix (the libraries are configured with --prefix=<prefix>), so no sysroot is prepended.
set(PKG_CONFIG_EXECUTABLE pkg-config CACHE FILEPATH "pkg-config")
if(SELVANE_WINDOWS_PREFIX)
  set(ENV{PKG_CONFIG_LIBDIR} "${SELVANE_WINDOWS_PREFIX}/lib/pkgconfig")
else()
  set(ENV{PKG_CONFIG_LIBDIR} "/usr/${SELVANE_MINGW_TRIPLE}/lib/pkgconfig")
endif()
set(ENV{PKG_CONFIG_PATH} "")
set(ENV{PKG_CONFIG_SYSROOT_DIR} "")
# pkg-config leaves out the -I and -L of the host's system directories by default, which is
# harmless here; the prefix's are always kept.
set(ENV{PKG_CONFIG_ALLOW_SYSTEM_CFLAGS} 1)
set(ENV{PKG_CONFIG_ALLOW_SYSTEM_LIBS} 1)
