#!/usr/bin/env bash
# What a person pays for a viewer that does nothing yet: the time from its start to the event loop, and the processor
# time it takes while cameras are listed and none is open.
# The event loop runs when the main thread waits for events with the splash's timer as its limit: Linux tells which call
# a thread waits in, and its arguments. The window's appearance would tell less, since that timer is a coarse one and may
# come 125 ms early or late. Needs xvfb-run, xdotool and unshare, and the right to look at the process.
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

# Whether the main thread is in poll (call 7 on x86-64) for one to three seconds.
waits_for_splash() {
  local call limit _
  read -r call _ _ limit _ <"/proc/$1/syscall" && [ "$call" = 7 ] && ((limit > 1000 && limit < 3000))
}

for ((run = 1; run <= runs; ++run)); do
  begin=$(now_ms)
  "$viewer" 2>"$work/stderr" &
  pid=$!
  until waits_for_splash $pid; do
    kill -0 $pid
    sleep 0.002
  done
  echo "start to the event loop: $(($(now_ms) - begin)) ms, processor time in it: $(used_ms $pid) ms"
  [ "$run" = "$runs" ] || { kill $pid && wait $pid || true; }
done

until xdotool search --onlyvisible --name '^Tavorin [0-9]' >/dev/null 2>&1; do
  kill -0 $pid
  sleep 0.1
done
sleep 5 # the list fills and the window is painted
before=$(used_ms $pid)
sleep "$seconds"
used=$(($(used_ms $pid) - before))
echo "idle for $seconds s: $used ms of processor time, $(awk "BEGIN { printf \"%.2f\", $used / $seconds / 10 }") % of one core"
