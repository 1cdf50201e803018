#!/usr/bin/env bash
# Syntax-checks every C++ source of the program against three sets of FFmpeg headers: the
# installed ones, Debian trixie's and Debian sid's. The trixie and sid -dev packages are
# downloaded through a private apt configuration and unpacked into a cache; nothing is
# installed and the machine's apt state is left alone. Run by hand; not part of CI.
#
#   scripts/check-ffmpeg-headers.sh [--refresh] [--suites "trixie sid"]
#
#   --refresh   fetch the package lists again even when the cached ones are recent
#   --suites    the Debian suites to check besides the installed headers
#
# Environment: CXX (default g++), SELVANE_FFMPEG_HEADERS_CACHE (default
# $XDG_CACHE_HOME/selvane/ffmpeg-headers), SELVANE_DEBIAN_MIRROR (default: the mirror the
# machine's own apt sources use), SELVANE_DEBIAN_KEYRING (default: Debian's archive keyring).
#
# The release files are verified against Debian's archive keyring; when a suite is signed by a
# key newer than the installed keyring, the lists of that suite are taken with [trusted=yes]
# and the output says so. Only headers are read from those packages.
#
# A file fails when the compiler reports an error or any warning: a deprecation today is a
# removal in the next major release. Exit status 0 when every version passes, 1 when one
# fails, 2 when the headers cannot be had.
set -euo pipefail

root="$(cd "$(dirname "$0")/.." && pwd)"
cxx="${CXX:-g++}"
suites=(trixie sid)
refresh=0
while [ $# -gt 0 ]; do
  case "$1" in
    --refresh) refresh=1 ;;
    --suites) shift; read -r -a suites <<<"${1:-}" ;;
    -h|--help) awk 'NR > 1 && !/^#/ { exit } NR > 1 { sub(/^# ?/, ""); print }' "$0"; exit 0 ;;
    *) echo "check-ffmpeg-headers: unknown argument: $1" >&2; exit 2 ;;
  esac
  shift
done

packages=(libavcodec-dev libavformat-dev libavutil-dev libavdevice-dev libavfilter-dev libswscale-dev
  libswresample-dev)
source_dirs=(media input compose audio output schedule engine net cli app)
keyring="${SELVANE_DEBIAN_KEYRING:-/usr/share/keyrings/debian-archive-keyring.gpg}"
cache="${SELVANE_FFMPEG_HEADERS_CACHE:-${XDG_CACHE_HOME:-$HOME/.cache}/selvane/ffmpeg-headers}"
arch="$(dpkg --print-architecture)"
multiarch="$(dpkg-architecture -qDEB_HOST_MULTIARCH 2>/dev/null || "$cxx" -print-multiarch)"

work="$(mktemp -d "${TMPDIR:-/tmp}/selvane-ffmpeg-headers.XXXXXX")"
trap 'rm -rf "$work"' EXIT

# shellcheck source=scripts/lib/debian-sources.sh
. "$root/scripts/lib/debian-sources.sh"

say() { printf '%s\n' "$*"; }
die() { printf 'check-ffmpeg-headers: %s\n' "$*" >&2; exit 2; }



write_sources() {
  local dir="$1" suite="$2" trust="$3" option
  if [ "$trust" = trusted ]; then option="trusted=yes"; else option="signed-by=$keyring"; fi
  printf 'deb [%s] %s %s main\n' "$option" "$mirror" "$suite" >"$dir/sources.list"
}

