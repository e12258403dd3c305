#!/usr/bin/env bash
# The guides' blocks of code compile, and the pages can be made: guides.sh SOURCE_DIR C_COMPILER
# CXX_COMPILER.
set -euo pipefail
source=$1 cc=$2 cxx=$3
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

# shellcheck disable=SC2016 # backticks of Markdown
awk -v work="$work" '/^```$/ && file { close(file); file = "" }
  file { print > file }
  /^```(c|cpp)$/ { name = FILENAME; sub(".*/", "", name)
                   file = work "/" name "-" ++blocks "." substr($0, 4) }' "$source"/docs/guides/*.md

read -ra flags <<<"$(pkg-config --cflags xcb gtk+-3.0 sdl2 Qt5Widgets glib-2.0 x11) -I$source/include"
blocks=("$work"/*.c "$work"/*.cpp)
echo "${#blocks[@]} blocks"
for block in "${blocks[@]}"; do
  compiler=("$cc" -std=c99 -D_DEFAULT_SOURCE)
  [[ $block == *.c ]] || compiler=("$cxx" -std=c++17 -fPIC)
  "${compiler[@]}" -Wall -Wextra -Werror -fsyntax-only "${flags[@]}" "$block"
done
"$source/scripts/docs"
