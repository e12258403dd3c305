#!/usr/bin/env bash
# The boundary is described in five places that must agree: interface.sh SOURCE_DIR [LIBRARY].
set -euo pipefail
export LC_ALL=C
source_dir=$1 library=${2:-}
header=$source_dir/include/VelmoraMacNative.h
failed=0

# same NAME ACTUAL EXPECTED: two sorted lists, the second is the header's.
same() {
  diff <(echo "$2") <(echo "$3") && return
  echo "$1 (<) differs from what the header declares (>)" >&2
  failed=1
}

declared=$(sed -nE '/^VLM_API/ s/.*[ *](vlm_[a-z0-9_]+)\(.*/\1/p' "$header" | sort)
[[ $(wc -l <<<"$declared") -eq $(grep -c '^VLM_API' "$header") ]] ||
  { echo "a declaration of the header was not understood" >&2; exit 1; }

same "version script" "$(sed -nE 's/^ *(vlm_[a-z0-9_]+);/\1/p' \
  "$source_dir/cmake/VelmoraMacNative.map" | sort)" "$declared"
same "boundary.c" "$(grep -oE 'vlm_[a-z0-9_]+\(' "$source_dir/tests/packaging/boundary.c" |
  tr -d '(' | sort -u)" "$declared"
# The rows of the table of functions: name and family.
# shellcheck disable=SC2016 # Markdown's backquotes
table=$(sed -nE 's/^\| `(vlm_[a-z0-9_]+)` *\| ([a-z]+) .*/\1 \2/p' "$source_dir/docs/functions.md")
same "docs/functions.md" "$(cut -d ' ' -f 1 <<<"$table" | sort)" "$declared"
# A family is a folder of sources that defines the function.
while read -r name family; do
  grep -qE "\b$name\(" "$source_dir/src/$family/exports.cpp" ||
    { echo "docs/functions.md: $name is not in $family" >&2; failed=1; }
done <<<"$table"
if [[ -n $library ]]; then
  # Data and weak symbols would show up too: nothing but the declared functions may be there.
  same "the library's symbol table" \
    "$(nm -D --defined-only "$library" | sed -E 's/^[0-9a-f]+ //; s/^T //; s/@.*//' | sort)" \
    "$declared"
fi

version=$(sed -nE 's/^#define VLM_VERSION_(MAJOR|MINOR|PATCH) ([0-9]+)$/\2/p' "$header" | paste -sd .)
grep -q "^project(VelmoraMacNative VERSION $version " "$source_dir/CMakeLists.txt" ||
  { echo "the header says version $version, CMakeLists.txt another one" >&2; failed=1; }

# The block of comment that ends right above a declaration has each heading once, in order.
awk '
  /^\/\*/ { headings = "" }
  /^ \* (What|Parameters|Result|Errors|Thread|Lifetime): / {
    sub(/:.*/, "", $2); headings = headings " " $2
  }
  /^ \*\// { closed = NR }
  /^VLM_API/ {
    if (closed != NR - 1 || headings != " What Parameters Result Errors Thread Lifetime") {
      print "no whole block above: " $0; bad = 1
    }
    headings = ""
  }
  END { exit bad }
' "$header" >&2 || failed=1

exit "$failed"
