#!/usr/bin/env bash
# Joins the two processors' libraries and checks what came out: scripts/lib/check-dylib.sh OUT ARM64 X86_64.
set -uo pipefail
cd "$(dirname "$0")/../.." || exit
out=$1
shift
failed=0
fail() {
  echo "check-dylib: $1" >&2
  failed=1
}

mkdir -p "$(dirname "$out")"
llvm-lipo-19 -create "$@" -output "$out" || exit
echo "$out: $(llvm-lipo-19 -archs "$out")"

# Names of the frameworks that typed bindings have.
sourced=$(sed -nE 's/^[A-Za-z]+ ([A-Za-z0-9_]+): .*/\1/p' sdk/macos/sources.txt | sort -u)

wanted=$(grep -oE '^ +vlm_\w+' cmake/VelmoraMacNative.map | sed 's/ */_/' | sort)
for thin in "$@"; do
  headers=$(llvm-objdump-19 --macho --private-headers "$thin")
  exports=$(llvm-nm-19 --extern-only --defined-only --format=posix "$thin" | cut -d' ' -f1 | sort)
  [[ $exports == "$wanted" ]] || fail "$thin exports something else than the header's functions"
  echo "$thin: $(wc -l <<<"$exports") exports"
  [[ $(llvm-otool-19 -D "$thin" | tail -1) == @rpath/VelmoraMacNative.dylib ]] || fail "$thin: install name"
  echo "$thin: load commands"
  sed -nE 's/^ +cmd (LC_(ID_DYLIB|BUILD_VERSION|CODE_SIGNATURE))$/  \1/p; s/^ +(platform|minos|sdk|name) (.*)$/    \1 \2/p' <<<"$headers" |
    grep -vE 'name /(System|usr)'
  grep -qE '^ +minos 14\.0$' <<<"$headers" || fail "$thin: minimum system"
  grep -q 'cmd LC_CODE_SIGNATURE' <<<"$headers" || fail "$thin: signature"
  # Linked to nothing but the system, and to each framework for a reason.
  llvm-otool-19 -L "$thin" | tail -n +3 | awk '{ print $1 }' |
    grep -vE '^/System/Library/Frameworks/|^/usr/lib/lib(System\.B|objc\.A|c\+\+\.1)\.dylib$' &&
    fail "$thin: linked to something else"
  echo "$thin: undefined symbols by library"
  undefined=$(llvm-nm-19 --undefined-only --format=darwin "$thin")
  awk -F"[()]" '{ sub(/.*from /, "", $(NF - 1)); print $(NF - 1) }' <<<"$undefined" | sort | uniq -c
  # The linker has found each in a stub; what only we say is there is told.
  # shellcheck disable=SC2016 # a dollar of the symbols
  names=$(sed -nE '/from lib/d; s/.* _(OBJC_(META)?CLASS_\$_)?([^ ]+) \(from .*/\3/p' <<<"$undefined" | sort -u)
  own=$(comm -23 <(echo "$names") <(echo "$sourced"))
  echo "$thin: $(wc -l <<<"$names") symbols of frameworks, without a binding: $(paste -sd' ' <<<"$own")"
  unlisted=$(comm -23 <(echo "$own") <(sed -E 's/^_//; s/ *#.*//' sdk/by-hand/*.symbols | sort -u))
  [[ -z $unlisted ]] || fail "$thin: nothing says that these are there: $unlisted"
done
exit "$failed"
