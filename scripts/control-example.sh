#!/usr/bin/env bash
# Cuts the program between two channels on a timer through the remote control API of a show
# started elsewhere with --control-port:
#
#   scripts/control-example.sh [PORT] [SECONDS] [A] [B]      (defaults: 8080 5 1 2)
#
# The token is SELVANE_CONTROL_TOKEN when set, else the one the show keeps in the config folder.
# It goes to curl in a header file readable by this user only, never on a command line.
set -euo pipefail
port="${1:-8080}"
interval="${2:-5}"
a="${3:-1}"
b="${4:-2}"
api="http://127.0.0.1:$port/api/v1"
token="${SELVANE_CONTROL_TOKEN:-}"
if [ -z "$token" ]; then
  token="$(cat "${XDG_CONFIG_HOME:-$HOME/.config}/Ostrel/selvane_control_token")"
fi
headers="$(umask 077 && mktemp)"
trap 'rm -f "$headers"' EXIT
printf 'Authorization: Bearer %s\nContent-Type: application/json\n' "$token" >"$headers"

curl -fsS -H @"$headers" "$api/status" >/dev/null
channel="$a"
while true; do
  if answer="$(curl -sS -H @"$headers" -d "{\"channel\": $channel}" "$api/program/cut")"; then
    echo "$(date +%T) cut to channel $channel: $answer"
  fi
  if [ "$channel" = "$a" ]; then channel="$b"; else channel="$a"; fi
  sleep "$interval"
done
