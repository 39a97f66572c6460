#!/usr/bin/env bash
# What showing a camera costs: the processor time of the whole process, Tavorin's window and Aravis's own viewer in
# turn, each with Aravis's emulated GigE Vision camera at 2048 x 2048 and 30 images a second, stretched to the same
# height on the screen, OpenGL in software.
# The images that the camera sent meanwhile are counted by the loopback adapter's bytes: on a machine too busy for 30 a
# second it does not send the same to both, which the ratio for an image sent makes up for.
# Needs arv-viewer-0.8 with its GStreamer plugins, arv-fake-gv-camera-0.8, arv-tool-0.8, xdotool, xvfb-run and unshare.
# With SCREENSHOT set, the screen is kept as SCREENSHOT.arv.png and SCREENSHOT.tavorin.png.
# Usage: beside-arv-viewer.sh BENCH_UI_SHOW [PAIRS [SECONDS [PIXEL_FORMAT]]]
set -euo pipefail

for tool in arv-viewer-0.8 arv-fake-gv-camera-0.8 arv-tool-0.8 xdotool xvfb-run unshare; do
  command -v "$tool" >/dev/null || { echo "skipped: $tool is not installed"; exit 0; }
done
if [ "${1:-}" != --inside ]; then
  enter=(unshare --net)
  [ "$(id -u)" = 0 ] || enter=(unshare --net --map-root-user)
  exec "${enter[@]}" sh -c 'ip link set lo up && exec "$@"' sh env LIBGL_ALWAYS_SOFTWARE=1 \
    xvfb-run --auto-servernum --server-args='-screen 0 1600x1000x24 -nolisten tcp' \
    "$(realpath "${BASH_SOURCE[0]}")" --inside "$(realpath "$1")" "${2:-3}" "${3:-10}" "${4:-Mono8}"
fi
ours=$2 pairs=$3 seconds=$4 format=$5
side=818 # of the picture in arv-viewer's window of 1100 x 900
work=$(mktemp -d)
export HOME=$work XDG_RUNTIME_DIR=$work XDG_CACHE_HOME=$work/cache
camera= viewer=
trap 'kill $viewer $camera 2>/dev/null || true; rm -rf "$work"' EXIT
cd "$work"

# Processor time of a process so far, in ms: fields 14 and 15 of stat, after a name that may hold blanks.
used_ms() { sed 's/.*) //' "/proc/$1/stat" | awk -v hz="$(getconf CLK_TCK)" '{ print int(($12 + $13) * 1000 / hz) }'; }
lo_bytes() { awk -F'[: ]+' '$2 == "lo" { print $3 }' /proc/net/dev; }

start_camera() {
  arv-fake-gv-camera-0.8 -i 127.0.0.1 -s GV02 >/dev/null 2>&1 &
  camera=$!
  for _ in $(seq 50); do
    arv-tool-0.8 -n Aravis-Fake-GV02 control Width=2048 Height=2048 PixelFormat="$format" \
      AcquisitionFrameRate=30 2>/dev/null | grep -q 'AcquisitionFrameRate = 30' && return
    sleep 0.1
  done
  echo "the emulated camera does not answer" >&2
  exit 1
}

# Sets cores, that the viewer used, and sent, images a second.
measure() {
  local used bytes pixel=2
  [[ $format == *8 ]] && pixel=1
  sleep 3 # caches fill, the window settles
  used=$(used_ms "$viewer") bytes=$(lo_bytes)
  sleep "$seconds"
  used=$(($(used_ms "$viewer") - used)) bytes=$(($(lo_bytes) - bytes))
  cores=$(awk "BEGIN { printf \"%.3f\", $used / $seconds / 1000 }")
  sent=$(awk "BEGIN { printf \"%.1f\", $bytes / $seconds / (2048 * 2048 * $pixel) }")
  [ -z "${SCREENSHOT:-}" ] || import -window root "$SCREENSHOT.$1.png"
  kill "$viewer" "$camera"
  wait "$viewer" "$camera" 2>/dev/null || true
}

run_arv_viewer() {
  start_camera
  arv-viewer-0.8 >/dev/null 2>&1 &
  viewer=$!
  sleep 3
  xdotool mousemove 200 118 click 1 # the camera's row, below Aravis's built-in one
  sleep 1
  xdotool mousemove 78 277 click 1 # play
  sleep 2
  xdotool search --onlyvisible --class arv-viewer windowmove %@ 0 0 windowsize %@ 1100 900
  measure arv
}

run_tavorin() {
  start_camera
  "$ours" $side >"$work/shown" 2>"$work/stderr" &
  viewer=$!
  for _ in $(seq 300); do
    grep -q '^showing' "$work/shown" && break
    kill -0 $viewer || { cat "$work/stderr" >&2; exit 1; }
    sleep 0.1
  done
  measure tavorin
}

for ((pair = 1; pair <= pairs; ++pair)); do
  run_arv_viewer
  theirs=$cores theirs_sent=$sent
  run_tavorin
  painted=$(sed -n 's/^painted //p' "$work/shown" | tail -n "$seconds" | awk '{ n += $1 } END { printf "%.1f", n / NR }')
  awk -v a="$cores" -v b="$theirs" -v p="$painted" -v sa="$sent" -v sb="$theirs_sent" 'BEGIN {
    printf "tavorin %.3f cores (%.1f images a second sent, %.1f painted)   arv-viewer %.3f cores (%.1f sent)   " \
           "ratio %.3f, for an image sent %.3f\n", a, sa, p, b, sb, a / b, a / sa / (b / sb) }' | tee -a "$work/pairs"
done
median() { sort -n | awk '{ r[NR] = $1 } END { print r[int((NR + 1) / 2)] }'; }
echo "median ratio $(sed 's/.*ratio //; s/,.*//' "$work/pairs" | median)," \
  "for an image sent $(sed 's/.*sent //' "$work/pairs" | median)"
