#!/usr/bin/env bash
# What the README shows works to the letter: readme.sh BUILD_DIR SOURCE_DIR. Its programs are built
# and run by its own commands, in an empty home, and share a private display.
set -euo pipefail
build=$1 source=$2
work=$(mktemp -d)
server=
trap '[[ -z $server ]] || kill "$server"; rm -rf "$work"' EXIT
export HOME=$work/home PATH=/usr/bin:$PATH # Debian's Python is the one that has Debian's NumPy
mkdir -p "$HOME"
ln -s "$source/bindings" "$work/bindings"
cd "$work"

# block LANGUAGE: its program. commands LANGUAGE: the commands between it and the next program.
# shellcheck disable=SC2016 # backticks of Markdown
block() { sed -n '/^```'"$1"'$/,/^```$/ { /^```/d; p }' "$source/README.md"; }
commands() {
  awk -v start="^\`\`\`$1\$" '$0 ~ start { on = 1; next } /^```./ || /^## / { on = 0 }
    /^```$/ && on { on = 2; next } on == 2 && /^    / { print }' "$source/README.md"
}
is_a_display() {
  ffprobe -v error -show_entries stream=codec_name,width,height -of csv=p=0 "$1" |
    grep -q '^h264,640,480'
}
# Those that configure and build have been run: the build that this test belongs to takes their place.
cmake() {
  [[ $1 != --install ]] || command cmake --install "$build" "${@:3}" >/dev/null
}

exec {number}<> <(:)
Xvfb -displayfd "$number" -screen 0 640x480x24 -nolisten tcp -noreset 2>/dev/null &
server=$!
read -r -t 20 -u "$number" display
export DISPLAY=:$display

block c >share.c
[[ $(commands c) == *'cmake --install'*'cc share.c'* ]]
eval "$(commands c)"
./share >from_c.h264
is_a_display from_c.h264

block python >share.py
[[ $(commands python) == *'python3 share.py'* ]]
eval "$(commands python)"
is_a_display share.h264
