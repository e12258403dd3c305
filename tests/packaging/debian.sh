#!/usr/bin/env bash
# The Debian packages, unpacked into an empty root: debian.sh PACKAGE_DIR SOURCE_DIR.
# Their dependencies come from this system; their own files are looked for in that root alone. Scripts
# of the packages do not run: they need a whole system in the root.
set -euo pipefail
packages=$1 source=$2
root=$(mktemp -d)
trap 'rm -rf "$root"' EXIT
mkdir -p "$root/var/lib/dpkg/info" "$root/var/lib/dpkg/updates"
touch "$root/var/lib/dpkg/status"

dpkg --root="$root" --force-depends --log=/dev/null --unpack "$packages"/*.deb >/dev/null 2>&1
libdir=$(dirname "$(find "$root" -name 'libVelmoraMacNative.so.3')")
for package in libvelmoramacnative3 libvelmoramacnative-dev velmoramacnative-tools; do
  grep -q '^MIT License' "$root/usr/share/doc/$package/copyright"
  grep -q x264 "$root/usr/share/doc/$package/third-party-licences.md"
done

# The manual's program, against the packages alone.
# shellcheck disable=SC2016 # backticks of Markdown
sed -n '/^```c$/,/^```$/ { /^```/d; p }' "$source/README.md" >"$root/share.c"
export PKG_CONFIG_PATH=$libdir/pkgconfig LD_LIBRARY_PATH=$libdir
read -ra flags <<<"$(pkg-config --cflags --libs VelmoraMacNative)"
cc "$root/share.c" "${flags[@]}" -o "$root/share"
ldd "$root/share" | grep -q "$libdir/libVelmoraMacNative.so.3"
version=$("$root/usr/bin/vlm" --version)
[[ $version == "vlm 3.0.0 (interface 3)" ]] || { echo "vlm --version says '$version'" >&2; exit 1; }
