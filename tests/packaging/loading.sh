#!/usr/bin/env bash
# Loading the library runs none of its code: loading.sh LIBRARY C_COMPILER CXX_COMPILER HOST_SOURCE.
set -euo pipefail
library=$1 cc=$2 cxx=$3 host=$4
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

fail() {
  echo "$1" >&2
  exit 1
}

# Sizes of everything the dynamic linker would run, for a library.
start_code() {
  readelf --sections --wide "$1" |
    awk '{ sub(/^ *\[ *[0-9]+\] */, "") } $1 ~ /^\.(init|preinit_array|init_array|ctors)$/ { print $1, $5 }'
}

# A toolchain puts its own code there; what an empty library has is no code of ours. A static
# constructor shows the measure works.
echo '' >"$work/empty.cpp"
printf 'int f(); int value = f(); int f() { return 1; }\n' >"$work/constructed.cpp"
for name in empty constructed; do
  "$cxx" -shared -fPIC -O0 -o "$work/$name.so" "$work/$name.cpp"
done
[[ $(start_code "$work/constructed.so") != $(start_code "$work/empty.so") ]] ||
  fail "the measure does not see a static constructor"
[[ $(start_code "$library") == $(start_code "$work/empty.so") ]] ||
  fail "the library has static constructors: $(nm -C "$library" | grep _GLOBAL__sub_I)"

soname=$(readelf --dynamic "$library" | sed -n 's/.*SONAME.*\[\(.*\)\]/\1/p')
[[ $soname == libVelmoraMacNative.so.3 ]] || fail "SONAME is '$soname'"

"$cc" -std=c99 -o "$work/host" "$host" -ldl
output=$(env -i "$work/host" "$library" 2>&1) || fail "a bare host can't load it: $output"
[[ -z $output ]] || fail "it speaks when it is loaded: $output"
