#!/usr/bin/env bash
# What the README shows works to the letter: readme.sh BUILD_DIR SOURCE_DIR. Its C program is built
# with its own commands, in an empty home, and shares a private display.
set -euo pipefail
build=$1 source=$2
work=$(mktemp -d)
server=
trap '[[ -z $server ]] || kill "$server"; rm -rf "$work"' EXIT
export HOME=$work/home
mkdir -p "$HOME"

# shellcheck disable=SC2016 # backticks of Markdown
sed -n '/^```c$/,/^```$/ { /^```/d; p }' "$source/README.md" >"$work/share.c"
# The commands that follow the program. Those that configure and build have been run: the build that
# this test belongs to takes their place.
commands=$(awk '/^```c$/ { program = 1 } program == 2 && /^    / { print }
                /^```$/ && program { program = 2 } /^With CMake/ { exit }' "$source/README.md")
[[ $commands == *'cmake --install'* && $commands == *'cc share.c'* ]] ||
  { echo "the README's commands were not found" >&2; exit 1; }
cmake() {
  [[ $1 != --install ]] || command cmake --install "$build" "${@:3}" >/dev/null
}
cd "$work"
eval "$commands"

exec {number}<> <(:)
Xvfb -displayfd "$number" -screen 0 640x480x24 -nolisten tcp -noreset 2>/dev/null &
server=$!
read -r -t 20 -u "$number" display
DISPLAY=:$display ./share >share.h264
ffprobe -v error -show_entries stream=codec_name,width,height -of csv=p=0 share.h264 |
  grep -q '^h264,640,480'
