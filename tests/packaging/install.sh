#!/usr/bin/env bash
# An installed copy serves C and C++ programs: install.sh BUILD_DIR SOURCE_DIR C_COMPILER
# CXX_COMPILER.
set -euo pipefail
build=$1 source=$2 cc=$3 cxx=$4
consumer=$source/tests/packaging/consumer
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
strict=(-pedantic-errors -Wall -Wextra -Wstrict-prototypes -Werror)

cmake --install "$build" --prefix "$work/first" >/dev/null
# An installed tree may be moved: nothing in it may name where it was.
mv "$work/first" "$work/prefix"
if grep -rl -e "$build" -e "$work/first" "$work/prefix"; then
  echo "these files name the place of the build or of the installation" >&2
  exit 1
fi

pc=$(dirname "$(find "$work/prefix" -name VelmoraMacNative.pc)")
export PKG_CONFIG_PATH=$pc
[[ $(pkg-config --modversion VelmoraMacNative) == 3.* ]]
read -ra flags <<<"$(pkg-config --cflags --libs VelmoraMacNative)"
libdir=$(pkg-config --variable=libdir VelmoraMacNative)

"$cc" -std=c99 "${strict[@]}" "$consumer/consumer.c" "${flags[@]}" -o "$work/by_pkg_config"
LD_LIBRARY_PATH=$libdir "$work/by_pkg_config"

# What the manual shows is a whole program.
# shellcheck disable=SC2016 # backticks of Markdown
sed -n '/^```c$/,/^```$/ { /^```/d; p }' "$source/README.md" >"$work/example.c"
"$cc" -std=c99 -D_POSIX_C_SOURCE=200809L "${strict[@]}" "$work/example.c" "${flags[@]}" \
  -o "$work/example"

cmake -S "$consumer" -B "$work/build" -DCMAKE_PREFIX_PATH="$work/prefix" \
  -DCMAKE_C_COMPILER="$cc" >/dev/null
cmake --build "$work/build" >/dev/null
"$work/build/consumer"

# The header compiles alone in every dialect that a host may use.
for dialect in c99 c11 c17; do
  echo '#include <VelmoraMacNative.h>' |
    "$cc" -x c -std=$dialect "${strict[@]}" "${flags[@]}" -fsyntax-only -
done
for dialect in c++98 c++11 c++20; do
  echo '#include <VelmoraMacNative.h>' |
    "$cxx" -x c++ -std=$dialect "${strict[@]/-Wstrict-prototypes/}" "${flags[@]}" -fsyntax-only -
done

# A program that is installed finds the library beside it.
if [[ -x $work/prefix/bin/vlm ]]; then
  "$work/prefix/bin/vlm" --help >/dev/null
  # Its manual page and its completions know each of its commands.
  "$work/prefix/bin/vlm" --help | awk '/^Subcommands:/ { list = 1; next } list && NF { print $1 }' |
    while read -r command; do
      grep -q "^\.SS $command\$" "$work/prefix/share/man/man1/vlm.1"
      grep -q "^ *$command) words=" "$work/prefix/share/bash-completion/completions/vlm"
      grep -q "^ *$command) words=" "$work/prefix/share/zsh/vendor-completions/_vlm"
    done
  bash -n "$work/prefix/share/bash-completion/completions/vlm"
  [[ $("$work/prefix/bin/vlm" bogus 2>&1) == *"'bogus'"*"'bounds'"* ]]
fi
