# shellcheck shell=bash
# What the machine's own apt sources say about Debian, for scripts that keep a private apt
# configuration of their own (a sources list, state and cache under one directory) and so leave
# the machine's apt state alone. Sourced, not run.

# The release codename of the machine (bookworm, trixie, ...), empty when unknown.
debian_codename() {
  [ -r /etc/os-release ] || return 0
  sed -n 's/^VERSION_CODENAME=//p' /etc/os-release | tr -d "\"'"
}

# The apt source files of the machine, one a line.
debian_source_files() {
  [ -f /etc/apt/sources.list ] && printf '%s\n' /etc/apt/sources.list
  local f
  for f in /etc/apt/sources.list.d/*.list /etc/apt/sources.list.d/*.sources; do
    [ -f "$f" ] && printf '%s\n' "$f"
  done
  return 0
}

# Every binary ("deb") entry of the machine's apt sources whose suite belongs to the machine's
# release (the codename, codename-updates, codename-security, ...) or is one of
# stable/testing/unstable/sid, as "URI SUITE" lines, in the order apt reads them. Reads one-line
# .list entries and deb822 .sources stanzas; disabled stanzas and commented lines are left out.
debian_suite_entries() {
  local codename files
  codename="$(debian_codename)"
  mapfile -t files < <(debian_source_files)
  [ ${#files[@]} -gt 0 ] || return 1
  awk -v codename="$codename" '
    function wanted(s) {
      return (codename != "" && (s == codename || index(s, codename "-") == 1)) ||
        s ~ /^(stable|testing|unstable|sid)$/
    }
    function flush(   n, i, t, has_deb, suites, u, nu, j) {
      if (uris != "" && enabled != "no") {
        has_deb = 0
        n = split(types, t, /[ \t]+/)
        for (i = 1; i <= n; i++) if (t[i] == "deb") has_deb = 1
        n = split(suitelist, suites, /[ \t]+/)
        nu = split(uris, u, /[ \t]+/)
        for (i = 1; i <= n; i++)
          if (has_deb && wanted(suites[i])) print u[1], suites[i]
      }
      types = ""; uris = ""; suitelist = ""; enabled = ""
    }
    FNR == 1 { flush(); deb822 = (FILENAME ~ /\.sources$/) }
    /^[ \t]*#/ { next }
    deb822 && /^[ \t]*$/ { flush(); next }
    deb822 {
      key = tolower($1); sub(/:$/, "", key); val = $0; sub(/^[^:]*:[ \t]*/, "", val)
      if (key == "types") types = val
      else if (key == "uris") uris = val
      else if (key == "suites") suitelist = val
      else if (key == "enabled") enabled = tolower(val)
      next
    }
    $1 == "deb" {
      line = $0; sub(/^[ \t]*deb[ \t]+/, "", line)
      if (line ~ /^\[/) sub(/^\[[^]]*\][ \t]*/, "", line)
      split(line, w, /[ \t]+/)
      if (wanted(w[2])) print w[1], w[2]
    }
    END { flush() }
  ' "${files[@]}"
}

# The Debian mirror the machine's apt sources use for its main suite (the release codename, or
# stable/testing/unstable/sid).
machine_mirror() {
  local codename uri suite
  codename="$(debian_codename)"
  while read -r uri suite; do
    if { [ -n "$codename" ] && [ "$suite" = "$codename" ]; } ||
      [[ "$suite" =~ ^(stable|testing|unstable|sid)$ ]]; then
      printf '%s\n' "$uri"
      return 0
    fi
  done < <(debian_suite_entries)
  return 1
}

# The apt options that keep every file of a private configuration inside DIR: its sources list
# (DIR/sources.list), preferences, state, cache and an apt.conf of its own (DIR/apt.conf, which
# must exist). ARCH defaults to the machine's architecture.
private_apt_options() {
  local dir="$1" arch="${2:-$(dpkg --print-architecture)}"
  printf '%s\n' \
    -o "Dir::Etc::sourcelist=$dir/sources.list" \
    -o "Dir::Etc::sourceparts=-" \
    -o "Dir::Etc::preferences=$dir/none" \
    -o "Dir::Etc::preferencesparts=$dir/none.d" \
    -o "Dir::State=$dir/state" \
    -o "Dir::State::status=$dir/state/status" \
    -o "Dir::Cache=$dir/cache" \
    -o "Dir::Cache::pkgcache=" \
    -o "Dir::Cache::srcpkgcache=" \
    -o "APT::Architecture=$arch" \
    -o "APT::Architectures=$arch" \
    -o "APT::Get::List-Cleanup=0" \
    -o "Acquire::Languages=none" \
    -c "$dir/apt.conf"
  # Root's downloads would go through the unprivileged apt user, who cannot write into a
  # private cache under root's home.
  if [ "$(id -u)" -eq 0 ]; then printf '%s\n' -o "APT::Sandbox::User=root"; fi
}

# Lays out the directories and the apt.conf of a private configuration in DIR. The machine's
# update hooks refresh its own caches; they have no business there.
private_apt_init() {
  local dir="$1"
  mkdir -p "$dir/state/lists/partial" "$dir/cache/archives/partial" "$dir/none.d"
  touch "$dir/state/status"
  printf '#clear %s;\n' APT::Update::Pre-Invoke APT::Update::Post-Invoke \
    APT::Update::Post-Invoke-Success >"$dir/apt.conf"
}
