#!/usr/bin/env bash
# The Debian packages, installed by apt into a system that has nothing else: clean-root.sh PACKAGE_DIR
# SOURCE_DIR. There the README's C program is built and run, and the bindings' own tests run against
# the installed library. As root; fetches some hundreds of megabytes.
set -euo pipefail
packages=$1 source=$2
root=$(mktemp -d)
trap 'umount "$root"/{dev/pts,proc} || true; rm -rf --one-file-system "$root"' EXIT
inside() { chroot "$root" env DEBIAN_FRONTEND=noninteractive HOME=/root "$@"; }

debootstrap --variant=minbase "$(sed -n 's/^VERSION_CODENAME=//p' /etc/os-release)" "$root" >/dev/null
mount -t proc proc "$root/proc"
mount -t devpts -o newinstance,ptmxmode=0666 devpts "$root/dev/pts" # xterm's
ln -sf pts/ptmx "$root/dev/ptmx"
mkdir "$root/vlm"
cp -r "$packages"/*.deb "$source"/{bindings,include,scripts,README.md} "$root/vlm"
inside apt-get update -qq
inside sh -c 'apt-get install -qq --no-install-recommends /vlm/*.deb' >/dev/null
inside vlm --version

tools=(gcc libc6-dev pkg-config libx11-dev libglib2.0-dev python3-numpy mono-mcs mono-runtime
  libmono-system-core4.0-cil cargo rustc xvfb xauth openbox xterm x11-utils xdotool imagemagick ffmpeg)
inside apt-get install -qq --no-install-recommends "${tools[@]}" >/dev/null
inside dbus-uuidgen --ensure=/etc/machine-id 2>/dev/null || cp /etc/machine-id "$root/etc"
# shellcheck disable=SC2016 # backticks of Markdown, and variables of the shell inside
sed -n '/^```c$/,/^```$/ { /^```/d; p }' "$source/README.md" >"$root/vlm/share.c"
# shellcheck disable=SC2016
inside sh -c 'cd /vlm && cc share.c $(pkg-config --cflags --libs VelmoraMacNative) -o share &&
  xvfb-run -a -s "-screen 0 640x480x24 -noreset" ./share | ffprobe -v error -show_entries stream=codec_name -of csv=p=0 - | grep h264'
# shellcheck disable=SC2016
inside sh -c '/vlm/bindings/test "$(dirname /usr/lib/*/libVelmoraMacNative.so.3)"'
