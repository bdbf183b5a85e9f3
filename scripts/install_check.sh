#!/usr/bin/env bash
# install_check.sh [PACKAGE.deb]: what a technician would see of the Debian package, of the one that
# cpack made last in build/ or of this one. Checks it with lintian and the like, installs it with apt
# in a bare Debian 12 that it makes for this, starts the window there, prints a receipt of the sample
# agency, removes the package and lists what is left. Says what it does; a picture of the window and
# the receipt are kept in build/install-check. Needs root and the network.
. "$(dirname "$0")/common.sh"

package=${1:-$(ls -t build/tenora_*.deb | head -1)}
[ -f "$package" ] || { echo "There is no package; make one with cpack" >&2; exit 1; }
[ "$(id -u)" -eq 0 ] || { echo "A Debian root is made by root only" >&2; exit 1; }
install_packages package
kept=build/install-check
work=$(mktemp -d "${TMPDIR:-/tmp}/tenora-install-XXXXXX")
debian=$work/debian
screen= program=
rm -rf "$kept"
mkdir -p "$kept"

clean_up() {
  [ -z "$program" ] || kill "$program" 2>/dev/null || true
  [ -z "$screen" ] || kill "$screen" 2>/dev/null || true
  ! mountpoint -q "$debian/proc" || umount "$debian/proc"
  rm -rf --one-file-system "$work"
}
trap clean_up EXIT

say() { printf '\n== %s\n' "$*"; }
fail() { echo "FAILED: $*" >&2; exit 1; }

inside() { chroot "$debian" env -i PATH=/usr/sbin:/usr/bin:/sbin:/bin DEBIAN_FRONTEND=noninteractive "$@"; }

# As a user of the office, with nothing of this environment.
as_user() {
  chroot --userspec=office:office "$debian" env -i PATH=/usr/bin:/bin HOME=/home/office \
    LANG=C.UTF-8 "$@"
}

# apt_get WHAT…: its summary only, or all of it when it fails.
apt_get() {
  inside apt-get -y "$@" >"$work/apt.log" 2>&1 || { cat "$work/apt.log"; fail "apt-get $*"; }
  grep -E 'newly installed' "$work/apt.log" || true
}

# What is in the root, but for what apt and dpkg keep for themselves and what is made anew.
files() {
  (cd "$debian" && find . -xdev \( -path ./proc -o -path ./dev -o -path ./tmp -o -path ./home \
    -o -path ./var/cache -o -path ./var/log -o -path ./var/lib/apt -o -path ./var/lib/dpkg \) \
    -prune -o -print | sort)
}

packages() { inside dpkg-query -W -f '${Package}\n' | sort; }

wait_for() { # wait_for WHAT COMMAND…: asks for up to a minute
  local what=$1 left=600
  shift
  until "$@"; do
    [ $((left--)) -gt 0 ] || fail "waited in vain for $what"
    sleep 0.1
  done
}

say "The package: $(basename "$package")"
lintian --fail-on error --tag-display-limit 0 --allow-root "$package"
dpkg-deb -x "$package" "$work/unpacked"
desktop-file-validate "$work"/unpacked/usr/share/applications/*.desktop
appstreamcli validate --no-net "$work"/unpacked/usr/share/metainfo/*.xml
echo "lintian, desktop-file-validate and appstreamcli found no error."

say "A bare Debian 12"
mmdebstrap --quiet --variant=minbase bookworm "$debian"
cp /etc/resolv.conf "$debian/etc/resolv.conf"
mount -t proc proc "$debian/proc"
inside useradd --create-home office
printf '#!/bin/sh\nexit 101\n' >"$debian/usr/sbin/policy-rc.d" # no services in a root
chmod +x "$debian/usr/sbin/policy-rc.d"
cp "$package" "$debian/tmp/tenora.deb"
echo "$(inside dpkg-query -W | wc -l) packages"
apt_get update
packages >"$work/packages-before"
files >"$work/before"

say "apt-get install ./tenora.deb"
apt_get install /tmp/tenora.deb
inside dpkg-query -L tenora | grep -vE '/usr/share/doc/tenora/.*/' | while read -r path; do
  [ -d "$debian$path" ] || echo "$path"
done
as_user tenora --version
as_user bash -c '. /usr/share/bash-completion/completions/tenora &&
                 COMP_LINE="tenora gen" COMP_POINT=10 && _tenora tenora gen tenora &&
                 echo "completion of \"tenora gen\": ${COMPREPLY[*]}"'
gzip -dc "$debian/usr/share/man/man1/tenora.1.gz" | groff -man -Tutf8 -P-cbou | sed -n '1,12p'

say "The window"
as_user mkdir -p /home/office/.local/share
as_user cp -R /usr/share/doc/tenora/examples/agency /home/office/.local/share/Tenora
mkfifo "$work/display"
exec 3<>"$work/display"
Xvfb -displayfd 3 -screen 0 1280x800x24 -noreset >/dev/null 2>&1 &
screen=$!
read -r -u 3 display
as_user env DISPLAY=":$display" tenora 2>"$work/window.log" &
program=$!
export DISPLAY=:$display
# The main window: wider than the picture shown while it starts.
shown() {
  local window WIDTH=0
  for window in $(xdotool search --onlyvisible --name 'Tenora Mail Merge Facility' 2>/dev/null); do
    eval "$(xdotool getwindowgeometry --shell "$window" 2>/dev/null | grep '^WIDTH=')"
    [ "$WIDTH" -lt 800 ] || return 0
  done
  return 1
}
wait_for "the window" shown
# Drawn once two pictures in a row are alike.
drawn() {
  mv "$work/now.ppm" "$work/last.ppm"
  import -window root "$work/now.ppm"
  cmp -s "$work/now.ppm" "$work/last.ppm"
}
import -window root "$work/now.ppm"
wait_for "a drawn window" drawn
convert "$work/now.ppm" "$kept/window.png"
kill -0 "$program" || fail "the program ended: $(cat "$work/window.log")"
kill "$program"
wait "$program" || true
program=
cat "$work/window.log"
echo "Its picture: $kept/window.png ($(identify -format '%wx%h, %k colours' "$kept/window.png"))"

say "A receipt"
as_user env TENORA_PRINTER="Print to PDF" tenora 'PRINTRECEIPT="T00001" FORMAT="Receipt"'
find "$debian/home/office" -name '*.pdf' -exec cp {} "$kept/receipt.pdf" \;
[ -f "$kept/receipt.pdf" ] || fail "no PDF was made"
pdftotext -layout "$kept/receipt.pdf" - | grep -v '^ *$' | head -12
pdffonts "$kept/receipt.pdf" | tail -n +3

say "apt-get purge tenora, with what it brought"
inside dpkg-query -L tenora | sed 's/^/./' | sort >"$work/owned"
apt_get purge --autoremove tenora
files >"$work/after"
comm -13 "$work/before" "$work/after" >"$work/left"
packages >"$work/packages-after"
echo "Packages that apt keeps because others recommend them:" \
  $(comm -13 "$work/packages-before" "$work/packages-after")
echo "Files left by the packages that tenora needed, and of those kept:"
cut -d/ -f2-4 "$work/left" | uniq -c
comm -12 "$work/owned" "$work/left" | grep . && fail "files of the package are left"
grep -i tenora "$work/left" && fail "something of Tenora is left"
echo "Nothing of the package is left. The user's own:"
(cd "$debian/home/office" && find . -maxdepth 4 -ipath '*tenora*' | sort)
