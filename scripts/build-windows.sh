#!/usr/bin/env bash
# Cross-builds Selvane for Windows x64 with Debian's mingw-w64: first its libraries (x264,
# FFmpeg, Qt base, shader tools and multimedia), all from Debian's own source packages, into one
# prefix of Windows libraries; then selvane.exe, laid out with everything it needs in
# dist/windows/, and its installer dist/Selvane_Setup_<version>.exe.
#
#   scripts/build-windows.sh [--toolchain-only] [--stage NAME] [--clean-stage NAME] [--status]
#                            [--refresh]
#
#   --toolchain-only    build the libraries and stop
#   --stage NAME        run one stage again, done or not (name or number)
#   --clean-stage NAME  forget that a stage is done; the next run builds it again
#   --status            list the stages, done or not, with the time each took
#   --refresh           look for newer Debian source packages even when the lists are recent
#
# Stages: packages, sources, x264, ffmpeg, qt6-base, qt6-modules. Each one that completes leaves
# a stamp and is skipped on later runs; a build stage's stamp names the versions of the source
# packages it was built from, so a newer Debian source builds that stage (and the ones built
# on it) again. Builds continue where an interrupted run stopped.
#
# The source packages come through a private apt configuration (its own sources list, state and
# cache) with deb-src entries for the mirror and the suites of the machine's own apt sources,
# verified against Debian's archive keyring. Nothing comes from anywhere else.
#
# Every compile runs under nice -n 19 with two jobs, so that other work on the machine keeps
# priority. Each stage's full output goes to a log in the cache; the terminal gets progress
# lines and, when a stage fails, the end of its log.
#
# Environment: SELVANE_WINDOWS_CACHE (default $XDG_CACHE_HOME/selvane-windows),
# SELVANE_WINDOWS_PREFIX (default <cache>/prefix), SELVANE_WINDOWS_JOBS (default 2),
# SELVANE_DEBIAN_KEYRING (default: Debian's archive keyring).
# The stages are called by name (stage_<name>), which shellcheck cannot follow.
# shellcheck disable=SC2317
set -euo pipefail

root="$(cd "$(dirname "$0")/.." && pwd)"
# shellcheck source=scripts/lib/debian-sources.sh
. "$root/scripts/lib/debian-sources.sh"

cache="${SELVANE_WINDOWS_CACHE:-${XDG_CACHE_HOME:-$HOME/.cache}/selvane-windows}"
prefix="${SELVANE_WINDOWS_PREFIX:-$cache/prefix}"
jobs="${SELVANE_WINDOWS_JOBS:-2}"
keyring="${SELVANE_DEBIAN_KEYRING:-/usr/share/keyrings/debian-archive-keyring.gpg}"
toolchain="$root/cmake/mingw-w64-x86_64.cmake"
# The host's Qt (tools and their CMake packages) for the cross builds of Qt.
host_qt_cmake_dir="/usr/lib/$(dpkg-architecture -qDEB_HOST_MULTIARCH 2>/dev/null || gcc -print-multiarch)/cmake"
triple=x86_64-w64-mingw32
# The source package lists are looked at again after this many days.
refresh_days=7

stages=(packages sources x264 ffmpeg qt6-base qt6-modules)
stage_titles=("build packages" "Debian source packages" "x264" "FFmpeg" "Qt base"
  "Qt shader tools and multimedia")
# The Debian source packages, with the upstream versions the build is made for.
source_packages=(ffmpeg x264 qt6-base qt6-shadertools qt6-multimedia)
declare -A wanted_upstream=(
  [ffmpeg]='5.1.*' [x264]='*' [qt6-base]='6.4.2*' [qt6-shadertools]='6.4.2*'
  [qt6-multimedia]='6.4.2*'
)
host_packages=(
  gcc-mingw-w64-x86-64-posix g++-mingw-w64-x86-64-posix binutils-mingw-w64-x86-64 mingw-w64-tools
  nasm make dpkg-dev debian-archive-keyring xz-utils cmake ninja-build pkg-config perl python3
  # Qt's cross build runs the host's Qt tools (moc, rcc, uic, qsb, ...) of the same version.
  qt6-base-dev qt6-base-dev-tools qt6-tools-dev-tools qt6-shadertools-dev
  # For running the Windows build on the host and for the installer.
  wine64 wine nsis
)