# Downloads and unpacks the -dev packages of one suite; prints the unpacked root.
fetch_suite() {
  local suite="$1"
  local dir="$cache/$suite"
  private_apt_init "$dir"
  mkdir -p "$dir/debs"
  local trust=signed
  [ -f "$dir/trust" ] && trust="$(cat "$dir/trust")"
  write_sources "$dir" "$suite" "$trust"
  local opts
  mapfile -t opts < <(private_apt_options "$dir" "$arch")

  local release
  release="$(find "$dir/state/lists" -maxdepth 1 -name "*_dists_${suite}_InRelease" \
    -mmin -1440 2>/dev/null | head -n 1)"
  if [ "$refresh" -eq 1 ] || [ -z "$release" ]; then
    say "-- $suite: apt-get update (the mirror of the machine's apt sources)" >&2
    trust=signed
    write_sources "$dir" "$suite" "$trust"
    if ! apt-get "${opts[@]}" -q update >"$work/update-$suite.log" 2>&1; then
      if ! grep -Eq 'NO_PUBKEY|EXPKEYSIG|KEYEXPIRED|not signed|signatures were invalid|is not valid yet|OpenPGP' \
        "$work/update-$suite.log"; then
        cat "$work/update-$suite.log" >&2
        die "apt-get update for $suite failed"
      fi
      grep -E 'NO_PUBKEY|EXPKEYSIG|KEYEXPIRED|not signed|signatures were invalid|is not valid yet|OpenPGP' \
        "$work/update-$suite.log" | grep -E '^(W|E):' | head -n 2 |
        sed "s|[a-z]*://[^ ]*|<mirror>|g; s/^/-- $suite: apt: /" >&2
      say "-- $suite: the release file does not verify against $keyring;" >&2
      say "-- $suite: falling back to [trusted=yes] (headers only, nothing is installed)" >&2
      trust=trusted
      write_sources "$dir" "$suite" "$trust"
      apt-get "${opts[@]}" -q update >"$work/update-$suite.log" 2>&1 || {
        cat "$work/update-$suite.log" >&2
        die "apt-get update for $suite failed"
      }
    fi
    printf '%s\n' "$trust" >"$dir/trust"
  fi

  # The file names of the current candidates, asked in an empty directory since apt leaves out
  # the files already present; only the missing ones are downloaded.
  local uris wanted=() name
  mkdir -p "$work/uris-$suite"
  uris="$(cd "$work/uris-$suite" && apt-get "${opts[@]}" -q --print-uris download "${packages[@]}")" ||
    die "apt-get cannot resolve the packages for $suite"
  while read -r _ name _; do
    [ -n "$name" ] && wanted+=("$name")
  done <<<"$uris"
  [ ${#wanted[@]} -eq ${#packages[@]} ] || die "expected ${#packages[@]} packages for $suite, got ${#wanted[@]}"
  local missing=0
  for name in "${wanted[@]}"; do [ -f "$dir/debs/$name" ] || missing=1; done
  if [ "$missing" -eq 1 ]; then
    say "-- $suite: apt-get download ${packages[*]}" >&2
    (cd "$dir/debs" && apt-get "${opts[@]}" -q download "${packages[@]}") \
      >"$work/download-$suite.log" 2>&1 || {
      cat "$work/download-$suite.log" >&2
      die "apt-get download for $suite failed"
    }
  fi
  # Older versions left from earlier runs.
  local deb keep
  for deb in "$dir/debs"/*.deb; do
    [ -f "$deb" ] || continue
    keep=0
    for name in "${wanted[@]}"; do [ "$(basename "$deb")" = "$name" ] && keep=1; done
    [ "$keep" -eq 1 ] || rm -f "$deb"
  done

  local stamp
  stamp="$(printf '%s\n' "${wanted[@]}" | sort)"
  if [ ! -f "$dir/root.stamp" ] || [ "$(cat "$dir/root.stamp")" != "$stamp" ]; then
    rm -rf "$dir/root" "$dir/root.stamp"
    mkdir -p "$dir/root"
    for name in "${wanted[@]}"; do dpkg-deb -x "$dir/debs/$name" "$dir/root"; done
    printf '%s\n' "$stamp" >"$dir/root.stamp"
  fi
  printf '%s\n' "$dir/root"
}

# Prints "FFmpeg <release>: libavcodec a.b.c, ..." as the compiler sees it with the given flags.
library_versions() {
  local probe="$work/versions.cpp" libs=(avcodec avformat avutil avdevice swscale swresample) l
  : >"$probe"
  for l in "${libs[@]}"; do printf '#include <lib%s/version.h>\n' "$l" >>"$probe"; done
  printf '#include <libavutil/ffversion.h>\n' >>"$probe"
  local macros
  macros="$("$cxx" -std=c++20 -E -dM "$@" "$probe")"
  local release out=""
  release="$(awk '$2 == "FFMPEG_VERSION" { gsub(/"/, "", $3); print $3 }' <<<"$macros")"
  for l in "${libs[@]}"; do
    local up="${l^^}"
    local v
    v="$(awk -v p="LIB${up}_VERSION_" '
      $2 == p "MAJOR" { ma = $3 } $2 == p "MINOR" { mi = $3 } $2 == p "MICRO" { mc = $3 }
      END { print ma "." mi "." mc }' <<<"$macros")"
    out+="${out:+, }lib$l $v"
  done
  printf 'FFmpeg %s: %s\n' "${release:-unknown}" "$out"
}

# --- one file against one set of flags (run by xargs) ---
check_one() {
  local file="$1" log rc=0
  log="$results/$(printf '%s' "$1" | tr '/' '_').log"
  "$cxx" "${check_flags[@]}" "$root/$file" >"$log" 2>&1 || rc=$?
  if [ "$rc" -ne 0 ] || grep -q 'warning:' "$log"; then
    printf 'FAIL %s\n' "$file" >>"$log.status"
  else
    printf 'ok %s\n' "$file" >>"$log.status"
  fi
}

# --- common flags ---
generated="$work/generated"
mkdir -p "$generated"
version="$(sed -n 's/^project(Selvane VERSION \([0-9.]*\).*/\1/p' "$root/CMakeLists.txt")"
sed "s/@PROJECT_VERSION@/${version:-0.0.0}/" "$root/app/Version.h.in" >"$generated/Version.h"

qt_flags=()
for flag in $(pkg-config --cflags Qt6Core Qt6Gui Qt6Network Qt6Multimedia Qt6OpenGL Qt6Widgets); do
  case "$flag" in
    # The system's own include directories would hand out its FFmpeg headers before ours.
    -I/usr/include|-I/usr/include/"$multiarch") ;;
    -I*) qt_flags+=(-isystem "${flag#-I}") ;;
    *) qt_flags+=("$flag") ;;
  esac
