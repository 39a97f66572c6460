#!/usr/bin/env bash
# Proves a Debian package as a stranger meets it: lintian, then a bare Debian 12 in a folder of its own, where the
# package is installed, its programs run on emulated cameras by a person without rights, and it is removed again.
# Needs root, mmdebstrap and lintian: ./dev package --check sees to them.
# Usage: check-package.sh PACKAGE.deb
set -euo pipefail
here=$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)
package=$(realpath "$1")

work=$(mktemp -d -t tavorin-package-XXXXXX)
root=$work/root
trap 'rm -rf --one-file-system "$work"' EXIT
step() { printf '%s\n' "package: $*" >&2; }

# Runs a command in the root with a process table of its own, so that nothing outlives it and no mount is left; "--net"
# first: without any network but loopback.
inside() {
  local spaces=(--mount --pid --fork --kill-child)
  if [ "$1" = --net ]; then
    spaces+=(--net)
    shift
  fi
  unshare "${spaces[@]}" sh -c '
    ip link set lo up
    mount -t proc proc "$0/proc"
    exec chroot "$0" env -i PATH=/usr/sbin:/usr/bin:/sbin:/bin LC_ALL=C.UTF-8 DEBIAN_FRONTEND=noninteractive "$@"
  ' "$root" "$@"
}

step "lintian and the desktop's validators"
lintian --allow-root --fail-on error "$package"
mkdir "$work/content"
dpkg-deb -x "$package" "$work/content"
desktop-file-validate "$work"/content/usr/share/applications/*.desktop
appstreamcli validate --no-net "$work"/content/usr/share/metainfo/*.xml

step "a bare Debian 12"
mmdebstrap --quiet --variant=apt --include=xvfb,xauth,xdotool,man-db,dbus,at-spi2-core,python3-pyatspi bookworm "$root"
cp /etc/resolv.conf "$root/etc/resolv.conf"
cp "$package" "$root/tavorin.deb"
cp "$here/accessible-names.py" "$root/"

step "install"
inside apt-get update -qq
inside apt-get install -y -qq -o Dpkg::Use-Pty=0 --no-install-recommends /tavorin.deb >"$work/install.log" 2>&1 || {
  cat "$work/install.log" >&2
  exit 1
}
inside useradd --create-home person
# Folders such as /usr/bin belong to others too.
inside dpkg -L tavorin | while read -r path; do [ -d "$root$path" ] || echo "$path"; done >"$work/files"

step "run"
cat >"$root/run.sh" <<'EOT'
set -eu
man -w tavorin norvane
export NORVANE_EMULATOR=/usr/share/tavorin/emulator/demo.ini
norvane --version
norvane list
norvane list | grep -q 21034567
unset NORVANE_EMULATOR

export HOME=/home/person QT_LINUX_ACCESSIBILITY_ALWAYS_ON=1 LIBGL_ALWAYS_SOFTWARE=1
cd /home/person
program=$(sed -n 's/^Exec=//p' /usr/share/applications/example.tavorin.TavorinEmulated.desktop)
$program 2>"$HOME/stderr" &
viewer=$!
# The window comes after the splash; the cameras when their search has ended.
end=$(($(date +%s) + 90))
until xdotool search --onlyvisible --pid "$viewer" --name '^Norvane|Tavorin' >/dev/null 2>&1 &&
  timeout 20 python3 /accessible-names.py >"$HOME/names" 2>/dev/null && grep -q 'Duskwing S' "$HOME/names"; do
  if [ "$(date +%s)" -gt $end ] || ! kill -0 $viewer; then
    echo "the viewer shows no cameras; it wrote:" >&2
    cat "$HOME/stderr" >&2
    cat "$HOME/names" >&2
    exit 1
  fi
  sleep 1
done
echo "the viewer lists $(grep -c '21034567\|Duskwing' "$HOME/names") texts of the emulated cameras"
kill $viewer
test -f "$HOME/.local/share/tavorin/Tavorin_QT_log"
EOT
inside --net su person -c 'cd && dbus-run-session -- xvfb-run -a -s "-screen 0 1600x1000x24" sh /run.sh'

step "remove"
inside apt-get purge -y -qq -o Dpkg::Use-Pty=0 tavorin >/dev/null
left=$(while read -r path; do [ ! -e "$root$path" ] || echo "$path"; done <"$work/files")
[ -z "$left" ] && [ ! -e "$root/opt/norvane" ] || {
  printf 'left behind: %s\n' "$left" >&2
  exit 1
}
step "installed, run and removed"
