#!/usr/bin/env bash
# The exported symbols of each library are the functions its public headers declare, no name is exported by both, and
# none is libcrypto's as well (two definitions of one name would shadow each other in a program that links both).
# usage: exports.sh <C compiler> <include dir> <libtlxcrypto> <libtlxpki> <libcrypto>
set -euo pipefail
cc=$1 include=$2 tlxcrypto=$3 tlxpki=$4 libcrypto=$5
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

echo '#include <tlxpki.h>' >"$work/all.c"
"$cc" -std=c99 -I"$include" -fsyntax-only -aux-info "$work/prototypes" "$work/all.c"

exported() { nm -D --defined-only "$1" | awk '{print $NF}' | sed 's/@.*//' | sort -u; }
declared() {  # the functions declared by the headers in include/$1
    grep -F "$include/$1/" "$work/prototypes" | sed -E 's/^.*[ *]([A-Za-z_][A-Za-z0-9_]*) \(.*$/\1/' | sort -u
}

status=0
same() {  # what, file, file
    diff "$2" "$3" >"$work/diff" && return
    echo "$1 (< exported, > declared):" && cat "$work/diff" && status=1
}
disjoint() {  # what, file, file
    comm -12 "$2" "$3" >"$work/common"
    [[ ! -s $work/common ]] && return
    echo "$1:" && cat "$work/common" && status=1
}

for library in tlxcrypto tlxpki; do
    exported "${!library}" >"$work/$library.exported"
    declared $library >"$work/$library.declared"
    [[ -s $work/$library.declared ]] || { echo "no declarations found for $library"; exit 1; }
    same "lib$library" "$work/$library.exported" "$work/$library.declared"
    echo "lib$library: $(wc -l <"$work/$library.exported") functions"
done
exported "$libcrypto" >"$work/libcrypto"
disjoint "exported by both libraries" "$work/tlxcrypto.exported" "$work/tlxpki.exported"
sort -u "$work"/tlx*.exported >"$work/ours"
disjoint "libcrypto exports these too" "$work/ours" "$work/libcrypto"
exit $status