usage() { awk 'NR > 1 && !/^#/ { exit } NR > 1 { sub(/^# ?/, ""); print }' "$0"; }
die() { printf 'build-windows: %s\n' "$*" >&2; exit 2; }

mode=build
only_stage=""
refresh=0
toolchain_only=0
while [ $# -gt 0 ]; do
  case "$1" in
    --toolchain-only) toolchain_only=1 ;;
    --stage) shift; only_stage="${1:-}"; [ -n "$only_stage" ] || die "--stage needs a name" ;;
    --clean-stage) shift; mode=clean; only_stage="${1:-}"; [ -n "$only_stage" ] || die "--clean-stage needs a name" ;;
    --status) mode=status ;;
    --refresh) refresh=1 ;;
    -h|--help) usage; exit 0 ;;
    *) die "unknown argument: $1 (see --help)" ;;
  esac
  shift
done

# The index (0-based) of a stage given by name or number.
stage_index() {
  local i
  for i in "${!stages[@]}"; do
    if [ "$1" = "${stages[$i]}" ] || [ "$1" = "$((i + 1))" ]; then printf '%s\n' "$i"; return 0; fi
  done
  die "no stage '$1' (stages: ${stages[*]})"
}

stamps="$cache/stamps"
logs="$cache/logs"
versions_file="$cache/versions"
# The source packages the mirror listed but did not serve: "PACKAGE VERSION" lines.
missing_file="$cache/sources-missing"
apt_dir="$cache/apt"
mkdir -p "$stamps" "$logs"

duration() {
  local s="$1"
  if [ "$s" -ge 3600 ]; then printf '%dh %02dm %02ds' $((s / 3600)) $((s % 3600 / 60)) $((s % 60))
  elif [ "$s" -ge 60 ]; then printf '%dm %02ds' $((s / 60)) $((s % 60))
  else printf '%ds' "$s"; fi
}

# --- versions of the unpacked source packages: "PACKAGE VERSION DIRECTORY" lines ---
source_version() {
  [ -f "$versions_file" ] || return 1
  awk -v p="$1" '$1 == p { print $2; found = 1 } END { exit !found }' "$versions_file"
}
source_dir() {
  [ -f "$versions_file" ] || die "no source packages yet: run the sources stage"
  if ! awk -v p="$1" '$1 == p { print $3; found = 1 } END { exit !found }' "$versions_file"; then
    if [ -f "$missing_file" ] && grep -q "^$1 " "$missing_file"; then
      die "no source of $(grep "^$1 " "$missing_file"): the machine's Debian mirror lists it but did not serve its archives"
    fi
    die "no source package $1: run the sources stage"
  fi
}

# What a stage's stamp must say for the stage to count as done.
stage_key() {
  local p key=""
  case "$1" in
    packages) printf '%s\n' "${host_packages[*]}" ;;
    sources) printf 'sources\n' ;;
    x264) printf 'x264=%s\n' "$(source_version x264 || echo none)" ;;
    ffmpeg) printf 'ffmpeg=%s x264=%s\n' "$(source_version ffmpeg || echo none)" \
      "$(source_version x264 || echo none)" ;;
    qt6-base) printf 'qt6-base=%s\n' "$(source_version qt6-base || echo none)" ;;
    qt6-modules)
      for p in qt6-base qt6-shadertools qt6-multimedia; do
        key+="${key:+ }$p=$(source_version "$p" || echo none)"
      done
      printf '%s\n' "$key" ;;
  esac
}

stamp_field() { sed -n "s/^$2=//p" "$stamps/$1.done" 2>/dev/null | head -n 1; }

