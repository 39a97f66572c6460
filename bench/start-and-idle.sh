#!/usr/bin/env bash
# What a person pays for a viewer that does nothing yet: the time from its start to the event loop, and the processor
# time it takes while cameras are listed and none is open.
# The main window appears 2500 ms (the splash's fixed time) after the timer that main starts just before the event loop,
# so the time to the window less the splash is the start-up. Needs xvfb-run, xdotool and unshare.
# Usage: start-and-idle.sh VIEWER [EMULATOR_FILE [SECONDS [RUNS]]]
set -euo pipefail

if [ "${1:-}" != --inside ]; then
  here=$(realpath "${BASH_SOURCE[0]}")
  enter=(unshare --net)
  [ "$(id -u)" = 0 ] || enter=(unshare --net --map-root-user)
  exec "${enter[@]}" sh -c 'ip link set lo up && exec "$@"' sh env LIBGL_ALWAYS_SOFTWARE=1 \
    xvfb-run --auto-servernum --server-args='-screen 0 1600x1000x24 -nolisten tcp -noreset' \
    "$here" --inside "$(realpath "$1")" "$(realpath "${2:-$(dirname "$here")/../resources/emulator/demo.ini}")" \
    "${3:-20}" "${4:-3}"
fi
viewer=$2 seconds=$4 runs=$5
export NORVANE_EMULATOR=$3
work=$(mktemp -d)
export HOME=$work
trap 'kill "$pid" 2>/dev/null || true; rm -rf "$work"' EXIT
cd "$work"

now_ms() { echo $(($(date +%s%N) / 1000000)); }
# Processor time of a process so far, in ms: fields 14 and 15 of stat, after a name that may hold blanks.
used_ms() { sed 's/.*) //' "/proc/$1/stat" | awk -v hz="$(getconf CLK_TCK)" '{ print int(($12 + $13) * 1000 / hz) }'; }

for ((run = 1; run <= runs; ++run)); do
  begin=$(now_ms)
  "$viewer" 2>"$work/stderr" &
  pid=$!
  until xdotool search --onlyvisible --name '^Tavorin [0-9]' >/dev/null 2>&1; do
    kill -0 $pid
    sleep 0.005
  done
  echo "start-up beside the splash: $(($(now_ms) - begin - 2500)) ms, processor time until the window: $(used_ms $pid) ms"
  [ "$run" = "$runs" ] || { kill $pid && wait $pid || true; }
done

sleep 5 # the list fills and the window is painted
before=$(used_ms $pid)
sleep "$seconds"
used=$(($(used_ms $pid) - before))
echo "idle for $seconds s: $used ms of processor time, $(awk "BEGIN { printf \"%.2f\", $used / $seconds / 10 }") % of one core"