done

mapfile -t files < <(cd "$root" && find "${source_dirs[@]}" -name '*.cpp' 2>/dev/null | LC_ALL=C sort)
[ ${#files[@]} -gt 0 ] || die "no sources found under $root"

mirror="${SELVANE_DEBIAN_MIRROR:-}"
if [ ${#suites[@]} -gt 0 ] && [ -z "$mirror" ]; then
  mirror="$(machine_mirror)" || true
  [ -n "$mirror" ] || die "no Debian mirror in the machine's apt sources; set SELVANE_DEBIAN_MIRROR"
fi

say "compiler: $("$cxx" --version | head -n 1)"
say "sources: ${#files[@]} files under ${source_dirs[*]}"

# --- the versions: the installed headers, then each suite's ---
labels=(installed)
header_roots=("")
for suite in "${suites[@]}"; do
  header_root="$(fetch_suite "$suite")"
  labels+=("$suite")
  header_roots+=("$header_root")
done

failed_versions=()
summary=()
for i in "${!labels[@]}"; do
  label="${labels[$i]}"
  header_root="${header_roots[$i]}"
  ffmpeg_flags=()
  if [ -n "$header_root" ]; then
    [ -d "$header_root/usr/include/$multiarch" ] && ffmpeg_flags+=(-isystem "$header_root/usr/include/$multiarch")
    [ -d "$header_root/usr/include" ] && ffmpeg_flags+=(-isystem "$header_root/usr/include")
  fi
  check_flags=(-std=c++20 -fsyntax-only -Wall -Wextra -fPIC "${ffmpeg_flags[@]}" "${qt_flags[@]}"
    -I"$root" -I"$generated")
  results="$work/results-$label"
  mkdir -p "$results"

  say ""
  say "== $label: $(library_versions "${ffmpeg_flags[@]}")"
  if [ -n "$header_root" ]; then
    say "   headers: $header_root/usr/include"
    if [ "$(cat "$cache/$label/trust" 2>/dev/null)" = trusted ]; then
      say "   packages: NOT verified (the release file does not verify against $keyring; taken with [trusted=yes])"
    else
      say "   packages: release file verified against $keyring"
    fi
  else
    say "   headers: system include path"
  fi

  export -f check_one
  export root cxx results
  # Arrays do not cross into the xargs children: hand the flags over one per line.
  printf '%s\n' "${check_flags[@]}" >"$work/flags-$label"
  export flags_file="$work/flags-$label"
  # shellcheck disable=SC2016 # expanded by the child shell
  printf '%s\0' "${files[@]}" |
    xargs -0 -n 1 -P 2 bash -c 'mapfile -t check_flags <"$flags_file"; check_one "$1"' _ || true

  failures=()
  for file in "${files[@]}"; do
    status_file="$results/$(printf '%s' "$file" | tr '/' '_').log.status"
    if ! [ -f "$status_file" ] || grep -q '^FAIL' "$status_file"; then failures+=("$file"); fi
  done
  say "   ${#files[@]} files checked, ${#failures[@]} failed"
  for file in "${failures[@]}"; do
    say "   FAIL $file"
    { grep -E 'error:|warning:' "$results/$(printf '%s' "$file" | tr '/' '_').log" || true; } |
      awk '!seen[$0]++ && n++ < 5' | sed "s|^$root/||; s|^|     |"
  done
  if [ ${#failures[@]} -gt 0 ]; then
    failed_versions+=("$label")
    summary+=("$label: FAILED (${#failures[@]} of ${#files[@]} files)")
  else
    summary+=("$label: ok (${#files[@]} files)")
  fi
done

say ""
say "== summary"
for line in "${summary[@]}"; do say "   $line"; done
[ ${#failed_versions[@]} -eq 0 ]
