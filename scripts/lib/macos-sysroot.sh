#!/usr/bin/env bash
# Puts together what a Mac's compiler has and this machine does not: scripts/lib/macos-sysroot.sh FOLDER.
# Darwin's C headers and the stub of its C library come from the Python package ziglang; the C++
# library's headers and the list of what it exports come from Debian's packages of libc++, which are
# unpacked and not installed, because their libunwind excludes the one that other packages need.
# Exit status 75: a package can't be reached.
set -euo pipefail
cd "$(dirname "$0")/../.."

readonly ZIGLANG=0.14.1 LLVM=19
into=${1:?a folder for the sysroot}
wanted="ziglang $ZIGLANG, libc++-$LLVM, $(sha256sum "$0" sdk/by-hand/libobjc.symbols | sha256sum | cut -c1-16)"
[[ "$(cat "$into/made-of" 2>/dev/null)" == "$wanted" ]] && exit 0
rm -rf "$into"
mkdir -p "$into"/{parts,usr/include/c++,usr/lib}

out_of_reach() {
  echo "$1 can't be reached" >&2
  exit 75
}

python3 -m pip download --quiet --no-deps --dest "$into/parts" "ziglang==$ZIGLANG" >"$into/parts/pip.log" 2>&1 ||
  out_of_reach "the Python package ziglang"
(cd "$into/parts" && python3 -m zipfile -e ziglang-*.whl zig)
zig=$into/parts/zig/ziglang/lib/libc
cp -r "$zig"/include/any-macos-any/. "$into/usr/include/"
cp "$zig/darwin/libSystem.tbd" "$into/usr/lib/"

(cd "$into/parts" && apt-get -qq download "libc++-$LLVM-dev" "libc++1-$LLVM" "libc++abi1-$LLVM" 2>"apt.log") ||
  out_of_reach "Debian's package of libc++"
for package in "$into"/parts/*.deb; do dpkg-deb -x "$package" "$into/parts/debian"; done
cp -r "$into/parts/debian/usr/lib/llvm-$LLVM/include/c++/v1" "$into/usr/include/c++/"
# As Apple builds it: calls that are newer than the oldest system are errors.
sed -i -e '/_LIBCPP_HAS_NO_VENDOR_AVAILABILITY_ANNOTATIONS/d' \
  -e 's/^#define _LIBCPP_PSTL_BACKEND_STD_THREAD/#define _LIBCPP_PSTL_BACKEND_LIBDISPATCH/' \
  "$into/usr/include/c++/v1/__config_site"

# stub NAME INSTALL-NAME: a link stub of the symbols on standard input.
stub() {
  {
    printf -- '--- !tapi-tbd\ntbd-version: 4\ntargets: [ x86_64-macos, arm64-macos ]\n'
    printf "install-name: '%s'\nexports:\n  - targets: [ x86_64-macos, arm64-macos ]\n    symbols: [ " "$2"
    sed "s/.*/'&'/" | paste -sd, | sed 's/,/,\n               /g'
    printf ' ]\n...\n'
  } >"$into/usr/lib/$1.tbd"
}
nm -D --defined-only --format=posix "$into"/parts/debian/usr/lib/llvm-$LLVM/lib/libc++{,abi}.so.1.0 |
  awk '$2 ~ /^[TVWDBR]$/ { sub(/@.*/, "", $1); print "_" $1 }' | sort -u | stub libc++ /usr/lib/libc++.1.dylib
sed 's/ *#.*//; /^$/d' sdk/by-hand/libobjc.symbols | sort -u | stub libobjc /usr/lib/libobjc.A.dylib
rm -rf "$into/parts"
echo "$wanted" >"$into/made-of"