# Whether a stage is done: its stamp exists and names what the stage is now built from.
stage_done() {
  local name="$1"
  [ -f "$stamps/$name.done" ] || return 1
  [ "$(stamp_field "$name" key)" = "$(stage_key "$name")" ] || return 1
  case "$name" in
    packages)
      # Packages removed since are installed again.
      missing_packages >/dev/null && return 1 ;;
    sources)
      [ "$refresh" -eq 0 ] || return 1
      # Source packages the mirror did not serve are asked for again.
      [ ! -s "$missing_file" ] || return 1
      [ -n "$(find "$stamps/sources.done" -mtime -"$refresh_days" 2>/dev/null)" ] || return 1 ;;
  esac
  return 0
}

# --- output: progress lines on the terminal (fd 3) and in the stage's log ---
exec 3>&1
current_stage=""
progress() {
  local line="[stage $((current_index + 1))/${#stages[@]}] $current_stage: $*"
  printf '%s\n' "$line" >&3
  printf '\n==== %s (%s)\n' "$line" "$(date '+%F %T')"
}

# Runs a compile or install step: niced, with its output in the log.
niced() { nice -n 19 "$@"; }

# =========================================================================================
# Stage 1: the host packages the cross build needs
missing_packages() {
  local p status missing=()
  for p in "${host_packages[@]}"; do
    status="$(dpkg-query -W -f='${db:Status-Status}' "$p" 2>/dev/null || true)"
    [ "$status" = installed ] || missing+=("$p")
  done
  [ ${#missing[@]} -gt 0 ] || return 1
  printf '%s\n' "${missing[@]}"
}

stage_packages() {
  local missing
  mapfile -t missing < <(missing_packages || true)
  if [ ${#missing[@]} -eq 0 ]; then
    progress "all ${#host_packages[@]} packages are installed"
    return 0
  fi
  [ "$(id -u)" -eq 0 ] || die "installing ${missing[*]} needs root"
  progress "apt-get update"
  apt-get -o DPkg::Lock::Timeout=900 -q update
  progress "apt-get install ${missing[*]}"
  DEBIAN_FRONTEND=noninteractive apt-get -o DPkg::Lock::Timeout=900 -q -y \
    --no-install-recommends install "${missing[@]}"
}

# =========================================================================================
# Stage 2: Debian's source packages, through a private apt configuration
stage_sources() {
  local entries=() uri suite uri_suite
  private_apt_init "$apt_dir"
  machine_mirror >/dev/null || die "no Debian mirror in the machine's apt sources"
  mapfile -t entries < <(debian_suite_entries)
  : >"$apt_dir/sources.list"
  for uri_suite in "${entries[@]}"; do
    read -r uri suite <<<"$uri_suite"
    printf 'deb-src [signed-by=%s] %s %s main\n' "$keyring" "$uri" "$suite" >>"$apt_dir/sources.list"
  done
  [ -s "$apt_dir/sources.list" ] || die "no Debian suite in the machine's apt sources"
  local opts
  mapfile -t opts < <(private_apt_options "$apt_dir")

  progress "apt-get update (deb-src of the machine's suites: $(awk '{ printf "%s%s", sep, $4; sep = " " }' "$apt_dir/sources.list"))"
  apt-get "${opts[@]}" -q update

  local p dsc version upstream dir unpacked
  : >"$versions_file.new"
  : >"$missing_file.new"
  for p in "${source_packages[@]}"; do
    # The candidate's .dsc names the version; the epoch is not part of the file names.
    dsc="$(cd "$apt_dir" && apt-get "${opts[@]}" -q source --print-uris "$p" |
      awk '$2 ~ /\.dsc$/ { print $2; exit }')"
    [ -n "$dsc" ] || die "no source package $p in the machine's suites"
    version="${dsc%.dsc}"
    version="${version#"${p}_"}"
    upstream="${version%-*}"
    # shellcheck disable=SC2053 # a glob on purpose
    [[ "$upstream" == ${wanted_upstream[$p]} ]] ||
      die "$p $version is not the wanted ${wanted_upstream[$p]}"
    dir="$cache/src/${p}_$version"
    if [ ! -f "$dir/.unpacked" ]; then
      progress "apt-get source $p ($version)"
      rm -rf "$dir"
      mkdir -p "$dir"
      # apt-get source unpacks with dpkg-source, which applies Debian's patches.
      if ! (cd "$dir" && apt-get "${opts[@]}" -q source "$p"); then
        # A mirror may list a source package whose archives it does not hold. The stages
        # that need it fail; the others go on, and the next run asks again.
        progress "WARNING: the mirror did not serve the source archives of $p $version"
        printf '%s %s\n' "$p" "$version" >>"$missing_file.new"
        rm -rf "$dir"
        continue
      fi
      touch "$dir/.unpacked"
    else
      progress "$p $version already unpacked"
    fi
    unpacked="$(find "$dir" -mindepth 1 -maxdepth 1 -type d | head -n 1)"
    [ -n "$unpacked" ] || die "apt-get source $p left no directory"
    printf '%s %s %s\n' "$p" "$version" "$unpacked" >>"$versions_file.new"
  done
  mv "$versions_file.new" "$versions_file"
  mv "$missing_file.new" "$missing_file"
  progress "versions: $(awk '{ printf "%s%s %s", sep, $1, $2; sep = ", " }' "$versions_file")"
  if [ -s "$missing_file" ]; then
    progress "missing: $(awk '{ printf "%s%s %s", sep, $1, $2; sep = ", " }' "$missing_file") (asked again on the next run)"
  fi
}

# Configures only when the options differ from the last configure in that build directory, so
# that a resumed build is not made from scratch again.
configure_once() {
  local build="$1"; shift
  local want
  want="$(printf '%q ' "$@")"
  if [ -f "$build/.configured" ] && [ "$(cat "$build/.configured")" = "$want" ]; then
    progress "configure: unchanged, kept"
    return 0
  fi
  rm -f "$build/.configured"
  progress "configure"
  (cd "$build" && "$@")
  printf '%s' "$want" >"$build/.configured"
}

pkg_config_env() {
  export PKG_CONFIG_LIBDIR="$prefix/lib/pkgconfig"
  export PKG_CONFIG_PATH=""
  export PKG_CONFIG_SYSROOT_DIR=""
}

# =========================================================================================
# Stage 3: x264
stage_x264() {
  local src build
  src="$(source_dir x264)"
  build="$cache/build/x264_$(source_version x264)"
  mkdir -p "$build" "$prefix"
  pkg_config_env
  configure_once "$build" env CC="$triple-gcc-posix" "$src/configure" \
    --prefix="$prefix" --host="$triple" --cross-prefix="$triple-" \
    --enable-shared --disable-cli --disable-lavf --disable-swscale --disable-ffms \
    --disable-gpac --disable-lsmash
  progress "build (make -j$jobs)"
  niced make -C "$build" -j"$jobs"
  progress "install into $prefix"
  niced make -C "$build" install
}

# =========================================================================================
# Stage 4: FFmpeg
stage_ffmpeg() {
  local src build
  src="$(source_dir ffmpeg)"
  build="$cache/build/ffmpeg_$(source_version ffmpeg)"
  mkdir -p "$build"
  pkg_config_env
  [ -f "$prefix/lib/pkgconfig/x264.pc" ] || die "no x264 in $prefix: run the x264 stage"
  # The libraries only: the program links them; dshow and gdigrab (cameras, screens) and the
  # lavfi device come with the default set of input devices, schannel does TLS for the
  # streaming outputs.
  configure_once "$build" "$src/configure" \
    --prefix="$prefix" --target-os=mingw32 --arch=x86_64 --enable-cross-compile \
    --cross-prefix="$triple-" --cc="$triple-gcc-posix" --cxx="$triple-g++-posix" \
    --pkg-config=pkg-config \
    --enable-shared --disable-static --disable-programs --disable-doc --disable-debug \
    --enable-gpl --enable-libx264 --enable-schannel \
    --enable-indev=dshow --enable-indev=gdigrab --enable-indev=lavfi \
    --enable-avdevice --enable-avfilter --enable-swscale --enable-swresample
  progress "build (make -j$jobs)"
  niced make -C "$build" -j"$jobs"
  progress "install into $prefix"
  niced make -C "$build" install
}

# Builds and installs one CMake project with ninja, niced.
cmake_build_install() {
  local build="$1"
  progress "build (ninja -j$jobs)"
  niced cmake --build "$build" --parallel "$jobs"
  progress "install into $prefix"
  niced cmake --install "$build"
}

# Qt's Windows code names some headers as they are spelled on Windows, whose file names do
# not care about case: Windows SDK headers (<Mferror.h>, "Mfidl.h", ...), which mingw-w64 ships
# in lower case, and even Qt's own ("QUrl.h" for qurl.h). On a case-sensitive file system they
# are not found. A directory of links under the spelled names, searched after the compiler's
# own directories, finds them without touching the sources. Prints the directory.
case_compat_headers() {
  local src="$1" out="$2" name dir found
  local dirs=("/usr/$triple/include" "$prefix/include")
  for dir in "$prefix"/include/Qt*; do [ -d "$dir" ] && dirs+=("$dir"); done
  mkdir -p "$out"
  grep -rhoE --include='*.c' --include='*.cpp' --include='*.h' \
    '#[[:space:]]*include[[:space:]]*[<"][A-Za-z0-9_]+\.h[>"]' "$src" |
    sed -E 's/.*[<"]([^<>"]*)[>"]/\1/' | sort -u |
    while read -r name; do
      [ "$name" != "${name,,}" ] || continue
      found=""
      for dir in "${dirs[@]}"; do
        if [ -e "$dir/$name" ]; then found=""; break; fi
        [ -n "$found" ] || [ ! -e "$dir/${name,,}" ] || found="$dir/${name,,}"
      done
      [ -z "$found" ] || ln -sfn "$found" "$out/$name"
    done
  printf '%s\n' "$out"
}

# =========================================================================================
# Stage 5: Qt base
stage_qt6_base() {
  local src build compat
  src="$(source_dir qt6-base)"
  build="$cache/build/qt6-base_$(source_version qt6-base)"
  mkdir -p "$build"
  pkg_config_env
  compat="$(case_compat_headers "$src/src" "$build/case-compat-include")"
  # The host's Qt of the same version provides moc, rcc, uic and the other build tools.
  # Debian's source leaves out the Wintab headers (not free), so there are no tablet events.
  # Direct2D stays on: Qt Gui builds its DirectWrite font database only along with it, and the
  # Windows platform plugin cannot link without that. No printing. The bundled zlib, PCRE2,
  # HarfBuzz, FreeType, libpng and libjpeg are used: the prefix has none of those.
  configure_once "$build" cmake -S "$src" -B "$build" -G Ninja \
    -DCMAKE_TOOLCHAIN_FILE="$toolchain" -DSELVANE_WINDOWS_PREFIX="$prefix" \
    -DQT_HOST_PATH=/usr -DQT_HOST_PATH_CMAKE_DIR="$host_qt_cmake_dir" \
    -DCMAKE_BUILD_TYPE=Release -DCMAKE_INSTALL_PREFIX="$prefix" \
    -DCMAKE_C_FLAGS="-idirafter $compat" -DCMAKE_CXX_FLAGS="-idirafter $compat" \
    -DBUILD_SHARED_LIBS=ON -DQT_BUILD_EXAMPLES=OFF -DQT_BUILD_TESTS=OFF \
    -DQT_BUILD_BENCHMARKS=OFF -DQT_BUILD_MANUAL_TESTS=OFF \
    -DFEATURE_sql=OFF -DFEATURE_dbus=OFF -DFEATURE_vulkan=OFF -DFEATURE_openssl=OFF \
    -DFEATURE_schannel=ON -DFEATURE_icu=OFF -DFEATURE_zstd=OFF -DFEATURE_tabletevent=OFF \
    -DFEATURE_direct2d=ON -DFEATURE_printsupport=OFF
  cmake_build_install "$build"
}

# =========================================================================================
# Stage 6: Qt shader tools (multimedia compiles its shaders with them), then multimedia
qt_module() {
  local p="$1"; shift
  local src build compat
  src="$(source_dir "$p")"
  build="$cache/build/${p}_$(source_version "$p")"
  mkdir -p "$build"
  progress "$p $(source_version "$p")"
  compat="$(case_compat_headers "$src/src" "$build/case-compat-include")"
  # qt.toolchain.cmake is the one Qt base installed: it loads ours and sets the host path.
  configure_once "$build" cmake -S "$src" -B "$build" -G Ninja \
    -DCMAKE_TOOLCHAIN_FILE="$prefix/lib/cmake/Qt6/qt.toolchain.cmake" \
    -DSELVANE_WINDOWS_PREFIX="$prefix" -DQT_HOST_PATH=/usr -DQT_HOST_PATH_CMAKE_DIR="$host_qt_cmake_dir" \
    -DCMAKE_BUILD_TYPE=Release -DCMAKE_INSTALL_PREFIX="$prefix" \
    -DCMAKE_C_FLAGS="-idirafter $compat" -DCMAKE_CXX_FLAGS="-idirafter $compat" \
    -DQT_BUILD_EXAMPLES=OFF -DQT_BUILD_TESTS=OFF "$@"
  cmake_build_install "$build"
}

stage_qt6_modules() {
  [ -f "$prefix/lib/cmake/Qt6/qt.toolchain.cmake" ] || die "no Qt base in $prefix: run the qt6-base stage"
  pkg_config_env
  qt_module qt6-shadertools
  # Windows Media Foundation does the playback and capture; the FFmpeg backend stays off.
  # Qt looks for some of the Media Foundation libraries under capitalised names (Mf, Mfplat,
  # ...), which mingw-w64 spells in lower case: they are named here.
  local lib="/usr/$triple/lib" wmf=() name
  for name in MF MFUUID MFPLAT MFCORE PROPSYS; do
    wmf+=("-DWMF_${name}_LIBRARY=$lib/lib${name,,}.a")
  done
  qt_module qt6-multimedia -DFEATURE_ffmpeg=OFF "${wmf[@]}"
}

# =========================================================================================
# Selvane itself, on every run: selvane.exe, the folder dist/windows/ and the installer
dist="$root/dist/windows"
selvane_build="$cache/build/selvane"
objdump="$triple-objdump"
# Where the DLLs a program names are looked for: the prefix, then the compiler's runtime.
runtime_dirs=("$prefix/bin" "$(dirname "$("$triple-g++-posix" -print-libgcc-file-name)")"
  "/usr/$triple/lib")

# The DLLs a Windows program or library names that are ours to ship (the system's own are
# found in none of the runtime directories and left out), one path a line, recursively.
shipped_dlls() {
  local todo=("$@") seen=" " file name dir
  while [ ${#todo[@]} -gt 0 ]; do
    file="${todo[0]}"
    todo=("${todo[@]:1}")
    while read -r name; do
      case "$seen" in *" ${name,,} "*) continue ;; esac
      seen+="${name,,} "
      for dir in "${runtime_dirs[@]}"; do
        if [ -f "$dir/$name" ]; then
          printf '%s\n' "$dir/$name"
          todo+=("$dir/$name")
          break
        fi
      done
    done < <("$objdump" -p "$file" | sed -n 's/^[[:space:]]*DLL Name: //p')
  done
}

build_selvane() {
  local version plugins=() plugin dll
  [ -f "$prefix/lib/cmake/Qt6Multimedia/Qt6MultimediaConfig.cmake" ] ||
    die "no Qt Multimedia in $prefix: build the toolchain first"
  echo "[selvane] configure and build (log: $logs/selvane.log)"
  : >"$logs/selvane.log"
  if ! (
    export PKG_CONFIG_LIBDIR="$prefix/lib/pkgconfig" PKG_CONFIG_PATH=""
    cmake -S "$root" -B "$selvane_build" -G Ninja \
      -DCMAKE_TOOLCHAIN_FILE="$prefix/lib/cmake/Qt6/qt.toolchain.cmake" \
      -DSELVANE_WINDOWS_PREFIX="$prefix" -DQT_HOST_PATH=/usr \
      -DQT_HOST_PATH_CMAKE_DIR="$host_qt_cmake_dir" -DCMAKE_BUILD_TYPE=Release \
      -DSELVANE_BUILD_TESTS=OFF
    niced cmake --build "$selvane_build" --parallel "$jobs" --target selvane
  ) >>"$logs/selvane.log" 2>&1; then
    echo "[selvane] FAILED; the end of $logs/selvane.log:"
    tail -n 40 "$logs/selvane.log" | sed 's/^/    /'
    exit 1
  fi
  version="$(sed -n 's/^#define SELVANE_VERSION_STRING "\(.*\)"/\1/p' "$selvane_build/generated/Version.h")"

  echo "[selvane] lay out $dist"
  rm -rf "$dist"
  mkdir -p "$dist/translations"
  cp "$selvane_build/selvane.exe" "$dist/"
  "$triple-strip" "$dist/selvane.exe"
  # The Qt plugins a window, a headless show and a TLS connection need, under plugins/ as
  # qt.conf says.
  for plugin in platforms/qwindows.dll platforms/qoffscreen.dll platforms/qminimal.dll \
    styles/qwindowsvistastyle.dll imageformats/qgif.dll imageformats/qico.dll \
    imageformats/qjpeg.dll multimedia/windowsmediaplugin.dll tls/qschannelbackend.dll \
    tls/qcertonlybackend.dll; do
    [ -f "$prefix/plugins/$plugin" ] || die "no Qt plugin $plugin in $prefix"
    mkdir -p "$dist/plugins/$(dirname "$plugin")"
    cp "$prefix/plugins/$plugin" "$dist/plugins/$plugin"
    plugins+=("$dist/plugins/$plugin")
  done
  while read -r dll; do
    cp -n "$dll" "$dist/"
  done < <(shipped_dlls "$dist/selvane.exe" "${plugins[@]}" | sort -u)
  printf '[Paths]\nPrefix = .\nPlugins = plugins\nTranslations = translations\n' >"$dist/qt.conf"
  # Selvane's own texts are built into selvane.exe; Qt's dialogs need Qt's.
  for dll in /usr/share/qt6/translations/qtbase_zh_CN.qm; do
    [ -f "$dll" ] && cp "$dll" "$dist/translations/"
  done
  sed "s/@VERSION@/$version/g" "$root/resources/windows/README-windows.txt" |
    sed 's/$/\r/' >"$dist/README-windows.txt"
  echo "[selvane] $dist: $(find "$dist" -type f | wc -l) files, $(du -sh "$dist" | cut -f1)"

  echo "[selvane] installer"
  # Written under a name of its own and renamed once whole: a run cut short leaves no
  # installer that looks finished.
  (cd "$root/resources/windows" &&
    makensis -V2 -DVERSION="$version" -DDIST="$dist" \
      -DOUTFILE="$root/dist/Selvane_Setup_$version.exe.part" installer.nsi) >>"$logs/selvane.log" 2>&1 ||
    { tail -n 20 "$logs/selvane.log"; die "makensis failed"; }
  mv -f "$root/dist/Selvane_Setup_$version.exe.part" "$root/dist/Selvane_Setup_$version.exe"
  echo "[selvane] $root/dist/Selvane_Setup_$version.exe: $(du -h "$root/dist/Selvane_Setup_$version.exe" | cut -f1)"
}

# =========================================================================================
run_stage() {
  current_index="$1"
  current_stage="${stages[$current_index]}"
  local force="$2" log="$logs/$current_stage.log" start rc elapsed
  if [ "$force" -eq 0 ] && stage_done "$current_stage"; then
    printf '[stage %d/%d] %s: done (%s), skipped\n' $((current_index + 1)) ${#stages[@]} \
      "$current_stage" "$(duration "$(stamp_field "$current_stage" seconds)")"
    return 0
  fi
  rm -f "$stamps/$current_stage.done"
  printf '[stage %d/%d] %s: %s (log: %s)\n' $((current_index + 1)) ${#stages[@]} "$current_stage" \
    "${stage_titles[$current_index]}" "$log"
  start="$(date +%s)"
  : >"$log"
  set +e
  (
    set -euo pipefail
    "stage_${current_stage//-/_}"
  ) >>"$log" 2>&1 </dev/null
  rc=$?
  set -e
  elapsed=$(($(date +%s) - start))
  if [ "$rc" -ne 0 ]; then
    printf '[stage %d/%d] %s: FAILED after %s; the end of %s:\n' $((current_index + 1)) \
      ${#stages[@]} "$current_stage" "$(duration "$elapsed")" "$log"
    tail -n 40 "$log" | sed 's/^/    /'
    exit 1
  fi
  printf 'key=%s\nseconds=%s\nfinished=%s\n' "$(stage_key "$current_stage")" "$elapsed" \
    "$(date '+%F %T')" >"$stamps/$current_stage.done"
  printf '[stage %d/%d] %s: done in %s\n' $((current_index + 1)) ${#stages[@]} "$current_stage" \
    "$(duration "$elapsed")"
}

show_status() {
  local i name state
  for i in "${!stages[@]}"; do
    name="${stages[$i]}"
    if stage_done "$name"; then
      state="done in $(duration "$(stamp_field "$name" seconds)"), $(stamp_field "$name" finished)"
    elif [ "$name" = sources ] && [ -f "$stamps/$name.done" ]; then
      state="done in $(duration "$(stamp_field "$name" seconds)"), $(stamp_field "$name" finished)"
      if [ -s "$missing_file" ]; then
        state+="; the mirror did not serve $(awk '{ printf "%s%s %s", sep, $1, $2; sep = ", " }' "$missing_file") (asked again on each run)"
      else
        state+="; looked at again on the next run"
      fi
    elif [ -f "$stamps/$name.done" ]; then
      state="out of date (built from $(stamp_field "$name" key), finished $(stamp_field "$name" finished))"
    else
      state="not done"
    fi
    printf '%d/%d %-12s %s\n' $((i + 1)) ${#stages[@]} "$name" "$state"
  done
  if [ -f "$versions_file" ]; then
    printf 'sources: %s\n' "$(awk '{ printf "%s%s %s", sep, $1, $2; sep = ", " }' "$versions_file")"
  fi
  printf 'prefix: %s\n' "$prefix"
}

main() {
  case "$mode" in
    status) show_status; exit 0 ;;
    clean)
      i="$(stage_index "$only_stage")"
      rm -f "$stamps/${stages[$i]}.done"
      echo "stage ${stages[$i]}: stamp removed"
      exit 0 ;;
  esac

  export SELVANE_WINDOWS_PREFIX="$prefix"
  total_start="$(date +%s)"
  if [ -n "$only_stage" ]; then
    run_stage "$(stage_index "$only_stage")" 1
    exit 0
  fi
  local i
  for i in "${!stages[@]}"; do run_stage "$i" 0; done

  echo ""
  for i in "${!stages[@]}"; do
    printf '  %-12s %s\n' "${stages[$i]}" "$(duration "$(stamp_field "${stages[$i]}" seconds)")"
  done
  echo "toolchain ready at $prefix"
  if [ "$toolchain_only" -eq 0 ]; then
    build_selvane
  fi
  echo "this run: $(duration $(($(date +%s) - total_start)))"
}

# All on one line: the script may be edited while a long build runs, and bash reads on from
# the file only after main returns.
main "$@"; exit
